// Memory that runs out in streams, text streams and their character sets.
#include <unicode/uclean.h>

#include <korlib/text.h>
#include <korlib/textstream.h>
#include <korlib_host/unicode.h>

#include "korlib/classes/failing_operation.h"
#include "korlib/classes/stream_fixture.h"
#include "support/temporary_folder.h"

namespace {

using test::each_allocation_failing;
using test::FailingAllocation;

void* library_malloc(const void*, std::size_t bytes) { return test::fallible_malloc(bytes); }
void* library_realloc(const void*, void* block, std::size_t bytes) { return test::fallible_realloc(block, bytes); }
void library_free(const void*, void* block) { std::free(block); }

// The library of the character sets gets its memory here, from before its first use.
const bool has_own_memory = [] {
  UErrorCode status = U_ZERO_ERROR;
  u_setMemoryFunctions(nullptr, library_malloc, library_realloc, library_free, &status);
  return U_SUCCESS(status);
}();

// What a member has answered with `hr` and the text, as an operation's outcome.
HRESULT give(CComBSTR& text, HRESULT hr, VARIANT* out) {
  if (FAILED(hr)) {
    EXPECT_EQ(nullptr, text.get());
    return hr;
  }
  out->vt = VT_BSTR;
  out->bstrVal = text.detach();
  return hr;
}

class FailingStream : public test::StreamFixture {
 protected:
  void make(const wchar_t* charset) {
    stream_ = test::new_stream();
    object_ = stream_.get();
    SetUp();
    EXPECT_EQ(S_OK, stream_->put_Charset(CComBSTR(charset)));
  }
  // Text of several lines with the position after the first.
  void fill_text(const wchar_t* charset) {
    make(charset);
    EXPECT_EQ(S_OK, stream_->WriteText(CComBSTR(L"a first line \x3042\r\nthe second line \x3044\r\nthe third"), 0));
    rewind();
    EXPECT_EQ(S_OK, stream_->SkipLine());
  }
  void fill_bytes() {
    make(L"utf-8");
    fill(test::Bytes(300, 7));
    make_binary();
    EXPECT_EQ(S_OK, stream_->put_Position(100));
  }
  std::wstring state() {
    CComBSTR charset;
    EXPECT_EQ(S_OK, stream_->get_Charset(charset.put()));
    const LONG position = number(L"Position");
    std::wstring all = std::wstring(charset.view()) + L" at " + std::to_wstring(position) + L":";
    for (const std::uint8_t byte : contents()) all += L" " + std::to_wstring(byte);
    EXPECT_EQ(S_OK, stream_->put_Position(position));
    return all;
  }
  void expect_all_or_nothing(const char* name, std::function<void()> prepare, std::function<HRESULT(VARIANT*)> run) {
    test::expect_all_or_nothing({{name, std::move(prepare), std::move(run), [this] { return state(); }}}, [this] {
      stream_.reset();
      target_.reset();
    });
  }
  HRESULT read_text(LONG count, VARIANT* out) {
    CComBSTR text;
    const HRESULT hr = stream_->ReadText(count, text.put());
    return give(text, hr, out);
  }

