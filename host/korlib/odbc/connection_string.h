// Connection strings: attributes with values, separated by semicolons, as in "Driver=SQLite3;Database=/data/shop.db".
// A value that holds a semicolon stands in braces, in which a closing brace is doubled.
#pragma once

#include <string>
#include <string_view>

namespace korlib::odbc {

// The value of an attribute, its braces removed; empty when it is missing. Names match in any letter case.
std::wstring attribute_of(std::wstring_view connection_string, std::wstring_view name);

// A text without "=" is the name of a data source. A user and a password that are given follow as UID and PWD, in
// braces, so that neither can bring attributes of its own.
std::wstring complete_connection_string(std::wstring_view given, std::wstring_view user, std::wstring_view password);

}  // namespace korlib::odbc
