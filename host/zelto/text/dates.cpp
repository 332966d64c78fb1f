#include "text/dates.h"

#include <algorithm>
#include <cmath>

#include "text/http_date.h"

namespace zelto {

namespace {

constexpr double kDaysTo1970 = 25569;
constexpr double kSecondsPerDay = 86400;
constexpr double kSecondsPerMinute = 60;

// The year is one that time_t and struct tm both hold.
std::time_t seconds_of(double date) {
  constexpr double kFirst = -109205;  // 1601-01-01
  constexpr double kLast = 2958465;   // 9999-12-31
  const double days = std::isfinite(date) ? std::clamp(date, kFirst, kLast) : kFirst;
  // Before 1899-12-30 the fraction still counts forwards from the whole day.
  const double whole = std::trunc(days);
  const double seconds = (whole - kDaysTo1970) * kSecondsPerDay + std::round(std::abs(days - whole) * kSecondsPerDay);
  const auto as_if_utc = static_cast<std::time_t>(seconds);
  std::tm parts{};
  gmtime_r(&as_if_utc, &parts);
  parts.tm_isdst = -1;
  return std::mktime(&parts);
}

}  // namespace

std::string http_date_of(double date) { return http_date(seconds_of(date)); }

double date_of(std::time_t seconds) {
  std::tm parts{};
  localtime_r(&seconds, &parts);
  return static_cast<double>(seconds + parts.tm_gmtoff) / kSecondsPerDay + kDaysTo1970;
}

double date_in(double minutes) {
  constexpr double kBeyondAllDates = 1e12;
  const double seconds = std::fmin(std::fmax(minutes * kSecondsPerMinute, -kBeyondAllDates), kBeyondAllDates);
  return date_of(std::time(nullptr) + std::llround(seconds));
}

double minutes_until(double date) {
  return static_cast<double>(seconds_of(date) - std::time(nullptr)) / kSecondsPerMinute;
}

}  // namespace zelto
