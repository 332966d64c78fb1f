// The text side of a stream: charsets, marks, lines.
#include <gtest/gtest.h>

#include "korlib/classes/stream_fixture.h"

namespace {

using test::Bytes;
using test::call;
using test::get;
using test::new_stream;
using test::put;
using test::text_of;

class StreamText : public test::StreamFixture {};

TEST_F(StreamText, StartsOutAsUnicodeText) {
  EXPECT_EQ(2, number(L"Type"));
  EXPECT_EQ(L"Unicode", text_of(get(object_, L"Charset")));
  EXPECT_EQ(-1, number(L"LineSeparator"));
  EXPECT_EQ(1, number(L"State"));
  EXPECT_EQ(0, number(L"Size"));
  EXPECT_EQ(0, number(L"Position"));
  EXPECT_TRUE(at_end());
}

TEST_F(StreamText, GivesBackTheTextThatWasWrittenInPieces) {
  EXPECT_EQ(S_OK, stream_->WriteText(CComBSTR(L"a\u00E4\u65E5"), adWriteChar));
  EXPECT_EQ(S_OK, call(object_, L"WriteText", L"\U0001F600", 1).hr);
  EXPECT_EQ(S_OK, call(object_, L"WriteText", L"end").hr);
  EXPECT_EQ(2 + 6 + 4 + 4 + 6, number(L"Size"));  // the mark, the characters, a line end
  rewind();
  EXPECT_EQ(L"a\u00E4\u65E5\U0001F600\r\nend", text_of(call(object_, L"ReadText")));
  EXPECT_TRUE(at_end());
  EXPECT_EQ(L"", text_of(call(object_, L"ReadText", -1)));
}

TEST_F(StreamText, EncodesAndDecodesCharsets) {
  struct Row {
    const wchar_t* charset;
    const wchar_t* text;
    Bytes bytes;
  };
  // The bytes are those of Python's codecs of these names; Unicode and UTF-8 begin with their marks.
  const Row rows[] = {
      {L"Unicode", L"A\u00E9", {0xFF, 0xFE, 0x41, 0, 0xE9, 0}},
      {L"unicodeFFFE", L"A\u00E9", {0xFE, 0xFF, 0, 0x41, 0, 0xE9}},
      {L"utf-8", L"A\u00E9\U0001F600", {0xEF, 0xBB, 0xBF, 0x41, 0xC3, 0xA9, 0xF0, 0x9F, 0x98, 0x80}},
      {L"UTF-8", L"\u65E5", {0xEF, 0xBB, 0xBF, 0xE6, 0x97, 0xA5}},
      {L"shift_jis", L"A\u65E5\u672C\uFF71", {0x41, 0x93, 0xFA, 0x96, 0x7B, 0xB1}},
      {L"euc-jp", L"A\u65E5\u672C", {0x41, 0xC6, 0xFC, 0xCB, 0xDC}},
      {L"iso-2022-jp", L"A\u65E5", {0x41, 0x1B, 0x24, 0x42, 0x46, 0x7C, 0x1B, 0x28, 0x42}},
      {L"iso-8859-1", L"A\u00E9", {0x41, 0xE9}},
      {L"windows-1252", L"\u20AC\u2019", {0x80, 0x92}},
      {L"windows-1251", L"\u0416", {0xC6}},
      {L"big5", L"\u4E2D", {0xA4, 0xA4}},
      {L"gb2312", L"\u4E2D", {0xD6, 0xD0}},
      {L"us-ascii", L"abc", {0x61, 0x62, 0x63}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(std::wstring(row.charset)));
    stream_ = new_stream();
    object_ = stream_.get();
    SetUp();
    ASSERT_EQ(S_OK, put(object_, L"Charset", row.charset).hr);
    EXPECT_EQ(S_OK, call(object_, L"WriteText", row.text).hr);
    EXPECT_EQ(row.bytes, contents());
    EXPECT_EQ(row.text, text_of(call(object_, L"ReadText")));
    rewind();
    std::wstring one_by_one;
    while (!at_end()) one_by_one += text_of(call(object_, L"ReadText", 1));
    EXPECT_EQ(row.text, one_by_one);
    rewind();
    EXPECT_EQ(row.text, text_of(call(object_, L"ReadText", -2)));
  }
}

TEST_F(StreamText, RefusesACharsetThatNobodyKnows) {
  const test::Answer answer = put(object_, L"Charset", L"x-klingon");
  EXPECT_EQ(0x800A0BB9u, static_cast<std::uint32_t>(answer.hr));
  EXPECT_EQ(L"Charset: 'x-klingon' is not a known charset.", answer.description);
  for (const wchar_t* name : {L"", L"utf-8,swaplfnl", L"\u65E5", L"utf 8"}) {
    EXPECT_TRUE(FAILED(put(object_, L"Charset", name).hr)) << testing::PrintToString(std::wstring(name));
  }
  EXPECT_EQ(L"Unicode", text_of(get(object_, L"Charset")));
}

TEST_F(StreamText, ReplacesWhatACharsetLacks) {
  ASSERT_EQ(S_OK, put(object_, L"Charset", L"iso-8859-1").hr);
  call(object_, L"WriteText", L"a\u65E5z");
  EXPECT_EQ((Bytes{'a', '?', 'z'}), contents());
}

TEST_F(StreamText, DecodesMalformedBytesToReplacementCharacters) {
  struct Row {
    const wchar_t* charset;
    Bytes bytes;
    const wchar_t* text;
  };
  // UTF-8 as the Unicode Standard's table 3-8 has it: one replacement for each maximal subpart.
  const Row rows[] = {
      {L"utf-8",
       {0xC0, 0xAF, 0xE0, 0x80, 0xBF, 0xF0, 0x81, 0x82, 0x41},
       L"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA"},
      {L"utf-8", {0xED, 0xA0, 0x80, 0x41}, L"\uFFFD\uFFFD\uFFFDA"},
      {L"utf-8",
       {0xF4, 0x91, 0x92, 0x93, 0xFF, 0x41, 0x80, 0xBF, 0x42},
       L"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA\uFFFD\uFFFDB"},
      {L"utf-8", {0xE1, 0x80, 0xE2, 0xF0, 0x91, 0x92, 0xF1, 0xBF, 0x41}, L"\uFFFD\uFFFD\uFFFD\uFFFDA"},
      {L"Unicode", {0x00, 0xD8, 0x41, 0x00, 0x00, 0xDC, 0x42}, L"\uFFFDA\uFFFD\uFFFD"},
  };
  for (const Row& row : rows) {
    ASSERT_EQ(S_OK, put(object_, L"Charset", row.charset).hr);
    fill(row.bytes);
    EXPECT_EQ(row.text, text_of(call(object_, L"ReadText")));
    rewind();
    EXPECT_EQ(row.text, text_of(call(object_, L"ReadText", 1000)));
    rewind();
  }
}

TEST_F(StreamText, ReplacesLoneSurrogatesOnWriting) {
  const std::wstring text = {L'a', static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0x110000), L'b'};
  call(object_, L"WriteText", text);
  rewind();
  EXPECT_EQ(L"a\uFFFD\uFFFDb", text_of(call(object_, L"ReadText")));
}

