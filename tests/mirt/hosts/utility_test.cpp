// Utility members over functions that the host supplies.
#include <cwchar>

#include "mirt/hosts/own_functions.h"
#include "support/late_bound.h"
#include "support/module.h"

namespace test {
namespace {

constexpr const wchar_t* kFailed = L"<code 80004005>";

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

TEST_F(UtilityOnOwnFunctions, WidthsThatTheHostCannotMapFail) {
  mapping_fails = true;
  EXPECT_EQ(kFailed, text(L"HanToZen", L"abc"));
  EXPECT_EQ(kFailed, text(L"ZenToHan", L"abc"));
  EXPECT_EQ(L"", text(L"HanToZen", L""));  // nothing is mapped to nothing
  mapping_failure = -1;
  for (const wchar_t* source : {L"abc", L""}) {
    EXPECT_EQ(kFailed, text(L"HanToZen", source));
    EXPECT_EQ(kFailed, text(L"ZenToHan", source));
  }
  mapping_failure = 0;
  mapping_fails = false;
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

// A range that does not divide evenly: each draw is divided by 429496729, the tenth of the largest one.
TEST_F(UtilityOnOwnFunctions, KeysFollowFromTheTimeForAnyNumberOfLetters) {
  tick_count = 5489;
  EXPECT_EQ(L"81981", text(L"MakeKey", 5, L"0123456789"));
  EXPECT_EQ(L"babba", text(L"MakeKey", 5, L"aaaaaaaabb"));  // a letter counts as often as it is there
}

TEST_F(UtilityOnOwnFunctions, DigestsAreTheHosts) {
  const std::vector<std::wstring> expected = {L"acquire 1 f0000020", L"create 8003 0", L"data of 3 from 61",
                                              L"digest 2 into 16",   L"destroy",       L"release 0"};
  crypt = {};
  EXPECT_EQ(L"000102030405060708090a0b0c0d0e0f", text(L"MD5", L"abc", 0));
  EXPECT_EQ(expected, crypt.calls);
  crypt = {};
  EXPECT_EQ(L"fffefdfcfbfaf9f8f7f6f5f4f3f2f1f0efeeedec", text(L"SHA1", L"", 0));
  ASSERT_EQ(expected.size(), crypt.calls.size());
  EXPECT_EQ(L"create 8004 0", crypt.calls[1]);
  EXPECT_EQ(L"data of 0 from 00", crypt.calls[2]);
  EXPECT_EQ(L"digest 2 into 20", crypt.calls[3]);
}

TEST_F(UtilityOnOwnFunctions, AFailingStepFailsTheDigestAndNothingStaysOpen) {
  for (const wchar_t* member : {L"MD5", L"SHA1"}) {
    for (const int step : {1, 2, 3, 4}) {
      crypt = {};
      crypt.failing_call = step;
      EXPECT_EQ(kFailed, text(member, L"abc", 0)) << step;
      EXPECT_EQ(0, crypt.open_handles) << step;
    }
  }
}

TEST_F(UtilityOnOwnFunctions, ADigestOfAnotherLengthIsNone) {
  for (const wchar_t* member : {L"MD5", L"SHA1"}) {
    crypt = {};
    crypt.missing_bytes = 1;
    EXPECT_EQ(kFailed, text(member, L"abc", 0));
    EXPECT_EQ(0, crypt.open_handles);
  }
  crypt = {};
}

TEST_F(UtilityOnOwnFunctions, Base64IsTheHosts) {
  crypt = {};
  EXPECT_EQ(L"own", text(L"Base64Encode", L"abc", 0));
  EXPECT_EQ(std::vector<std::wstring>(2, L"encode 3 40000001"), crypt.calls);
  crypt = {};
  EXPECT_EQ(L"ok", text(L"Base64Decode", L"abcd", 0));
  EXPECT_EQ(std::vector<std::wstring>(1, L"decode 4 1"), crypt.calls);
  for (const int call : {1, 2}) {
    crypt = {};
    crypt.failing_call = call;
    EXPECT_EQ(kFailed, text(L"Base64Encode", L"abc", 0)) << call;
  }
  crypt = {};
  crypt.failing_call = 1;
  EXPECT_EQ(kFailed, text(L"Base64Decode", L"abcd", 0));
}

TEST_F(UtilityOnOwnFunctions, GUIDsAreWhatTheHostMakes) {
  guid_text = L"{01234567-89ab-cdef-0123-456789ABCDEF}";
  EXPECT_EQ(guid_text, text(L"MakeGUID", false));
  EXPECT_EQ(L"0123456789abcdef0123456789ABCDEF", text(L"MakeGUID", true));
  guid_failure = E_ACCESSDENIED;
  EXPECT_EQ(L"<code 80070005>", text(L"MakeGUID", false));
  EXPECT_EQ(L"<code 80070005>", text(L"MakeGUID", true));
  guid_failure = S_OK;
}

TEST_F(UtilityOnOwnFunctions, MalformedGUIDsAreRefused) {
  const wchar_t* const malformed[] = {
      L"",                                       // the host could not write it
      L"{01234567-89ab-cdef-0123-456789ABCDE}",  // a digit short
      L"{0123456789abcdef0123456789ABCDEF}",     // the digits end too early
  };
  for (const wchar_t* each : malformed) {
    guid_text = each;
    EXPECT_EQ(kFailed, text(L"MakeGUID", true)) << testing::PrintToString(guid_text);
  }
  guid_text.clear();
  EXPECT_EQ(kFailed, text(L"MakeGUID", false));
}

TEST_F(UtilityOnOwnFunctions, SleepTakesItsTimeUnsigned) {
  sleeps.clear();
  EXPECT_EQ(S_OK, call(module_.create(L"Utility").get(), L"Sleep", 7).hr);
  EXPECT_EQ(S_OK, call(module_.create(L"Utility").get(), L"Sleep", -1).hr);
  EXPECT_EQ((std::vector<unsigned int>{7, 0xFFFFFFFFu}), sleeps);
}

}  // namespace
}  // namespace test
