// Moments as dates: days since 1899-12-30, the fraction being the time of day. Before that day the
// fraction still counts forward, so -1.25 is six in the morning of the day before.
#include <chrono>
#include <cmath>
#include <optional>

#include "database/convert.h"

namespace korlib {
namespace {

using namespace std::chrono;

constexpr sys_days kDayZero = year{1899} / 12 / 30;
constexpr double kNanosecondsPerDay = 86400e9;
// Dates are of the years 100 to 9999; these are the first ones that are not.
constexpr double kLastDate = 2958466;
constexpr double kFirstDate = -657435;

}  // namespace

DATE to_date(const odbc::Moment& moment) {
  const sys_days day = year{moment.year} / moment.month / moment.day;
  const double days = static_cast<double>((day - kDayZero).count());
  const double seconds = moment.hour * 3600.0 + moment.minute * 60.0 + moment.second;
  const double fraction = (seconds * 1e9 + moment.nanosecond) / kNanosecondsPerDay;
  return days < 0 ? days - fraction : days + fraction;
}

std::optional<odbc::Moment> from_date(DATE date) {
  if (!(date > kFirstDate && date < kLastDate)) return std::nullopt;
  double days = std::trunc(date);
  // A double keeps about a microsecond of a present date.
  auto microseconds = static_cast<std::int64_t>(std::llround(std::fabs(date - days) * 86400e6));
  if (microseconds >= 86'400'000'000) {
    microseconds = 0;
    days += 1;
  }
  // What is a whole millisecond but for the rounding is meant to be one.
  const std::int64_t to_millisecond = (microseconds + 500) / 1000 * 1000;
  if (std::llabs(to_millisecond - microseconds) <= 2) microseconds = to_millisecond;
  const year_month_day civil = kDayZero + std::chrono::days{static_cast<int>(days)};
  const std::int64_t second = microseconds / 1'000'000;
  odbc::Moment moment;
  moment.year = static_cast<int>(civil.year());
  moment.month = static_cast<int>(static_cast<unsigned>(civil.month()));
  moment.day = static_cast<int>(static_cast<unsigned>(civil.day()));
  moment.hour = static_cast<int>(second / 3600);
  moment.minute = static_cast<int>(second / 60 % 60);
  moment.second = static_cast<int>(second % 60);
  moment.nanosecond = static_cast<std::uint32_t>(microseconds % 1'000'000 * 1000);
  return moment;
}

}  // namespace korlib
