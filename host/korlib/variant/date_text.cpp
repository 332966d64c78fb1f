#include "variant/date_text.h"

#include <chrono>
#include <cstdio>

#include "base/serial_date.h"

namespace korlib::variants {

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

}  // namespace korlib::variants
