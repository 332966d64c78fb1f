#include "base/near_names.h"

#include <gtest/gtest.h>

namespace base {
namespace {

// Letters changed, added, left out, exchanged with a neighbour.
TEST(NearNames, CountsSlipsOfThePen) {
  EXPECT_EQ(0U, name_distance(L"MoveNext", L"movenext"));
  EXPECT_EQ(1U, name_distance(L"MoveNext", L"MoveNex"));
  EXPECT_EQ(1U, name_distance(L"MoveNext", L"MoveNxet"));
  EXPECT_EQ(1U, name_distance(L"Write", L"Wriite"));
  EXPECT_EQ(3U, name_distance(L"kitten", L"sitting"));
  EXPECT_EQ(3U, name_distance(L"", L"abc"));
}

TEST(NearNames, FindsTheNearestNameUnlessItIsAnotherWord) {
  const std::vector<std::wstring> names{L"MoveNext", L"MoveFirst", L"EOF"};
  EXPECT_EQ(L"MoveNext", nearest_name(names, L"movenxt"));
  EXPECT_EQ(L"MoveFirst", nearest_name(names, L"MoveFist"));
  EXPECT_EQ(L"", nearest_name(names, L"Close"));
  EXPECT_EQ(L"", nearest_name({std::wstring(65, L'a')}, std::wstring(65, L'a')));
}

// Most short names are as near to each other.
TEST(NearNames, TakeAShortNameForNoneButItselfInOtherLetterCase) {
  EXPECT_EQ(L"", nearest_name({L"ab", L"b", L"id"}, L"a"));
  EXPECT_EQ(L"", nearest_name({L"ab", L"b", L"id"}, L"ic"));
  EXPECT_EQ(L"ID", nearest_name({L"ab", L"ID"}, L"id"));
  EXPECT_EQ(L"uid", nearest_name({L"uid"}, L"udi"));
}

TEST(NearNames, TakeTwoLettersForThreeOfWhichOneIsLeftOut) {
  EXPECT_EQ(L"Add", nearest_name({L"Item", L"Add"}, L"Ad"));
  EXPECT_EQ(L"run", nearest_name({L"run"}, L"rn"));
  EXPECT_EQ(L"", nearest_name({L"tab"}, L"ab"));
  EXPECT_EQ(L"", nearest_name({L"Add"}, L"Af"));
  EXPECT_EQ(L"AD", nearest_name({L"Add", L"AD"}, L"ad")) << "itself comes first";
}

TEST(NearNames, AreAskedForInWords) {
  EXPECT_EQ(L"did you mean 'MoveNext'?", did_you_mean({L"MoveNext", L"EOF"}, L"MoveNex"));
  EXPECT_EQ(L"", did_you_mean({L"MoveNext", L"EOF"}, L"Close"));
}

}  // namespace
}  // namespace base
