#include <atomic>
#include <chrono>
#include <latch>
#include <thread>
#include <vector>

#include "mirt/compat/fallbacks.h"

namespace test {
namespace {

using SyncFallbacks = Fallbacks;

TEST_F(SyncFallbacks, CriticalSectionsArePlainMutexes) {
  CRITICAL_SECTION section;
  FALLBACK(InitializeCriticalSection)(&section);
  FALLBACK(EnterCriticalSection)(&section);
  EXPECT_NE(0, pthread_mutex_trylock(&section));  // not even by the thread that holds it
  FALLBACK(LeaveCriticalSection)(&section);
  EXPECT_EQ(0, pthread_mutex_trylock(&section));
  FALLBACK(LeaveCriticalSection)(&section);
  FALLBACK(DeleteCriticalSection)(&section);
}

TEST_F(SyncFallbacks, CriticalSectionsKeepThreadsApart) {
  CRITICAL_SECTION section;
  FALLBACK(InitializeCriticalSection)(&section);
  long shared = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int n = 0; n < 1000; ++n) {
        FALLBACK(EnterCriticalSection)(&section);
        ++shared;
        FALLBACK(LeaveCriticalSection)(&section);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  FALLBACK(DeleteCriticalSection)(&section);
  EXPECT_EQ(4000, shared);
}

TEST_F(SyncFallbacks, InterlockedOperationsAnswerTheNewValue) {
  long value = 41;
  EXPECT_EQ(42, FALLBACK(InterlockedIncrement)(&value));
  EXPECT_EQ(41, FALLBACK(InterlockedDecrement)(&value));
  value = 0xFFFFFFFFl;  // all 64 bits count
  EXPECT_EQ(0x100000000l, FALLBACK(InterlockedIncrement)(&value));
  value = 0;
  EXPECT_EQ(-1, FALLBACK(InterlockedDecrement)(&value));
}

TEST_F(SyncFallbacks, InterlockedOperationsLoseNothing) {
  constexpr int kThreads = 4;
  long value = 0;
  std::latch together(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, up = i % 2 == 0] {
      together.arrive_and_wait();
      for (int n = 0; n < 100'000; ++n)
        up ? FALLBACK(InterlockedIncrement)(&value) : FALLBACK(InterlockedDecrement)(&value);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, value);
}

TEST_F(SyncFallbacks, TicksAreMillisecondsOfTheMonotonicClock) {
  const auto now = [] {
    const auto since = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<unsigned long>(std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
  };
  const unsigned long before = now();
  const unsigned long ticks = FALLBACK(GetTickCount)();
  EXPECT_LE(before, ticks);
  EXPECT_LE(ticks, now());
}

TEST_F(SyncFallbacks, SleepTakesItsTime) {
  const auto start = std::chrono::steady_clock::now();
  FALLBACK(Sleep)(2);
  EXPECT_LE(std::chrono::milliseconds(2), std::chrono::steady_clock::now() - start);
  FALLBACK(Sleep)(0);
}

TEST_F(SyncFallbacks, ThreadCallsAreDisabledInNameOnly) {
  EXPECT_EQ(TRUE, FALLBACK(DisableThreadLibraryCalls)(nullptr));
}

}  // namespace
}  // namespace test