  CComPtr<IKorLibStream> target_;
};

constexpr const wchar_t* kCharsets[] = {L"utf-8", L"unicode", L"utf-16be", L"shift_jis", L"windows-1252"};

TEST_F(FailingStream, WritesTextWhollyOrNot) {
  ASSERT_TRUE(has_own_memory);
  const CComBSTR text(std::wstring_view(std::wstring(1500, L'\x3042') + L"end"));
  for (const wchar_t* charset : kCharsets) {
    const auto prepare = [&] { make(charset); };
    expect_all_or_nothing("WriteText", prepare, [&](VARIANT*) { return stream_->WriteText(text, adWriteChar); });
    expect_all_or_nothing("WriteText of a line", prepare,
                          [&](VARIANT*) { return stream_->WriteText(text, adWriteLine); });
    // The shorter text's room lies after what is there.
    expect_all_or_nothing(
        "WriteText after",
        [&] {
          fill_text(charset);
          rewind();
          stream_->put_Position(number(L"Size"));
        },
        [&](VARIANT*) { return stream_->WriteText(text, adWriteLine); });
  }
}

TEST_F(FailingStream, ReadsTextWhollyOrNot) {
  for (const wchar_t* charset : kCharsets) {
    const auto prepare = [&] { fill_text(charset); };
    expect_all_or_nothing("ReadText", prepare, [&](VARIANT* out) { return read_text(adReadAll, out); });
    expect_all_or_nothing("ReadText of a line", prepare, [&](VARIANT* out) { return read_text(adReadLine, out); });
    expect_all_or_nothing("ReadText of characters", prepare, [&](VARIANT* out) { return read_text(12, out); });
    expect_all_or_nothing("SkipLine", prepare, [&](VARIANT*) { return stream_->SkipLine(); });
  }
}

TEST_F(FailingStream, KeepsItsCharsetOrTakesAnother) {
  for (const wchar_t* charset : {L"utf-8", L"unicode", L"utf-16be", L"iso-8859-5", L"euc-kr"}) {
    const CComBSTR name(charset);
    expect_all_or_nothing(
        "Charset", [&] { make(L"windows-1252"); }, [&](VARIANT*) { return stream_->put_Charset(name); });
  }
}

TEST_F(FailingStream, MovesBytesWhollyOrNot) {
  const CComVariant bytes = test::value_of(test::Bytes(5000, 9));
  const auto prepare = [&] { fill_bytes(); };
  expect_all_or_nothing("Write", prepare, [&](VARIANT*) { return stream_->Write(bytes); });
  expect_all_or_nothing("Read", prepare, [&](VARIANT* out) { return stream_->Read(adReadAll, out); });
  expect_all_or_nothing("Position", prepare, [&](VARIANT*) { return stream_->put_Position(4000); });
  const auto with_target = [&](LONG type) {
    type == adTypeText ? fill_text(L"utf-8") : fill_bytes();
    target_ = test::new_stream();
    EXPECT_EQ(S_OK, target_->put_Type(type));
    EXPECT_EQ(S_OK, target_->Open(korlib::omitted(), 0, -1, nullptr, nullptr));
  };
  for (const LONG type : {adTypeBinary, adTypeText}) {
    expect_all_or_nothing(
        "CopyTo", [&] { with_target(type); }, [&](VARIANT*) { return stream_->CopyTo(target_.get(), adReadAll); });
  }
}

TEST_F(FailingStream, LoadsAndSavesAFileWhollyOrNot) {
  const test::TemporaryFolder folder;
  folder.write("a file.bin", std::string(5000, 'f'));
  const CComBSTR path(std::wstring_view(folder.wide("a file.bin")));
  const CComBSTR saved(std::wstring_view(folder.wide("another file.bin")));
  expect_all_or_nothing(
      "LoadFromFile", [&] { fill_bytes(); }, [&](VARIANT*) { return stream_->LoadFromFile(path); });
  expect_all_or_nothing(
      "SaveToFile",
      [&] {
        fill_bytes();
        rewind();
      },
      [&](VARIANT*) { return stream_->SaveToFile(saved, adSaveCreateOverWrite); });
}

// What fails for another reason says so, though perhaps without words.
TEST_F(FailingStream, RefusesWithItsOwnCode) {
  make(L"utf-8");
  const CComBSTR nowhere(L"/nowhere/at/all/that/could/be");
  const CComBSTR unknown(L"no such charset as this");
  const CComVariant number(LONG{7});
  for (const int times : {1, FailingAllocation::kAll}) {
    const std::function<HRESULT()> refused[] = {
        [&] { return stream_->LoadFromFile(nowhere); },
        [&] { return stream_->SaveToFile(nowhere, 1); },
        [&] { return stream_->put_Charset(unknown); },
        [&] { return stream_->Write(number); },
        [&] { return stream_->put_Mode(1); },
        [&] { return stream_->put_Type(9); },
        [&] { return stream_->put_LineSeparator(9); },
        [&] { return stream_->Open(korlib::omitted(), 0, -1, nullptr, nullptr); },
        [&] { return stream_->WriteText(nullptr, 9); },
    };
    for (const auto& call : refused) {
      const HRESULT expected = call();
      EXPECT_TRUE(FAILED(expected));
      each_allocation_failing([&](int n) {
        HRESULT hr = S_OK;
        bool failed = false;
        {
          const FailingAllocation failing(n, times);
          hr = call();
          failed = failing.has_failed();
        }
        EXPECT_TRUE(hr == expected || hr == E_OUTOFMEMORY) << n << ": " << std::hex << hr;
        return failed && !HasFailure();
      });
    }
  }
  SetErrorInfo(0, nullptr);
}

class FailingTextStream : public testing::Test {
 protected:
  FailingTextStream() {
    folder_.write("a file.txt", "the first line\nthe second line\nthe third");
    EXPECT_EQ(S_OK, CoCreateInstance(CLSID_FileSystemObject, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                     files_.put_void()));
  }
  void open(LONG mode) {
    stream_.reset();
    const test::Answer opened = test::call(files_.get(), L"OpenTextFile", path_.view(), static_cast<int>(mode));
    EXPECT_EQ(S_OK, opened.hr);
    stream_ = CComQIPtr<Scripting::ITextStream>(opened.value.pdispVal);
  }
  void expect_all_or_nothing(const char* name, LONG mode, std::function<HRESULT(VARIANT*)> run) {
    const auto state = [&]() -> std::wstring {
      LONG line = 0;
      EXPECT_EQ(S_OK, stream_->get_Line(&line));
      return std::to_wstring(line);
    };
    test::expect_all_or_nothing({{name, [&, mode] { open(mode); }, std::move(run), state}}, [&] { stream_.reset(); });
  }

