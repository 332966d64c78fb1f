#include "base/growing_buffer.h"
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <new>
#include <string_view>

namespace {

using base::GrowingBuffer;

GrowingBuffer holding(std::string_view bytes) {
  GrowingBuffer buffer;
  buffer.grow(bytes.size() + 10);
  std::memcpy(buffer.data(), bytes.data(), bytes.size());
  buffer.set_size(bytes.size());
  return buffer;
}

TEST(GrowingBuffer, IsEmptyAndHoldsNoMemoryAtFirst) {
  GrowingBuffer buffer;
  EXPECT_EQ(0u, buffer.size());
  EXPECT_EQ(0u, buffer.capacity());
  EXPECT_EQ("", buffer.view());
  EXPECT_EQ(nullptr, buffer.release());
}

TEST(GrowingBuffer, KeepsItsBytesWhileItGrows) {
  GrowingBuffer buffer = holding("abc");
  buffer.grow(std::size_t{10} << 20);
  EXPECT_EQ("abc", buffer.view());
  EXPECT_EQ(std::size_t{10} << 20, buffer.capacity());
}

TEST(GrowingBuffer, IsUnchangedWhereThereIsNoMemory) {
#ifdef KOR_SANITIZED
  GTEST_SKIP() << "a sanitizer ends the program that asks for so much";
#endif
  GrowingBuffer buffer = holding("abc");
  // Not a constant, so that the compiler does not refuse what must fail.
  volatile std::size_t too_much = std::numeric_limits<std::ptrdiff_t>::max();
  EXPECT_THROW(buffer.grow(too_much), std::bad_alloc);
  EXPECT_EQ("abc", buffer.view());
  EXPECT_EQ(13u, buffer.capacity());
}

TEST(GrowingBuffer, MovesAndGivesItsMemoryAwayWithoutACopy) {
  GrowingBuffer buffer = holding("abc");
  const char* const at = buffer.data();
  GrowingBuffer moved(std::move(buffer));
  GrowingBuffer assigned = holding("other");
  assigned = std::move(moved);
  EXPECT_EQ("abc", assigned.view());
  const GrowingBuffer::Memory memory = assigned.release();
  EXPECT_EQ(at, memory.get());
  EXPECT_EQ(0u, assigned.size());
  EXPECT_EQ(0u, assigned.capacity());
}

}  // namespace
