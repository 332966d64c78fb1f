// What a stream's mode, position and charset mean for the call that comes next.
#include <gtest/gtest.h>

#include <korlib/activation.h>
#include <korlib/adostream.h>

#include "support/late_bound.h"
#include "support/temporary_folder.h"

namespace {

using test::call;
using test::get;
using test::put;
using test::text_of;
using Bytes = std::vector<std::uint8_t>;

class StreamState : public testing::Test {
 protected:
  void SetUp() override { stream_ = open(); }
  static CComPtr<IDispatch> open(LONG mode = 0) {
    CComPtr<IDispatch> stream;
    EXPECT_EQ(S_OK,
              CoCreateInstance(CLSID_KorLibStream, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, stream.put_void()));
    EXPECT_EQ(S_OK, call(stream.get(), L"Open", CComVariant(korlib::omitted()), mode).hr);
    return stream;
  }
  void charset(const wchar_t* name) { ASSERT_EQ(S_OK, put(stream_.get(), L"Charset", name).hr); }
  void position(int at) { ASSERT_EQ(S_OK, put(stream_.get(), L"Position", at).hr); }
  std::wstring read(int count) { return text_of(call(stream_.get(), L"ReadText", count)); }
  // The whole contents; the stream is binary afterwards.
  Bytes contents() {
    position(0);
    put(stream_.get(), L"Type", 1);
    return test::bytes_of(call(stream_.get(), L"Read"));
  }
  static CComVariant bytes_in_two_dimensions(ULONG each) {
    const SAFEARRAYBOUND bounds[] = {{each, 0}, {each, 0}};
    CComVariant value;
    value.vt = VT_ARRAY | VT_UI1;
    value.parray = SafeArrayCreate(VT_UI1, 2, bounds);
    return value;
  }

  test::TemporaryFolder folder_;
  CComPtr<IDispatch> stream_;
};

TEST_F(StreamState, LoadedToBeReadRefusesOneByteToo) {
  folder_.write("f", "abc");
  stream_ = open(1);
  put(stream_.get(), L"Type", 1);
  ASSERT_EQ(S_OK, call(stream_.get(), L"LoadFromFile", folder_.wide("f")).hr);
  for (const Bytes& bytes : {Bytes{'x'}, Bytes{'x', 'y'}}) {
    EXPECT_EQ(L"The stream was opened for reading only.", call(stream_.get(), L"Write", bytes).description);
  }
  EXPECT_EQ((Bytes{'a', 'b', 'c'}), contents());
}

TEST_F(StreamState, TakesBytesInOneDimensionOnly) {
  put(stream_.get(), L"Type", 1);
  call(stream_.get(), L"Write", Bytes{'a', 'b'});
  position(0);  // room for a byte
  for (const ULONG each : {1u, 2u}) {
    EXPECT_EQ(L"Write: a byte array is needed.",
              call(stream_.get(), L"Write", bytes_in_two_dimensions(each)).description);
  }
  EXPECT_EQ((Bytes{'a', 'b'}), contents());
}

// Text is copied into a binary stream as its bytes, which a stream to be written does not give.
TEST_F(StreamState, StaysTextWhenItsBytesCannotBeCopied) {
  stream_ = open(2);
  call(stream_.get(), L"WriteText", L"x");
  const CComPtr<IDispatch> target = open();
  put(target.get(), L"Type", 1);
  EXPECT_EQ(L"The stream was opened for writing only.", call(stream_.get(), L"CopyTo", target).description);
  EXPECT_EQ(2, get(stream_.get(), L"Type").value.lVal);
  EXPECT_EQ(S_OK, call(stream_.get(), L"WriteText", L"y").hr);
}

TEST_F(StreamState, WritesAMarkOverWhatStandsAtItsStart) {
  charset(L"utf-8");
  call(stream_.get(), L"WriteText", L"abc");
  position(0);
  call(stream_.get(), L"WriteText", L"x");
  EXPECT_EQ((Bytes{0xEF, 0xBB, 0xBF, 'x', 'b', 'c'}), contents());
}

// A charset that switches between sets of characters: A, the switch, two characters, the switch back.
class SwitchingCharset : public StreamState {
 protected:
  void SetUp() override {
    StreamState::SetUp();
    charset(L"iso-2022-jp");
    call(stream_.get(), L"WriteText", L"A\u65E5\u672C");
    position(0);
  }
};

TEST_F(SwitchingCharset, GoesOnWhereReadingStopped) {
  EXPECT_EQ(L"A\u65E5", read(2));
  EXPECT_EQ(L"\u672C", read(-1));
  position(0);
  EXPECT_EQ(L"A\u65E5", read(2));
  EXPECT_EQ(L"\u672C", read(1));
}

TEST_F(SwitchingCharset, BeginsAnewAtAPositionThatWasSet) {
  for (const int count : {1, -1}) {
    EXPECT_EQ(L"A\u65E5", read(2));
    position(0);
    EXPECT_EQ(L'A', read(count)[0]);
    position(0);
  }
}

TEST_F(SwitchingCharset, BeginsEachTextThatIsWrittenAnew) {
  call(stream_.get(), L"ReadText");
  call(stream_.get(), L"WriteText", L"\u65E5");
  call(stream_.get(), L"WriteText", L"B");
  EXPECT_EQ((Bytes{'A',  0x1B, '$', 'B',  0x46, 0x7C, 0x4B, 0x5C, 0x1B, '(', 'B',  // as it was
                   0x1B, '$',  'B', 0x46, 0x7C, 0x1B, '(',  'B',  'B'}),
            contents());
}

}  // namespace
