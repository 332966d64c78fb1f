#include <korlib/adostream.h>
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include "korlib/classes/stream_fixture.h"

namespace {

using test::Bytes;
using test::call;
using test::get;
using test::new_stream;
using test::put;
using test::text_of;

class Stream : public test::StreamFixture {};

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
