// VBScript.RegExp in pages in JavaScript. What it matches is in regexp_test.cpp, what pages do with it in the cases of
// tests/site.
#include <korlib/activation.h>

#include "zelto/script/world/kept_world_fixture.h"

namespace test {
namespace {

class RegExpObject : public KeptWorldTest {
 protected:
  static std::wstring script(const std::wstring& rest) {
    return L"var re = new ActiveXObject('VBScript.RegExp'); re.Pattern = 'b+'; " + rest;
  }
};

TEST_F(RegExpObject, LeavesNothingToTheNextRequest) {
  always("-ac 1", script(L"Response.Write(re.Replace('abbc', '') === 'ac' ? '-ac ' : 0);"
                         L"Response.Write(re.Execute('abbc').Count)"));
  EXPECT_TRUE(is_kept(script(L"re.Test('b')")));
  EXPECT_TRUE(is_kept(script(L"re.Pattern = '('; re.Test('b')")));
}

// A page that speaks VBScript gets numbers of VBScript's kinds, and boxes for dates.
TEST_F(RegExpObject, LeavesThePageItsLanguage) {
  always("True", script(L"re.Test('b'); Response.Write(o.Call(function (at) { return at instanceof Date; },"
                        L"new Date(2026, 10, 24)))"));
}

TEST_F(RegExpObject, IsThereForAPageAgainAndAgain) {
  const ProgramPtr uses = page_of(script(L"Response.Write(re.Test('b'))"), "/site/a.asp");
  const ProgramPtr next = page_of(L"Response.Write(typeof re)", "/site/b.asp");
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ("True", ask(uses));
    EXPECT_EQ("undefined", ask(next));
  }
}

TEST_F(RegExpObject, OutlivesThePageWithItsMatches) {
  EXPECT_EQ(
      "", ask(page_of(script(L"o.Keep({}); re.Global = true; o.Item('re') = re; o.Item('m') = re.Execute('abbcb')"))));
  EXPECT_EQ("3 bb.b", ask(page_of(L"var m = o.Item('m'); Response.Write(o.Item('re').Execute('bcbcb').Count + ' ');"
                                  L"Response.Write(m(0) + '.' + m(1).Value)")));
}

TEST_F(RegExpObject, SaysThatItNeedsAPageToMatch) {
  CLSID clsid{};
  ASSERT_EQ(S_OK, CLSIDFromProgID(L"VBScript.RegExp", &clsid));
  CComPtr<IDispatch> made;
  ASSERT_EQ(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, made.put_void()));
  BSTR name = CComBSTR(L"Test").detach();
  DISPID id = 0;
  EXPECT_EQ(S_OK, made->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_SYSTEM_DEFAULT, &id));
  SysFreeString(name);
  CComVariant text(L"b"), answer;
  DISPPARAMS params{&text, nullptr, 1, 0};
  EXPECT_EQ(E_UNEXPECTED,
            made->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &params, &answer, nullptr, nullptr));
}

}  // namespace
}  // namespace test
