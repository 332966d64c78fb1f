// Where a driver's code is.
#pragma once

#include <string>
#include <string_view>

namespace korlib::odbc {

// The path of the driver's library, as the driver manager finds it; empty when it does not.
std::string library_of(std::wstring_view connection_string);
// Whether the library has the functions that take UTF-16.
bool takes_wide_text(const std::string& library);

}  // namespace korlib::odbc
