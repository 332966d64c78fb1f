// A stream under test, opened for each case.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include <korlib/activation.h>
#include <korlib/adostream.h>

#include "support/late_bound.h"

namespace test {

using Bytes = std::vector<std::uint8_t>;

inline CComPtr<IKorLibStream> new_stream() {
  CComPtr<IKorLibStream> stream;
  EXPECT_EQ(S_OK, CoCreateInstance(CLSID_KorLibStream, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                   korlib::iid_of<IKorLibStream>, stream.put_void()));
  return stream;
}

class StreamFixture : public testing::Test {
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

}  // namespace test
