#include "base/keyed_hash.h"
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <set>

namespace {

std::size_t hash_of(std::uint64_t salt, std::initializer_list<std::uint64_t> words) {
  base::KeyedHash hash(salt);
  for (const std::uint64_t word : words) hash.add(word);
  return hash.finish();
}

TEST(KeyedHash, IsTheSameForTheSameWords) { EXPECT_EQ(hash_of(1, {2, 3}), hash_of(1, {2, 3})); }

TEST(KeyedHash, DependsOnTheSaltTheWordsAndTheirOrder) {
  const std::set<std::size_t> hashes = {hash_of(0, {}),     hash_of(1, {}),     hash_of(0, {0}),   hash_of(0, {0, 0}),
                                        hash_of(0, {1, 2}), hash_of(0, {2, 1}), hash_of(1, {1, 2})};
  EXPECT_EQ(7u, hashes.size());
}

// A table takes some bits of a hash for its places: numbers in a row must not share them.
TEST(KeyedHash, SpreadsNumbersInARow) {
  std::set<std::size_t> low_bits;
  for (std::uint64_t i = 0; i < 4096; ++i) low_bits.insert(hash_of(0, {i}) & 0xFFFF);
  EXPECT_LT(3800u, low_bits.size());
}

TEST(KeyedHash, TellsTextsApartByEveryCharacterAndTheirNumber) {
  const auto of = [](std::wstring_view text) {
    base::KeyedHash hash(0);
    hash.add_text(text, [](wchar_t c) { return c; });
    return hash.finish();
  };
  const std::wstring_view zeros(L"\0\0\0", 3);
  const std::set<std::size_t> hashes = {of(L""),
                                        of(zeros.substr(0, 1)),
                                        of(zeros.substr(0, 2)),
                                        of(zeros),
                                        of(L"a"),
                                        of(L"ab"),
                                        of(L"ba"),
                                        of(L"abc"),
                                        of(L"abd"),
                                        of(L"acb")};
  EXPECT_EQ(10u, hashes.size());
  EXPECT_EQ(of(L"abc"), of(std::wstring(L"abc")));
}

TEST(KeyedHash, OfANameIsTheSameInAnyLetterCase) {
  const base::FoldedHash hash;
  EXPECT_EQ(hash(L"stra\u00DFe \u00C4"), hash(L"STRA\u00DFE \u00E4"));
  EXPECT_NE(hash(L"a"), hash(L"b"));
}

}  // namespace
