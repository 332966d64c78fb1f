// An uploaded file, and the stream that its bytes are written into.
#include "upload/form_file.h"

#include <span>

#include <korlib/activation.h>
#include <korlib_host/class_table.h>
#include <korlib_host/dispatch_object.h>

#include "mirt/upload/upload_fixture.h"
#include "upload/upload_classes.h"

namespace test {
namespace {

class FormFile : public UploadTest {};

TEST_F(FormFile, AnswersByName) {
  ASSERT_EQ(S_OK, upload(file_part("f", "C:\\dir\\sun.png", "bytes") + kEnd));
  const CComPtr<IFormFile> photo = file(L"f");
  EXPECT_EQ(L"C:\\dir\\sun.png", text_of(get(photo.get(), L"FileName")));
  EXPECT_EQ(L"sun.png", text_of(get(photo.get(), L"filename2")));
  EXPECT_EQ(L"application/octet-stream", text_of(get(photo.get(), L"ContentType")));
  const CComPtr<IDispatch> stream = object_of(get(photo.get(), L"Stream"));
  EXPECT_EQ(5, get(stream.get(), L"Size").value.lVal);
  EXPECT_EQ(1, get(stream.get(), L"Type").value.lVal);
  EXPECT_EQ(0, get(stream.get(), L"Position").value.lVal);
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND, call(photo.get(), L"FileName").hr);
  EXPECT_EQ(E_POINTER, photo->get_FileName(nullptr));
  EXPECT_EQ(E_POINTER, photo->get_Stream(nullptr));
}

TEST_F(FormFile, CutsTheNameAtItsLastSeparator) {
  struct Row {
    const char* name;
    const wchar_t* last;
  };
  for (const Row& row : {Row{"a", L"a"}, Row{"d/a", L"a"}, Row{"/d/e/a", L"a"}, Row{"d\\a", L"a"}, Row{"d/e\\a", L"a"},
                         Row{"d\\e/a", L"e/a"}, Row{"d/", L""}, Row{"d\\", L""}, Row{"/", L""}}) {
    ASSERT_EQ(S_OK, upload(file_part("f", row.name, "") + kEnd));
    EXPECT_EQ(row.last, member(file(L"f").get(), &IFormFile::get_FileName2)) << row.name;
  }
}

// A stream that writes down what is done with it. Whatever else is asked of it fails the test.
class Stream final : public korlib::DispatchObject<Stream, IKorLibStream> {
 public:
  static std::span<const korlib::Member> members() { return {}; }

  static inline fake::Texts log;
  static inline std::wstring fail_at;  // the call that fails; "Create" is the one that makes the stream

  static HRESULT note(const std::wstring& call) {
    log.push_back(call);
    return call == fail_at ? DISP_E_OVERFLOW : S_OK;
  }

  HRESULT Open(VARIANT source, LONG mode, LONG options, BSTR user, BSTR password) override {
    EXPECT_EQ(VT_ERROR, source.vt);
    EXPECT_EQ(0, mode);
    EXPECT_EQ(-1, options);
    EXPECT_EQ(0u, SysStringLen(user));
    EXPECT_EQ(0u, SysStringLen(password));
    return note(L"Open");
  }
  HRESULT put_Type(LONG type) override { return note(L"Type " + std::to_wstring(type)); }
  HRESULT Write(VARIANT bytes) override {
    EXPECT_EQ(VT_ARRAY | VT_UI1, bytes.vt);
    EXPECT_EQ(1u, bytes.parray->rgsabound[0].cElements);
    return note(L"Write " + std::to_wstring(*static_cast<unsigned char*>(bytes.parray->pvData)));
  }
  HRESULT put_Position(LONG position) override { return note(L"Position " + std::to_wstring(position)); }

  HRESULT get_Size(LONG*) override { return unexpected("get_Size"); }
  HRESULT get_EOS(VARIANT_BOOL*) override { return unexpected("get_EOS"); }
  HRESULT get_Position(LONG*) override { return unexpected("get_Position"); }
  HRESULT get_Type(LONG*) override { return unexpected("get_Type"); }
  HRESULT get_LineSeparator(LONG*) override { return unexpected("get_LineSeparator"); }
  HRESULT put_LineSeparator(LONG) override { return unexpected("put_LineSeparator"); }
  HRESULT get_State(LONG*) override { return unexpected("get_State"); }
  HRESULT get_Mode(LONG*) override { return unexpected("get_Mode"); }
  HRESULT put_Mode(LONG) override { return unexpected("put_Mode"); }
  HRESULT get_Charset(BSTR*) override { return unexpected("get_Charset"); }
  HRESULT put_Charset(BSTR) override { return unexpected("put_Charset"); }
  HRESULT Read(LONG, VARIANT*) override { return unexpected("Read"); }
  HRESULT Close() override { return unexpected("Close"); }
  HRESULT SkipLine() override { return unexpected("SkipLine"); }
  HRESULT SetEOS() override { return unexpected("SetEOS"); }
  HRESULT CopyTo(IKorLibStream*, LONG) override { return unexpected("CopyTo"); }
  HRESULT Flush() override { return unexpected("Flush"); }
  HRESULT SaveToFile(BSTR, LONG) override { return unexpected("SaveToFile"); }
  HRESULT LoadFromFile(BSTR) override { return unexpected("LoadFromFile"); }
  HRESULT ReadText(LONG, BSTR*) override { return unexpected("ReadText"); }
  HRESULT WriteText(BSTR, LONG) override { return unexpected("WriteText"); }
  HRESULT Cancel() override { return unexpected("Cancel"); }

