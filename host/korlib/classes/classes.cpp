// The rows that these classes add to the class table.
#include <korlib_host/class_table.h>

#include "classes/dictionary.h"
#include "classes/file_system.h"
#include "classes/stream.h"

namespace korlib {
namespace {

constexpr korlib_host::ClassRow kRows[] = {
    {CLSID_ScriptingDictionary, L"Scripting.Dictionary", &create_object<Dictionary>},
    {CLSID_FileSystemObject, L"Scripting.FileSystemObject", &create_object<FileSystem>},
    {CLSID_KorLibStream, L"ADODB.Stream", &create_object<Stream>},
};

const korlib_host::ClassRegistration g_classes{kRows};

}  // namespace
}  // namespace korlib
