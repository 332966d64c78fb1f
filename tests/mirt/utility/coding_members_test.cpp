#include <cstring>
#include <cwchar>
#include <utility>

#include "mirt/utility/utility_objects.h"

namespace test {
namespace {

using CodingMembers = UtilityMembers;
ON_BOTH_OBJECTS(CodingMembers);

using Bytes = std::vector<std::uint8_t>;

std::wstring all_latin() {
  std::wstring text;
  for (wchar_t c = 0; c < 256; ++c) text.push_back(c);
  return text;
}

TEST_P(CodingMembers, Base64UsesTheWholeAlphabetAndNoLineBreak) {
  // The bytes 00 10 83 10 51 87 … are the sextets 0, 1, 2, … 63.
  Bytes bytes;
  for (unsigned i = 0; i < 64; i += 4) {
    const unsigned group = i << 18 | (i + 1) << 12 | (i + 2) << 6 | (i + 3);
    for (const unsigned shift : {16u, 8u, 0u}) bytes.push_back(static_cast<std::uint8_t>(group >> shift));
  }
  const std::wstring alphabet = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  EXPECT_EQ(alphabet, text(L"Base64Encode", bytes, 0));
  EXPECT_EQ(bytes, bytes_of(call(L"Base64Decode", alphabet, -2)));
  Bytes many;
  std::wstring expected;
  for (int i = 0; i < 1000; ++i) {
    many.insert(many.end(), bytes.begin(), bytes.end());
    expected += alphabet;
  }
  EXPECT_EQ(expected, text(L"Base64Encode", many, 0));
}

TEST_P(CodingMembers, Base64DecodesUpToTheFirstNul) {
  EXPECT_EQ(L"abc", text(L"Base64Decode", std::wstring(L"YWJj\0????", 9), 0));
  EXPECT_EQ(kFailed, text(L"Base64Decode", std::wstring(L"\0YWJj", 5), 0));
}

TEST_P(CodingMembers, EncodersFailWithoutTheArrayThatTheyAreGiven) {
  CComVariant no_array;
  no_array.vt = VT_ARRAY | VT_UI1;
  no_array.parray = nullptr;
  const SAFEARRAYBOUND bounds[] = {{2, 0}, {2, 0}};
  CComVariant table;
  table.vt = VT_ARRAY | VT_UI1;
  table.parray = SafeArrayCreate(VT_UI1, 2, bounds);
  for (const wchar_t* name : {L"Base64Encode", L"URLEncode", L"MD5", L"SHA1"}) {
    EXPECT_EQ(kFailed, text(name, no_array, 0));
    EXPECT_EQ(kFailed, text(name, table, 0));  // bytes, but not in a row
  }
}

// An array of something else that says it is one of bytes.
TEST_P(CodingMembers, EncodersFailOnAnArrayOfAnotherType) {
  CComVariant numbers;
  numbers.vt = VT_ARRAY | VT_UI1;
  numbers.parray = SafeArrayCreateVector(VT_I4, 0, 2);
  for (const wchar_t* name : {L"Base64Encode", L"URLEncode", L"MD5", L"SHA1"}) {
    EXPECT_EQ(kFailed, text(name, numbers, 0)) << name;
  }
}

// An array without elements may have no memory for them either.
TEST_P(CodingMembers, EncodersTakeAnArrayWithoutMemory) {
  CComVariant none;
  none.vt = VT_ARRAY | VT_UI1;
  none.parray = SafeArrayCreateVector(VT_UI1, 0, 0);
  void* const memory = std::exchange(none.parray->pvData, nullptr);
  EXPECT_EQ(L"", text(L"Base64Encode", by_reference(&none), 0));
  EXPECT_EQ(L"", text(L"URLEncode", by_reference(&none), 0));
  EXPECT_EQ(L"d41d8cd98f00b204e9800998ecf8427e", text(L"MD5", by_reference(&none), 0));
  EXPECT_EQ(L"da39a3ee5e6b4b0d3255bfef95601890afd80709", text(L"SHA1", by_reference(&none), 0));
  none.parray->pvData = memory;
}

TEST_P(CodingMembers, EncodersTakeArraysWhereverTheyBegin) {
  const SAFEARRAYBOUND bound = {3, 7};
  CComVariant array;
  array.vt = VT_ARRAY | VT_UI1;
  array.parray = SafeArrayCreate(VT_UI1, 1, &bound);
  std::memcpy(array.parray->pvData, "abc", 3);
  EXPECT_EQ(L"YWJj", text(L"Base64Encode", array, 0));
  EXPECT_EQ(L"abc", text(L"URLEncode", array, 0));
  EXPECT_EQ(L"900150983cd24fb0d6963f7d28e17f72", text(L"MD5", array, 0));
  EXPECT_EQ(0u, array.parray->cLocks);
}

// A text of up to 256 characters may have its bytes in a buffer of 1,024, since none has more than four.
TEST_P(CodingMembers, EncodersTakeTextsOfTheWidestCharactersAroundTheirBuffer) {
  for (const std::size_t length : {1u, 255u, 256u, 257u, 341u, 342u, 512u, 513u, 1023u, 1024u, 1025u}) {
    std::wstring expected;
    for (std::size_t i = 0; i < length; ++i) expected += L"%F4%8F%BF%BF";  // U+10FFFF
    ASSERT_EQ(expected, text(L"URLEncode", std::wstring(length, L'\U0010FFFF'), 0)) << length;
  }
}

// A string of an odd number of bytes is one as well.
TEST_P(CodingMembers, EncodersTakeEveryByteOfAStringsMemory) {
  CComVariant odd;
  odd.vt = VT_BSTR;
  odd.bstrVal = SysAllocStringByteLen("abcde", 5);
  EXPECT_EQ(L"YWJjZGU=", text(L"Base64Encode", odd, -1));
  EXPECT_EQ(L"abcde", text(L"URLEncode", odd, -1));
  EXPECT_EQ(L"ab56b4d92b40713acc5af89985d4b786", text(L"MD5", odd, -1));
}

TEST_P(CodingMembers, DecodersGiveRawMemoryAndPlainArrays) {
  for (const int charset : {-1, -3, -99}) {
    const Answer odd = call(L"URLDecode", L"ABCDE", charset);
    ASSERT_EQ(VT_BSTR, odd.value.vt);
    EXPECT_EQ(5u, SysStringByteLen(odd.value.bstrVal));
    EXPECT_EQ(0, std::memcmp(odd.value.bstrVal, "ABCDE", 5));
  }
  const Answer array = call(L"URLDecode", L"%00%FFA", -2);
  ASSERT_EQ(VT_ARRAY | VT_UI1, array.value.vt);
  EXPECT_EQ(0, array.value.parray->rgsabound[0].lLbound);
  EXPECT_EQ(1, array.value.parray->cDims);
}

TEST_P(CodingMembers, URLEncodeWritesEachByteByItsRule) {
  Bytes all;
  std::wstring expected;
  const std::wstring unreserved = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.~";
  for (unsigned i = 0; i < 256; ++i) {
    all.push_back(static_cast<std::uint8_t>(i));
    wchar_t coded[4];
    std::swprintf(coded, 4, L"%%%02X", i);
    const bool plain = unreserved.find(static_cast<wchar_t>(i)) != std::wstring::npos;
    expected += plain ? std::wstring(1, static_cast<wchar_t>(i)) : std::wstring(coded);
  }
  EXPECT_EQ(expected, text(L"URLEncode", all, 0));
  EXPECT_EQ(all, bytes_of(call(L"URLDecode", expected, -2)));
}

TEST_P(CodingMembers, NullStringsAreEmpty) {
  CComVariant null;
  null.vt = VT_BSTR;
  null.bstrVal = nullptr;
  EXPECT_EQ(L"", text(L"Base64Encode", null, 0));
  EXPECT_EQ(L"", text(L"Base64Encode", null, -1));
  EXPECT_EQ(L"", text(L"URLEncode", null, 0));
  EXPECT_EQ(kFailed, text(L"Base64Decode", null, 0));
  EXPECT_EQ(L"", text(L"URLDecode", null, 0));
  EXPECT_EQ(L"d41d8cd98f00b204e9800998ecf8427e", text(L"MD5", null, 0));
}

TEST_P(CodingMembers, DecodingUndoesEncoding) {
  const std::wstring plain = all_latin() + L"\u3042\U0001F600\U0010FFFF";
  for (const int charset : {0, -1}) {
    EXPECT_EQ(plain, text(L"Base64Decode", text(L"Base64Encode", plain, charset), charset));
    EXPECT_EQ(plain, text(L"URLDecode", text(L"URLEncode", plain, charset), charset));
  }
}

TEST_P(CodingMembers, LongTextsGoThrough) {
  const std::wstring plain(1'000'000, L'\u00FC');
  const std::wstring coded = text(L"Base64Encode", plain, 0);
  EXPECT_EQ((2'000'000u + 2) / 3 * 4, coded.size());
  EXPECT_EQ(plain, text(L"Base64Decode", coded, 0));
  EXPECT_EQ(plain, text(L"URLDecode", text(L"URLEncode", plain, 0), 0));
}

}  // namespace
}  // namespace test
