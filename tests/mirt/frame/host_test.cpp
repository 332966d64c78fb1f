// What the component asks of the host's stream class, call by call.
#include "frame/host.h"

#include <gtest/gtest.h>
#include <mirt/mirt.h>

#include <string>
#include <vector>

#include <korlib/activation.h>
#include <korlib/comvariant.h>
#include <korlib/ptr.h>

#include "support/unused_members.h"
#include "templator/text_templator_impl.h"

namespace {

using Calls = std::vector<std::wstring>;

Calls calls;
std::wstring failing;  // the call that answers E_ACCESSDENIED

HRESULT note(const std::wstring& call) {
  calls.push_back(call);
  return call == failing ? E_ACCESSDENIED : S_OK;
}

std::wstring shown(BSTR text) { return text ? std::wstring(korlib::view_of(text)) : L"null"; }

class Stream final : public test::UnusedStream {
 public:
  ULONG references = 0;

  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<IKorLibStream, IDispatch, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return ++references; }
  ULONG Release() override { return --references; }

  HRESULT Open(VARIANT source, LONG mode, LONG options, BSTR user, BSTR password) override {
    const std::wstring kind = korlib::is_omitted(source) ? L"omitted" : L"given";
    return note(L"Open " + kind + L" " + std::to_wstring(mode) + L" " + std::to_wstring(options) + L" " + shown(user) +
                L" " + shown(password));
  }
  HRESULT put_Charset(BSTR name) override { return note(L"Charset " + shown(name)); }
  HRESULT LoadFromFile(BSTR path) override { return note(L"LoadFromFile " + shown(path)); }
  HRESULT put_Position(LONG position) override { return note(L"Position " + std::to_wstring(position)); }
  HRESULT WriteText(BSTR text, LONG options) override {
    return note(L"WriteText " + shown(text) + L" " + std::to_wstring(options));
  }
  HRESULT ReadText(LONG count, BSTR* text) override {
    RETURN_IF_FAILED(note(L"ReadText " + std::to_wstring(count)));
    *text = SysAllocString(L"ab");
    return S_OK;
  }
};
Stream stream;

}  // namespace

// In front of the runtime's.
HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID riid, void** ppv) {
  *ppv = nullptr;
  EXPECT_EQ(CLSID_KorLibStream, clsid);
  EXPECT_EQ(nullptr, outer);
  EXPECT_EQ(DWORD{1 | 4}, context);
  RETURN_IF_FAILED(note(L"CoCreateInstance"));
  return stream.QueryInterface(riid, ppv);
}

namespace test {
namespace {

const Calls kMade = {L"CoCreateInstance", L"Open omitted 0 -1 null null"};

Calls made_and(const Calls& more) {
  Calls all = kMade;
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

class HostStream : public testing::Test {
 protected:
  void SetUp() override { calls.clear(); }
  void TearDown() override {
    failing.clear();
    EXPECT_EQ(0u, stream.references);
  }

  CComPtr<ITextTemplator> new_templator() {
    CComPtr<ITextTemplator> templator;
    EXPECT_EQ(S_OK, g_oCF_TextTemplator.CreateInstance(nullptr, korlib::iid_of<ITextTemplator>, templator.put_void()));
    return templator;
  }
};

TEST_F(HostStream, ReadsAFileAndStopsAtTheFirstStepThatFails) {
  const CComBSTR path(L"a\\..\\b.txt");
  const CComBSTR charset(L"Shift_JIS");
  const Calls all = made_and({L"Charset Shift_JIS", L"LoadFromFile a\\..\\b.txt", L"ReadText -1"});
  CComBSTR text;
  EXPECT_EQ(S_OK, read_text_file(path, charset, text.put()));
  EXPECT_EQ(all, calls);
  EXPECT_EQ(L"ab", text.view());
  for (std::size_t step = 0; step < all.size(); ++step) {
    calls.clear();
    failing = all[step];
    BSTR none = path;  // poison
    EXPECT_EQ(E_ACCESSDENIED, read_text_file(path, charset, &none));
    EXPECT_EQ(Calls(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(step) + 1), calls);
    EXPECT_EQ(nullptr, none);
  }
}

TEST_F(HostStream, IsWhatATemplatorWritesIntoAndFlushes) {
  const CComPtr<ITextTemplator> templator = new_templator();
  EXPECT_EQ(kMade, calls);
  calls.clear();
  EXPECT_EQ(S_OK, templator->Write(CComBSTR(L"x")));
  CComBSTR text;
  EXPECT_EQ(S_OK, templator->Flush(text.put()));
  EXPECT_EQ((Calls{L"WriteText x 0", L"Position 0", L"ReadText -1"}), calls);
  EXPECT_EQ(L"ab", text.view());
  for (const wchar_t* step : {L"Position 0", L"ReadText -1"}) {
    failing = step;
    EXPECT_EQ(E_ACCESSDENIED, templator->Flush(text.put()));
    EXPECT_EQ(step, calls.back());
  }
}

// The object comes all the same, and says that it has no output when it is used.
TEST_F(HostStream, MayBeMissing) {
  for (const std::wstring& step : kMade) {
    failing = step;
    const CComPtr<ITextTemplator> templator = new_templator();
    ASSERT_TRUE(templator);
    CComPtr<IUnknown> output;
    EXPECT_EQ(S_OK, templator->get_Stream(output.put()));
    EXPECT_FALSE(output);
    EXPECT_EQ(E_FAIL, templator->Write(CComBSTR(L"x")));
    CComBSTR text;
    EXPECT_EQ(E_FAIL, templator->Flush(text.put()));
  }
}

}  // namespace
}  // namespace test
