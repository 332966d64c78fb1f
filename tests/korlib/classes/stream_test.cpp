#include <korlib/adostream.h>
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include <korlib/activation.h>

#include "support/late_bound.h"
#include "support/temporary_folder.h"

namespace {

using test::call;
using test::get;
using test::put;
using test::text_of;
using Bytes = std::vector<std::uint8_t>;

CComPtr<IKorLibStream> new_stream() {
  CComPtr<IKorLibStream> stream;
  EXPECT_EQ(S_OK, CoCreateInstance(CLSID_KorLibStream, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                   korlib::iid_of<IKorLibStream>, stream.put_void()));
  return stream;
}

class Stream : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(S_OK, stream_->Open(korlib::omitted(), 0, -1, nullptr, nullptr)); }
  LONG number(const wchar_t* property) { return get(object_, property).value.lVal; }
  bool at_end() { return test::is_true(get(object_, L"EOS")); }
  void rewind() { ASSERT_EQ(S_OK, stream_->put_Position(0)); }
  void make_binary() { ASSERT_EQ(S_OK, stream_->put_Type(adTypeBinary)); }
  // The whole contents, whatever the type; the stream is at its start afterwards.
  Bytes contents() {
    rewind();
    const LONG type = number(L"Type");
    make_binary();
    Bytes bytes = test::bytes_of(call(object_, L"Read"));
    rewind();
    EXPECT_EQ(S_OK, stream_->put_Type(type));
    return bytes;
  }
  void fill(const Bytes& bytes) {
    rewind();
    const LONG type = number(L"Type");
    make_binary();
    ASSERT_EQ(S_OK, call(object_, L"Write", bytes).hr);
    ASSERT_EQ(S_OK, stream_->SetEOS());
    rewind();
    ASSERT_EQ(S_OK, stream_->put_Type(type));
  }

  CComPtr<IKorLibStream> stream_ = new_stream();
  IDispatch* object_ = stream_.get();
};

TEST_F(Stream, StartsOutAsUnicodeText) {
  EXPECT_EQ(2, number(L"Type"));
  EXPECT_EQ(L"Unicode", text_of(get(object_, L"Charset")));
  EXPECT_EQ(-1, number(L"LineSeparator"));
  EXPECT_EQ(1, number(L"State"));
  EXPECT_EQ(0, number(L"Size"));
  EXPECT_EQ(0, number(L"Position"));
  EXPECT_TRUE(at_end());
}

TEST_F(Stream, GivesBackTheTextThatWasWrittenInPieces) {
  EXPECT_EQ(S_OK, stream_->WriteText(CComBSTR(L"a\u00E4\u65E5"), adWriteChar));
  EXPECT_EQ(S_OK, call(object_, L"WriteText", L"\U0001F600", 1).hr);
  EXPECT_EQ(S_OK, call(object_, L"WriteText", L"end").hr);
  EXPECT_EQ(2 + 6 + 4 + 4 + 6, number(L"Size"));  // the mark, the characters, a line end
  rewind();
  EXPECT_EQ(L"a\u00E4\u65E5\U0001F600\r\nend", text_of(call(object_, L"ReadText")));
  EXPECT_TRUE(at_end());
  EXPECT_EQ(L"", text_of(call(object_, L"ReadText", -1)));
}

