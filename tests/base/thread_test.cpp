#include "base/thread.h"
// The header stands alone when it is included first.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

namespace {

constexpr std::size_t kStack = std::size_t{4} << 20;

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

TEST(Thread, GivesItsStackBack) {
  void* page = nullptr;  // of its stack
  base::run_on_thread(kStack, [&page] {
    auto* const here = static_cast<char*>(__builtin_frame_address(0));
    page = here - reinterpret_cast<std::uintptr_t>(here) % static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    EXPECT_EQ(0, ::msync(page, 1, MS_ASYNC));
  });
  EXPECT_EQ(-1, ::msync(page, 1, MS_ASYNC));
  EXPECT_EQ(ENOMEM, errno) << "nothing is mapped there";
}

[[gnu::noinline]] std::size_t room_below(std::size_t bytes) {
  volatile char block[64 * 1024];
  block[0] = 0;
  const std::size_t below = bytes > sizeof block ? room_below(bytes - sizeof block) : base::stack_room();
  block[1] = block[0];  // the block is needed until here
  return below;
}

TEST(StackRoom, IsWhatTheThreadsStackHasLeft) {
  std::size_t room = 0;
  base::run_on_thread(kStack, [&] { room = base::stack_room(); });
  EXPECT_LT(kStack / 2, room);
  EXPECT_GT(kStack, room);
}

TEST(StackRoom, ShrinksWithEachCall) {
  std::size_t above = 0;
  std::size_t below = 0;
  base::run_on_thread(kStack, [&] {
    above = base::stack_room();
    below = room_below(std::size_t{1} << 20);
  });
  EXPECT_LE(std::size_t{1} << 20, above - below);
}

TEST(StackRoom, IsOneThreadsOwn) {
  std::size_t small = 0;
  std::size_t large = 0;
  base::run_on_thread(kStack, [&] { small = base::stack_room(); });
  base::run_on_thread(2 * kStack, [&] { large = base::stack_room(); });
  EXPECT_LT(small + kStack / 2, large);
}

TEST(StackRoom, IsNotThatOfAnotherThreadThatHasEnded) {
  base::run_on_thread(kStack, [] {});
  std::size_t room = 0;
  base::run_on_thread(kStack / 2, [&] { room = base::stack_room(); });
  EXPECT_GT(kStack / 2, room);
}

TEST(Waking, InterruptsNobodyOnceAThreadHasSaidSo) {
  int own = -1;
  int of_its_thread = -1;
  base::run_on_thread(kStack, [&] {
    base::wake_without_interrupting();
    own = ::sched_getscheduler(0);
    base::run_on_thread(kStack, [&] { of_its_thread = ::sched_getscheduler(0); });
  });
  EXPECT_EQ(SCHED_BATCH, own);
  EXPECT_EQ(SCHED_BATCH, of_its_thread);
  EXPECT_EQ(SCHED_OTHER, ::sched_getscheduler(0)) << "of the thread that began it";
}

}  // namespace
