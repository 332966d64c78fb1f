// The "application/x-www-form-urlencoded" form of names and values, and percent-encoding.
#pragma once

#include <korlib/types.h>

#include <optional>
#include <string>
#include <string_view>

#include "intrinsics/field_table.h"

namespace zelto {

inline constexpr std::size_t kMaxFormFields = 1000;

// '+' is a blank, %XX a byte; a '%' that no two hexadecimal digits follow stands for itself.
std::string percent_decode(std::string_view text);
// Letters, digits and "-_." stay, a blank becomes '+', every other byte %XX.
std::string url_encode(std::string_view bytes);
// Percent-encodes what a URL may not hold at all (blanks, quotes, controls, bytes above 0x7E).
std::string escape_url(std::string_view url);

// The fields of "a=1&b=2" in the code page's characters. Nothing when there are more than
// kMaxFormFields of them.
std::optional<FieldTable> parse_urlencoded(std::string_view text, LONG code_page);

}  // namespace zelto
