// Every row of the table in engine.h, both ways, through real calls.
#include <cmath>
#include <limits>

#include "zelto/script/script_test.h"

namespace test {
namespace {

using Values = ScriptTest;

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
    EXPECT_EQ(text(L"o.TypeOf(" + std::wstring(row.expression) + L")"), std::to_string(row.type))
        << narrow(row.expression);
  }
  EXPECT_EQ(text(L"o.TypeOf(undefined)"), std::to_string(VT_ERROR));
  EXPECT_EQ(text(L"o.TypeOf()"), std::to_string(VT_ERROR));
}

TEST_F(Values, ThatAreUndefinedAreEmptyWhenTheyAreStored) {
  must_run(L"o('a') = undefined");
  EXPECT_EQ(probe->put_type, VT_EMPTY);
  must_run(L"o('a') = null");
  EXPECT_EQ(probe->put_type, VT_NULL);
}

TEST_F(Values, ThatAreTextCrossInEveryPlane) {
  must_run(L"o.Keep('a\\u00e4\\u4e00\\ud83d\\ude00\\0b')");
  EXPECT_EQ(korlib::view_of(probe->kept.bstrVal), std::wstring_view(L"a\u00e4\u4e00\U0001F600\0b", 6));
  EXPECT_EQ(text(L"o.Give() === 'a\\u00e4\\u4e00\\ud83d\\ude00\\0b'"), "true");
  must_run(L"o.Keep('\\ud83d' + '|' + '\\ude00' + '\\ud83d')");
  EXPECT_EQ(korlib::view_of(probe->kept.bstrVal), L"\ufffd|\ufffd\ufffd");
  probe->kept = CComVariant(std::wstring_view(L"\xD800|\x110000"));
  EXPECT_EQ(text(L"o.Give() === '\\ufffd|\\ufffd'"), "true");
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
VARIANT made_double(VARTYPE type, double number) {
  VARIANT value{};
  value.vt = type;
  value.dblVal = number;
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
      {made(VT_I8, (1LL << 53) + 2), L"v === 9007199254740994"},
      {made(VT_I8, (1LL << 62)), L"v === 2 ** 62"},
      {made(VT_UI8, -1), L"v === 2 ** 64"},
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
    EXPECT_EQ(text(L"(v => " + std::wstring(row.expression) + L")(o.Give())"), "true")
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
  const CComVariant take = global(L"take");  // a function is no property that can be read
  EXPECT_EQ(take.vt, VT_EMPTY);
  must_run(L"o.Keep(take)");
  DISPPARAMS params{&outer, nullptr, 1, 0};
  EXPECT_EQ(
      probe->kept.pdispVal->Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr),
      S_OK);
  EXPECT_EQ(global(L"got").lVal, 5);
}

TEST_F(Values, ThatAreDatesKeepTheirLocalTime) {
  // 2001-02-03 04:05:06.789 by the calendar of automation.
  const double date = 36925 + (((4 * 60 + 5) * 60 + 6) * 1000 + 789) / 86400000.0;
  probe->kept = made_double(VT_DATE, date);
  EXPECT_EQ(text(L"(d => [d.getFullYear(), d.getMonth(), d.getDate(), d.getHours(), d.getMinutes(), d.getSeconds(), "
                 L"d.getMilliseconds()])(o.Give())"),
            "2001,1,3,4,5,6,789");
  must_run(L"o.Keep(new Date(2001, 1, 3, 4, 5, 6, 789))");
  EXPECT_NEAR(probe->kept.date, date, 1e-9);
  // Before the calendar's day 0 the time of day still counts forwards: -1.25 is six in the morning.
  probe->kept = made_double(VT_DATE, -1.25);
  EXPECT_EQ(text(L"(d => [d.getFullYear(), d.getMonth(), d.getDate(), d.getHours()])(o.Give())"), "1899,11,29,6");
  must_run(L"o.Keep(new Date(1899, 11, 29, 6))");
  EXPECT_DOUBLE_EQ(probe->kept.date, -1.25);
  EXPECT_EQ(error_of(L"o.Keep(new Date(NaN))"),
            "TypeError: An invalid date has no value outside of the script at /site/page.asp:1");
}

