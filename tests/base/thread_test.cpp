#include "base/thread.h"
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

namespace {

constexpr std::size_t kStack = std::size_t{1} << 20;

TEST(Thread, RunsItsBodyAndIsJoinedWhenItGoes) {
  std::atomic<bool> has_run = false;
  std::thread::id id;
  {
    base::Thread thread(kStack, [&] {
      id = std::this_thread::get_id();
      has_run = true;
    });
    const base::Thread moved(std::move(thread));
  }
  EXPECT_TRUE(has_run);
  EXPECT_NE(std::this_thread::get_id(), id);
}

TEST(Thread, SaysThatTheSystemHasNoStackForIt) {
  try {
    const base::Thread thread(std::numeric_limits<std::size_t>::max() / 4, [] { FAIL(); });
    FAIL();
  } catch (const std::system_error& error) {
    EXPECT_NE(std::string::npos, std::string(error.what()).find("starting a thread"));
  }
}

TEST(Thread, HandsOnWhatIsThrownOnAThreadThatIsWaitedFor) {
  bool has_run = false;
  base::run_on_thread(kStack, [&] { has_run = true; });
  EXPECT_TRUE(has_run);
  try {
    base::run_on_thread(kStack, [] { throw std::runtime_error("broken"); });
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ("broken", error.what());
  }
}

}  // namespace
