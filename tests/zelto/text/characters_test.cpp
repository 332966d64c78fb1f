#include "text/characters.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string_view>

namespace zelto {
namespace {

TEST(Characters, AreControlsBelowTheBlankAndAtTheEndOfAscii) {
  for (const char c : {'\0', '\t', '\r', '\n', '\x1F', '\x7F'}) EXPECT_TRUE(is_control(c)) << int{c};
  for (const char c : {' ', '~', 'a', '\x80', '\xFF'}) EXPECT_FALSE(is_control(c)) << int{c};
}

TEST(Characters, AreControlsWhereTerminalsTakeThemForSome) {
  // Each with how many bytes it has as a control, between its neighbours and what is cut off.
  struct Row {
    std::string_view text;
    std::size_t length;
  };
  for (const Row& row : {Row{"\x1B[", 1}, Row{"\xC2\x80", 2}, Row{"\xC2\x9F", 2}, Row{"\xC2\xA0", 0},
                         Row{"\xC3\x80", 0}, Row{"\xC2", 0}, Row{"\xE2\x80\xA7", 0}, Row{"\xE2\x80\xA8", 3},
                         Row{"\xE2\x80\xA9", 3}, Row{"\xE2\x80\xAA", 0}, Row{"\xE2\x80", 0}, Row{"", 0}})
    EXPECT_EQ(row.length, control_length(row.text)) << row.text;
}

TEST(Characters, MakeOneLineOfATextOfSeveral) {
  EXPECT_EQ("a  b c \xC3\xA9", plain_line("a\r\nb\tc\x1B\xC3\xA9"));
  EXPECT_EQ("a b c d \xC2", plain_line("a\xC2\x85"
                                       "b\xE2\x80\xA8"
                                       "c\xE2\x80\xA9"
                                       "d\xC2\x9B\xC2"));
}

// A name in the log read "gpj.exe" from behind.
TEST(Characters, TurnNoLineOfALog) {
  EXPECT_EQ("a\\u202Eb\\u2069\\u061C \\u200Fc", plain_line("a\xE2\x80\xAE"
                                                           "b\xE2\x81\xA9\xD8\x9C \xE2\x80\x8F"
                                                           "c"));
  EXPECT_EQ("\xE2\x80\xA6\xD8\xA7\xE2\x80", plain_line("\xE2\x80\xA6\xD8\xA7\xE2\x80")) << "an ellipsis, a letter";
}

TEST(Characters, AreNeverCutInTheMiddle) {
  const std::string_view text = "a\xC3\xA4\xE2\x82\xAC!";  // of 1, 2, 3 and 1 bytes
  const std::size_t kept[] = {0, 1, 1, 3, 3, 3, 6, 7, 7};
  for (std::size_t room = 0; room < std::size(kept); ++room) {
    EXPECT_EQ(text.substr(0, kept[room]), beginning_of(text, room)) << room;
  }
  EXPECT_EQ("", beginning_of("\x80\x80\x80", 2)) << "text that is not UTF-8 begins nowhere";
}

}  // namespace
}  // namespace zelto
