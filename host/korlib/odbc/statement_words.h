// What the words of a statement tell without running it.
#pragma once

#include <string_view>

namespace korlib::odbc {

// Whether a command text may leave its connection changed for whoever uses it next: a transaction begun in
// words, an isolation level, a setting, an attached database. Everything but the well-known words for data
// and tables counts as such. A function that a SELECT calls is not looked into.
bool may_change_connection(std::wstring_view sql);

}  // namespace korlib::odbc
