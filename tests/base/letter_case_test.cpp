#include "base/letter_case.h"
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <compare>

namespace {

TEST(LetterCase, LowersTheLettersOfAsciiAndNothingElse) {
  EXPECT_EQ("az[@`\xC4", base::ascii_lowered("AZ[@`\xC4"));
  EXPECT_EQ(L"az[@`\u00C4", base::ascii_lowered(L"AZ[@`\u00C4"));
}

TEST(LetterCase, ComparesInAsciiByItsLettersOnly) {
  EXPECT_TRUE(base::equal_ascii("Content-Type", "content-TYPE"));
  EXPECT_TRUE(base::equal_ascii(L"", L""));
  EXPECT_FALSE(base::equal_ascii("a", "ab"));
  EXPECT_FALSE(base::equal_ascii("[", "{"));  // 32 apart, as letters are
  EXPECT_FALSE(base::equal_ascii(L"\u00C4", L"\u00E4"));
  EXPECT_FALSE(base::equal_ascii(L"k", L"\u212A"));  // the Kelvin sign
}

TEST(LetterCase, FoldsEveryAlphabetCharacterByCharacter) {
  EXPECT_EQ(L"\u00E4\u03C9\u0436k", base::folded(L"\u00C4\u03A9\u0416\u212A"));
  EXPECT_EQ(L"\u03C3\u03C3", base::folded(L"\u03C2\u03A3"));  // the sigma at the end of a word as well
  EXPECT_EQ(L"\u00DF\u0130", base::folded(L"\u00DF\u0130"));  // what would become two characters stays
  EXPECT_EQ(L"\U00010428", base::folded(L"\U00010400"));
}

TEST(LetterCase, ComparesFoldedTexts) {
  EXPECT_TRUE(base::equal_folded(L"\u00C4pfel", L"\u00E4PFEL"));
  EXPECT_FALSE(base::equal_folded(L"a", L"aa"));
  EXPECT_TRUE(base::FoldedEqual{}(L"A", L"a"));
  EXPECT_EQ(std::strong_ordering::equal, base::compare_folded(L"AbC", L"aBc"));
  EXPECT_EQ(std::strong_ordering::less, base::compare_folded(L"A", L"b"));
  EXPECT_EQ(std::strong_ordering::less, base::compare_folded(L"a", L"AA"));
  EXPECT_EQ(std::strong_ordering::less, base::compare_folded(L"_", L"Z"));  // by z
}

}  // namespace
