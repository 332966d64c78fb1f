#include "text/percent_coding.h"

#include <gtest/gtest.h>

namespace zelto {
namespace {

TEST(PercentCoding, ReadsTheEscapeInFront) {
  EXPECT_EQ('a', escaped_byte("%61"));
  EXPECT_EQ('/', escaped_byte("%2f and more"));
  EXPECT_EQ('\xFF', escaped_byte("%fF"));
  EXPECT_EQ('\0', escaped_byte("%00"));
}

TEST(PercentCoding, ReadsNoEscapeFromAnythingElse) {
  for (const char* text : {"", "%", "%6", "%6g", "%g6", "%-1", "%+1", "% 1", "%1 ", "%0x", "a%61", "61"}) {
    EXPECT_EQ(std::nullopt, escaped_byte(text)) << text;
  }
}

TEST(PercentCoding, EscapesWhatMayNotStay) {
  const auto stays = [](char c) { return c == 'a' || c == '%'; };
  EXPECT_EQ("a%62%00%", percent_encode(std::string_view("ab\0%", 4), stays));
  EXPECT_EQ("", percent_encode("", stays));
}

TEST(PercentCoding, WritesFormsWithPlusForABlank) {
  EXPECT_EQ("azAZ09-_.", form_encode("azAZ09-_."));
  EXPECT_EQ("a+b%2B%7E%25%26%3D%2F%0D%0A%C3%A9", form_encode("a b+~%&=/\r\n\xC3\xA9"));
}

TEST(PercentCoding, ReadsFormsAndLeavesWhatIsNoEscape) {
  EXPECT_EQ("a b&z", form_decode("a+b%26z"));
  EXPECT_EQ("\xE3\x81\x82", form_decode("%E3%81%82"));
  EXPECT_EQ("100%", form_decode("100%"));
  EXPECT_EQ("%zz%4", form_decode("%zz%4"));
  EXPECT_EQ("% 1+", form_decode("%+1%2b"));
}

TEST(PercentCoding, ReadsBackWhatItWrote) {
  std::string every_byte;
  for (int byte = 0; byte < 256; ++byte) every_byte += static_cast<char>(byte);
  EXPECT_EQ(every_byte, form_decode(form_encode(every_byte)));
}

TEST(PercentCoding, EscapesWhatNoAddressHolds) {
  EXPECT_EQ("/a%22%3C%3E%5C%5E%60%7B%7C%7D~!%C3%A9?b=%20#c", escape_url("/a\"<>\\^`{|}~!\xC3\xA9?b=%20#c"));
  EXPECT_EQ("%20%00%7F+", escape_url(std::string_view(" \0\x7F+", 4)));
}

}  // namespace
}  // namespace zelto
