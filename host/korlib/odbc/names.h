// Names of columns, parameters, types and attributes, none of which cares for letter case.
#pragma once

#include <string_view>

namespace korlib {

bool same_name(std::wstring_view a, std::wstring_view b);

}  // namespace korlib
