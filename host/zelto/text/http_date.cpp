#include "text/http_date.h"

#include <fmt/chrono.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "base/serial_date.h"
#include "text/numbers.h"

namespace zelto {

namespace {

constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

}  // namespace

std::string http_date(std::time_t when) {
  std::tm parts{};
  gmtime_r(&when, &parts);
  return fmt::format("{:%a, %d %b %Y %H:%M:%S} GMT", parts);
}

std::optional<std::time_t> parse_http_date(std::string_view text) {
  if (text.size() != std::string_view("Sun, 06 Nov 1994 08:49:37 GMT").size()) return std::nullopt;
  const auto number = [&](std::size_t at, std::size_t digits) {
    return parse_number<int>(text.substr(at, digits)).value_or(0);
  };
  const auto month = std::ranges::find(kMonths, text.substr(8, 3));
  if (month == kMonths.end()) return std::nullopt;
  std::tm parts{};
  parts.tm_mday = number(5, 2);
  parts.tm_mon = static_cast<int>(month - kMonths.begin());
  parts.tm_year = number(12, 4) - 1900;
  parts.tm_hour = number(17, 2);
  parts.tm_min = number(20, 2);
  parts.tm_sec = number(23, 2);
  if (parts.tm_year < -1900) return std::nullopt;  // a sign is not a digit
  const std::time_t when = timegm(&parts);
  // Whatever is not written as in that form comes back as another text.
  return http_date(when) == text ? std::optional(when) : std::nullopt;
}

std::time_t moment_of(double date) {
  constexpr double kFirst = -109205;  // 1601-01-01
  constexpr double kLast = base::kDayBeyond - 1;
  const auto [day, second] = base::nearest_second(std::isfinite(date) ? std::clamp(date, kFirst, kLast) : kFirst);
  const std::time_t as_if_utc = (day - static_cast<std::int64_t>(base::kDaysTo1970)) * base::kSecondsPerDay + second;
  std::tm parts{};
  gmtime_r(&as_if_utc, &parts);
  parts.tm_isdst = -1;
  return std::mktime(&parts);
}

std::string http_date_of(double date) { return http_date(moment_of(date)); }

}  // namespace zelto
