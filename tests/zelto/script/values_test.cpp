// Every row of the table in values.h, both ways, through real calls.
#include <cmath>
#include <limits>

#include "zelto/script/values_fixture.h"

namespace test {
namespace {

using Values = ValuesTest;

struct Outward {
  const wchar_t* expression;
  VARTYPE type;
};

TEST_F(Values, HaveTheTypeThatTheirKindSays) {
  const Outward rows[] = {
      {L"null", VT_NULL},
      {L"true", VT_BOOL},
      {L"false", VT_BOOL},
      {L"''", VT_BSTR},
      {L"'text'", VT_BSTR},
      {L"0", VT_I4},
      {L"2147483647", VT_I4},
      {L"-2147483648", VT_I4},
      {L"2147483648", VT_R8},
      {L"-2147483649", VT_R8},
      {L"1.5", VT_R8},
      {L"NaN", VT_R8},
      {L"Infinity", VT_R8},
      {L"12n", VT_I8},
      {L"new Date(0)", VT_DATE},
      {L"new ArrayBuffer(2)", VT_ARRAY | VT_UI1},
      {L"new Uint8Array(2)", VT_ARRAY | VT_UI1},
      {L"new Uint8ClampedArray(2)", VT_ARRAY | VT_UI1},
      {L"[]", VT_ARRAY | VT_VARIANT},
      {L"[1, [2]]", VT_ARRAY | VT_VARIANT},
      {L"new Float64Array(2)", VT_ARRAY | VT_VARIANT},
      {L"({})", VT_DISPATCH},
      {L"new Map()", VT_DISPATCH},
      {L"function () {}", VT_DISPATCH},
      {L"/a/", VT_DISPATCH},
      {L"new String('a')", VT_DISPATCH},
      {L"o", VT_DISPATCH},
      {L"globalThis", VT_DISPATCH},
  };
  for (const Outward& row : rows) {
    EXPECT_EQ(std::to_string(row.type), text(L"o.TypeOf(" + std::wstring(row.expression) + L")"))
        << narrow(row.expression);
  }
  EXPECT_EQ(std::to_string(VT_ERROR), text(L"o.TypeOf(undefined)"));
  EXPECT_EQ(std::to_string(VT_ERROR), text(L"o.TypeOf()"));
}

TEST_F(Values, ThatAreUndefinedAreEmptyWhereAnArgumentIsRequired) {
  must_run(L"o.Keep(undefined)");  // a VARIANT
  EXPECT_EQ(VT_EMPTY, probe->kept.vt);
  EXPECT_EQ(std::to_string(VT_ERROR), text(L"o.TypeOf(undefined)"));  // one that may be left out
  EXPECT_EQ("everything", text(L"o.ReadText(undefined)"));
  // Text is refused as omitted and taken as empty; a refusal that names no argument is one of the member's own.
  EXPECT_EQ(
      "Error: Object doesn't support this property or method: "
      "'CallMember' (0x80020006) at /site/page.asp:1",
      error_of(L"o.CallMember(p, undefined)"));
  int calls = 0;
  probe->action = [&calls] {
    ++calls;
    return DISP_E_TYPEMISMATCH;
  };
  error_of(L"o.Act(undefined)");
  error_of(L"o.Act()");
  EXPECT_EQ(1, calls);
}

TEST_F(Values, ThatAreUndefinedAreEmptyWhenTheyAreStored) {
  must_run(L"o('a') = undefined");
  EXPECT_EQ(VT_EMPTY, probe->put_type);
  must_run(L"o('a') = null");
  EXPECT_EQ(VT_NULL, probe->put_type);
}

TEST_F(Values, ThatAreTextCrossInEveryPlane) {
  must_run(L"o.Keep('a\\u00e4\\u4e00\\ud83d\\ude00\\0b')");
  EXPECT_EQ(std::wstring_view(L"a\u00e4\u4e00\U0001F600\0b", 6), korlib::view_of(probe->kept.bstrVal));
  EXPECT_EQ("true", text(L"o.Give() === 'a\\u00e4\\u4e00\\ud83d\\ude00\\0b'"));
  must_run(L"o.Keep('\\ud83d' + '|' + '\\ude00' + '\\ud83d')");
  EXPECT_EQ(L"\ufffd|\ufffd\ufffd", korlib::view_of(probe->kept.bstrVal));
  probe->kept = CComVariant(std::wstring_view(L"\xD800|\x110000"));
  EXPECT_EQ("true", text(L"o.Give() === '\\ufffd|\\ufffd'"));
}

struct Inward {
  VARIANT value;
  const wchar_t* expression;  // of `v`, to be true
};

VARIANT made(VARTYPE type, LONGLONG bits) {
  VARIANT value{};
  value.vt = type;
  value.llVal = bits;
  return value;
}

TEST_F(Values, ComeBackAsWhatTheScriptHasForThem) {
  VARIANT single{};
  single.vt = VT_R4;
  single.fltVal = 0.5F;
  const Inward rows[] = {
      {made(VT_EMPTY, 0), L"v === undefined"},
      {made(VT_NULL, 0), L"v === null"},
      {made(VT_BOOL, VARIANT_TRUE), L"v === true"},
      {made(VT_BOOL, 1), L"v === true"},
      {made(VT_BOOL, 0), L"v === false"},
      {made(VT_I1, -3), L"v === -3"},
      {made(VT_UI1, 200), L"v === 200"},
      {made(VT_I2, -300), L"v === -300"},
      {made(VT_UI2, 60000), L"v === 60000"},
      {made(VT_I4, -70000), L"v === -70000"},
      {made(VT_INT, -70000), L"v === -70000"},
      {made(VT_UI4, 0xFFFFFFFF), L"v === 4294967295"},
      {made(VT_UINT, 0xFFFFFFFF), L"v === 4294967295"},
      {made(VT_I8, (1LL << 53) - 1), L"v === Number.MAX_SAFE_INTEGER"},
      {made(VT_I8, 1 - (1LL << 53)), L"v === Number.MIN_SAFE_INTEGER"},
      {made(VT_I8, (1LL << 53) + 1), L"v === 9007199254740993n"},
      {made(VT_I8, INT64_MIN), L"v === -9223372036854775808n && `${v}` === '-9223372036854775808'"},
      {made(VT_UI8, (1LL << 53) - 1), L"v === Number.MAX_SAFE_INTEGER"},
      {made(VT_UI8, -1), L"v === 18446744073709551615n"},
      {single, L"v === 0.5"},
      {made_double(VT_R8, 1e300), L"v === 1e300"},
      {made_double(VT_R8, std::numeric_limits<double>::quiet_NaN()), L"v !== v"},
      {made(VT_CY, 12345), L"v === 1.2345"},
      {made(VT_ERROR, DISP_E_PARAMNOTFOUND), L"v === undefined"},
      {made(VT_ERROR, 5), L"v === 5"},
      {made(VT_DISPATCH, 0), L"v === null"},
      {made(VT_UNKNOWN, 0), L"v === null"},
      {made(VT_BSTR, 0), L"v === ''"},
  };
  for (const Inward& row : rows) {
    probe->kept = row.value;
    EXPECT_EQ("true", text(L"(v => " + std::wstring(row.expression) + L")(o.Give())"))
        << row.value.vt << ' ' << narrow(row.expression);
  }
}

TEST_F(Values, ThatAreReferencesAreFollowed) {
  LONG number = 5;
  VARIANT inner = made(VT_BYREF | VT_I4, 0);
  inner.plVal = &number;
  VARIANT outer = made(VT_BYREF | VT_VARIANT, 0);
  outer.pvarVal = &inner;
  CComPtr<IDispatch> function;
  must_run(L"var got; function take(v) { got = v }");
  const CComVariant take = global(L"take");  // a function cannot be read as a property
  EXPECT_EQ(VT_EMPTY, take.vt);
  must_run(L"o.Keep(take)");
  DISPPARAMS params{&outer, nullptr, 1, 0};
  EXPECT_EQ(S_OK, probe->kept.pdispVal->Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr,
                                               nullptr));
  EXPECT_EQ(5, global(L"got").lVal);
}

TEST_F(Values, ThatAreReferencesToEachTypeAreFollowed) {
  SHORT small = -300;
  LONG number = 70000;
  LONGLONG large = 1LL << 40;
  float single = 0.5F;
  double fraction = 2.5;
  CY money{};
  money.int64 = 12345;
  VARIANT_BOOL truth = VARIANT_TRUE;
  CComBSTR words(L"words");
  BSTR text_slot = words;
  SCODE code = 5;
  BYTE byte = 200;
  DATE day = 36925;
  IDispatch* object = other.get();
  IDispatch* none = nullptr;
  SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 0, 2);
  const struct {
    VARTYPE type;
    void* slot;
    const wchar_t* expression;
  } rows[] = {
      {VT_I2, &small, L"v === -300"},
      {VT_I4, &number, L"v === 70000"},
      {VT_I8, &large, L"v === 2 ** 40"},
      {VT_R4, &single, L"v === 0.5"},
      {VT_R8, &fraction, L"v === 2.5"},
      {VT_CY, &money, L"v === 1.2345"},
      {VT_BOOL, &truth, L"v === true"},
      {VT_BSTR, &text_slot, L"v === 'words'"},
      {VT_ERROR, &code, L"v === 5"},
      {VT_UI1, &byte, L"v === 200"},
      {VT_DATE, &day, L"v.getFullYear() === 2001"},
      {VT_DISPATCH, &object, L"v === p"},
      {VT_DISPATCH, &none, L"v === null"},
      {VT_ARRAY | VT_I4, &array, L"v.join() === '0,0'"},
      {VT_I4, nullptr, L"v === undefined"},
  };
  for (const auto& row : rows) {
    VARIANT reference{};
    reference.vt = static_cast<VARTYPE>(VT_BYREF | row.type);
    reference.byref = row.slot;
    EXPECT_EQ("true", text_of(reference, row.expression)) << row.type << ' ' << narrow(row.expression);
  }
  SafeArrayDestroy(array);
}

