// What an automation object tells of its members without being called.
#pragma once

#include <string>
#include <string_view>

#include <korlib/dispatch.h>

namespace zelto::script {

// What an object's type information calls it; nothing where it has none.
std::wstring kind_of(IDispatch* object);

bool has_member(IDispatch* object, std::wstring name);

// The member that may have been meant by that name; empty for none. Of an object whose type information has no names,
// it is one that differs in one letter.
std::wstring nearest_member(IDispatch* object, std::wstring_view wanted);

}  // namespace zelto::script
