#include <korlib/text.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

std::wstring decoded(UINT code_page, std::string_view bytes) {
  const std::size_t length = codepage_utf32(code_page, bytes.data(), bytes.size(), nullptr, 0);
  if (length == kUnknownCodePage) return L"unknown code page";
  std::wstring text(length, L'?');
  EXPECT_EQ(length, codepage_utf32(code_page, bytes.data(), bytes.size(), text.data(), text.size()));
  return text;
}

TEST(CodePage, DecodesThePagesThatTemplatesAreSavedIn) {
  const struct {
    UINT code_page;
    std::string_view bytes;
    std::wstring_view text;
  } cases[] = {
      {65001, "\xE3\x81\x82", L"\x3042"},
      {932, "\x82\xA0\xB1\\~", L"\x3042\xFF71\\~"},
      {932, "\x87\x40", L"\x2460"},  // a circled 1, which only the Windows page has
      {51932, "\xA4\xA2", L"\x3042"},
      {20932, "\xA4\xA2", L"\x3042"},
      {50220, "\x1B$B$\"\x1B(B", L"\x3042"},
      {936, "\xC4\xE3", L"\x4F60"},
      {950, "\xA7\x41", L"\x4F60"},
      {949, "\xB0\xA1", L"\xAC00"},
      {54936, "\x81\x30\x81\x30", L"\x80"},
      {1250, "\x8A", L"\x160"},
      {1251, "\xC0", L"\x410"},
      {1252, "\x80\xE9", L"\x20AC\xE9"},
      {1254, "\xDD", L"\x130"},
      {28591, "\xA4\xE9", L"\xA4\xE9"},
      {28605, "\xA4", L"\x20AC"},  // ISO-8859-15 has the euro sign there
      {20866, "\xC1", L"\x430"},
      {437, "\x82", L"\xE9"},
      {1200, std::string_view("a\0\x42\x30", 4), L"a\x3042"},
      {1200, std::string_view("\x3D\xD8\x00\xDE", 4), L"\x1F600"},
      {1201, std::string_view("\0a\x30\x42", 4), L"a\x3042"},
      {12000, std::string_view("\x00\xF6\x01\x00", 4), L"\x1F600"},
      {20127, "plain", L"plain"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.text, decoded(c.code_page, c.bytes)) << c.code_page;
}

TEST(CodePage, ReplacesBytesThatThePageDoesNotDefine) {
  EXPECT_EQ(L"a\xFFFDz", decoded(1253, "a\xD2z"));
  EXPECT_EQ(L"\xFFFD", decoded(932, "\x82"));      // half a character at the end
  EXPECT_EQ(L"\xFFFD z", decoded(932, "\x82 z"));  // what cannot follow is read as itself
  EXPECT_EQ(L"\xFFFD", decoded(932, "\xFF"));
  EXPECT_EQ(L"a\xFFFD", decoded(20127, "a\xE9"));
  EXPECT_EQ(L"\xFFFD", decoded(1200, std::string_view("\x00\xD8", 2)));  // half a pair
}

// UTF-7 can spell halves of pairs that its decoder lets through.
TEST(CodePage, ReplacesHalvesOfPairsThatStandAlone) {
  EXPECT_EQ(L"\xFFFD", decoded(65000, "+2AA-"));  // D800, at the end
  EXPECT_EQ(L"\xFFFD\x61", decoded(65000, "+2AA-a"));
  EXPECT_EQ(L"\xFFFD\x61", decoded(65000, "+3AA-a"));  // DC00
}

TEST(CodePage, RefusesANumberThatIsNone) {
  for (const UINT code_page : {1u, 4711u, 0xFFFFFFFFu}) {
    EXPECT_EQ(kUnknownCodePage, codepage_utf32(code_page, "x", 1, nullptr, 0));
  }
}

TEST(CodePage, DecodesTextLongerThanAnyBuffer) {
  std::string bytes;
  std::wstring text;
  for (int i = 0; i < 3000; ++i) {
    bytes += "x\x82\xA0";
    text += L"x\x3042";
  }
  EXPECT_EQ(text, decoded(932, bytes));
  std::string pairs;
  std::wstring faces;
  for (int i = 0; i < 3000; ++i) {
    pairs += std::string("\x3D\xD8\x00\xDE", 4);
    faces += L'\x1F600';
  }
  EXPECT_EQ(L"a" + faces, decoded(1200, "a" + std::string(1, '\0') + pairs));
}

TEST(CodePage, WritesAtMostTheCapacity) {
  wchar_t out[3] = {L'~', L'~', L'~'};
  EXPECT_EQ(4u, codepage_utf32(1252, "abcd", 4, out, 2));
  EXPECT_EQ(L"ab~", std::wstring(out, 3));
}

// A converter is kept between calls; what one call leaves unfinished must not show in the next.
TEST(CodePage, BeginsEveryTextAnew) {
  EXPECT_EQ(L"\x3042", decoded(50220, "\x1B$B$\""));
  EXPECT_EQ(L"$\"", decoded(50220, "$\""));
  EXPECT_EQ(L"\xFFFD", decoded(932, "\x82"));
  EXPECT_EQ(L"\xFF71", decoded(932, "\xB1"));
}

TEST(CodePage, ServesMorePagesThanItKeeps) {
  for (int round = 0; round < 2; ++round) {
    for (UINT page = 1250; page <= 1258; ++page) EXPECT_EQ(L"az", decoded(page, "az"));
    for (const UINT page : {437u, 850u, 852u, 866u, 28592u}) EXPECT_EQ(L"az", decoded(page, "az"));
  }
}

}  // namespace
