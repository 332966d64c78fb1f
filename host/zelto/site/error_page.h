// What a client, and the log, is told of a page that failed.
#pragma once

#include <string>
#include <string_view>

#include "intrinsics/page_state.h"

namespace zelto {

// For the author: message, source, code, what was asked for, the mark that failed in a template, file and line, the
// lines around both, which are read below the site's root, and the marks and functions that were running; then the
// foot, in HTML.
std::string debug_error_page(const PageError& error, const std::string& root, std::string_view page_path,
                             std::string_view target, std::string_view foot);
// For everybody else: the status, as in "500 Internal Server Error", and by what the log knows it.
std::string plain_error_page(std::string_view status, std::string_view reference);

// For PageError::reference: eight digits that no other error of this process has soon.
std::string new_reference();

// For the end of an HTML page that had begun to go out.
std::string reference_comment(std::string_view reference);

// "/guestbook.asp:12: message (Mirt, 0x80004005) [1f0a9c44]", for the log, where there is a reference. The causes
// follow the message, and then "; in row.html:3:7 (#;name#), page.html:1:1 (#`row#)" those templates that were being
// drawn, and the page that was asked for, where the error is in another file.
std::string error_line(const PageError& error, std::string_view page);

}  // namespace zelto
