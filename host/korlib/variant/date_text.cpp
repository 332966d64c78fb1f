#include "variant/date_text.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <optional>

#include "base/serial_date.h"
#include "variant/date_parser.h"

namespace korlib::variants {

namespace {

DATE date_at(std::int64_t day, double seconds) {
  return base::join({static_cast<double>(day), seconds / base::kSecondsPerDay});
}

// A moment by the clock of UTC, by the local one. Counted in whole seconds, so that a time of day is exact.
DATE local_date(std::chrono::sys_seconds utc, double fraction) {
  // Not by to_time_t, whose clock counts in nanoseconds: those of the year 3000 do not fit.
  const std::time_t moment = utc.time_since_epoch().count();
  std::tm parts{};
  localtime_r(&moment, &parts);
  const auto local = utc + std::chrono::seconds{parts.tm_gmtoff};
  const auto day = std::chrono::floor<std::chrono::days>(local);
  return date_at((day - base::kDayZero).count(), static_cast<double>((local - day).count()) + fraction);
}

int this_year() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  localtime_r(&now, &parts);
  return parts.tm_year + 1900;
}

}  // namespace

HRESULT date_text(DATE date, std::string* text) {
  if (!base::is_date(date)) return DISP_E_OVERFLOW;
  const auto [day, seconds] = base::nearest_second(date);
  if (static_cast<DATE>(day) >= base::kDayBeyond) return DISP_E_OVERFLOW;

  char buffer[64];
  text->clear();
  if (day != 0) {
    const std::chrono::year_month_day ymd = base::calendar_day(day);
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
  const int day = parts->day.value_or(0);
  DATE read = date_at(day, parts->seconds);
  if (parts->offset) {
    const double whole = std::floor(parts->seconds);
    const auto seconds = std::chrono::seconds{static_cast<std::int64_t>(whole) - *parts->offset};
    read = local_date(base::kDayZero + std::chrono::days{day} + seconds, parts->seconds - whole);
  }
  if (!base::is_date(read)) return DISP_E_TYPEMISMATCH;
  *date = read;
  return S_OK;
}

}  // namespace korlib::variants
