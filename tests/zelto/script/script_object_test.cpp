// Script objects as components see them.
#include <atomic>
#include <thread>
#include <vector>

#include "script/script_object.h"
#include "zelto/script/script_fixture.h"

namespace test {
namespace {

using namespace zelto::script;

class ScriptObjects : public ScriptTest {
 protected:
  // What the expression gives, as a component receives it.
  CComPtr<IDispatch> object(std::wstring_view expression) {
    must_run(L"o.Keep(" + std::wstring(expression) + L"\n)");
    CComPtr<IDispatch> found;
    if (probe->kept.vt == VT_DISPATCH) found = probe->kept.pdispVal;
    probe->kept.reset();
    return found;
  }
  static DISPID id_of(IDispatch* target, const wchar_t* name, HRESULT expected = S_OK) {
    CComBSTR text(name);
    BSTR names = text;
    DISPID id = 77;
    EXPECT_EQ(expected, target->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_SYSTEM_DEFAULT, &id));
    return id;
  }
  static HRESULT invoke(IDispatch* target, DISPID id, WORD flags, std::vector<CComVariant> reversed,
                        CComVariant* result) {
    DISPPARAMS params{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    DISPID named = DISPID_PROPERTYPUT;
    if (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) {
      params.cNamedArgs = 1;
      params.rgdispidNamedArgs = &named;
    }
    return target->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, flags, &params, result ? result->put() : nullptr,
                          nullptr, nullptr);
  }
  CComPtr<IDispatch> globals() {
    CComPtr<IDispatch> found;
    found.attach(realm->global());
    return found;
  }
};

constexpr WORD kBoth = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

TEST_F(ScriptObjects, HaveTheirPropertiesByExactName) {
  const CComPtr<IDispatch> target = object(L"{ Name: 'n', f(a, b) { return this.Name + a + b } }");
  EXPECT_EQ(DISPID_UNKNOWN, id_of(target.get(), L"name", DISP_E_UNKNOWNNAME));
  const DISPID name = id_of(target.get(), L"Name");
  EXPECT_EQ(name, id_of(target.get(), L"Name"));
  CComVariant result;
  EXPECT_EQ(S_OK, invoke(target.get(), name, DISPATCH_PROPERTYGET, {}, &result));
  EXPECT_EQ(L"n", korlib::view_of(result.bstrVal));
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(target.get(), name, DISPATCH_METHOD, {}, &result));
  EXPECT_EQ(S_OK, invoke(target.get(), name, DISPATCH_PROPERTYPUT, {CComVariant(L"m")}, nullptr));
  const DISPID f = id_of(target.get(), L"f");
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(target.get(), f, DISPATCH_PROPERTYGET, {}, &result));
  EXPECT_EQ(S_OK, invoke(target.get(), f, DISPATCH_METHOD, {CComVariant(LONG{2}), CComVariant(LONG{1})}, &result));
  EXPECT_EQ(L"m12", korlib::view_of(result.bstrVal));
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(target.get(), 99, kBoth, {}, &result));
}

TEST_F(ScriptObjects, FindMembersAlongTheirPrototypes) {
  const CComPtr<IDispatch> target = object(L"new (class { m() { return 7 } })()");
  CComVariant result;
  EXPECT_EQ(S_OK, invoke(target.get(), id_of(target.get(), L"m"), DISPATCH_METHOD, {}, &result));
  EXPECT_EQ(7, result.lVal);
}

TEST_F(ScriptObjects, HaveNoNamesThatEveryObjectHas) {
  const CComPtr<IDispatch> plain = object(L"{ a: 1 }");
  const CComPtr<IDispatch> own = object(L"{ toString() { return 'me' }, ['__proto__']: 5, constructor: 6 }");
  const CComPtr<IDispatch> bare = object(L"Object.create(null, { a: { value: 1 }, valueOf: { value: 2 } })");
  const CComPtr<IDispatch> derived = object(L"new (class extends (class { valueOf() {} }) {})()");
  for (const wchar_t* name : {L"toString", L"constructor", L"__proto__", L"hasOwnProperty", L"valueOf"}) {
    id_of(plain.get(), name, DISP_E_UNKNOWNNAME);
  }
  for (const wchar_t* name : {L"toString", L"constructor", L"__proto__"}) EXPECT_GT(id_of(own.get(), name), 0);
  for (const wchar_t* name : {L"a", L"valueOf"}) EXPECT_GT(id_of(bare.get(), name), 0);
  id_of(bare.get(), L"toString", DISP_E_UNKNOWNNAME);
  EXPECT_GT(id_of(derived.get(), L"valueOf"), 0);
  id_of(derived.get(), L"constructor", DISP_E_UNKNOWNNAME);
  CComVariant result;
  const CComVariant key(L"__proto__");
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(plain.get(), DISPID_VALUE, kBoth, {key}, &result));
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND,
            invoke(plain.get(), DISPID_VALUE, DISPATCH_PROPERTYPUT, {CComVariant(own.get()), key}, nullptr));
  EXPECT_EQ(S_OK, invoke(plain.get(), DISPID_VALUE, kBoth, {CComVariant(L"a")}, &result));
}

