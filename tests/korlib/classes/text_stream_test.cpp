#include <korlib/textstream.h>
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <korlib/activation.h>

#include "support/late_bound.h"
#include "support/temporary_folder.h"

namespace {

using test::call;
using test::get;
using test::text_of;

class TextStream : public testing::Test {
 protected:
  void SetUp() override {
    CLSID clsid{};
    ASSERT_EQ(S_OK, CLSIDFromProgID(L"Scripting.FileSystemObject", &clsid));
    ASSERT_EQ(CLSID_FileSystemObject, clsid);
    ASSERT_EQ(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, files_.put_void()));
  }
  IDispatch* files() { return files_.get(); }

  test::TemporaryFolder folder_;
  const std::wstring path_ = folder_.wide("text.txt");
  CComPtr<IDispatch> files_;
};

TEST_F(TextStream, WritesUtf8) {
  CComPtr<IDispatch> stream = test::object_of(call(files(), L"CreateTextFile", path_));
  ASSERT_TRUE(stream);
  EXPECT_EQ(S_OK, call(stream.get(), L"Write", L"\u00E4\u65E5").hr);
  EXPECT_EQ(S_OK, call(stream.get(), L"WriteLine", L"x").hr);
  EXPECT_EQ(S_OK, call(stream.get(), L"WriteBlankLines", 2).hr);
  EXPECT_EQ(4, get(stream.get(), L"Line").value.lVal);
  EXPECT_EQ(S_OK, call(stream.get(), L"Close").hr);
  EXPECT_EQ("\xC3\xA4\xE6\x97\xA5x\n\n\n", folder_.read("text.txt"));
  EXPECT_TRUE(FAILED(call(stream.get(), L"Write", L"more").hr));
}

TEST_F(TextStream, IsASinkForTheComponent) {
  CComPtr<IDispatch> object = test::object_of(call(files(), L"CreateTextFile", path_));
  CComPtr<Scripting::ITextStream> stream;
  ASSERT_EQ(S_OK, object.query(stream.put()));
  EXPECT_EQ(S_OK, stream->Write(CComBSTR(L"by interface")));
  stream.reset();
  object.reset();  // the last holder closes the file
  EXPECT_EQ("by interface", folder_.read("text.txt"));
}

TEST_F(TextStream, ReadsLinesCharactersAndTheRest) {
  folder_.write("text.txt", "\xEF\xBB\xBFone\r\ntwo\n\xE6\x97\xA5xyz\nend");
  CComPtr<IDispatch> stream = test::object_of(call(files(), L"OpenTextFile", path_));
  ASSERT_TRUE(stream);
  EXPECT_FALSE(test::is_true(get(stream.get(), L"AtEndOfStream")));
  EXPECT_EQ(L"one", text_of(call(stream.get(), L"ReadLine")));
  EXPECT_EQ(L"two", text_of(call(stream.get(), L"ReadLine")));
  EXPECT_EQ(3, get(stream.get(), L"Line").value.lVal);
  EXPECT_EQ(L"\u65E5x", text_of(call(stream.get(), L"Read", 2)));
  EXPECT_EQ(L"yz\nend", text_of(call(stream.get(), L"ReadAll")));
  EXPECT_TRUE(test::is_true(get(stream.get(), L"AtEndOfStream")));
  EXPECT_EQ(L"The text stream is at its end.", call(stream.get(), L"ReadLine").description);
  EXPECT_EQ(L"The text stream was opened for reading.", call(stream.get(), L"Write", L"x").description);
  EXPECT_TRUE(FAILED(call(stream.get(), L"Read", -1).hr));
}

