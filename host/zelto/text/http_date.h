// Dates as HTTP writes them: "Sun, 06 Nov 1994 08:49:37 GMT".
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace zelto {

std::string http_date(std::time_t when);
// Accepts that form only, as servers send it; nothing for any other text.
std::optional<std::time_t> parse_http_date(std::string_view text);

}  // namespace zelto
