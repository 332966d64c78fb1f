// Dates as automation counts them (DATE): days since 1899-12-30, the fraction being the time of day, in local time.
//
// Before day zero the fraction still counts forward within its day: -1.25 is six in the morning of 1899-12-29. So a
// date is no measure of time there, and has to be taken apart (split) or made linear before it is calculated with.
#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>

namespace base {

inline constexpr std::chrono::sys_days kDayZero = std::chrono::year{1899} / 12 / 30;
inline constexpr double kDaysTo1970 = 25569;
inline constexpr int kSecondsPerDay = 86400;

// What a date can express: from 0100-01-01 to the end of 9999-12-31.
inline constexpr double kFirstDay = -657434;
inline constexpr double kDayBeyond = 2958466;
constexpr bool is_date(double date) { return date > kFirstDay - 1 && date < kDayBeyond; }

// Of a finite date the day, and the part of it that has passed, 0 to less than 1.
struct DayAndPart {
  double day;
  double part;
};
DayAndPart split(double date);
// The next day where a double cannot tell the part from a whole one.
double join(DayAndPart when);

// To the nearest second, which may be the first of the next day. The date must be one.
struct DayAndSecond {
  std::int64_t day;
  int second;
};
DayAndSecond nearest_second(double date);

// Days since day zero that can be calculated with, and back.
double to_linear(double date);
double from_linear(double days);

// A moment by the clock of this machine's time zone.
double local_date(std::time_t moment);

inline std::chrono::year_month_day calendar_day(std::int64_t day) {
  return kDayZero + std::chrono::days{static_cast<int>(day)};
}

}  // namespace base
