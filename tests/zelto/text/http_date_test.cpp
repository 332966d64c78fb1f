#include "text/http_date.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace zelto
