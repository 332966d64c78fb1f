// A typed caller that lends the page without a reference: each member that runs script code holds the page itself,
// whatever the script lets go of meanwhile.
#include "mirt/page/page_fixture.h"

namespace test {
namespace {

// A script that has every name, as an empty variable and as a function, and gives up the page at the first use.
class Leaving final : public IDispatch {
 public:
  explicit Leaving(CComPtr<IDispatch>& page) : page_(page) {}
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<IDispatch, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return ++references_; }
  ULONG Release() override { return --references_; }
  HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID* ids) override {
    ids[0] = 5;
    return S_OK;
  }
  HRESULT Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    if (!page_) return S_OK;
    const ULONG before = references_;
    page_.reset();
    EXPECT_EQ(before, references_) << "the page has gone, and its reference with it";
    was_used_ = true;
    return S_OK;
  }

  ULONG references() const { return references_; }
  bool was_used() const { return was_used_; }

 private:
  CComPtr<IDispatch>& page_;
  ULONG references_ = 1;
  bool was_used_ = false;
};

class HeldForTheCall : public PageTest {
 protected:
  void expect_held(const std::function<HRESULT(IMirt*)>& member) {
    CComPtr<IDispatch> only = new_page();
    put(only.get(), L"TemplateFolder", folder().wstring());
    put(only.get(), L"TemplateExt", L".html");
    Leaving script(only);
    call(only.get(), L"AddScript", static_cast<IDispatch*>(&script));
    IMirt* lent = nullptr;
    ASSERT_EQ(S_OK, only->QueryInterface(korlib::iid_of<IMirt>, reinterpret_cast<void**>(&lent)));
    lent->Release();
    EXPECT_EQ(S_OK, member(lent));
    EXPECT_TRUE(script.was_used());
    EXPECT_EQ(1u, script.references()) << "the page goes when the call is over";
    EXPECT_EQ(0, module_.count());
  }
};

TEST_F(HeldForTheCall, ThatDrawsAText) {
  expect_held([](IMirt* page) { return page->ProcessTemplate(CComBSTR(L"a(#:x#)b")); });
  EXPECT_EQ(L"ab", output());
}

TEST_F(HeldForTheCall, ThatDrawsAFile) {
  file("t.html", "a(#:x#)b");
  expect_held([](IMirt* page) { return page->DrawTemplate(CComBSTR(L"t")); });
  EXPECT_EQ(L"ab", output());
}

TEST_F(HeldForTheCall, ThatRunsThePage) {
  expect_held([](IMirt* page) { return page->Process(); });
}

TEST_F(HeldForTheCall, ThatFiresAnEvent) {
  expect_held([](IMirt* page) {
    CComVariant argument;
    CComVariant result;
    VARIANT_BOOL exists = VARIANT_FALSE;
    return page->FireEvent(CComBSTR(L"f"), &argument, &result, &exists);
  });
}

TEST_F(HeldForTheCall, ThatWritesAVariable) {
  asp_.request->query_string->set_raw(L"f", CComVariant(L"1"));
  expect_held([](IMirt* page) { return page->PutIntoProp(CComBSTR(L"f"), VARIANT_FALSE); });
}

}  // namespace
}  // namespace test