TEST_F(ScriptObjects, TellFunctionsFromObjectsThatCanBeCalled) {
  must_run(L"p('k') = 'item'");
  const CComPtr<IDispatch> target = object(L"{ p, f() {}, m: p.Keep, n: { a: 1 } }");
  CComVariant result;
  const DISPID id = id_of(target.get(), L"p");
  EXPECT_EQ(S_OK, invoke(target.get(), id, DISPATCH_PROPERTYGET, {}, &result));
  EXPECT_EQ(static_cast<IDispatch*>(other.get()), result.pdispVal);
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(target.get(), id, DISPATCH_METHOD, {}, &result));
  EXPECT_EQ(S_OK, invoke(target.get(), id, kBoth, {CComVariant(L"k")}, &result));
  EXPECT_EQ(L"item", korlib::view_of(result.bstrVal));
  EXPECT_EQ(S_OK, invoke(target.get(), DISPID_VALUE, kBoth, {CComVariant(L"p")}, &result));
  EXPECT_EQ(static_cast<IDispatch*>(other.get()), result.pdispVal);
  for (const wchar_t* function : {L"f", L"m"}) {
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND,
              invoke(target.get(), id_of(target.get(), function), DISPATCH_PROPERTYGET, {}, &result));
  }
  EXPECT_EQ(S_OK, invoke(target.get(), id_of(target.get(), L"n"), kBoth, {CComVariant(L"a")}, &result));
  EXPECT_EQ(1, result.lVal);
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND,
            invoke(target.get(), id_of(target.get(), L"n"), kBoth, {CComVariant(L"toString")}, &result));
}

TEST_F(ScriptObjects, AreIndexedByTheirDefaultMember) {
  const CComPtr<IDispatch> target = object(L"{ a: 1, f() {}, toString() { return 'me' } }");
  CComVariant result;
  EXPECT_EQ(S_OK, invoke(target.get(), DISPID_VALUE, kBoth, {CComVariant(L"a")}, &result));
  EXPECT_EQ(1, result.lVal);
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(target.get(), DISPID_VALUE, kBoth, {CComVariant(L"b")}, &result));
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(target.get(), DISPID_VALUE, kBoth, {CComVariant(L"f")}, &result));
  EXPECT_EQ(S_OK, invoke(target.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {}, &result));
  EXPECT_EQ(L"me", korlib::view_of(result.bstrVal));
  const CComVariant key(L"c");
  EXPECT_EQ(S_OK, invoke(target.get(), DISPID_VALUE, DISPATCH_PROPERTYPUT, {CComVariant(LONG{3}), key}, nullptr));
  EXPECT_EQ(S_OK, invoke(target.get(), DISPID_VALUE, kBoth, {key}, &result));
  EXPECT_EQ(3, result.lVal);
}

TEST_F(ScriptObjects, AreCalledWhenTheyAreFunctions) {
  const CComPtr<IDispatch> target = object(L"(a, b) => a + b");
  CComVariant result;
  EXPECT_EQ(S_OK,
            invoke(target.get(), DISPID_VALUE, DISPATCH_METHOD, {CComVariant(LONG{2}), CComVariant(LONG{5})}, &result));
  EXPECT_EQ(7, result.lVal);
  EXPECT_EQ(S_OK, invoke(target.get(), DISPID_VALUE, DISPATCH_METHOD,
                         {CComVariant(korlib::omitted()), CComVariant(L"a")}, &result));
  EXPECT_EQ(L"aundefined", korlib::view_of(result.bstrVal));
}

TEST_F(ScriptObjects, AreSteppedThrough) {
  must_run(L"o.Keep(new Set([1, 'b']))");
  CComPtr<IDispatch> target(probe->kept.pdispVal);
  CComVariant result;
  ASSERT_EQ(S_OK, invoke(target.get(), DISPID_NEWENUM, kBoth, {}, &result));
  CComQIPtr<IEnumVARIANT> enumerator(result.punkVal);
  ASSERT_TRUE(enumerator);
  CComVariant items[3];
  ULONG fetched = 0;
  EXPECT_EQ(S_FALSE, enumerator->Next(3, items, &fetched));
  EXPECT_EQ(2U, fetched);
  EXPECT_EQ(1, items[0].lVal);
  EXPECT_EQ(L"b", korlib::view_of(items[1].bstrVal));
}

