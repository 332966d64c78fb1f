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

// The moment that a script's date, days since 1899-12-30 in local time, names. A year outside 1601 to 9999 becomes
// the nearest one inside, so that headers can write it.
std::time_t moment_of(double date);
// That moment as headers write it.
std::string http_date_of(double date);

}  // namespace zelto