TEST_F(Values, ThatAreBytesAreCopied) {
  must_run(L"var b = new Uint8Array([1, 2, 255]); o.Keep(b); b[0] = 9");
  EXPECT_EQ(text(L"(v => v instanceof Uint8Array && v.join())(o.Give())"), "1,2,255");
  must_run(L"o.Keep(new Uint8Array([1, 2, 3, 4]).subarray(1, 3))");
  EXPECT_EQ(text(L"o.Give().join()"), "2,3");
  must_run(L"o.Keep(new Uint8Array([7, 8]).buffer)");
  EXPECT_EQ(text(L"o.Give().join()"), "7,8");
  must_run(L"o.Keep(new ArrayBuffer(0))");
  EXPECT_EQ(text(L"o.Give().length"), "0");
}

TEST_F(Values, ThatAreArraysNestAndAreCopied) {
  must_run(L"var a = [1, 'b', [true, null, undefined], {}]; o.Keep(a); a[0] = 2");
  EXPECT_EQ(text(L"(v => v[0] + v[1] + v[2].length + v[2][0] + v[2][1] + v[2][2] + (v[3] === a[3]))(o.Give())"),
            "1b3truenullundefinedtrue");
  must_run(L"o.Keep([1,,3])");
  EXPECT_EQ(text(L"o.Give().join('|')"), "1||3");
}

TEST_F(Values, OfSeveralDimensionsNestFromTheFirst) {
  const SAFEARRAYBOUND bounds[] = {{2, 0}, {3, 1}};
  SAFEARRAY* array = SafeArrayCreate(VT_I4, 2, bounds);
  ASSERT_NE(array, nullptr);
  for (LONG x = 0; x < 2; ++x) {
    for (LONG y = 1; y < 4; ++y) {
      const LONG indices[] = {x, y};
      LONG value = x * 10 + y;
      ASSERT_EQ(SafeArrayPutElement(array, indices, &value), S_OK);
    }
  }
  probe->kept.put()->vt = VT_ARRAY | VT_I4;
  probe->kept.parray = array;
  EXPECT_EQ(text(L"JSON.stringify(o.Give())"), "[[1,2,3],[11,12,13]]");
  EXPECT_EQ(
      text(L"(b => [b.dimensions(), b.ubound(1), b.ubound(2), b.lbound(), b.getItem(1, 2), b.toArray()].join(';'))"
           L"(new VBArray(o.Give()))"),
      "2;1;2;0;13;1,11,2,12,3,13");
}

TEST_F(Values, ThatHaveNoFormOutsideAreRefused) {
  EXPECT_EQ(error_of(L"o.Keep(Symbol())"),
            "TypeError: A symbol has no value outside of the script at /site/page.asp:1");
  EXPECT_EQ(error_of(L"o.Keep(2n ** 63n)"), "Error: Overflow (0x8002000A) at /site/page.asp:1");
  EXPECT_EQ(error_of(L"var a = []; a[0] = a; o.Keep(a)"), "Error: The array is nested too deeply at /site/page.asp:1");
  EXPECT_EQ(error_of(L"o.Keep(new Array(4e9))"), "Error: The array is too long at /site/page.asp:1");
}

TEST_F(Values, AreTheSameObjectEachTime) {
  must_run(L"var a = { n: 1 }, f = function () {}; o.Keep(a)");
  EXPECT_EQ(text(L"o.Give() === a"), "true");
  must_run(L"o.Keep(f)");
  EXPECT_EQ(text(L"o.Give() === f"), "true");
  must_run(L"o.Keep(p)");
  EXPECT_EQ(text(L"o.Give() === p"), "true");
  EXPECT_EQ(probe->kept.pdispVal, static_cast<IDispatch*>(other.get()));
  must_run(L"o.Keep(globalThis)");
  EXPECT_EQ(text(L"o.Give() === this"), "true");
  must_run(L"o.Keep(a); p.Keep(a)");
  EXPECT_EQ(probe->kept.pdispVal, other->kept.pdispVal);
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
  EXPECT_EQ(other->kept.vt, VT_UNKNOWN);
  EXPECT_EQ(other->kept.punkVal, &nameless);
  probe->kept.reset();
  other->kept.reset();
  realm.reset();
  EXPECT_EQ(nameless.count, 1U);
}

TEST_F(Values, ThatAreObjectsAreSetAsObjects) {
  must_run(L"o('a') = p");
  EXPECT_EQ(probe->how, L"putref");
  must_run(L"o('a') = 1");
  EXPECT_EQ(probe->how, L"put");
}

}  // namespace
}  // namespace test
