#include "base/ascii.h"
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <string_view>

namespace {

TEST(Ascii, TellsKindsOfAllCharactersOfAByte) {
  constexpr std::string_view kDigits = "0123456789", kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  for (int code = 0; code < 256; ++code) {
    const auto c = static_cast<char>(code);
    const bool is_digit = kDigits.find(c) != kDigits.npos, is_letter = kLetters.find(c) != kLetters.npos;
    EXPECT_EQ(is_digit, base::is_digit(c)) << code;
    EXPECT_EQ(is_letter, base::is_letter(c)) << code;
    EXPECT_EQ(is_digit || is_letter, base::is_alphanumeric(c)) << code;
  }
  EXPECT_FALSE(base::is_letter(L'\u00E4'));
  EXPECT_FALSE(base::is_letter(L'\u212A'));  // the Kelvin sign
  EXPECT_FALSE(base::is_digit(L'\u0663'));   // an Arabic three
}

TEST(Ascii, ChangesTheCaseOfLettersAndNothingElse) {
  for (int c = 0; c < 256; ++c) {
    const bool is_capital = c >= 'A' && c <= 'Z', is_small = c >= 'a' && c <= 'z';
    EXPECT_EQ(is_capital ? c + 32 : c, base::ascii_lower(c)) << c;
    EXPECT_EQ(is_small ? c - 32 : c, base::ascii_upper(c)) << c;
  }
}

TEST(Ascii, ReadsHexadecimalDigits) {
  EXPECT_EQ(0, base::hex_value('0'));
  EXPECT_EQ(9, base::hex_value('9'));
  EXPECT_EQ(10, base::hex_value('a'));
  EXPECT_EQ(15, base::hex_value(L'F'));
  for (const char c : {'/', ':', '@', 'G', '`', 'g', '\x10', '\xFF'}) EXPECT_EQ(-1, base::hex_value(c)) << c;
  EXPECT_EQ(-1, base::hex_value(L'\x11'));  // the bits of "1" but one
}

TEST(Ascii, TrimsWhatTheCallerTakesForBlank) {
  const auto is_star = [](char c) { return c == '*'; };
  EXPECT_EQ(" a*b ", base::trimmed(std::string_view("** a*b *"), is_star));
  EXPECT_EQ("", base::trimmed(std::string_view("***"), is_star));
  EXPECT_EQ("", base::trimmed(std::string_view(), is_star));
}

}  // namespace
