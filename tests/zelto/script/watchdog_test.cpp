// How a page is left, as the watchdog knows it.
#include "script/watchdog.h"

#include "zelto/script/script_fixture.h"

namespace test {
namespace {

using zelto::script::Outcome;

class WatchdogTest : public ScriptTest {
 protected:
  zelto::script::Watchdog& watchdog = engine.watchdog();
};

TEST_F(WatchdogTest, StopsNothingWhereNothingRuns) {
  EXPECT_EQ(zelto::script::kPageStopped, zelto::script::stop_page());
  EXPECT_FALSE(watchdog.is_unwinding());
  EXPECT_FALSE(zelto::script::is_unwinding());
}

TEST_F(WatchdogTest, UnwindsUntilTheOutermostLevelIsLeft) {
  watchdog.enter();
  watchdog.enter();
  zelto::script::stop_page();
  EXPECT_EQ(Outcome::stopped, watchdog.ending());
  EXPECT_TRUE(zelto::script::is_unwinding());
  EXPECT_FALSE(watchdog.leave());
  EXPECT_TRUE(zelto::script::is_unwinding());
  EXPECT_TRUE(watchdog.leave());
  EXPECT_FALSE(zelto::script::is_unwinding());
  watchdog.enter();
  EXPECT_EQ(Outcome::completed, watchdog.ending());
  EXPECT_TRUE(watchdog.leave());
}

TEST_F(WatchdogTest, KeepsTheFirstReason) {
  engine.set_time_limit(std::chrono::hours(1));
  watchdog.enter();
  EXPECT_FALSE(watchdog.must_unwind());
  watchdog.stop();
  engine.set_time_limit(std::chrono::milliseconds(1));
  const auto late = std::chrono::steady_clock::now() + std::chrono::milliseconds(2);
  while (std::chrono::steady_clock::now() < late) continue;
  EXPECT_TRUE(watchdog.must_unwind());
  EXPECT_EQ(Outcome::stopped, watchdog.ending());
  EXPECT_TRUE(watchdog.leave());
}

TEST_F(WatchdogTest, LeavesNoTerminationForTheNextPage) {
  watchdog.enter();
  watchdog.stop();
  watchdog.leave();
  must_run(L"for (var i = 0; i < 1e6; ++i) ;");
}

}  // namespace
}  // namespace test
