// What a client, and the log, is told of a page that failed.
#pragma once

#include <string>
#include <string_view>

#include "intrinsics/page_state.h"

namespace zelto {

// For the author: message, source, code, file, line and the lines around it, which are read from
// `physical` when that is not empty.
std::string debug_error_page(const PageError& error, const std::string& physical);
// For everybody else: the status, as in "500 Internal Server Error", and no more.
std::string plain_error_page(std::string_view status);

// "guestbook.asp:12: message (Mirt, 0x80004005)", for the log.
std::string error_line(const PageError& error);

}  // namespace zelto
