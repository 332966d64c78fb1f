// Script objects as components see them.
#include <atomic>
#include <thread>
#include <vector>

#include "zelto/script/script_test.h"

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
    EXPECT_EQ(target->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_SYSTEM_DEFAULT, &id), expected);
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
  EXPECT_EQ(id_of(target.get(), L"name", DISP_E_UNKNOWNNAME), DISPID_UNKNOWN);
  const DISPID name = id_of(target.get(), L"Name");
  EXPECT_EQ(id_of(target.get(), L"Name"), name);
  CComVariant result;
  EXPECT_EQ(invoke(target.get(), name, DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(korlib::view_of(result.bstrVal), L"n");
  EXPECT_EQ(invoke(target.get(), name, DISPATCH_METHOD, {}, &result), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(invoke(target.get(), name, DISPATCH_PROPERTYPUT, {CComVariant(L"m")}, nullptr), S_OK);
  const DISPID f = id_of(target.get(), L"f");
  EXPECT_EQ(invoke(target.get(), f, DISPATCH_PROPERTYGET, {}, &result), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(invoke(target.get(), f, DISPATCH_METHOD, {CComVariant(LONG{2}), CComVariant(LONG{1})}, &result), S_OK);
  EXPECT_EQ(korlib::view_of(result.bstrVal), L"m12");
  EXPECT_EQ(invoke(target.get(), 99, kBoth, {}, &result), DISP_E_MEMBERNOTFOUND);
}

TEST_F(ScriptObjects, FindMembersAlongTheirPrototypes) {
  const CComPtr<IDispatch> target = object(L"new (class { m() { return 7 } })()");
  CComVariant result;
  EXPECT_EQ(invoke(target.get(), id_of(target.get(), L"m"), DISPATCH_METHOD, {}, &result), S_OK);
  EXPECT_EQ(result.lVal, 7);
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
  EXPECT_EQ(invoke(plain.get(), DISPID_VALUE, kBoth, {key}, &result), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(invoke(plain.get(), DISPID_VALUE, DISPATCH_PROPERTYPUT, {CComVariant(own.get()), key}, nullptr),
            DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(invoke(plain.get(), DISPID_VALUE, kBoth, {CComVariant(L"a")}, &result), S_OK);
}

TEST_F(ScriptObjects, TellFunctionsFromObjectsThatCanBeCalled) {
  must_run(L"p('k') = 'item'");
  const CComPtr<IDispatch> target = object(L"{ p, f() {}, m: p.Keep, n: { a: 1 } }");
  CComVariant result;
  const DISPID id = id_of(target.get(), L"p");
  EXPECT_EQ(invoke(target.get(), id, DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.pdispVal, static_cast<IDispatch*>(other.get()));
  EXPECT_EQ(invoke(target.get(), id, DISPATCH_METHOD, {}, &result), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(invoke(target.get(), id, kBoth, {CComVariant(L"k")}, &result), S_OK);
  EXPECT_EQ(korlib::view_of(result.bstrVal), L"item");
  EXPECT_EQ(invoke(target.get(), DISPID_VALUE, kBoth, {CComVariant(L"p")}, &result), S_OK);
  EXPECT_EQ(result.pdispVal, static_cast<IDispatch*>(other.get()));
  for (const wchar_t* function : {L"f", L"m"}) {
    EXPECT_EQ(invoke(target.get(), id_of(target.get(), function), DISPATCH_PROPERTYGET, {}, &result),
              DISP_E_MEMBERNOTFOUND);
  }
  EXPECT_EQ(invoke(target.get(), id_of(target.get(), L"n"), kBoth, {CComVariant(L"a")}, &result), S_OK);
  EXPECT_EQ(result.lVal, 1);
  EXPECT_EQ(invoke(target.get(), id_of(target.get(), L"n"), kBoth, {CComVariant(L"toString")}, &result),
            DISP_E_MEMBERNOTFOUND);
}

TEST_F(ScriptObjects, AreIndexedByTheirDefaultMember) {
  const CComPtr<IDispatch> target = object(L"{ a: 1, f() {}, toString() { return 'me' } }");
  CComVariant result;
  EXPECT_EQ(invoke(target.get(), DISPID_VALUE, kBoth, {CComVariant(L"a")}, &result), S_OK);
  EXPECT_EQ(result.lVal, 1);
  EXPECT_EQ(invoke(target.get(), DISPID_VALUE, kBoth, {CComVariant(L"b")}, &result), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(invoke(target.get(), DISPID_VALUE, kBoth, {CComVariant(L"f")}, &result), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(invoke(target.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(korlib::view_of(result.bstrVal), L"me");
  const CComVariant key(L"c");
  EXPECT_EQ(invoke(target.get(), DISPID_VALUE, DISPATCH_PROPERTYPUT, {CComVariant(LONG{3}), key}, nullptr), S_OK);
  EXPECT_EQ(invoke(target.get(), DISPID_VALUE, kBoth, {key}, &result), S_OK);
  EXPECT_EQ(result.lVal, 3);
}

TEST_F(ScriptObjects, AreCalledWhenTheyAreFunctions) {
  const CComPtr<IDispatch> target = object(L"(a, b) => a + b");
  CComVariant result;
  EXPECT_EQ(invoke(target.get(), DISPID_VALUE, DISPATCH_METHOD, {CComVariant(LONG{2}), CComVariant(LONG{5})}, &result),
            S_OK);
  EXPECT_EQ(result.lVal, 7);
  EXPECT_EQ(
      invoke(target.get(), DISPID_VALUE, DISPATCH_METHOD, {CComVariant(korlib::omitted()), CComVariant(L"a")}, &result),
      S_OK);
  EXPECT_EQ(korlib::view_of(result.bstrVal), L"aundefined");
}

TEST_F(ScriptObjects, AreSteppedThrough) {
  must_run(L"o.Keep(new Set([1, 'b']))");
  CComPtr<IDispatch> target(probe->kept.pdispVal);
  CComVariant result;
  ASSERT_EQ(invoke(target.get(), DISPID_NEWENUM, kBoth, {}, &result), S_OK);
  CComQIPtr<IEnumVARIANT> enumerator(result.punkVal);
  ASSERT_TRUE(enumerator);
  CComVariant items[3];
  ULONG fetched = 0;
  EXPECT_EQ(enumerator->Next(3, items, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 2U);
  EXPECT_EQ(items[0].lVal, 1);
  EXPECT_EQ(korlib::view_of(items[1].bstrVal), L"b");
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
  EXPECT_EQ(invoke(target.get(), id_of(target.get(), L"l"), DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.lVal, 3);
  EXPECT_EQ(invoke(target.get(), id_of(target.get(), L"l"), DISPATCH_PROPERTYPUT, {CComVariant(LONG{9})}, nullptr),
            S_OK);
  EXPECT_EQ(text(L"l"), "9");
  EXPECT_EQ(invoke(target.get(), id_of(target.get(), L"c"), DISPATCH_PROPERTYPUT, {CComVariant(LONG{9})}, nullptr),
            E_FAIL);
  EXPECT_EQ(invoke(target.get(), id_of(target.get(), L"f"), DISPATCH_METHOD, {}, &result), S_OK);
  EXPECT_EQ(result.lVal, 2);
  EXPECT_EQ(invoke(target.get(), DISPID_VALUE, kBoth, {CComVariant(L"v")}, &result), S_OK);
  EXPECT_EQ(result.lVal, 1);
  EXPECT_EQ(invoke(target.get(), DISPID_VALUE, kBoth, {CComVariant(L"Response")}, &result), DISP_E_MEMBERNOTFOUND);
}

TEST_F(ScriptObjects, AnswerFailuresWithWords) {
  const CComPtr<IDispatch> target = object(L"function () { throw new TypeError('oh no') }");
  CComVariant result;
  EXPECT_EQ(invoke(target.get(), DISPID_VALUE, DISPATCH_METHOD, {}, &result), E_FAIL);
  EXPECT_EQ(result.vt, VT_EMPTY);
  CComPtr<IErrorInfo> info;
  ASSERT_EQ(GetErrorInfo(0, info.put()), S_OK);
  CComBSTR words;
  EXPECT_EQ(info->GetDescription(words.put()), S_OK);
  EXPECT_EQ(words.view(), L"oh no");
  EXPECT_EQ(info->GetSource(words.put()), S_OK);
  EXPECT_EQ(words.view(), L"TypeError");
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
  EXPECT_EQ(invoke(target.get(), a, DISPATCH_PROPERTYGET, {}, &result), korlib::hresult(0x80010108));
  open_realm();
  probe->kept = CComVariant(target.get());
  EXPECT_EQ(error_of(L"o.Give().a"), "Zelto: The page that made this script object has ended at /site/page.asp:1");
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
  EXPECT_EQ(hr, korlib::hresult(0x8001010E));
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
    EXPECT_EQ(text(L"o.Give() === a && o.Give().n"), "4");
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
