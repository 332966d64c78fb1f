#include "http/deadline.h"

#include <gtest/gtest.h>

namespace zelto {
namespace {

using namespace std::chrono_literals;

TEST(ReadRate, JudgesEverySpanByItself) {
  ReadRate rate(30s, 100);
  const ReadRate::Clock::time_point start{};
  rate.begin(start);
  EXPECT_FALSE(rate.is_too_slow(0, start + 29s)) << "the span has not ended";
  EXPECT_FALSE(rate.is_too_slow(1'000'000, start + 30s));
  EXPECT_FALSE(rate.is_too_slow(2'999, start + 59s));
  EXPECT_TRUE(rate.is_too_slow(0, start + 60s)) << "whatever came before";
}

TEST(ReadRate, AsksOfALateReadWhatItsTimeIsWorth) {
  ReadRate rate(30s, 100);
  const ReadRate::Clock::time_point start{};
  rate.begin(start);
  EXPECT_FALSE(rate.is_too_slow(5'000, start + 50s));
  EXPECT_TRUE(rate.is_too_slow(4'999, start + 100s));
}

TEST(ReadRate, AsksForNothingWithoutASpan) {
  ReadRate rate(0s, 100);
  rate.begin({});
  EXPECT_FALSE(rate.is_too_slow(0, ReadRate::Clock::time_point(1h)));
}

}  // namespace
}  // namespace zelto
