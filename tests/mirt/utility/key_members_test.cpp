#include <cwchar>
#include <cwctype>
#include <set>

#include "mirt/utility/utility_objects.h"

namespace test {
namespace {

using KeyMembers = UtilityMembers;
ON_BOTH_OBJECTS(KeyMembers);

TEST_P(KeyMembers, MakeKeyDrawsFromItsAlphabet) {
  const std::wstring key = text(L"MakeKey", 8, L"01");
  EXPECT_EQ(8u, key.size());
  EXPECT_EQ(std::wstring::npos, key.find_first_not_of(L"01"));
  EXPECT_EQ(L"xxxxx", text(L"MakeKey", 5, L"x"));
  EXPECT_EQ(std::wstring(3, L'\U0001F600'), text(L"MakeKey", 3, L"\U0001F600"));
  EXPECT_EQ(L"", text(L"MakeKey", 0, L"ab"));
  // Every letter of a long enough key turns up; 10,000 draws miss one of 16 with a chance below 1e-279.
  const std::wstring sixteen = text(L"MakeKey", 10'000, L"0123456789ABCDEF");
  EXPECT_EQ(16u, std::set<wchar_t>(sixteen.begin(), sixteen.end()).size());
}

TEST_P(KeyMembers, MakeKeyRefusesWhatItCannotMake) {
  EXPECT_EQ(kBadArgument, text(L"MakeKey", 5, L""));
  EXPECT_EQ(kBadArgument, text(L"MakeKey", 0, L""));
  EXPECT_EQ(kBadArgument, text(L"MakeKey", -1, L"ab"));
  EXPECT_EQ(kBadArgument, text(L"MakeKey", -2147483647 - 1, L"ab"));
  EXPECT_EQ(kNoMemory, text(L"MakeKey", 2147483647, L"ab"));
  EXPECT_EQ(kNoMemory, text(L"MakeKey", 0x7FFFFFF0 / 4, L"ab"));  // the first length that no string has
}

TEST_P(KeyMembers, MakeGUIDWritesBothForms) {
  const std::wstring braced = text(L"MakeGUID", false);
  ASSERT_EQ(38u, braced.size());
  for (std::size_t i = 0; i < braced.size(); ++i) {
    const bool is_dash = i == 9 || i == 14 || i == 19 || i == 24;
    const wchar_t expected = i == 0 ? L'{' : i == 37 ? L'}' : is_dash ? L'-' : 0;
    if (expected) {
      EXPECT_EQ(expected, braced[i]) << i;
    } else {
      EXPECT_TRUE(std::iswxdigit(static_cast<std::wint_t>(braced[i]))) << i;
    }
  }
  const std::wstring bare = text(L"MakeGUID", true);
  ASSERT_EQ(32u, bare.size());
  EXPECT_EQ(std::wstring::npos, bare.find_first_not_of(L"0123456789ABCDEFabcdef"));
  EXPECT_NE(bare, text(L"MakeGUID", true));
}

// A script's number 1 is converted to true first; a typed caller's 1 is not VARIANT_TRUE.
TEST_P(KeyMembers, SleepComesBack) {
  EXPECT_EQ(S_OK, call(L"Sleep", 0).hr);
  EXPECT_EQ(S_OK, call(L"Sleep", 1).hr);
}

}  // namespace
}  // namespace test
