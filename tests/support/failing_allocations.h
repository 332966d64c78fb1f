// Memory that runs out. A program that is made of failing_allocations.cpp as well has allocators of its own
// in front of those of the host and the library; it is a program of its own for that.
//
// Every place that asks for memory fails once when a test counts up from 0 until nothing has failed:
//
//   const int failures = test::each_allocation_failing([&](int n) {
//     prepare();
//     const test::FailingAllocation failing(n);
//     act();
//     return failing.has_failed();
//   });
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>

namespace test {

// While one lives, the allocation after `n` others fails, and `times - 1` after it: of the thread that made it, or of
// all others. Those of `operator new`, of the runtime's strings and arrays, and, in builds without sanitizers, of
// realloc. Not of aligned_alloc: the network library takes memory for its own steps there, and does not stand that it
// fails.
class FailingAllocation {
 public:
  enum class On { this_thread, other_threads };
  static constexpr int kAll = std::numeric_limits<int>::max();

  explicit FailingAllocation(int n, int times = 1, On threads = On::this_thread);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  bool has_failed() const;
};

// Memory from malloc that runs out with the others: for libraries that are told where to get theirs.
void* fallible_malloc(std::size_t bytes);
void* fallible_realloc(void* block, std::size_t bytes);

// Blocks that `operator new` has given and that have not been given back, of all threads.
long live_allocations();

// Calls `attempt(n)` with 0, 1, 2 and so on for as long as it says that something has failed. How often it did.
template <class Attempt>
int each_allocation_failing(Attempt attempt) {
  int n = 0;
  while (attempt(n)) {
    if (testing::Test::HasFatalFailure()) return n;
    if (++n < 20'000) continue;
    ADD_FAILURE() << "there is no end to it";
    return n;
  }
  return n;
}

}  // namespace test
