#include "app/restart_pause.h"

#include <gtest/gtest.h>

namespace {

using std::chrono::seconds;

TEST(RestartPause, GrowsWithEachDeath) {
  zelto::RestartPause pause;
  for (const int expected : {0, 1, 2, 4, 8, 16, 30, 30}) EXPECT_EQ(seconds(expected), pause.after(seconds(59)));
}

TEST(RestartPause, ForgetsDeathsAfterAMinute) {
  zelto::RestartPause pause;
  for (int i = 0; i < 5; ++i) pause.after(seconds(0));
  EXPECT_EQ(seconds(0), pause.after(seconds(60)));
  EXPECT_EQ(seconds(1), pause.after(seconds(0)));
}

}  // namespace
