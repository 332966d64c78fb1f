// The rows that these classes add to the class table.
#include "classes/create.h"
#include "database/command.h"
#include "database/recordset.h"

namespace korlib {
namespace {

constexpr korlib_host::ClassRow kRows[] = {
    {CLSID_KorDBConnection, L"ADODB.Connection", &create_object<Connection>},
    {CLSID_KorDBCommand, L"ADODB.Command", &create_object<Command>},
    {CLSID_KorDBRecordset, L"ADODB.Recordset", &create_object<Recordset>},
};

const korlib_host::ClassRegistration g_classes{kRows};

}  // namespace
}  // namespace korlib
