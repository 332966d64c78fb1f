#include "text/http_date.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>

#include "base/serial_date.h"

namespace zelto {
namespace {

// RFC 9110's example, and the ends of the usual range.
TEST(HttpDate, WritesAndReadsBack) {
  const std::pair<std::time_t, const char*> rows[] = {{784111777, "Sun, 06 Nov 1994 08:49:37 GMT"},
                                                      {0, "Thu, 01 Jan 1970 00:00:00 GMT"},
                                                      {951782400, "Tue, 29 Feb 2000 00:00:00 GMT"},
                                                      {4102444799, "Thu, 31 Dec 2099 23:59:59 GMT"}};
  for (const auto& [when, text] : rows) {
    EXPECT_EQ(text, http_date(when));
    EXPECT_EQ(when, parse_http_date(text));
  }
}

TEST(HttpDate, RefusesOtherText) {
  for (const char* text :
       {"", "now", "Sunday, 06-Nov-94 08:49:37 GMT", "Sun, 06 Nov 1994 08:49:37 UTC", "Mon, 06 Nov 1994 08:49:37 GMT",
        "Sun, 06 Nox 1994 08:49:37 GMT", "Thu, 31 Feb 2000 00:00:00 GMT", "Sun, 06 Nov 1994 25:49:37 GMT",
        "Sun, 6x Nov 1994 08:49:37 GMT"})
    EXPECT_EQ(std::nullopt, parse_http_date(text)) << text;
}

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
  EXPECT_EQ(25569 + 2.0 / 24, base::local_date(0));
  EXPECT_EQ(25570.0, base::local_date(std::time_t{22} * 3600));
  EXPECT_EQ(0, moment_of(25569 + 2.0 / 24));
  EXPECT_EQ(std::time_t{22} * 3600, moment_of(25570.0));
}

}  // namespace
}  // namespace zelto