TEST_F(TextStream, AppendsAndReplaces) {
  folder_.write("text.txt", "old ");
  call(test::object_of(call(files(), L"OpenTextFile", path_, 8)).get(), L"Write", L"new");
  EXPECT_EQ("old new", folder_.read("text.txt"));
  call(test::object_of(call(files(), L"OpenTextFile", path_, 2)).get(), L"Write", L"fresh");
  EXPECT_EQ("fresh", folder_.read("text.txt"));
  EXPECT_EQ(S_OK, call(files(), L"CreateTextFile", path_).hr);  // replaces unless told not to
  EXPECT_EQ("", folder_.read("text.txt"));
  folder_.write("text.txt", "fresh");
  const test::Answer answer = call(files(), L"CreateTextFile", path_, false);
  EXPECT_EQ(0x800A003Au, static_cast<std::uint32_t>(answer.hr));
  EXPECT_EQ("fresh", folder_.read("text.txt"));
}

TEST_F(TextStream, MakesAMissingFileOnlyWhenAsked) {
  const test::Answer answer = call(files(), L"OpenTextFile", path_, 2);
  EXPECT_EQ(0x800A0035u, static_cast<std::uint32_t>(answer.hr));
  EXPECT_EQ(L"Cannot write '" + path_ + L"': No such file or directory.", answer.description);
  EXPECT_EQ(0x800A0035u, static_cast<std::uint32_t>(call(files(), L"OpenTextFile", path_, 8).hr));
  EXPECT_FALSE(test::is_true(call(files(), L"FileExists", path_)));
  EXPECT_EQ(S_OK, call(files(), L"OpenTextFile", path_, 8, true).hr);
  EXPECT_TRUE(test::is_true(call(files(), L"FileExists", path_)));
  EXPECT_EQ(E_INVALIDARG, call(files(), L"OpenTextFile", path_, 3).hr);
}

TEST_F(TextStream, DeletesFiles) {
  folder_.write("text.txt", "x");
  EXPECT_EQ(S_OK, call(files(), L"DeleteFile", path_).hr);
  EXPECT_FALSE(test::is_true(call(files(), L"FileExists", path_)));
  const test::Answer answer = call(files(), L"DeleteFile", path_);
  EXPECT_EQ(0x800A0035u, static_cast<std::uint32_t>(answer.hr));
  EXPECT_NE(std::wstring::npos, answer.description.find(path_));
  EXPECT_FALSE(test::is_true(call(files(), L"FileExists", folder_.wide(""))));
}

TEST_F(TextStream, SaysWhenTheDiskIsFull) {
  CComPtr<IDispatch> stream = test::object_of(call(files(), L"OpenTextFile", L"/dev/full", 2));
  ASSERT_TRUE(stream);
  EXPECT_EQ(S_OK, call(stream.get(), L"Write", L"x").hr);
  EXPECT_EQ(L"Cannot write '/dev/full': No space left on device.", call(stream.get(), L"Close").description);
}

TEST_F(TextStream, SaysOnceThatTheDiskIsFull) {
  CComPtr<IDispatch> stream = test::object_of(call(files(), L"OpenTextFile", L"/dev/full", 2));
  ASSERT_TRUE(stream);
  EXPECT_EQ(L"Cannot write '/dev/full': No space left on device.",
            call(stream.get(), L"Write", std::wstring(100'000, L'x')).description);
  EXPECT_EQ(S_OK, call(stream.get(), L"Close").hr) << "what could not be written is not tried again";
}

TEST_F(TextStream, WritesBlankLinesUpToAMillion) {
  CComPtr<IDispatch> stream = test::object_of(call(files(), L"CreateTextFile", path_));
  ASSERT_TRUE(stream);
  EXPECT_EQ(E_INVALIDARG, call(stream.get(), L"WriteBlankLines", -1).hr);
  EXPECT_EQ(E_INVALIDARG, call(stream.get(), L"WriteBlankLines", 1'000'001).hr);
  EXPECT_EQ(S_OK, call(stream.get(), L"WriteBlankLines", 0).hr);
  EXPECT_EQ(S_OK, call(stream.get(), L"WriteBlankLines", 1'000'000).hr);
  EXPECT_EQ(1'000'001, get(stream.get(), L"Line").value.lVal);
  call(stream.get(), L"Close");
  EXPECT_EQ(std::string(1'000'000, '\n'), folder_.read("text.txt"));
}

}  // namespace
