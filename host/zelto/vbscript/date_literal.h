// A date as a script writes it between two #, whatever the page's locale: #12/31/1999#, #1999-12-31 23:59#,
// #31 Dec 1999#, #December 31, 1999 11:59:59 PM#, #23:59#.
#pragma once

#include <optional>
#include <string_view>

namespace zelto::vbscript {

// As a serial date.
std::optional<double> read_date_literal(std::wstring_view text);

}  // namespace zelto::vbscript
