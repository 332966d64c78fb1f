#include "text/numbers.h"

#include <gtest/gtest.h>

namespace zelto {
namespace {

TEST(Numbers, AreTheWholeText) {
  EXPECT_EQ(1031, parse_number<int>("1031"));
  EXPECT_EQ(-5, parse_number<int>("-5"));
  EXPECT_EQ(0xFF, parse_number<unsigned char>("fF", 16));
  for (const char* text : {"", "-", "+1", " 1", "1 ", "1a", "0x1", "2147483648"}) {
    EXPECT_EQ(std::nullopt, parse_number<int>(text)) << text;
  }
  EXPECT_EQ(std::nullopt, parse_number<unsigned>("-1"));
}

}  // namespace
}  // namespace zelto
