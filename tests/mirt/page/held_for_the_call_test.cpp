// A typed caller that lends the page without a reference: each member that runs script code holds the page itself,
// whatever the script lets go of meanwhile.
#include "mirt/page/page_fixture.h"
#include "support/fake_script.h"

namespace test {
namespace {

class HeldForTheCall : public PageTest {
 protected:
  void expect_held(const std::function<HRESULT(IMirt*)>& member) {
    CComPtr<IDispatch> only = new_page();
    put(only.get(), L"TemplateFolder", folder().wstring());
    put(only.get(), L"TemplateExt", L".html");
    // Every name is an empty variable and a function of it; the first use gives up the page.
    BareScript script;
    bool was_used = false;
    script.on_call = [&](const BareScript::Call&) {
      if (!only) return S_OK;
      const ULONG before = script.references;
      only.reset();
      EXPECT_EQ(before, script.references) << "the page has gone, and its reference with it";
      was_used = true;
      return S_OK;
    };
    call(only.get(), L"AddScript", static_cast<IDispatch*>(&script));
    IMirt* lent = nullptr;
    ASSERT_EQ(S_OK, only->QueryInterface(korlib::iid_of<IMirt>, reinterpret_cast<void**>(&lent)));
    lent->Release();
    EXPECT_EQ(S_OK, member(lent));
    EXPECT_TRUE(was_used);
    EXPECT_EQ(1u, script.references) << "the page goes when the call is over";
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
