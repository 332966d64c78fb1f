#include "text/characters.h"

#include <gtest/gtest.h>

namespace zelto {
namespace {

TEST(Characters, AreControlsBelowTheBlankAndAtTheEndOfAscii) {
  for (const char c : {'\0', '\t', '\r', '\n', '\x1F', '\x7F'}) EXPECT_TRUE(is_control(c)) << int{c};
  for (const char c : {' ', '~', 'a', '\x80', '\xFF'}) EXPECT_FALSE(is_control(c)) << int{c};
}

TEST(Characters, MakeOneLineOfATextOfSeveral) { EXPECT_EQ("a  b c \xC3\xA9", plain_line("a\r\nb\tc\x1B\xC3\xA9")); }

}  // namespace
}  // namespace zelto
