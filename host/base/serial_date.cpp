#include "base/serial_date.h"

#include <cmath>

namespace base {

DayAndPart split(double date) {
  const double day = std::trunc(date);
  return {day, std::abs(date - day)};
}

double join(DayAndPart when) { return when.day < 0 ? when.day - when.part : when.day + when.part; }

DayAndSecond nearest_second(double date) {
  const auto [day, part] = split(date);
  const auto second = static_cast<int>(std::lround(part * kSecondsPerDay));
  const auto whole = static_cast<std::int64_t>(day);
  return second == kSecondsPerDay ? DayAndSecond{whole + 1, 0} : DayAndSecond{whole, second};
}

double to_linear(double date) {
  const auto [day, part] = split(date);
  return date < 0 ? day + part : date;
}

double from_linear(double days) {
  if (days >= 0) return days;
  const double day = std::floor(days);
  return join({day, days - day});
}

double local_date(std::time_t moment) {
  std::tm parts{};
  localtime_r(&moment, &parts);
  return static_cast<double>(moment + parts.tm_gmtoff) / kSecondsPerDay + kDaysTo1970;
}

}  // namespace base