TEST_F(ScriptObjects, OfTheGlobalKindHaveWhatThePageDeclared) {
  must_run(L"var v = 1; function f() { return 2 }\nlet l = 3; const c = 4; class K {}; this.e = 5; g = 6");
  const CComPtr<IDispatch> target = globals();
  for (const wchar_t* name : {L"v", L"f", L"l", L"c", L"K", L"e", L"g"})
    EXPECT_GT(id_of(target.get(), name), 0) << narrow(name);
  for (const wchar_t* name :
       {L"Response", L"Object",   L"eval", L"Enumerator", L"$zelto",    L"$zelto_value", L"toString", L"V",
        L"nothing",  L"a b",      L"",     L"1",          L"v;f()",     L"undefined",    L"this",     L"null",
        L"true",     L"debugger", L"new",  L"enum",       L"__proto__", L"constructor"}) {
    id_of(target.get(), name, DISP_E_UNKNOWNNAME);
  }
  CComVariant result;
  EXPECT_EQ(S_OK, invoke(target.get(), id_of(target.get(), L"l"), DISPATCH_PROPERTYGET, {}, &result));
  EXPECT_EQ(3, result.lVal);
  EXPECT_EQ(S_OK,
            invoke(target.get(), id_of(target.get(), L"l"), DISPATCH_PROPERTYPUT, {CComVariant(LONG{9})}, nullptr));
  EXPECT_EQ("9", text(L"l"));
  EXPECT_EQ(E_FAIL,
            invoke(target.get(), id_of(target.get(), L"c"), DISPATCH_PROPERTYPUT, {CComVariant(LONG{9})}, nullptr));
  EXPECT_EQ(S_OK, invoke(target.get(), id_of(target.get(), L"f"), DISPATCH_METHOD, {}, &result));
  EXPECT_EQ(2, result.lVal);
  EXPECT_EQ(S_OK, invoke(target.get(), DISPID_VALUE, kBoth, {CComVariant(L"v")}, &result));
  EXPECT_EQ(1, result.lVal);
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(target.get(), DISPID_VALUE, kBoth, {CComVariant(L"Response")}, &result));
}

TEST_F(ScriptObjects, AnswerFailuresWithWords) {
  const CComPtr<IDispatch> target = object(L"function () { throw new TypeError('oh no') }");
  CComVariant result;
  EXPECT_EQ(E_FAIL, invoke(target.get(), DISPID_VALUE, DISPATCH_METHOD, {}, &result));
  EXPECT_EQ(VT_EMPTY, result.vt);
  CComPtr<IErrorInfo> info;
  ASSERT_EQ(S_OK, GetErrorInfo(0, info.put()));
  CComBSTR words;
  EXPECT_EQ(S_OK, info->GetDescription(words.put()));
  EXPECT_EQ(L"oh no", words.view());
  EXPECT_EQ(S_OK, info->GetSource(words.put()));
  EXPECT_EQ(L"TypeError", words.view());
}

TEST_F(ScriptObjects, AreKnownForWhatTheyAre) {
  const CComPtr<IDispatch> target = object(L"{}");
  EXPECT_TRUE(is_script_object(target.get()));
  EXPECT_FALSE(is_script_object(probe.get()));
  EXPECT_FALSE(is_script_object(nullptr));
}

TEST_F(ScriptObjects, StaySafeWhenTheirPageHasEnded) {
  const CComPtr<IDispatch> target = object(L"{ a: 1 }");
  const DISPID a = id_of(target.get(), L"a");
  realm.reset();
  CComVariant result;
  EXPECT_EQ(korlib::hresult(0x80010108), invoke(target.get(), a, DISPATCH_PROPERTYGET, {}, &result));
  open_realm();
  probe->kept = CComVariant(target.get());
  EXPECT_EQ("Zelto: The page that made this script object has ended at /site/page.asp:1", error_of(L"o.Give().a"));
  probe->kept.reset();
}

TEST_F(ScriptObjects, AreReleasedOnAnyThread) {
  CComPtr<IDispatch> early = object(L"{ a: 1 }");
  CComPtr<IDispatch> late = object(L"{ a: 2 }");
  HRESULT hr = S_OK;
  std::thread([&] {
    CComVariant result;
    hr = invoke(early.get(), DISPID_VALUE, kBoth, {CComVariant(L"a")}, &result);
    early.reset();
  }).join();
  EXPECT_EQ(korlib::hresult(0x8001010E), hr);
  must_run(L"o.Keep({})");
  probe->kept.reset();
  realm.reset();
  std::thread([&] { late.reset(); }).join();
}

// A wrapper whose last reference went elsewhere is not handed out again.
TEST_F(ScriptObjects, AreMadeAnewAfterAReleaseElsewhere) {
  must_run(L"var a = { n: 4 }");
  for (int i = 0; i < 100; ++i) {
    CComPtr<IDispatch> wrapper = object(L"a");
    std::thread thread([&] { wrapper.reset(); });
    must_run(L"o.Keep(a)");
    thread.join();
    EXPECT_EQ("4", text(L"o.Give() === a && o.Give().n"));
  }
  probe->kept.reset();
}

// The realm lets go of its wrappers while others do.
TEST_F(ScriptObjects, AreReleasedElsewhereWhileTheirPageEnds) {
  for (int i = 0; i < 100; ++i) {
    std::vector<CComPtr<IDispatch>> wrappers;
    for (int n = 0; n < 10; ++n) wrappers.push_back(object(L"{}"));
    std::atomic<bool> go = false;
    std::thread thread([&] {
      go.wait(false);
      wrappers.clear();
    });
    go = true;
    go.notify_one();
    realm.reset();
    thread.join();
    open_realm();
  }
}

}  // namespace
}  // namespace test