 private:
  static HRESULT unexpected(const char* name) {
    ADD_FAILURE() << name;
    return E_NOTIMPL;
  }
};

// While one lives, the host's stream class makes streams of the test's kind, or says so and makes none.
class StreamClass {
 public:
  StreamClass() {
    if (!real_) {
      EXPECT_EQ(S_OK, CoGetClassObject(CLSID_KorLibStream, CLSCTX_INPROC_SERVER, nullptr, korlib::iid_of<IClassFactory>,
                                       real_.put_void()));
    }
    set([](REFIID riid, void** ppv) {
      *ppv = nullptr;
      const HRESULT hr = Stream::note(L"Create");
      if (Stream::fail_at == L"Nothing") return S_OK;
      return FAILED(hr) ? hr : korlib::make<Stream>()->QueryInterface(riid, ppv);
    });
  }
  ~StreamClass() {
    set([](REFIID riid, void** ppv) { return real_->CreateInstance(nullptr, riid, ppv); });
  }

 private:
  static void set(HRESULT (*create)(REFIID riid, void** ppv)) {
    const korlib_host::ClassRow row{CLSID_KorLibStream, nullptr, create};
    korlib_host::register_classes({&row, 1});
  }

  static inline CComPtr<IClassFactory> real_;
};

class FileStream : public UploadTest {
 protected:
  HRESULT upload_failing_at(const std::wstring& call) {
    Stream::log.clear();
    Stream::fail_at = call;
    return upload(text_part("before", "1") + file_part("f", "f", "ab") + text_part("behind", "1") + kEnd);
  }

  StreamClass streams_;
};

TEST_F(FileStream, IsWrittenAByteATime) {
  EXPECT_EQ(S_OK, upload_failing_at(L""));
  EXPECT_EQ(Stream::log, (fake::Texts{L"Create", L"Open", L"Type 1", L"Write 97", L"Write 98", L"Position 0"}));
  EXPECT_EQ(3, count());
}

TEST_F(FileStream, IsRewoundWhereNothingIsWritten) {
  Stream::log.clear();
  Stream::fail_at.clear();
  EXPECT_EQ(S_OK, upload(file_part("f", "f", "") + kEnd));
  EXPECT_EQ(Stream::log, (fake::Texts{L"Create", L"Open", L"Type 1", L"Position 0"}));
}

// A host that says it made a stream, and gives none.
TEST_F(FileStream, EndsTheIntakeWhereThereIsNone) {
  EXPECT_EQ(E_FAIL, upload_failing_at(L"Nothing"));
  EXPECT_EQ(Stream::log, fake::Texts{L"Create"});
  EXPECT_EQ(1, count());
}

TEST_F(FileStream, IsNotThereWhereItCouldNotBeMade) {
  for (const wchar_t* call : {L"Create", L"Nothing", L"Open", L"Type 1"}) {
    Stream::fail_at = call;
    CComPtr<IFormFile> photo;
    ASSERT_EQ(S_OK, g_oCF_FormFile.CreateInstance(nullptr, korlib::iid_of<IFormFile>, photo.put_void()));
    IDispatch* stream = photo.get();  // poison
    EXPECT_EQ(E_FAIL, photo->get_Stream(&stream)) << call;
    EXPECT_EQ(nullptr, stream) << call;
    EXPECT_EQ(L"", member(photo.get(), &IFormFile::get_FileName));
  }
  Stream::fail_at.clear();
}

// A file without its bytes is not added, and the parts behind it are not read.
TEST_F(FileStream, EndsTheIntakeWhereItFails) {
  struct Row {
    const wchar_t* call;
    HRESULT hr;
    std::size_t calls;
  };
  for (const Row& row : {Row{L"Create", E_FAIL, 1}, Row{L"Open", E_FAIL, 2}, Row{L"Type 1", E_FAIL, 3},
                         Row{L"Write 97", DISP_E_OVERFLOW, 4}, Row{L"Write 98", DISP_E_OVERFLOW, 5},
                         Row{L"Position 0", DISP_E_OVERFLOW, 6}}) {
    EXPECT_EQ(row.hr, upload_failing_at(row.call)) << row.call;
    EXPECT_EQ(row.calls, Stream::log.size()) << row.call;
    EXPECT_EQ(1, count()) << row.call;
    EXPECT_EQ(L"1", text(L"before")) << row.call;
    EXPECT_EQ(L"", take_error().description) << row.call;
  }
}

}  // namespace
}  // namespace test
