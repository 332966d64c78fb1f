// How a page is left, as the watchdog knows it.
#include "script/watchdog.h"

#include <atomic>
#include <chrono>
#include <cstdint>

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

TEST_F(WatchdogTest, ShowsByWhenTheScriptMustHaveEnded) {
  using std::chrono::hours;
  using Clock = std::chrono::steady_clock;
  std::atomic<std::int64_t> shown = 0;
  const auto deadline = [&] { return Clock::time_point(std::chrono::nanoseconds(shown)); };
  engine.show_deadline(shown);
  engine.set_time_limit(hours(1));
  EXPECT_EQ(0, shown);
  const auto before = Clock::now();
  watchdog.enter();
  const auto after = Clock::now();
  EXPECT_LE(before + hours(1), deadline());
  EXPECT_GE(after + hours(1), deadline());
  const auto first = deadline();
  watchdog.enter();
  engine.set_time_limit(hours(2));
  EXPECT_EQ(first + hours(1), deadline());
  watchdog.leave();
  EXPECT_EQ(first + hours(1), deadline());
  engine.set_time_limit(hours(0));
  EXPECT_EQ(0, shown) << "it may go on for ever";
  engine.set_time_limit(hours(1));
  watchdog.leave();
  EXPECT_EQ(0, shown);
}

TEST_F(WatchdogTest, LeavesNoTerminationForTheNextPage) {
  watchdog.enter();
  watchdog.stop();
  watchdog.leave();
  must_run(L"for (var i = 0; i < 1e6; ++i) ;");
}

}  // namespace
}  // namespace test