TEST_F(Values, ThatHaveNoFormOutsideAreRefused) {
  EXPECT_EQ("TypeError: A symbol has no value outside of the script at /site/page.asp:1",
            error_of(L"o.Keep(Symbol())"));
  EXPECT_EQ("Error: Overflow (0x8002000A) at /site/page.asp:1", error_of(L"o.Keep(2n ** 63n)"));
  EXPECT_EQ("Error: The array is nested too deeply at /site/page.asp:1", error_of(L"var a = []; a[0] = a; o.Keep(a)"));
  EXPECT_EQ("Error: The array is too long at /site/page.asp:1", error_of(L"o.Keep(new Array(4e9))"));
}

TEST_F(Values, AreTheSameObjectEachTime) {
  must_run(L"var a = { n: 1 }, f = function () {}; o.Keep(a)");
  EXPECT_EQ("true", text(L"o.Give() === a"));
  must_run(L"o.Keep(f)");
  EXPECT_EQ("true", text(L"o.Give() === f"));
  must_run(L"o.Keep(p)");
  EXPECT_EQ("true", text(L"o.Give() === p"));
  EXPECT_EQ(static_cast<IDispatch*>(other.get()), probe->kept.pdispVal);
  must_run(L"o.Keep(globalThis)");
  EXPECT_EQ("true", text(L"o.Give() === this"));
  must_run(L"o.Keep(a); p.Keep(a)");
  EXPECT_EQ(other->kept.pdispVal, probe->kept.pdispVal);
  probe->kept.reset();
  other->kept.reset();
}

struct Nameless final : IUnknown {
  HRESULT QueryInterface(REFIID riid, void** ppv) override { return korlib::query_list<IUnknown>(this, riid, ppv); }
  ULONG AddRef() override { return ++count; }
  ULONG Release() override { return --count; }
  ULONG count = 1;
  virtual ~Nameless() = default;
};

TEST_F(Values, WithoutMembersCanBeHandedBack) {
  Nameless nameless;
  probe->kept = CComVariant(static_cast<IUnknown*>(&nameless));
  must_run(L"var u = o.Give(); p.Keep(u)");
  EXPECT_EQ(VT_UNKNOWN, other->kept.vt);
  EXPECT_EQ(&nameless, other->kept.punkVal);
  probe->kept.reset();
  other->kept.reset();
  realm.reset();
  EXPECT_EQ(1U, nameless.count);
}

TEST_F(Values, ThatAreObjectsAreSetAsObjects) {
  must_run(L"o('a') = p");
  EXPECT_EQ(L"putref", probe->how);
  must_run(L"o('a') = 1");
  EXPECT_EQ(L"put", probe->how);
}

}  // namespace
}  // namespace test
