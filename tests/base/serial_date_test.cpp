#include "base/serial_date.h"
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

namespace {

TEST(SerialDate, CountsTheTimeOfDayForwardBeforeDayZeroAsWell) {
  const auto [day, part] = base::split(-1.25);
  EXPECT_EQ(-1, day);
  EXPECT_EQ(0.25, part);
  for (const double date : {0.0, 0.75, 1.0, 36526.5, -1.0, -1.25, -657434.5}) {
    EXPECT_EQ(date, base::join(base::split(date))) << date;
  }
}

TEST(SerialDate, IsTheNextDayWhereThePartIsAsGoodAsAWholeOne) {
  const double nearly = std::nextafter(1.0, 0.0);
  const struct {
    double day;
    double part;
    double date;
  } rows[] = {{5, nearly, 6}, {-5, nearly, -4}, {-5, 1, -4}, {-1, 1, 0}, {-657434, nearly, -657433}};
  for (const auto& row : rows) EXPECT_EQ(row.date, base::join({row.day, row.part})) << row.day;
  EXPECT_EQ(0, base::from_linear(-1e-20));
}

TEST(SerialDate, IsLinearOnlyAfterItWasMadeSo) {
  const struct {
    double date;
    double days;
  } rows[] = {{1.5, 1.5}, {0.25, 0.25}, {-1, -1}, {-1.25, -0.75}, {-2.75, -1.25}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.days, base::to_linear(row.date)) << row.date;
    EXPECT_EQ(row.date, base::from_linear(row.days)) << row.days;
  }
}

TEST(SerialDate, RoundsToTheNearestSecondWhichMayBeTheNextDays) {
  const double second = 1.0 / base::kSecondsPerDay;
  const struct {
    double date;
    std::int64_t day;
    int second;
  } rows[] = {{2.5, 2, 43200}, {2 + 1.4 * second, 2, 1}, {3 - 0.4 * second, 3, 0}, {-2.25, -2, 21600}};
  for (const auto& row : rows) {
    const auto [day, at] = base::nearest_second(row.date);
    EXPECT_EQ(row.day, day) << row.date;
    EXPECT_EQ(row.second, at) << row.date;
  }
}

TEST(SerialDate, ExpressesTheYears100To9999) {
  EXPECT_TRUE(base::is_date(base::kFirstDay));
  EXPECT_TRUE(base::is_date(base::kFirstDay - 0.99));  // the evening of the first day
  EXPECT_FALSE(base::is_date(base::kFirstDay - 1));
  EXPECT_TRUE(base::is_date(base::kDayBeyond - 0.01));
  EXPECT_FALSE(base::is_date(base::kDayBeyond));
  using namespace std::chrono_literals;
  EXPECT_EQ(std::chrono::year{100} / 1 / 1, base::calendar_day(static_cast<std::int64_t>(base::kFirstDay)));
  EXPECT_EQ(std::chrono::year{9999} / 12 / 31, base::calendar_day(static_cast<std::int64_t>(base::kDayBeyond) - 1));
  EXPECT_EQ(std::chrono::year{1970} / 1 / 1, base::calendar_day(static_cast<std::int64_t>(base::kDaysTo1970)));
}

TEST(SerialDate, TellsAMomentByTheLocalClock) {
  setenv("TZ", "EST5EDT", 1);
  tzset();
  EXPECT_EQ(base::kDaysTo1970 - 5.0 / 24, base::local_date(0));
  EXPECT_EQ(base::kDaysTo1970 + 181 - 4.0 / 24, base::local_date(std::time_t{181} * base::kSecondsPerDay));
  unsetenv("TZ");
  tzset();
}

}  // namespace
