// A statement that a database has refused, for the author of a page.
#pragma once

#include <string>
#include <vector>

#include "odbc/value.h"

namespace korlib {

// Tells the thread's listener, if there is one (korlib_host/statement_listener.h). `error` is what the script is told.
void tell_refused(const std::wstring& sql, const std::vector<odbc::Parameter>& parameters, const std::wstring& error);

}  // namespace korlib
