#include "base/serial_date.h"

#include <cmath>

namespace base {

DayAndPart split(double date) {
  const double day = std::trunc(date);
  return {day, std::abs(date - day)};
}

double join(DayAndPart when) {
  if (when.day >= 0) return when.day + when.part;
  const double date = when.day - when.part;
  // A part that no double of that size can tell from a whole day would name the day before instead of the next one.
  return date > when.day - 1 ? date : when.day + 1;
}

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
