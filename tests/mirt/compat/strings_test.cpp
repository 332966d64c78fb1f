#include <clocale>
#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

#include "mirt/compat/fallbacks.h"

namespace test {
namespace {

using StringFallbacks = Fallbacks;

TEST_F(StringFallbacks, WcsicmpComparesLetterCase) {
  EXPECT_NE(0, FALLBACK(_wcsicmp)(L"abc", L"ABC"));
  EXPECT_GT(FALLBACK(_wcsicmp)(L"abc", L"ABC"), 0);
  EXPECT_EQ(0, FALLBACK(_wcsicmp)(L"abc", L"abc"));
  EXPECT_LT(FALLBACK(_wcsicmp)(L"ab", L"abc"), 0);
}

TEST_F(StringFallbacks, WcsnicmpComparesPaths) {
  const struct {
    const wchar_t* a;
    const wchar_t* b;
    std::size_t count;
    int expected;
  } rows[] = {
      {L"A\\b", L"a/B", 3, 0},
      {L"a/B", L"A\\b", 3, 0},
      {L"abc", L"ABD", 2, 0},
      {L"abc", L"ABD", 3, -1},
      {L"abd", L"ABC", 3, 1},
      {L"abc", L"xyz", 0, 0},
      {L"abc", L"ABC", 100, 0},
      {L"ab", L"abc", 100, -1},
      {L"abc", L"ab", 100, 1},
      {L"", L"", 5, 0},
      {L"", L"a", 5, -1},
      {L"a", L"", 5, 1},
      {L"B", L"a", 1, 1},  // b after a
      {L"Z", L"[", 1, 1},  // z after [: compared in lower case
      {L"[", L"Z", 1, -1},
      {L"@", L"A", 1, -1},  // the neighbours of the letters are themselves
      {L"@", L"`", 1, -1},
      {L"[", L"{", 1, -1},
      {L"a/b/C/d", L"A\\B\\c\\e", 7, -1},
      // Slashes are equal to each other only: beside anything else each counts as what it is.
      {L"\\", L"0", 1, 1},
      {L"/", L"0", 1, -1},
      {L"0", L"\\", 1, -1},
      {L"\\", L"a", 1, -1},
      {nullptr, nullptr, 5, 0},
      {nullptr, L"a", 5, -1},
      {L"a", nullptr, 5, 1},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.expected, FALLBACK(_wcsnicmp)(row.a, row.b, row.count))
        << testing::PrintToString(row.a) << " " << testing::PrintToString(row.b) << " " << row.count;
  }
}

// Every character is folded that the locale folds, on both sides, and what it does not fold is compared.
TEST_F(StringFallbacks, WcsnicmpFoldsLettersOfEveryScript) {
  const std::string before = std::setlocale(LC_CTYPE, nullptr);
  ASSERT_NE(nullptr, std::setlocale(LC_CTYPE, "C.UTF-8"));
  for (const auto& [upper, lower] :
       {std::pair(L"\u00C9", L"\u00E9"), std::pair(L"\u0416", L"\u0436"), std::pair(L"\u03A9", L"\u03C9"),
        std::pair(L"\uFF21", L"\uFF41"), std::pair(L"\U00010400", L"\U00010428")}) {
    EXPECT_EQ(0, FALLBACK(_wcsnicmp)(upper, lower, 1)) << testing::PrintToString(upper);
    EXPECT_EQ(0, FALLBACK(_wcsnicmp)(lower, upper, 1)) << testing::PrintToString(upper);
    EXPECT_EQ(1, FALLBACK(_wcsnicmp)(upper, L"z", 1)) << testing::PrintToString(upper);
    EXPECT_EQ(-1, FALLBACK(_wcsnicmp)(L"Z", lower, 1)) << testing::PrintToString(upper);
  }
  EXPECT_EQ(1, FALLBACK(_wcsnicmp)(L"\u00DF", L"ss", 2));       // no letter becomes two
  EXPECT_EQ(-1, FALLBACK(_wcsnicmp)(L"\u00E8", L"\u00C9", 1));  // e grave before e acute, in lower case
  EXPECT_EQ(1, FALLBACK(_wcsnicmp)(L"\u20AC", L"\u00A4", 1));
  std::setlocale(LC_CTYPE, before.c_str());
}

TEST_F(StringFallbacks, WcstombsKeepsSevenBits) {
  char target[16];
  std::size_t converted = 99;
  EXPECT_EQ(0, FALLBACK(wcstombs_s)(&converted, target, L"\u00E9", sizeof target));
  EXPECT_EQ(std::string("\x69"), target);
  EXPECT_EQ(2u, converted);
  EXPECT_EQ(0, FALLBACK(wcstombs_s)(&converted, target, L"abc", sizeof target));
  EXPECT_EQ(std::string("abc"), target);
  EXPECT_EQ(4u, converted);
  EXPECT_EQ(0, FALLBACK(wcstombs_s)(nullptr, target, L"", sizeof target));
  EXPECT_EQ(std::string(), target);
}

TEST_F(StringFallbacks, WcstombsStaysWithinItsCount) {
  char target[8];
  std::size_t converted = 0;
  std::memset(target, '#', sizeof target);
  EXPECT_EQ(0, FALLBACK(wcstombs_s)(&converted, target, L"abcdef", 4));
  EXPECT_EQ(0, std::memcmp(target, "abc\0####", 8));
  EXPECT_EQ(4u, converted);
  EXPECT_EQ(0, FALLBACK(wcstombs_s)(&converted, target, L"x", 1));
  EXPECT_EQ('\0', target[0]);
  EXPECT_EQ(1u, converted);
  std::memset(target, '#', sizeof target);
  FALLBACK(wcstombs_s)(&converted, target, L"x", 0);
  EXPECT_EQ('#', target[0]);
  EXPECT_EQ(1, FALLBACK(wcstombs_s)(&converted, nullptr, L"x", 4));
  EXPECT_EQ(1, FALLBACK(wcstombs_s)(&converted, target, nullptr, 4));
}

TEST_F(StringFallbacks, MemcpyDoesNotLookAtTheTargetsSize) {
  char target[8] = "#######";
  EXPECT_EQ(0, FALLBACK(memcpy_s)(target, 1, "abc", 3));
  EXPECT_EQ(std::string("abc####"), target);
  EXPECT_EQ(0, FALLBACK(memcpy_s)(nullptr, 0, nullptr, 0));
}

TEST_F(StringFallbacks, SwprintfTellsSuccessOnly) {
  wchar_t buffer[6];
  EXPECT_EQ(0, FALLBACK(swprintf_s)(buffer, 6, L"%d-%ls", 12, L"ab"));
  EXPECT_EQ(std::wstring(L"12-ab"), buffer);
  EXPECT_EQ(1, FALLBACK(swprintf_s)(buffer, 6, L"%d-%ls", 12, L"abc"));
  EXPECT_EQ(1, FALLBACK(swprintf_s)(buffer, 1, L"x"));
  EXPECT_EQ(0, FALLBACK(swprintf_s)(buffer, 1, L""));
}

TEST_F(StringFallbacks, SscanfCountsItsConversions) {
  unsigned value = 0;
  int number = 0;
  EXPECT_EQ(2, FALLBACK(sscanf_s)("1f 42", "%x %d", &value, &number));
  EXPECT_EQ(0x1Fu, value);
  EXPECT_EQ(42, number);
  EXPECT_EQ(0, FALLBACK(sscanf_s)("zz", "%x", &value));
  EXPECT_EQ(-1, FALLBACK(sscanf_s)("", "%x", &value));
}

TEST_F(StringFallbacks, LCMapStringCopies) {
  const auto map = [this](const wchar_t* source, int length, int room) {
    std::vector<wchar_t> target(static_cast<std::size_t>(room) + 1, L'#');
    const int result = FALLBACK(LCMapStringW)(0, 0x80000000u, source, length, target.data(), room);
    EXPECT_EQ(L'#', target.back()) << "written beyond the buffer";
    return std::pair<int, std::wstring>(result, target.data());
  };
  using Mapped = std::pair<int, std::wstring>;
  EXPECT_EQ((Mapped{3, L"abc"}), map(L"abc", 3, 4));
  EXPECT_EQ((Mapped{3, L"abc"}), map(L"abc", -1, 9));
  EXPECT_EQ((Mapped{2, L"ab"}), map(L"abc", 3, 3));
  EXPECT_EQ((Mapped{2, L"ab"}), map(L"abc", -1, 3));
  EXPECT_EQ((Mapped{0, L""}), map(L"abc", 3, 1));
  EXPECT_EQ((Mapped{0, L""}), map(L"abc", 0, 4));
  EXPECT_EQ((Mapped{2, L"ab"}), map(L"abc", 2, 9));
  EXPECT_EQ(5, FALLBACK(LCMapStringW)(0, 0, L"a\0bcd", 5, std::vector<wchar_t>(9).data(), 9));
}

TEST_F(StringFallbacks, LCMapStringCountsTheNulInItsSizeOnly) {
  wchar_t buffer[4];
  EXPECT_EQ(4, FALLBACK(LCMapStringW)(0, 0, L"abc", 3, nullptr, 0));
  EXPECT_EQ(4, FALLBACK(LCMapStringW)(0, 0, L"abc", 3, nullptr, 9));
  EXPECT_EQ(4, FALLBACK(LCMapStringW)(0, 0, L"abc", 3, buffer, 0));
  EXPECT_EQ(4, FALLBACK(LCMapStringW)(0, 0, L"abc", 3, buffer, -1));
  EXPECT_EQ(0, FALLBACK(LCMapStringW)(0, 0, L"abc", -1, nullptr, 0));
  EXPECT_EQ(1, FALLBACK(LCMapStringW)(0, 0, L"", 0, nullptr, 0));
  EXPECT_EQ(0, FALLBACK(LCMapStringW)(0, 0, nullptr, 3, buffer, 4));
  EXPECT_EQ(0, FALLBACK(LCMapStringW)(0, 0, nullptr, 3, nullptr, 0));
}

TEST_F(StringFallbacks, FormatMessageKnowsNone) {
  wchar_t buffer[8] = L"before";
  EXPECT_EQ(0u, FALLBACK(FormatMessageW)(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, 5, 0, buffer, 8, nullptr));
  EXPECT_EQ(std::wstring(L"before"), buffer);
}

TEST_F(StringFallbacks, IdentifiersAreComparedByBytes) {
  constexpr GUID a = korlib::guid("717FA104-3BC5-4B9E-8112-106B75FD22C4");
  EXPECT_TRUE(FALLBACK(IsEqualGUID)(a, a));
  for (std::size_t i = 0; i < sizeof(GUID); ++i) {
    GUID b = a;
    reinterpret_cast<unsigned char*>(&b)[i] ^= 1;
    EXPECT_FALSE(FALLBACK(IsEqualGUID)(a, b)) << i;
  }
}

}  // namespace
}  // namespace test