TEST_F(Stream, EncodesAndDecodesCharsets) {
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

TEST_F(Stream, RefusesACharsetThatNobodyKnows) {
  const test::Answer answer = put(object_, L"Charset", L"x-klingon");
  EXPECT_EQ(0x800A0BB9u, static_cast<std::uint32_t>(answer.hr));
  EXPECT_EQ(L"Charset: 'x-klingon' is not a known charset.", answer.description);
  for (const wchar_t* name : {L"", L"utf-8,swaplfnl", L"\u65E5", L"utf 8"}) {
    EXPECT_TRUE(FAILED(put(object_, L"Charset", name).hr)) << testing::PrintToString(std::wstring(name));
  }
  EXPECT_EQ(L"Unicode", text_of(get(object_, L"Charset")));
}

TEST_F(Stream, ReplacesWhatACharsetLacks) {
  ASSERT_EQ(S_OK, put(object_, L"Charset", L"iso-8859-1").hr);
  call(object_, L"WriteText", L"a\u65E5z");
  EXPECT_EQ((Bytes{'a', '?', 'z'}), contents());
}

TEST_F(Stream, DecodesMalformedBytesToReplacementCharacters) {
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

TEST_F(Stream, ReplacesLoneSurrogatesOnWriting) {
  const std::wstring text = {L'a', static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0x110000), L'b'};
  call(object_, L"WriteText", text);
  rewind();
  EXPECT_EQ(L"a\uFFFD\uFFFDb", text_of(call(object_, L"ReadText")));
}

TEST_F(Stream, SkipsAMarkAtTheStartOnly) {
  fill({0xFF, 0xFE, 0x41, 0, 0xFF, 0xFE});
  EXPECT_EQ(L"A\uFEFF", text_of(call(object_, L"ReadText")));
  ASSERT_EQ(S_OK, stream_->put_Position(2));
  EXPECT_EQ(L"A", text_of(call(object_, L"ReadText", 1)));
  fill({0x41, 0});
  EXPECT_EQ(L"A", text_of(call(object_, L"ReadText")));
}

TEST_F(Stream, ReadsLinesWithEachSeparator) {
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

TEST_F(Stream, WritesLineEnds) {
  ASSERT_EQ(S_OK, put(object_, L"Charset", L"us-ascii").hr);
  for (const LONG separator : {adCRLF, adLF, adCR}) {
    put(object_, L"LineSeparator", separator);
    call(object_, L"WriteText", L"x", 1);
  }
  EXPECT_EQ((Bytes{'x', 13, 10, 'x', 10, 'x', 13}), contents());
  EXPECT_TRUE(FAILED(call(object_, L"WriteText", L"x", 2).hr));
}

TEST_F(Stream, ReadsAndWritesBytesAtAPosition) {
  make_binary();
  EXPECT_EQ(S_OK, call(object_, L"Write", Bytes{1, 2, 3, 4, 5}).hr);
  EXPECT_EQ(VT_NULL, call(object_, L"Read").value.vt);
  put(object_, L"Position", 1);
  EXPECT_EQ((Bytes{2, 3}), test::bytes_of(call(object_, L"Read", 2)));
  call(object_, L"Write", Bytes{9});
  EXPECT_EQ(4, number(L"Position"));
  EXPECT_EQ((Bytes{5}), test::bytes_of(call(object_, L"Read", 100)));
  EXPECT_EQ((Bytes{1, 2, 3, 9, 5}), contents());
  put(object_, L"Position", 4);
  call(object_, L"Write", Bytes{7, 8});
  EXPECT_EQ((Bytes{1, 2, 3, 9, 7, 8}), contents());
  put(object_, L"Position", 2);
  EXPECT_EQ(S_OK, call(object_, L"SetEOS").hr);
  EXPECT_EQ((Bytes{1, 2}), contents());
  EXPECT_TRUE(FAILED(call(object_, L"Read", -2).hr));
  EXPECT_TRUE(FAILED(put(object_, L"Position", -1).hr));
}

TEST_F(Stream, FillsWithZerosUpToAPositionBeyondTheEnd) {
  make_binary();
  call(object_, L"Write", Bytes{1});
  EXPECT_EQ(S_OK, put(object_, L"Position", 3).hr);
  EXPECT_EQ(3, number(L"Size"));
  call(object_, L"Write", Bytes{2});
  EXPECT_EQ((Bytes{1, 0, 0, 2}), contents());
}

TEST_F(Stream, GrowsOneByteAtATime) {
  make_binary();
  Bytes expected;
  CComVariant one = test::value_of(Bytes{0});
  for (int i = 0; i < 100'000; ++i) {
    expected.push_back(static_cast<std::uint8_t>(i * 7));
    *static_cast<BYTE*>(one.parray->pvData) = expected.back();
    ASSERT_EQ(S_OK, stream_->Write(one));
  }
  EXPECT_EQ(expected, contents());
}

TEST_F(Stream, WritesByteArraysOnly) {
  make_binary();
  EXPECT_EQ(L"Write: a byte array is needed.", call(object_, L"Write", L"text").description);
  EXPECT_TRUE(FAILED(call(object_, L"Write", std::vector<CComVariant>{test::value_of(1)}).hr));
  CComVariant bytes = test::value_of(Bytes{5, 6});
  EXPECT_EQ(S_OK, call(object_, L"Write", test::by_reference(&bytes)).hr);
  EXPECT_EQ((Bytes{5, 6}), contents());
}

TEST_F(Stream, KeepsTextAndBytesApart) {
  EXPECT_EQ(L"A text stream is written with WriteText; set Type to 1 for bytes.",
            call(object_, L"Write", Bytes{1}).description);
  EXPECT_EQ(L"A text stream is read with ReadText; set Type to 1 for bytes.", call(object_, L"Read").description);
  make_binary();
  EXPECT_EQ(L"A binary stream is written with Write; set Type to 2 for text.",
            call(object_, L"WriteText", L"x").description);
  EXPECT_EQ(L"A binary stream is read with Read; set Type to 2 for text.", call(object_, L"ReadText").description);
  EXPECT_TRUE(FAILED(call(object_, L"SkipLine").hr));
}

TEST_F(Stream, ChangesTypeAndCharsetAtItsStartOnly) {
  call(object_, L"WriteText", L"x");
  EXPECT_EQ(L"Type can be set only at position 0.", put(object_, L"Type", 1).description);
  EXPECT_EQ(L"Charset can be set only at position 0.", put(object_, L"Charset", L"utf-8").description);
  rewind();
  EXPECT_EQ(S_OK, put(object_, L"Charset", L"utf-8").hr);
  EXPECT_EQ(S_OK, put(object_, L"Type", 1).hr);
  EXPECT_TRUE(FAILED(put(object_, L"Type", 3).hr));
}

TEST_F(Stream, NeedsToBeOpen) {
  EXPECT_EQ(S_OK, call(object_, L"Close").hr);
  EXPECT_EQ(0, number(L"State"));
  EXPECT_EQ(2, number(L"Type"));
  EXPECT_EQ(S_OK, put(object_, L"Charset", L"utf-8").hr);
  EXPECT_EQ(S_OK, put(object_, L"Mode", 3).hr);
  struct Row {
    const wchar_t* name;
    WORD flags;
    std::vector<CComVariant> arguments;
  };
  const CComVariant text(L"x");
  const Row rows[] = {
      {L"Read", DISPATCH_METHOD, {}},
      {L"ReadText", DISPATCH_METHOD, {}},
      {L"WriteText", DISPATCH_METHOD, {text}},
      {L"Write", DISPATCH_METHOD, {text}},
      {L"SkipLine", DISPATCH_METHOD, {}},
      {L"SetEOS", DISPATCH_METHOD, {}},
      {L"Flush", DISPATCH_METHOD, {}},
      {L"Cancel", DISPATCH_METHOD, {}},
      {L"LoadFromFile", DISPATCH_METHOD, {text}},
      {L"SaveToFile", DISPATCH_METHOD, {text}},
      {L"CopyTo", DISPATCH_METHOD, {test::value_of(object_)}},
      {L"Close", DISPATCH_METHOD, {}},
      {L"Size", DISPATCH_PROPERTYGET, {}},
      {L"EOS", DISPATCH_PROPERTYGET, {}},
      {L"Position", DISPATCH_PROPERTYGET, {}},
      {L"Position", DISPATCH_PROPERTYPUT, {CComVariant(LONG{0})}},
  };
  for (const Row& row : rows) {
    const test::Answer answer = test::invoke(object_, row.name, row.flags, row.arguments);
    EXPECT_EQ(0x800A0E78u, static_cast<std::uint32_t>(answer.hr)) << testing::PrintToString(std::wstring(row.name));
    EXPECT_EQ(L"The stream is not open.", answer.description);
  }
  EXPECT_EQ(S_OK, call(object_, L"Open").hr);
  EXPECT_EQ(0x800A0E79u, static_cast<std::uint32_t>(call(object_, L"Open").hr));
  EXPECT_EQ(0x800A0E79u, static_cast<std::uint32_t>(put(object_, L"Mode", 3).hr));
}

TEST_F(Stream, ForgetsItsContentsWhenClosed) {
  call(object_, L"WriteText", L"x");
  call(object_, L"Close");
  call(object_, L"Open");
  EXPECT_EQ(0, number(L"Size"));
}

TEST_F(Stream, HoldsToItsMode) {
  call(object_, L"Close");
  EXPECT_EQ(S_OK, call(object_, L"Open", CComVariant(korlib::omitted()), 1).hr);
  EXPECT_EQ(L"The stream was opened for reading only.", call(object_, L"WriteText", L"x").description);
  call(object_, L"Close");
  EXPECT_EQ(S_OK, call(object_, L"Open", CComVariant(korlib::omitted()), 2).hr);
  EXPECT_EQ(L"The stream was opened for writing only.", call(object_, L"ReadText").description);
  call(object_, L"Close");
  EXPECT_TRUE(FAILED(call(object_, L"Open", L"URL=http://localhost/").hr));
}

// One byte has a way of its own into the stream.
TEST_F(Stream, RefusesOneByteAsItRefusesMany) {
  make_binary();
  call(object_, L"Write", Bytes{1});  // there is room for another one
  for (const LONG mode : {0, 1}) {
    call(object_, L"Close");
    const wchar_t* said = mode ? L"The stream was opened for reading only." : L"The stream is not open.";
    if (mode) call(object_, L"Open", CComVariant(korlib::omitted()), mode);
    EXPECT_EQ(said, call(object_, L"Write", Bytes{2}).description);
    EXPECT_EQ(said, call(object_, L"Write", Bytes{2, 3}).description);
  }
  EXPECT_EQ(0, number(L"Size"));
}

TEST_F(Stream, CopiesToAnotherStream) {
  CComPtr<IKorLibStream> other = new_stream();
  ASSERT_EQ(S_OK, other->Open(korlib::omitted(), 0, -1, nullptr, nullptr));
  ASSERT_EQ(S_OK, put(other.get(), L"Charset", L"utf-8").hr);
  call(object_, L"WriteText", L"\u00E4bcd");
  rewind();
  EXPECT_EQ(S_OK, call(object_, L"CopyTo", other, 2).hr);
  EXPECT_EQ(S_OK, call(object_, L"CopyTo", other).hr);
  EXPECT_EQ(S_OK, call(object_, L"CopyTo", other).hr);  // nothing is left
  EXPECT_EQ(3 + 5, get(other.get(), L"Size").value.lVal);
  put(other.get(), L"Position", 0);
  EXPECT_EQ(L"\u00E4bcd", text_of(call(other.get(), L"ReadText")));

  put(other.get(), L"Position", 0);
  put(other.get(), L"Type", 1);
  rewind();
  EXPECT_EQ(S_OK, call(object_, L"CopyTo", other, 4).hr);  // bytes of text into a binary stream
  put(other.get(), L"Position", 0);
  EXPECT_EQ((Bytes{0xFF, 0xFE, 0xE4, 0}), test::bytes_of(call(other.get(), L"Read", 4)));
  put(other.get(), L"Position", 0);
  EXPECT_TRUE(FAILED(call(other.get(), L"CopyTo", object_).hr));
  EXPECT_TRUE(FAILED(call(object_, L"CopyTo", test::null_value()).hr));
}

class StreamFile : public Stream {
 protected:
  test::Answer load(const std::wstring& path) { return call(object_, L"LoadFromFile", path); }
  test::TemporaryFolder folder_;
};

TEST_F(StreamFile, LoadsAndRewinds) {
  folder_.write("a.txt", "\xEF\xBB\xBF\xC3\xA4");
  call(object_, L"WriteText", L"old contents");
  rewind();
  ASSERT_EQ(S_OK, put(object_, L"Charset", L"utf-8").hr);
  EXPECT_EQ(S_OK, load(folder_.wide("a.txt")).hr);
  EXPECT_EQ(0, number(L"Position"));
  EXPECT_EQ(L"\u00E4", text_of(call(object_, L"ReadText", -1)));
}

TEST_F(StreamFile, LoadsAFileOfNoBytes) {
  folder_.write("empty", "");
  EXPECT_EQ(S_OK, load(folder_.wide("empty")).hr);
  EXPECT_TRUE(at_end());
  EXPECT_EQ(L"", text_of(call(object_, L"ReadText")));
  call(object_, L"WriteText", L"x");
  EXPECT_EQ(4, number(L"Size"));
}

TEST_F(StreamFile, OpensPathsWithBackslashes) {
  std::filesystem::create_directory(folder_.path("sub"));
  folder_.write("sub/a.txt", "x");
  EXPECT_EQ(S_OK, load(folder_.wide("sub\\a.txt")).hr);
  folder_.write("sub\\a.txt", "literally so");  // a file of that very name comes first
  EXPECT_EQ(S_OK, load(folder_.wide("sub\\a.txt")).hr);
  EXPECT_EQ(12, number(L"Size"));
  EXPECT_EQ(S_OK, call(object_, L"SaveToFile", folder_.wide("sub\\b.txt")).hr);
  EXPECT_EQ("literally so", folder_.read("sub/b.txt"));
}

TEST_F(StreamFile, NamesTheFileThatItCannotLoad) {
  call(object_, L"WriteText", L"kept");
  const std::wstring missing = folder_.wide("missing.txt");
  test::Answer answer = load(missing);
  EXPECT_EQ(0x800A0BBAu, static_cast<std::uint32_t>(answer.hr));
  EXPECT_EQ(L"ADODB.Stream", answer.source);
  EXPECT_EQ(L"Cannot open '" + missing + L"': No such file or directory.", answer.description);
  EXPECT_EQ(L"Cannot open '" + folder_.wide("") + L"': Is a directory.", load(folder_.wide("")).description);
  ASSERT_EQ(0, mkfifo(folder_.path("pipe").c_str(), 0600));
  EXPECT_EQ(L"Cannot open '" + folder_.wide("pipe") + L"': Not a regular file.",
            load(folder_.wide("pipe")).description);
  EXPECT_TRUE(FAILED(load(L"").hr));
  EXPECT_TRUE(FAILED(load(folder_.wide("a") + std::wstring(L"\0b", 2)).hr));
  EXPECT_EQ(10, number(L"Size"));
}

// Permissions do not bind root, who is somebody else for the time of this object.
class WithoutPrivileges {
 public:
  WithoutPrivileges() : before_(geteuid()) {
    constexpr uid_t kNobody = 65534;
    if (before_ == 0) {
      EXPECT_EQ(0, seteuid(kNobody));
    }
  }
  ~WithoutPrivileges() { EXPECT_EQ(0, seteuid(before_)); }
  WithoutPrivileges(const WithoutPrivileges&) = delete;
  WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

 private:
  uid_t before_;
};

TEST_F(StreamFile, NamesTheFileThatItMayNotTouch) {
  folder_.write("secret", "kept");
  std::filesystem::permissions(folder_.path(""), std::filesystem::perms(0755));
  std::filesystem::permissions(folder_.path("secret"), std::filesystem::perms::none);
  const std::wstring path = folder_.wide("secret");
  {
    const WithoutPrivileges anybody;
    EXPECT_EQ(L"Cannot open '" + path + L"': Permission denied.", load(path).description);
    EXPECT_EQ(L"Cannot write '" + path + L"': Permission denied.", call(object_, L"SaveToFile", path, 2).description);
  }
  std::filesystem::permissions(folder_.path("secret"), std::filesystem::perms::owner_read);
  EXPECT_EQ("kept", folder_.read("secret"));
}

TEST_F(StreamFile, SavesNewFilesAndReplacesWhenTold) {
  ASSERT_EQ(S_OK, put(object_, L"Charset", L"utf-8").hr);
  call(object_, L"WriteText", L"\u00E4");
  const std::wstring path = folder_.wide("out.txt");
  EXPECT_EQ(S_OK, call(object_, L"SaveToFile", path).hr);
  EXPECT_EQ("\xEF\xBB\xBF\xC3\xA4", folder_.read("out.txt"));
  EXPECT_EQ(0, number(L"Position"));
  const test::Answer answer = call(object_, L"SaveToFile", path, 1);
  EXPECT_EQ(0x800A0BBCu, static_cast<std::uint32_t>(answer.hr));
  EXPECT_EQ(L"Cannot write '" + path + L"': File exists.", answer.description);
  folder_.write("out.txt", "something longer than the new contents");
  EXPECT_EQ(S_OK, call(object_, L"SaveToFile", path, 2).hr);
  EXPECT_EQ("\xEF\xBB\xBF\xC3\xA4", folder_.read("out.txt"));
  EXPECT_TRUE(FAILED(call(object_, L"SaveToFile", path, 3).hr));
  EXPECT_NE(std::wstring::npos, call(object_, L"SaveToFile", L"/dev/full", 2).description.find(L"/dev/full"));
}

// While one lives, a file cannot grow beyond a size: a disk without room, on every machine.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    EXPECT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_{};
  void (*handler_)(int);
};

TEST_F(StreamFile, LeavesWhatWasThereWhereItsContentsDoNotFit) {
  call(object_, L"WriteText", std::wstring(10'000, L'x'));
  folder_.write("old.txt", "old contents");
  {
    const FileSizeLimit limit(4096);
    for (const LONG option : {1, 2}) {
      const test::Answer answer = call(object_, L"SaveToFile", folder_.wide("new.txt"), option);
      EXPECT_EQ(0x800A0BBCu, static_cast<std::uint32_t>(answer.hr));
      EXPECT_EQ(L"Cannot write '" + folder_.wide("new.txt") + L"': File too large.", answer.description);
      EXPECT_FALSE(std::filesystem::exists(folder_.path("new.txt")));
    }
    const test::Answer answer = call(object_, L"SaveToFile", folder_.wide("old.txt"), 2);
    EXPECT_EQ(L"Cannot write '" + folder_.wide("old.txt") + L"': File too large.", answer.description);
  }
  EXPECT_EQ("old contents", folder_.read("old.txt"));
  EXPECT_EQ(S_OK, call(object_, L"SaveToFile", folder_.wide("old.txt"), 2).hr) << "nothing is lost of the stream";
  EXPECT_EQ(20'002u, folder_.read("old.txt").size());
}

TEST_F(StreamFile, ReplacesTheContentsAndNotTheFile) {
  make_binary();
  call(object_, L"Write", std::vector<unsigned char>{'n', 'e', 'w'});
  folder_.write("file", "old contents");
  std::filesystem::permissions(folder_.path("file"), std::filesystem::perms::owner_all);
  std::filesystem::create_hard_link(folder_.path("file"), folder_.path("second name"));
  std::filesystem::create_symlink("file", folder_.path("link"));
  std::filesystem::create_symlink("not yet", folder_.path("dangling link"));
  EXPECT_EQ(S_OK, call(object_, L"SaveToFile", folder_.wide("link"), 2).hr);
  EXPECT_EQ(S_OK, call(object_, L"SaveToFile", folder_.wide("dangling link"), 2).hr);
  EXPECT_EQ("new", folder_.read("second name"));
  EXPECT_EQ("new", folder_.read("not yet"));
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.path("link")));
  EXPECT_EQ(std::filesystem::perms::owner_all, std::filesystem::status(folder_.path("file")).permissions());
}

TEST_F(StreamFile, SaysWhereItCannotWrite) {
  const auto refusal = [&](const std::wstring& path, LONG option) {
    const test::Answer answer = call(object_, L"SaveToFile", path, option);
    EXPECT_EQ(0x800A0BBCu, static_cast<std::uint32_t>(answer.hr)) << path;
    return answer.description.substr(answer.description.find(L"': ") + 3);
  };
  folder_.write("file", "");
  ASSERT_EQ(0, mkfifo(folder_.path("pipe").c_str(), 0600));
  EXPECT_EQ(L"No such file or directory.", refusal(folder_.wide("missing/a"), 1));
  EXPECT_EQ(L"No such file or directory.", refusal(folder_.wide("missing/a"), 2));
  EXPECT_EQ(L"Not a directory.", refusal(folder_.wide("file/a"), 2));
  EXPECT_EQ(L"Is a directory.", refusal(folder_.wide(""), 2));
  EXPECT_EQ(L"File exists.", refusal(folder_.wide(""), 1));
  EXPECT_EQ(L"File name too long.", refusal(folder_.wide(std::string(256, 'n')), 2));
  EXPECT_EQ(L"No such device or address.", refusal(folder_.wide("pipe"), 2));
  EXPECT_EQ(L"No such file or directory.", refusal(L"", 2));
  EXPECT_TRUE(FAILED(call(object_, L"SaveToFile", folder_.wide("a") + std::wstring(L"\0b", 2), 2).hr));
  EXPECT_FALSE(std::filesystem::exists(folder_.path("a")));
}

TEST_F(Stream, LeavesOutArgumentsDefinedWhenItFails) {
  call(object_, L"Close");
  BSTR text = reinterpret_cast<BSTR>(1);
  EXPECT_TRUE(FAILED(stream_->ReadText(-1, &text)));
  EXPECT_EQ(nullptr, text);
  VARIANT bytes;
  bytes.vt = 77;
  EXPECT_TRUE(FAILED(stream_->Read(-1, &bytes)));
  EXPECT_EQ(VT_EMPTY, bytes.vt);
  EXPECT_EQ(E_POINTER, stream_->ReadText(-1, nullptr));
  EXPECT_EQ(E_POINTER, stream_->Read(-1, nullptr));
  EXPECT_EQ(E_POINTER, stream_->get_Size(nullptr));
}

}  // namespace