TEST_F(StreamText, SkipsAMarkAtTheStartOnly) {
  fill({0xFF, 0xFE, 0x41, 0, 0xFF, 0xFE});
  EXPECT_EQ(L"A\uFEFF", text_of(call(object_, L"ReadText")));
  ASSERT_EQ(S_OK, stream_->put_Position(2));
  EXPECT_EQ(L"A", text_of(call(object_, L"ReadText", 1)));
  fill({0x41, 0});
  EXPECT_EQ(L"A", text_of(call(object_, L"ReadText")));
}

TEST_F(StreamText, ReadsLinesWithEachSeparator) {
  struct Row {
    LONG separator;
    std::vector<std::wstring> lines;
  };
  const Row rows[] = {
      {adCRLF, {L"a\rb\nc", L"", L"d"}},
      {adLF, {L"a\rb", L"c\r", L"\r", L"d"}},
      {adCR, {L"a", L"b\nc", L"\n", L"\nd"}},
  };
  ASSERT_EQ(S_OK, put(object_, L"Charset", L"utf-8").hr);
  call(object_, L"WriteText", L"a\rb\nc\r\n\r\nd");
  for (const Row& row : rows) {
    rewind();
    ASSERT_EQ(S_OK, put(object_, L"LineSeparator", row.separator).hr);
    std::vector<std::wstring> lines;
    while (!at_end()) lines.push_back(text_of(call(object_, L"ReadText", -2)));
    EXPECT_EQ(row.lines, lines) << row.separator;
  }
  rewind();
  put(object_, L"LineSeparator", -1);
  EXPECT_EQ(S_OK, call(object_, L"SkipLine").hr);
  EXPECT_EQ(S_OK, call(object_, L"SkipLine").hr);
  EXPECT_EQ(L"d", text_of(call(object_, L"ReadText")));
  EXPECT_TRUE(FAILED(put(object_, L"LineSeparator", 7).hr));
}

TEST_F(StreamText, WritesLineEnds) {
  ASSERT_EQ(S_OK, put(object_, L"Charset", L"us-ascii").hr);
  for (const LONG separator : {adCRLF, adLF, adCR}) {
    put(object_, L"LineSeparator", separator);
    call(object_, L"WriteText", L"x", 1);
  }
  EXPECT_EQ((Bytes{'x', 13, 10, 'x', 10, 'x', 13}), contents());
  EXPECT_TRUE(FAILED(call(object_, L"WriteText", L"x", 2).hr));
}

}  // namespace
