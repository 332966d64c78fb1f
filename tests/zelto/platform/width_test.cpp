#include <gtest/gtest.h>
#include <korlib/winapi.h>

#include <string>

namespace {

constexpr unsigned int kComponentFullWidth = 0x80000000u;

// As the component calls it: the size first, then the mapping into exactly that size.
std::wstring map(unsigned int flags, const std::wstring& text) {
  const int length = static_cast<int>(text.size());
  const int size = LCMapStringW(0x110000, flags, text.data(), length, nullptr, 0);
  std::wstring mapped(static_cast<std::size_t>(size), L'\0');
  EXPECT_EQ(LCMapStringW(0x110000, flags, text.data(), length, mapped.data(), size), size);
  return mapped;
}

TEST(Width, MapsBothWays) {
  const struct {
    const wchar_t* half;
    const wchar_t* full;
  } rows[] = {
      {L"abc XYZ 019", L"\uFF41\uFF42\uFF43\u3000\uFF38\uFF39\uFF3A\u3000\uFF10\uFF11\uFF19"},
      {L"!\"#$~\\", L"\uFF01\uFF02\uFF03\uFF04\uFF5E\uFF3C"},
      {L"\uFF71\uFF72\uFF9D", L"\u30A2\u30A4\u30F3"},                    // katakana
      {L"\uFF76\uFF9E\uFF8A\uFF9F\uFF73\uFF9E", L"\u30AC\u30D1\u30F4"},  // voiced and semi-voiced
      {L"\uFF61\uFF62\uFF63\uFF64\uFF65\uFF70", L"\u3002\u300C\u300D\u3001\u30FB\u30FC"},
      {L"\u00A5\u00A2\u00A3\u20A9", L"\uFFE5\uFFE0\uFFE1\uFFE6"},                      // yen, cent, pound, won
      {L"\u6F22\u5B57\u3042\u00E9\U0001F600", L"\u6F22\u5B57\u3042\u00E9\U0001F600"},  // neither form
      {L"", L""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(map(kComponentFullWidth, row.half), row.full);
    EXPECT_EQ(map(LCMAP_FULLWIDTH, row.half), row.full);
    EXPECT_EQ(map(LCMAP_HALFWIDTH, row.full), row.half);
    EXPECT_EQ(map(LCMAP_HALFWIDTH, row.half), row.half);
    EXPECT_EQ(map(LCMAP_FULLWIDTH, row.full), row.full);
  }
}

TEST(Width, MapsHangulJamoBothWays) {
  EXPECT_EQ(map(LCMAP_FULLWIDTH, L"\uFFA1"), L"\u1100");
  EXPECT_EQ(map(LCMAP_HALFWIDTH, L"\u1100"), L"\uFFA1");
}

TEST(Width, CountsUpToTheNulForANegativeLength) {
  EXPECT_EQ(LCMapStringW(0, LCMAP_FULLWIDTH, L"ab\0c", -1, nullptr, 0), 2);
}

TEST(Width, RefusesABufferThatIsTooSmall) {
  wchar_t buffer[1];
  EXPECT_EQ(LCMapStringW(0, LCMAP_HALFWIDTH, L"\u30AC", 1, buffer, 1), 0);  // becomes two characters
}

TEST(Width, RefusesWhatItCannotDo) {
  EXPECT_EQ(LCMapStringW(0, LCMAP_FULLWIDTH, nullptr, 1, nullptr, 0), 0);
  EXPECT_EQ(LCMapStringW(0, 0x100, L"a", 1, nullptr, 0), 0);
}

}  // namespace
