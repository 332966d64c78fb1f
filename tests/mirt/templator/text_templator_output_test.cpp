// Where "Mirt.TextTemplator" draws, and the files that it draws.
#include <korlib/adostream.h>
#include <mirt/mirt.h>

#include "mirt/templator/recording_sink.h"
#include "mirt/templator/text_templator_fixture.h"
#include "support/temporary_folder.h"

namespace test {
namespace {

class TextTemplatorOutput : public TextTemplator {
 protected:
  void SetUp() override {
    TextTemplator::SetUp();
    ASSERT_EQ(S_OK, templator_.query(typed_.put()));
  }
  void TearDown() override {
    typed_.reset();
    TextTemplator::TearDown();
  }

  CComPtr<ITextTemplator> typed_;
};

TEST_F(TextTemplatorOutput, IsAStreamInMemoryAtFirst) {
  const CComPtr<IDispatch> stream = object_of(get(templator_.get(), L"Stream"));
  CComPtr<IUnknown> unknown;
  EXPECT_EQ(S_OK, typed_->get_Stream(unknown.put()));
  CComPtr<IKorLibStream> ado;
  EXPECT_EQ(S_OK, unknown.query(ado.put()));
}

TEST_F(TextTemplatorOutput, FailsWhereThereIsNone) {
  EXPECT_EQ(S_OK, typed_->putref_Stream(nullptr));
  EXPECT_EQ(E_FAIL, call(templator_.get(), L"Write", L"x").hr);
  EXPECT_EQ(E_FAIL, process(L"x").hr);
  BSTR text = reinterpret_cast<BSTR>(this);  // poison
  EXPECT_EQ(E_FAIL, typed_->Flush(&text));
  EXPECT_EQ(nullptr, text);
  EXPECT_EQ(E_POINTER, typed_->Flush(nullptr));
  IUnknown* sink = typed_.get();  // poison
  EXPECT_EQ(S_OK, typed_->get_Stream(&sink));
  EXPECT_EQ(nullptr, sink);
}

TEST_F(TextTemplatorOutput, CannotBeFlushedWhereItIsNoStream) {
  for (const unsigned kind : {kResponse, kTextStream, kRawStream}) {
    const CComPtr<RecordingSink> sink = RecordingSink::make(kind);
    EXPECT_EQ(S_OK, typed_->putref_Stream(sink->unknown()));
    EXPECT_EQ(S_OK, process(L"ab").hr);
    EXPECT_EQ(L"ab", sink->text());
    EXPECT_EQ(E_FAIL, call(templator_.get(), L"Flush").hr);
    EXPECT_EQ(S_OK, typed_->putref_Stream(nullptr));
    EXPECT_EQ(1u, sink->references());
  }
}

TEST_F(TextTemplatorOutput, MayBeAStreamOfTheCaller) {
  CComPtr<IKorLibStream> stream;
  ASSERT_EQ(S_OK, CoCreateInstance(CLSID_KorLibStream, nullptr, CLSCTX_INPROC_SERVER, korlib::iid_of<IKorLibStream>,
                                   stream.put_void()));
  ASSERT_EQ(S_OK, stream->Open(korlib::omitted(), 0, -1, nullptr, nullptr));
  ASSERT_EQ(S_OK, stream->WriteText(CComBSTR(L"before "), adWriteChar));
  EXPECT_EQ(S_OK, putref(templator_.get(), L"Stream", stream).hr);
  EXPECT_EQ(S_OK, process(L"x").hr);
  EXPECT_EQ(L"before x", flush());
}

TEST_F(TextTemplatorOutput, RefusesAnObjectThatCannotBeWritten) {
  EXPECT_EQ(E_INVALIDARG, putref(templator_.get(), L"Stream", script_).hr);
  EXPECT_EQ(E_FAIL, call(templator_.get(), L"Write", L"x").hr);
}

class TextTemplatorFile : public TextTemplator {
 protected:
  std::wstring write_file(const char* name, const std::string& bytes) {
    folder_.write(name, bytes);
    return folder_.wide(name);
  }
  Answer process_file(const std::wstring& path, const wchar_t* charset) {
    return call(templator_.get(), L"ProcessTemplateFile", path, charset);
  }

  TemporaryFolder folder_;
};

TEST_F(TextTemplatorFile, IsReadInItsCharacterSet) {
  script_->value(L"Name", L"x");
  add(script_);
  EXPECT_EQ(S_OK, process_file(write_file("u.txt", "\xC3\xA9(#Name#)\xE4\xB8\x96"), L"UTF-8").hr);
  EXPECT_EQ(S_OK, process_file(write_file("l.txt", "\xE9(#Name#)"), L"ISO-8859-1").hr);
  EXPECT_EQ(S_OK, process_file(write_file("j.txt", "\x93\xFA(#Name#)"), L"Shift_JIS").hr);
  EXPECT_EQ(L"\u00e9x\u4e16\u00e9x\u65e5x", flush());
}

TEST_F(TextTemplatorFile, IsTakenAsThePathSays) {
  write_file("a.txt", "text");
  EXPECT_EQ(S_OK, process_file(folder_.wide("./a.txt"), L"UTF-8").hr);
  EXPECT_EQ(L"text", flush());
}

TEST_F(TextTemplatorFile, FailsWhereItCannotBeRead) {
  EXPECT_TRUE(FAILED(process_file(folder_.wide("missing"), L"UTF-8").hr));
  EXPECT_TRUE(FAILED(process_file(folder_.wide(), L"UTF-8").hr));
  EXPECT_TRUE(FAILED(process_file(write_file("a.txt", "a"), L"no such character set").hr));
  EXPECT_EQ(L"", flush());
}

TEST_F(TextTemplatorFile, IsReadAnewEachTime) {
  EXPECT_EQ(S_OK, process_file(write_file("a.txt", "1"), L"UTF-8").hr);
  EXPECT_EQ(S_OK, process_file(write_file("a.txt", "2"), L"UTF-8").hr);
  EXPECT_EQ(L"12", flush());
}

}  // namespace
}  // namespace test
