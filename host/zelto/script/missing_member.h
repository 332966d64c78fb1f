// Words for a member that an automation object does not have.
#pragma once

#include <string>
#include <string_view>

#include <korlib/dispatch.h>

namespace zelto::script {

// "Object doesn't support this property or method: 'Recordset.MoveNex', did you mean 'MoveNext'? (0x80020006)".
// What kind of object it is, and which names it has, its type information says: the name of the type by
// GetDocumentation(MEMBERID_NIL), those of members by GetNames. An object whose type information does not is of
// `kind`, which may be empty, and is asked for the names that one slip of the pen makes this one of.
std::wstring describe_missing(IDispatch* object, std::wstring_view kind, std::wstring_view name);

}  // namespace zelto::script
