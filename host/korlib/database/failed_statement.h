// The statement that a database refused last, for what the author of a page is told.
#pragma once

#include <string>
#include <vector>

#include "odbc/value.h"

namespace korlib {

// On the calling thread, until another one is refused, it is taken or the page ends; of a long one the beginning.
// `error` is what the script is told.
void remember_failed_statement(const std::wstring& sql, const std::vector<odbc::Parameter>& parameters,
                               const std::wstring& error);
void forget_failed_statement() noexcept;

}  // namespace korlib
