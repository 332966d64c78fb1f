#include <cwchar>

#include "mirt/utility/utility_objects.h"

namespace test {
namespace {

using TextMembers = UtilityMembers;
ON_BOTH_OBJECTS(TextMembers);

CComVariant null_string() {
  CComVariant null;
  null.vt = VT_BSTR;
  null.bstrVal = nullptr;
  return null;
}

TEST_P(TextMembers, HTMLEncodeTakesTextByItsLength) {
  EXPECT_EQ(L"", text(L"HTMLEncode", null_string()));
  EXPECT_EQ(std::wstring(L"a\0&lt;b", 7), text(L"HTMLEncode", std::wstring(L"a\0<b", 4)));
}

// Around the length at which a buffer on the stack would end.
TEST_P(TextMembers, HTMLEncodeTakesAnyLength) {
  for (const std::size_t length : {1u, 16u, 99u, 100u, 101u, 102u, 1000u, 100'000u}) {
    std::wstring expected;
    for (std::size_t i = 0; i < length; ++i) expected += L"&quot;";
    EXPECT_EQ(expected, text(L"HTMLEncode", std::wstring(length, L'"')));
    EXPECT_EQ(std::wstring(length, L'x'), text(L"HTMLEncode", std::wstring(length, L'x')));
  }
}

// Text is escaped in blocks: each character that has a reference, alone in a text of each length around
// several of them, at each of its places.
TEST_P(TextMembers, HTMLEncodeFindsOneSpecialAnywhere) {
  const std::pair<wchar_t, const wchar_t*> specials[] = {
      {L'<', L"&lt;"}, {L'>', L"&gt;"}, {L'"', L"&quot;"}, {L'&', L"&amp;"}};
  for (const auto& [special, reference] : specials) {
    for (std::size_t length = 1; length <= 70; ++length) {
      for (std::size_t place = 0; place < length; ++place) {
        std::wstring plain;  // letters that differ, so that none can stand for another
        for (std::size_t i = 0; i < length; ++i) plain.push_back(static_cast<wchar_t>(L'A' + i % 58));
        const std::wstring expected = plain.substr(0, place) + reference + plain.substr(place + 1);
        plain[place] = special;
        ASSERT_EQ(expected, text(L"HTMLEncode", plain)) << "place " << place << " of " << length;
      }
    }
  }
}

// Its neighbours in the tables of characters have no reference.
TEST_P(TextMembers, HTMLEncodeLeavesEveryOtherCharacter) {
  std::wstring plain;
  for (wchar_t c = 1; c < 0x400; ++c) {
    if (std::wstring_view(L"<>\"&").find(c) == std::wstring_view::npos) plain.push_back(c);
  }
  for (const wchar_t high : {0x10000, 0x100000, 0x7FFF0000}) {
    for (const wchar_t low : {L'<', L'>', L'"', L'&'}) plain.push_back(high | low);
  }
  EXPECT_EQ(plain, text(L"HTMLEncode", plain));
  for (const wchar_t c : plain) ASSERT_EQ(std::wstring(1, c), text(L"HTMLEncode", std::wstring(1, c)));
}

TEST_P(TextMembers, TrimTakesTextByItsLength) {
  EXPECT_EQ(std::wstring(L"a\0 b", 4), text(L"Trim", std::wstring(L" a\0 b ", 6)));
}

TEST_P(TextMembers, TrimOfNothingIsANullString) {
  for (const CComVariant& nothing :
       {value_of(L""), null_string(), value_of(L"   "), value_of(L" \u3000 "), value_of(L"\t\r\n")}) {
    const Answer answer = call(L"Trim", nothing);
    EXPECT_EQ(S_OK, answer.hr);
    EXPECT_EQ(VT_BSTR, answer.value.vt);
    EXPECT_EQ(nullptr, answer.value.bstrVal);
  }
}

TEST_P(TextMembers, SubmitDecodeEndsAtTheFirstNul) {
  EXPECT_EQ(L"", text(L"SubmitDecode", null_string()));
  EXPECT_EQ(L"a", text(L"SubmitDecode", std::wstring(L"a\0b", 3)));
  EXPECT_EQ(L"aA", text(L"SubmitDecode", std::wstring(L"a&#65;\0b", 8)));
}

// The value is cut to a character's 32 bits, whatever it is.
TEST_P(TextMembers, SubmitDecodeTakesNumbersBeyondUnicode) {
  const struct {
    const wchar_t* submitted;
    unsigned character;
  } rows[] = {
      {L"&#x110000;", 0x110000},
      {L"&#x7FFFFFFF;", 0x7FFFFFFF},
      {L"&#-1;", 0xFFFFFFFF},
      {L"&#99999999999;", 0x4876E7FF},              // 99999999999 modulo 2^32
      {L"&#99999999999999999999999;", 0xFFFFFFFF},  // the largest long, its low bits
      {L"&#-99999999999999999999999;", 0},          // the smallest, likewise: ends the text
      {L"&#x1FFFFFFFF;", 0xFFFFFFFF},
  };
  for (const auto& row : rows) {
    const std::wstring expected = row.character ? std::wstring(1, static_cast<wchar_t>(row.character)) : std::wstring();
    EXPECT_EQ(expected, text(L"SubmitDecode", row.submitted)) << testing::PrintToString(row.submitted);
  }
}

TEST_P(TextMembers, SubmitDecodeHandlesManyReferences) {
  std::wstring submitted;
  for (int i = 0; i < 100'000; ++i) submitted += L"x&#65;";
  const std::wstring decoded = text(L"SubmitDecode", submitted);
  EXPECT_EQ(200'000u, decoded.size());
  EXPECT_EQ(std::wstring::npos, decoded.find_first_not_of(L"xA"));
  // Openings that are never closed, and one that closes far behind.
  std::wstring openings;
  for (int i = 0; i < 100'000; ++i) openings += L"&#";
  EXPECT_EQ(openings, text(L"SubmitDecode", openings));
  EXPECT_EQ(L"", text(L"SubmitDecode", openings + L";"));
}

TEST_P(TextMembers, WidthConversionNeedsAHostThatMaps) {
  for (const wchar_t* name : {L"HanToZen", L"ZenToHan"}) {
    for (const CComVariant& each : {value_of(L"abc"), value_of(L""), null_string(), value_of(L"\uFF71")}) {
      const Answer answer = call(name, each);
      EXPECT_EQ(E_FAIL, answer.hr);
      EXPECT_EQ(VT_EMPTY, answer.value.vt);
    }
  }
}

}  // namespace
}  // namespace test
