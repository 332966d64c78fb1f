// How a page is left, as the watchdog knows it.
#include "script/watchdog.h"

#include <dlfcn.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

#include "zelto/script/script_fixture.h"

namespace {

std::atomic<int> g_timers_set = 0;

}  // namespace

// The engine's timers are sources of its main loop; those of the watchdog are known by how long they run.
extern "C" __attribute__((visibility("default"))) void g_source_set_ready_time(void* source,
                                                                               std::int64_t microseconds) {
  using Function = void(void*, std::int64_t);
  static auto* const real = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, "g_source_set_ready_time"));
  const std::chrono::steady_clock::time_point at{std::chrono::microseconds(microseconds)};
  const auto left = at - std::chrono::steady_clock::now();
  if (left > std::chrono::milliseconds(245) && left <= std::chrono::milliseconds(250)) ++g_timers_set;
  real(source, microseconds);
}

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

// It aborts when two of its timers are up at once, one of them while it handles the other.
class EngineTimers : public ScriptTest {
 protected:
  static constexpr auto kLook = std::chrono::milliseconds(250);

  EngineTimers() { engine.set_time_limit(std::chrono::hours(1)); }
  // How many timers the engine sets meanwhile.
  template <class Function>
  static int set_by(Function function) {
    const int before = g_timers_set;
    function();
    return g_timers_set - before;
  }
  // Runs it again and again, each time as a page of its own.
  void run_for(std::chrono::milliseconds time, std::wstring_view script) {
    const auto program = zelto::language::compile(script, "/site/page.asp");
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end) EXPECT_EQ(Outcome::completed, realm->run(program).kind);
  }
};

TEST_F(EngineTimers, AreOneAtATimeBehindAPause) {
  for (int round = 0; round < 3; ++round) {
    // What it has set is up while nothing runs.
    std::this_thread::sleep_for(kLook + std::chrono::milliseconds(50));
    const auto began = std::chrono::steady_clock::now();
    const int set = set_by([this] { run_for(kLook / 2, L"for (var i = 0; i < 100; i++) (function () {})()"); });
    EXPECT_GE(set, 1);
    // One more for each that has run out, on a machine that is busy with other things.
    EXPECT_LE(set, 1 + (std::chrono::steady_clock::now() - began) / kLook);
  }
}

TEST_F(EngineTimers, AreOneAtATimeInALongScript) {
  EXPECT_GE(3, set_by([this] { must_run(L"for (var end = Date.now() + 600; Date.now() < end;);"); }));
}

TEST_F(EngineTimers, AreOneAtATimeInAChainOfPromises) {
  EXPECT_GE(
      3, set_by([this] {
        must_run(L"var end = Date.now() + 600; function f() { if (Date.now() < end) Promise.resolve().then(f) } f()");
      }));
}

}  // namespace
}  // namespace test
