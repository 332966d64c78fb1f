#include "variant/date_text.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <optional>

#include "variant/date_parser.h"

namespace korlib::variants {

namespace {

constexpr DATE kFirst = -657434.0;   // 0100-01-01
constexpr DATE kBeyond = 2958466.0;  // 10000-01-01
constexpr int kSecondsOfDay = 86400;
constexpr std::int64_t kDaysTo1970 = 25569;
constexpr std::chrono::sys_days kDayZero = std::chrono::year{1899} / 12 / 30;

// The fraction counts forward within the day, before day zero as well.
DATE date_at(std::int64_t day, double seconds) {
  const double whole = static_cast<double>(day);
  const double part = seconds / kSecondsOfDay;
  return day < 0 ? whole - part : whole + part;
}

// A moment by the clock of UTC, by the local one.
DATE local_date(std::int64_t utc_day, std::int64_t utc_seconds, double fraction) {
  const std::time_t utc = (utc_day - kDaysTo1970) * kSecondsOfDay + utc_seconds;
  std::tm parts{};
  localtime_r(&utc, &parts);
  const std::int64_t local = utc + parts.tm_gmtoff + kDaysTo1970 * kSecondsOfDay;
  const std::int64_t second = (local % kSecondsOfDay + kSecondsOfDay) % kSecondsOfDay;
  return date_at((local - second) / kSecondsOfDay, static_cast<double>(second) + fraction);
}

int this_year() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  localtime_r(&now, &parts);
  return parts.tm_year + 1900;
}

}  // namespace

bool is_date(DATE date) { return date > kFirst - 1 && date < kBeyond; }

HRESULT date_text(DATE date, std::string* text) {
  if (!is_date(date)) return DISP_E_OVERFLOW;
  // The fraction counts forward within the day, before day zero as well.
  DATE day = std::trunc(date);
  auto seconds = static_cast<int>(std::lround(std::abs(date - day) * kSecondsOfDay));
  if (seconds == kSecondsOfDay) {
    seconds = 0;
    day += 1;
  }
  if (day >= kBeyond) return DISP_E_OVERFLOW;

  char buffer[64];
  text->clear();
  if (day != 0) {
    const std::chrono::year_month_day ymd{kDayZero + std::chrono::days{static_cast<int>(day)}};
    std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02u", static_cast<int>(ymd.year()),
                  static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()));
    *text = buffer;
    if (seconds == 0) return S_OK;
    *text += ' ';
  }
  std::snprintf(buffer, sizeof buffer, "%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60);
  *text += buffer;
  return S_OK;
}

HRESULT parse_date(std::wstring_view text, DATE* date) {
  *date = 0;
  const std::optional<DateParts> parts = parse_date_parts(text, this_year());
  if (!parts) return DISP_E_TYPEMISMATCH;
  const std::int64_t day = parts->day.value_or(0);
  DATE read = date_at(day, parts->seconds);
  if (parts->offset) {
    const double whole = std::floor(parts->seconds);
    read = local_date(day, static_cast<std::int64_t>(whole) - *parts->offset, parts->seconds - whole);
  }
  if (!is_date(read)) return DISP_E_TYPEMISMATCH;
  *date = read;
  return S_OK;
}

}  // namespace korlib::variants
