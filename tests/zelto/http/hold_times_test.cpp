#include "http/hold_times.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace zelto_test {
namespace {

using std::chrono::milliseconds;
using Clock = zelto::HoldTimes::Clock;

class HoldTimesTest : public ::testing::Test {
 protected:
  void run(const std::string& kind, milliseconds taken) {
    times.begin(0, kind, times.is_long(kind, now), now);
    now += taken;
    times.end(0, now);
  }
  bool is_long(const std::string& kind) const { return times.is_long(kind, now); }

  Clock::time_point now{std::chrono::hours(1)};
  zelto::HoldTimes times{2};
};

TEST_F(HoldTimesTest, TakesWhatHasNeverEndedForLong) {
  EXPECT_TRUE(is_long("page"));
  EXPECT_FALSE(is_long(""));
}

TEST_F(HoldTimesTest, ForgetsWhatTheFirstTimeTook) {
  run("page", milliseconds(5000));
  EXPECT_TRUE(is_long("page"));
  run("page", milliseconds(1));
  EXPECT_FALSE(is_long("page"));
  EXPECT_TRUE(is_long("other"));
}

TEST_F(HoldTimesTest, TellsWhatIsShortFromTheFirst) {
  run("page", milliseconds(19));
  EXPECT_FALSE(is_long("page"));
}

TEST_F(HoldTimesTest, BearsOneThatWasHeldUp) {
  run("page", milliseconds(1));
  run("page", milliseconds(5000));
  run("page", milliseconds(5000));
  EXPECT_FALSE(is_long("page"));
}

TEST_F(HoldTimesTest, TellsWhatHasBecomeLong) {
  run("page", milliseconds(1));
  for (int i = 0; i < 10; ++i) run("page", milliseconds(100));
  EXPECT_TRUE(is_long("page"));
  for (int i = 0; i < 10; ++i) run("page", milliseconds(1));
  EXPECT_FALSE(is_long("page"));
}

TEST_F(HoldTimesTest, TellsWhatIsOverAtOnce) {
  const auto is_quick = [this] { return times.is_quick("page"); };
  EXPECT_FALSE(is_quick()) << "nobody knows";
  for (int i = 0; i < 40; ++i) run("page", milliseconds(0));
  EXPECT_TRUE(is_quick());
  run("page", milliseconds(500));
  EXPECT_FALSE(is_quick()) << "it may do so again";
  for (int i = 0; i < 40; ++i) run("page", milliseconds(0));
  EXPECT_TRUE(is_quick());
  for (int i = 0; i < 40; ++i) run("page", milliseconds(2));
  EXPECT_FALSE(is_quick());
}

TEST_F(HoldTimesTest, TakesWhatDoesNotEndForLong) {
  run("page", milliseconds(1));
  times.begin(1, "page", false, now);
  EXPECT_FALSE(is_long("page"));
  EXPECT_EQ(0U, times.long_running(now));
  now += milliseconds(1000);
  EXPECT_TRUE(is_long("page"));
  EXPECT_EQ(1U, times.long_running(now));
  times.end(1, now);
  EXPECT_FALSE(is_long("page"));
  EXPECT_EQ(0U, times.long_running(now));
}

TEST_F(HoldTimesTest, TellsWhatMayHoldAWorker) {
  EXPECT_FALSE(times.may_hold("page", now)) << "the first one is to run";
  times.begin(1, "page", true, now);
  EXPECT_TRUE(times.may_hold("page", now)) << "nobody knows how long that takes";
  EXPECT_FALSE(times.may_hold("other", now));
  EXPECT_FALSE(times.may_hold("", now));
  times.end(1, now + milliseconds(30));
  EXPECT_FALSE(times.may_hold("page", now)) << "long, and it ended by itself";
  times.begin(1, "page", true, now);
  EXPECT_FALSE(times.may_hold("page", now));
  now += milliseconds(1000);
  EXPECT_TRUE(times.may_hold("page", now));
  times.end(1, now);
  EXPECT_TRUE(times.may_hold("page", now)) << "as the last one did";
  run("page", milliseconds(30));
  EXPECT_FALSE(times.may_hold("page", now));
}

TEST_F(HoldTimesTest, CountsTheWorkersOfLongOnes) {
  times.begin(0, "page", true, now);
  times.begin(1, "", false, now);
  EXPECT_EQ(1U, times.long_running(now));
  times.end(0, now);
  EXPECT_EQ(0U, times.long_running(now));
}

TEST_F(HoldTimesTest, ForgetsKindsBeforeTheyBecomeTooMany) {
  run("first", milliseconds(1));
  for (int i = 0; i < 5000; ++i) run(std::to_string(i), milliseconds(1));
  EXPECT_TRUE(is_long("first"));
  EXPECT_FALSE(is_long("4999"));
}

}  // namespace
}  // namespace zelto_test
