#include "text/dates.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>

namespace zelto {
namespace {

// A DATE is local time, here that of a zone two hours ahead all year.
class ScriptDate : public testing::Test {
 protected:
  ScriptDate() {
    setenv("TZ", "TWO-2", 1);
    tzset();
  }
  ~ScriptDate() override {
    unsetenv("TZ");
    tzset();
  }
};

// Days since 1899-12-30, a Saturday: 36925 is 2001-02-03, 5275 weeks on.
TEST_F(ScriptDate, IsWrittenAsHeadersDo) {
  EXPECT_EQ("Sat, 03 Feb 2001 04:00:00 GMT", http_date_of(36925.25));
  EXPECT_EQ("Fri, 29 Dec 1899 22:00:00 GMT", http_date_of(0));
  // Before day zero the fraction still counts forwards: the day before, at six.
  EXPECT_EQ("Fri, 29 Dec 1899 04:00:00 GMT", http_date_of(-1.25));
}

TEST_F(ScriptDate, StaysWithinTheYearsOfHeaders) {
  EXPECT_EQ("Thu, 30 Dec 9999 22:00:00 GMT", http_date_of(1e300));
  EXPECT_EQ(http_date_of(-109205), http_date_of(-1e300));
  EXPECT_EQ(http_date_of(-109205), http_date_of(std::numeric_limits<double>::quiet_NaN()));
}

TEST_F(ScriptDate, IsThatOfAPointInTime) {
  EXPECT_EQ(25569 + 2.0 / 24, date_of(0));
  EXPECT_EQ(25570.0, date_of(22 * 3600));
}

}  // namespace
}  // namespace zelto