  const test::TemporaryFolder folder_;
  const CComBSTR path_{std::wstring_view(folder_.wide("a file.txt"))};
  CComPtr<IDispatch> files_;
  CComPtr<Scripting::ITextStream> stream_;
};

constexpr LONG kRead = 1;
constexpr LONG kAppend = 8;

TEST_F(FailingTextStream, ReadsWhollyOrNot) {
  expect_all_or_nothing("Read", kRead, [&](VARIANT* out) {
    CComBSTR text;
    const HRESULT hr = stream_->Read(20, text.put());
    return give(text, hr, out);
  });
  expect_all_or_nothing("ReadLine", kRead, [&](VARIANT* out) {
    CComBSTR text;
    const HRESULT hr = stream_->ReadLine(text.put());
    return give(text, hr, out);
  });
  expect_all_or_nothing("ReadAll", kRead, [&](VARIANT* out) {
    CComBSTR text;
    const HRESULT hr = stream_->ReadAll(text.put());
    return give(text, hr, out);
  });
}

TEST_F(FailingTextStream, WritesWhollyOrNot) {
  const CComBSTR text(L"a text that no small buffer holds");
  expect_all_or_nothing("Write", kAppend, [&](VARIANT*) { return stream_->Write(text); });
  expect_all_or_nothing("WriteLine", kAppend, [&](VARIANT*) { return stream_->WriteLine(text); });
  expect_all_or_nothing("WriteBlankLines", kAppend, [&](VARIANT*) { return stream_->WriteBlankLines(40); });
}

TEST_F(FailingTextStream, OpensOrDoesNot) {
  const DISPID open = test::id_of(files_.get(), L"OpenTextFile");
  CComVariant path(path_.view());
  for (const int times : {1, FailingAllocation::kAll}) {
    each_allocation_failing([&](int n) {
      DISPPARAMS params{&path, nullptr, 1, 0};
      CComVariant opened;
      HRESULT hr = S_OK;
      bool failed = false;
      {
        const FailingAllocation failing(n, times);
        hr = files_->Invoke(open, IID_NULL, 0, DISPATCH_METHOD, &params, &opened, nullptr, nullptr);
        failed = failing.has_failed();
      }
      EXPECT_TRUE(hr == S_OK || hr == E_OUTOFMEMORY) << n;
      EXPECT_EQ(SUCCEEDED(hr) ? VT_DISPATCH : VT_EMPTY, opened.vt) << n;
      return failed && !HasFailure();
    });
  }
}

// A code page whose converter cannot be had is not an unknown one for good.
TEST(FailingText, IsConvertedOnceThereIsMemory) {
  const std::string bytes = "\x93\xFA\x96{ and more than a small buffer holds";
  for (const UINT page : {932u, 949u, 28595u, 1253u}) {
    wchar_t out[100];
    each_allocation_failing([&](int n) {
      std::size_t length = 0;
      bool failed = false;
      {
        const FailingAllocation failing(n);
        length = codepage_utf32(page, bytes.data(), bytes.size(), out, 100);
        failed = failing.has_failed();
      }
      const std::size_t again = codepage_utf32(page, bytes.data(), bytes.size(), out, 100);
      EXPECT_NE(kUnknownCodePage, again) << page << " at " << n;
      EXPECT_TRUE(length == again || length == kUnknownCodePage) << page << " at " << n;
      return failed && !testing::Test::HasFailure();
    });
  }
}

TEST(FailingText, IsWholeOrAnException) {
  const std::wstring wide = L"a text \x1F600 that no small buffer holds";
  const std::string bytes = korlib::to_utf8(wide);
  EXPECT_EQ(3, each_allocation_failing([&](int n) {
              const FailingAllocation failing(n);
              try {
                EXPECT_EQ(bytes, korlib::to_utf8(wide));
              } catch (const std::bad_alloc&) {
                EXPECT_TRUE(failing.has_failed());
              }
              try {
                EXPECT_EQ(wide, korlib::to_wide(bytes));
                EXPECT_EQ(korlib::utf16_length(wide), korlib::to_utf16(wide).size());
              } catch (const std::bad_alloc&) {
                EXPECT_TRUE(failing.has_failed());
              }
              return failing.has_failed();
            }))
      << "once for each text";
}

}  // namespace
