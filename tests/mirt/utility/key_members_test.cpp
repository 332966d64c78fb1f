#include <cwchar>
#include <set>

#include "mirt/utility/utility_objects.h"

namespace test {
namespace {

using KeyMembers = UtilityMembers;
ON_BOTH_OBJECTS(KeyMembers);

TEST_P(KeyMembers, MakeKeyDrawsFromItsAlphabet) {
  // Every letter of a long enough key turns up; 10,000 draws miss one of 16 with a chance below 1e-279.
  const std::wstring sixteen = text(L"MakeKey", 10'000, L"0123456789ABCDEF");
  EXPECT_EQ(16u, std::set<wchar_t>(sixteen.begin(), sixteen.end()).size());
}

TEST_P(KeyMembers, MakeKeyRefusesTheFirstLengthThatNoStringHas) {
  EXPECT_EQ(kNoMemory, text(L"MakeKey", 0x7FFFFFF0 / 4, L"ab"));
}

TEST_P(KeyMembers, MakeGUIDMakesANewOneEachTime) { EXPECT_NE(text(L"MakeGUID", true), text(L"MakeGUID", true)); }

}  // namespace
}  // namespace test
