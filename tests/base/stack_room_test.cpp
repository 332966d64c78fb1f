#include "base/stack_room.h"
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include "base/thread.h"

namespace {

constexpr std::size_t kStack = std::size_t{4} << 20;

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

}  // namespace
