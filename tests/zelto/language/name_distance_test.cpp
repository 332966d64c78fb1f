#include "language/name_distance.h"

#include <gtest/gtest.h>

namespace zelto::language {
namespace {

// Letters changed, added, left out, exchanged with a neighbour.
TEST(NameDistance, CountsSlipsOfThePen) {
  EXPECT_EQ(0U, name_distance(L"MoveNext", L"movenext"));
  EXPECT_EQ(1U, name_distance(L"MoveNext", L"MoveNex"));
  EXPECT_EQ(1U, name_distance(L"MoveNext", L"MoveNxet"));
  EXPECT_EQ(1U, name_distance(L"Write", L"Wriite"));
  EXPECT_EQ(3U, name_distance(L"kitten", L"sitting"));
  EXPECT_EQ(3U, name_distance(L"", L"abc"));
}

TEST(NameDistance, FindsTheNearestNameUnlessItIsAnotherWord) {
  const std::vector<std::wstring> names{L"MoveNext", L"MoveFirst", L"EOF"};
  EXPECT_EQ(L"MoveNext", nearest_name(names, L"movenxt"));
  EXPECT_EQ(L"MoveFirst", nearest_name(names, L"MoveFist"));
  EXPECT_EQ(L"", nearest_name(names, L"Close"));
  EXPECT_EQ(L"", nearest_name({std::wstring(65, L'a')}, std::wstring(65, L'a')));
}

}  // namespace
}  // namespace zelto::language
