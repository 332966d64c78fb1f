#include "text/http_date.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "base/serial_date.h"

namespace zelto {

namespace {

constexpr std::array<const char*, 7> kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

}  // namespace

std::string http_date(std::time_t when) {
  std::tm parts{};
  gmtime_r(&when, &parts);
  std::array<char, 64> text{};
  const int length = std::snprintf(text.data(), text.size(), "%s, %02d %s %04d %02d:%02d:%02d GMT",
                                   kDays.at(static_cast<std::size_t>(parts.tm_wday)), parts.tm_mday,
                                   kMonths.at(static_cast<std::size_t>(parts.tm_mon)), parts.tm_year + 1900,
                                   parts.tm_hour, parts.tm_min, parts.tm_sec);
  return {text.data(), static_cast<std::size_t>(std::max(length, 0))};
}

std::optional<std::time_t> parse_http_date(std::string_view text) {
  constexpr std::string_view kShape = "aaa, 00 aaa 0000 00:00:00 GMT";
  if (text.size() != kShape.size()) return std::nullopt;
  const auto number = [&](std::size_t at, std::size_t digits) {
    int value = 0;
    for (std::size_t i = at; i < at + digits; ++i) value = value * 10 + (text[i] - '0');
    return value;
  };
  for (std::size_t at = 0; at < kShape.size(); ++at) {
    const bool digit = text[at] >= '0' && text[at] <= '9';
    if (kShape[at] == '0' ? !digit : kShape[at] != 'a' && kShape[at] != text[at]) return std::nullopt;
  }
  const auto month = std::ranges::find(kMonths, text.substr(8, 3));
  if (month == kMonths.end()) return std::nullopt;
  std::tm parts{};
  parts.tm_mday = number(5, 2);
  parts.tm_mon = static_cast<int>(month - kMonths.begin());
  parts.tm_year = number(12, 4) - 1900;
  parts.tm_hour = number(17, 2);
  parts.tm_min = number(20, 2);
  parts.tm_sec = number(23, 2);
  const std::time_t when = timegm(&parts);
  return http_date(when) == text ? std::optional(when) : std::nullopt;
}

std::time_t moment_of(double date) {
  constexpr double kFirst = -109205;  // 1601-01-01
  constexpr double kLast = 2958465;   // 9999-12-31
  const auto [day, second] = base::nearest_second(std::isfinite(date) ? std::clamp(date, kFirst, kLast) : kFirst);
  const std::time_t as_if_utc = (day - static_cast<std::int64_t>(base::kDaysTo1970)) * base::kSecondsPerDay + second;
  std::tm parts{};
  gmtime_r(&as_if_utc, &parts);
  parts.tm_isdst = -1;
  return std::mktime(&parts);
}

std::string http_date_of(double date) { return http_date(moment_of(date)); }

}  // namespace zelto
