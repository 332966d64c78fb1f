#include <cwchar>

#include "mirt/utility/utility_objects.h"

namespace test {
namespace {

using CodingMembers = UtilityMembers;
ON_BOTH_OBJECTS(CodingMembers);

using Bytes = std::vector<std::uint8_t>;

Bytes ascii(const char* text) {
  Bytes bytes;
  while (*text) bytes.push_back(static_cast<std::uint8_t>(*text++));
  return bytes;
}

std::wstring all_latin() {
  std::wstring text;
  for (wchar_t c = 0; c < 256; ++c) text.push_back(c);
  return text;
}

// RFC 4648, section 10.
TEST_P(CodingMembers, Base64KnowsTheVectorsOfTheRfc) {
  const struct {
    const wchar_t* plain;
    const wchar_t* coded;
  } rows[] = {{L"", L""},
              {L"f", L"Zg=="},
              {L"fo", L"Zm8="},
              {L"foo", L"Zm9v"},
              {L"foob", L"Zm9vYg=="},
              {L"fooba", L"Zm9vYmE="},
              {L"foobar", L"Zm9vYmFy"},
              {L"abc", L"YWJj"}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.coded, text(L"Base64Encode", row.plain, 0));
    if (*row.plain) {
      EXPECT_EQ(row.plain, text(L"Base64Decode", row.coded, 0));
    }
  }
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

TEST_P(CodingMembers, Base64DecodesLenientlyInFixedWays) {
  const struct {
    const wchar_t* coded;
    Bytes bytes;
  } rows[] = {
      {L"YW Jj", ascii("abc")},
      {L" \t\r\nY\r\nW\tJ j \n", ascii("abc")},
      {L"AAEC", {0, 1, 2}},
      {L"QQ==", {0x41}},
      {L"QQ=A", {0x41, 0x00}},
      {L"AB=C", {0x00, 0x02}},
      {L"QQ==QUI=QUJD", {0x41, 0x41, 0x42, 0x41, 0x42, 0x43}},
      {L"QR==", {0x41}},  // bits that no byte needs are not looked at
  };
  for (const auto& row : rows) {
    const Answer answer = call(L"Base64Decode", row.coded, -2);
    EXPECT_EQ(S_OK, answer.hr) << testing::PrintToString(row.coded);
    EXPECT_EQ(row.bytes, bytes_of(answer)) << testing::PrintToString(row.coded);
  }
}

TEST_P(CodingMembers, Base64RefusesWhatItCannotDecode) {
  for (const wchar_t* coded : {L"", L"   ", L"\r\n", L"Q", L"QQ", L"QQQ", L"QQQQQ", L"=QQQ", L"Q=QQ", L"====", L"QQ-_",
                               L"QQ,Q", L"QQQ\f", L"\x130QQQ", L"QQQ\x1F600", L"QQQ\u3042"}) {
    for (const int charset : {0, -1, -2, 65001}) {
      EXPECT_EQ(kFailed, text(L"Base64Decode", coded, charset)) << testing::PrintToString(coded);
    }
  }
}

TEST_P(CodingMembers, Base64DecodesUpToTheFirstNul) {
  EXPECT_EQ(L"abc", text(L"Base64Decode", std::wstring(L"YWJj\0????", 9), 0));
  EXPECT_EQ(kFailed, text(L"Base64Decode", std::wstring(L"\0YWJj", 5), 0));
}

TEST_P(CodingMembers, EncodersTakeStringsByCharset) {
  const struct {
    int charset;
    const wchar_t* base64;
    const wchar_t* percent;
  } rows[] = {
      {0, L"w7w=", L"%C3%BC"},
      {1, L"w7w=", L"%C3%BC"},
      {65001, L"w7w=", L"%C3%BC"},
      {932, L"w7w=", L"%C3%BC"},
      {-1, L"/AAAAA==", L"%FC%00%00%00"},
      {-2, L"/AAAAA==", L"%FC%00%00%00"},
      {-99, L"/AAAAA==", L"%FC%00%00%00"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.base64, text(L"Base64Encode", L"\u00FC", row.charset)) << row.charset;
    EXPECT_EQ(row.percent, text(L"URLEncode", L"\u00FC", row.charset)) << row.charset;
    // Bytes are taken as they stand.
    EXPECT_EQ(L"/w==", text(L"Base64Encode", Bytes{0xFF}, row.charset)) << row.charset;
    EXPECT_EQ(L"%FF", text(L"URLEncode", Bytes{0xFF}, row.charset)) << row.charset;
  }
}

TEST_P(CodingMembers, EncodersTakeNothingElse) {
  CComVariant no_array;
  no_array.vt = VT_ARRAY | VT_UI1;
  no_array.parray = nullptr;
  for (const wchar_t* name : {L"Base64Encode", L"URLEncode", L"MD5", L"SHA1"}) {
    EXPECT_EQ(kBadArgument, text(name, 65, 0));
    EXPECT_EQ(kBadArgument, text(name, CComVariant(), 0));
    EXPECT_EQ(kBadArgument, text(name, null_value(), 0));
    EXPECT_EQ(kBadArgument, text(name, std::vector<CComVariant>{value_of(65)}, 0));
    EXPECT_EQ(kFailed, text(name, no_array, 0));
  }
}

TEST_P(CodingMembers, DecodersGiveTheFormThatCharsetAsksFor) {
  for (const int charset : {0, 1, 65001}) {
    EXPECT_EQ(L"\u00FC", text(L"Base64Decode", L"w7w=", charset));
    EXPECT_EQ(L"\u00FC", text(L"URLDecode", L"%C3%BC", charset));
  }
  for (const int charset : {-1, -3, -99}) {
    EXPECT_EQ(L"A", text(L"Base64Decode", L"QQAAAA==", charset));
    EXPECT_EQ(L"A", text(L"URLDecode", L"A%00%00%00", charset));
    const Answer odd = call(L"URLDecode", L"ABCDE", charset);
    ASSERT_EQ(VT_BSTR, odd.value.vt);
    EXPECT_EQ(5u, SysStringByteLen(odd.value.bstrVal));
    EXPECT_EQ(0, std::memcmp(odd.value.bstrVal, "ABCDE", 5));
  }
  const Answer array = call(L"URLDecode", L"%00%FFA", -2);
  ASSERT_EQ(VT_ARRAY | VT_UI1, array.value.vt);
  EXPECT_EQ((Bytes{0, 0xFF, 'A'}), bytes_of(array));
  EXPECT_EQ(0, array.value.parray->rgsabound[0].lLbound);
  EXPECT_EQ(1, array.value.parray->cDims);
}

TEST_P(CodingMembers, URLEncodeWritesEachByteByItsRule) {
  EXPECT_EQ(L"a%20b%2F%C3%BC", text(L"URLEncode", L"a b/\u00FC", 65001));
  EXPECT_EQ(L"a%20b%2F%C3%BC", text(L"URLEncode", L"a b/\u00FC", 0));
  EXPECT_EQ(L"A%00%00%00", text(L"URLEncode", L"A", -1));
  EXPECT_EQ(L"", text(L"URLEncode", L"", 0));
  EXPECT_EQ(L"%E3%81%82%F0%9F%98%80", text(L"URLEncode", L"\u3042\U0001F600", 0));
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

TEST_P(CodingMembers, URLDecodeIsStrict) {
  const struct {
    const wchar_t* coded;
    const wchar_t* plain;
  } rows[] = {
      {L"%41%42", L"AB"},        {L"%4a%4A", L"JJ"}, {L"a-_.~9", L"a-_.~9"}, {L"", L""},
      {L"%e3%81%82", L"\u3042"}, {L"%4z", L"\x04"},  {L"\u0141", L"A"},  // the low eight bits count
      {L"a+b", kFailed},         {L"a b", kFailed},  {L"%4", kFailed},       {L"%", kFailed},
      {L"A%4", kFailed},         {L"%zz", kFailed},  {L"% 1", kFailed},      {L"%+1", kFailed},
      {L"%-1", kFailed},         {L"a/b", kFailed},  {L"\u00E9", kFailed},   {L"%41%", kFailed},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.plain, text(L"URLDecode", row.coded, 0)) << testing::PrintToString(row.coded);
  }
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
