// Utility members over functions that the host supplies.
#include <cwchar>

#include "mirt/hosts/own_functions.h"
#include "support/late_bound.h"
#include "support/module.h"

namespace test {
namespace {

class UtilityOnOwnFunctions : public ModuleTest {
 protected:
  template <class... Arguments>
  std::wstring text(const wchar_t* name, const Arguments&... arguments) {
    return text_of(call(module_.create(L"Utility").get(), name, arguments...));
  }
};

TEST_F(UtilityOnOwnFunctions, WidthsAreMappedByTheHost) {
  EXPECT_EQ(L"Waabc", text(L"HanToZen", L"abc"));
  EXPECT_EQ(L"Naabc", text(L"ZenToHan", L"abc"));
  EXPECT_EQ(L"W", text(L"HanToZen", L""));
  EXPECT_EQ(std::wstring(L"Wx\0y", 4), text(L"HanToZen", std::wstring(L"x\0y", 3)));  // by length, not by NUL
}

// The sequence for a seed is fixed. The first draws of the generator for the seed 5489 are 3499211612,
// 581869302, 3890346734, 3586334585, 545404204 (they are in its authors' reference output); a letter of
// 256 is the value's high byte, since the range is divided evenly.
TEST_F(UtilityOnOwnFunctions, KeysFollowFromTheTime) {
  std::wstring letters;
  for (wchar_t c = 0; c < 256; ++c) letters.push_back(static_cast<wchar_t>(0x100 + c));
  tick_count = 5489;
  std::wstring expected;
  for (const unsigned draw : {3499211612u, 581869302u, 3890346734u, 3586334585u, 545404204u}) {
    expected.push_back(static_cast<wchar_t>(0x100 + (draw >> 24)));
  }
  EXPECT_EQ(expected, text(L"MakeKey", 5, letters));
  EXPECT_EQ(expected, text(L"MakeKey", 5, letters));  // in the same millisecond the same key
  tick_count = 5490;
  EXPECT_NE(expected, text(L"MakeKey", 5, letters));
  tick_count = 5489 + (1ul << 32);  // cut to 32 bits
  EXPECT_EQ(expected, text(L"MakeKey", 5, letters));
}

TEST_F(UtilityOnOwnFunctions, AFailingStepFailsTheDigest) {
  hashing_fails = true;
  EXPECT_EQ(L"<code 80004005>", text(L"MD5", L"abc", 0));
  EXPECT_EQ(L"<code 80004005>", text(L"SHA1", L"abc", 0));
  hashing_fails = false;
  // This host's hash takes no data, so every digest is that of the empty message.
  EXPECT_EQ(L"d41d8cd98f00b204e9800998ecf8427e", text(L"MD5", L"abc", 0));
}

}  // namespace
}  // namespace test
