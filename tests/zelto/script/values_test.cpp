// Every row of the table in engine.h, both ways, through real calls.
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <type_traits>

#include "zelto/script/script_test.h"

namespace test {
namespace {

class Values : public ScriptTest {
 protected:
  // What the expression makes of `v`, which a component hands to the script.
  std::string text_of(const VARIANT& v, std::wstring_view expression) {
    must_run(L"o.Keep((v, p) => String(" + std::wstring(expression) + L"))");
    CComVariant reversed[] = {CComVariant(static_cast<IDispatch*>(other.get())), CComVariant(v)};
    DISPPARAMS params{reversed, nullptr, 2, 0};
    CComVariant result;
    EXPECT_EQ(S_OK, probe->kept.pdispVal->Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_METHOD, &params, &result, nullptr,
                                                 nullptr));
    probe->kept.reset();
    return result.vt == VT_BSTR ? narrow(korlib::view_of(result.bstrVal)) : "no text";
  }
};

struct Outward {
  const wchar_t* expression;
  VARTYPE type;
};

// A vector of the values' type; what they point to is copied.
template <class Value>
SAFEARRAY* vector_of(VARTYPE type, LONG lower, std::vector<Value> values) {
  SAFEARRAY* array = SafeArrayCreateVector(type, lower, static_cast<ULONG>(values.size()));
  for (std::size_t i = 0; array && i < values.size(); ++i) {
    const LONG index = lower + static_cast<LONG>(i);
    void* value = &values[i];
    if constexpr (std::is_pointer_v<Value>) value = values[i];  // BSTR, IDispatch*
    EXPECT_EQ(S_OK, SafeArrayPutElement(array, &index, value));
  }
  return array;
}

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
  const CComVariant take = global(L"take");  // a function is no property that can be read
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

TEST_F(Values, ThatAreDatesKeepTheirLocalTime) {
  // 2001-02-03 04:05:06.789 by the calendar of automation.
  const double date = 36925 + (((4 * 60 + 5) * 60 + 6) * 1000 + 789) / 86400000.0;
  probe->kept = made_double(VT_DATE, date);
  EXPECT_EQ("2001,1,3,4,5,6,789",
            text(L"(d => [d.getFullYear(), d.getMonth(), d.getDate(), d.getHours(), d.getMinutes(), d.getSeconds(), "
                 L"d.getMilliseconds()])(o.Give())"));
  must_run(L"o.Keep(new Date(2001, 1, 3, 4, 5, 6, 789))");
  EXPECT_NEAR(probe->kept.date, date, 1e-9);
  // Before the calendar's day 0 the time of day still counts forwards: -1.25 is six in the morning.
  probe->kept = made_double(VT_DATE, -1.25);
  EXPECT_EQ("1899,11,29,6", text(L"(d => [d.getFullYear(), d.getMonth(), d.getDate(), d.getHours()])(o.Give())"));
  must_run(L"o.Keep(new Date(1899, 11, 29, 6))");
  EXPECT_DOUBLE_EQ(probe->kept.date, -1.25);
  EXPECT_EQ("TypeError: An invalid date has no value outside of the script at /site/page.asp:1",
            error_of(L"o.Keep(new Date(NaN))"));
}

class LocalTime : public Values {
 protected:
  void SetUp() override {
    if (const char* zone = std::getenv("TZ")) before_ = zone;
  }
  void TearDown() override {
    realm.reset();
    if (before_) {
      ::setenv("TZ", before_->c_str(), 1);
    } else {
      ::unsetenv("TZ");
    }
  }
  // What the script gives with that time zone, which an engine reads once.
  std::string text_in(const char* zone, std::wstring_view expression) {
    ::setenv("TZ", zone, 1);
    zelto::script::Engine there;
    zelto::script::Realm local(there);
    local.set_object(L"o", probe.get());
    local.set_object(L"Response", page.get());
    local.set_output(page.get());
    page->text.clear();
    local.run(zelto::language::compile(L"$zelto.out(" + std::wstring(expression) + L")", "/site/page.asp"));
    probe->kept.reset();
    return narrow(page->text);
  }

 private:
  std::optional<std::string> before_;
};

TEST_F(LocalTime, ComesBackFromEveryZoneAndSeason) {
  for (const char* zone : {"UTC", "Europe/Berlin", "America/New_York", "Asia/Kolkata", "Pacific/Chatham"}) {
    for (const wchar_t* date : {L"2024, 0, 15, 12, 30, 15, 250", L"2024, 6, 15, 12, 30, 15, 250", L"2024, 2, 31, 3, 0",
                                L"2024, 2, 10, 1, 59", L"2024, 9, 27, 3, 0", L"1969, 11, 31, 23, 59, 59, 999",
                                L"1900, 0, 1", L"1899, 11, 30, 6", L"9999, 11, 31", L"100, 0, 1"}) {
      EXPECT_EQ("0",
                text_in(zone, L"(d => { o.Keep(d); return +o.Give() - d })(new Date(" + std::wstring(date) + L"))"))
          << zone << ' ' << narrow(date);
    }
  }
}

TEST_F(LocalTime, IsWhatTheClockOnTheWallSays) {
  // Noon in winter and in summer is noon.
  for (const wchar_t* month : {L"0", L"6"}) {
    const std::wstring noon = L"(o.Keep(new Date(2024, " + std::wstring(month) + L", 15, 12)), ";
    EXPECT_EQ("12", text_in("Europe/Berlin", noon + L"o.Give().getHours())"));
  }
  ::setenv("TZ", "Europe/Berlin", 1);
  zelto::script::Engine there;
  zelto::script::Realm local(there);
  local.set_object(L"o", probe.get());
  local.run(zelto::language::compile(L"o.Keep(new Date(Date.UTC(2024, 6, 15, 10)))", "/site/page.asp"));
  EXPECT_EQ(VT_DATE, probe->kept.vt);
  EXPECT_DOUBLE_EQ(probe->kept.date, 45488.5);  // 2024-07-15 12:00
  local.run(zelto::language::compile(L"o.Keep(new Date(Date.UTC(2024, 0, 15, 11)))", "/site/page.asp"));
  EXPECT_DOUBLE_EQ(probe->kept.date, 45306.5);  // 2024-01-15 12:00
  // An hour that the clock skips is the next one.
  probe->kept = made_double(VT_DATE, 45382 + 2.5 / 24);  // 2024-03-31 02:30
  EXPECT_EQ("3:30", text_in("Europe/Berlin", L"(d => d.getHours() + ':' + d.getMinutes())(o.Give())"));
  // A zone whose clocks were half a minute off.
  EXPECT_EQ("0", text_in("Africa/Monrovia", L"(d => { o.Keep(d); return +o.Give() - d })(new Date(1960, 6, 1))"));
}

TEST_F(Values, ThatAreBytesAreCopied) {
  must_run(L"var b = new Uint8Array([1, 2, 255]); o.Keep(b); b[0] = 9");
  EXPECT_EQ("1,2,255", text(L"(v => v instanceof Uint8Array && v.join())(o.Give())"));
  must_run(L"o.Keep(new Uint8Array([1, 2, 3, 4]).subarray(1, 3))");
  EXPECT_EQ("2,3", text(L"o.Give().join()"));
  must_run(L"o.Keep(new Uint8Array(new Uint8Array([5, 6, 7, 8]).buffer, 2))");
  EXPECT_EQ("7,8", text(L"o.Give().join()"));
  must_run(L"o.Keep(new Int8Array(new Uint8Array([0, 255, 1]).buffer, 1, 1))");
  EXPECT_EQ("255", text(L"o.Give().join()"));
  must_run(L"o.Keep(new Uint16Array(new Uint16Array([1, 2, 3]).buffer, 2, 2))");
  EXPECT_EQ("2,3", text(L"o.Give() instanceof Uint8Array || o.Give().join()"));
  must_run(L"o.Keep(new Uint8Array([7, 8]).buffer)");
  EXPECT_EQ("7,8", text(L"o.Give().join()"));
  must_run(L"o.Keep(new ArrayBuffer(0))");
  EXPECT_EQ("0", text(L"o.Give().length"));
}

TEST_F(Values, ThatAreArraysNestAndAreCopied) {
  must_run(L"var a = [1, 'b', [true, null, undefined], {}]; o.Keep(a); a[0] = 2");
  EXPECT_EQ("1b3truenullundefinedtrue",
            text(L"(v => v[0] + v[1] + v[2].length + v[2][0] + v[2][1] + v[2][2] + (v[3] === a[3]))(o.Give())"));
  must_run(L"o.Keep([1,,3])");
  EXPECT_EQ("1||3", text(L"o.Give().join('|')"));
}

TEST_F(Values, ThatAreArraysOfOneTypeComeBackAsArrays) {
  CComBSTR a(L"a");
  CComBSTR b(L"b");
  IDispatch* object = other.get();
  const LONG last = std::numeric_limits<LONG>::max();
  const struct {
    SAFEARRAY* array;
    const wchar_t* expression;
  } rows[] = {
      {vector_of<SHORT>(VT_I2, 0, {1, -2}), L"v.join() === '1,-2'"},
      {vector_of<LONG>(VT_I4, 5, {1, 2, 3}), L"v.join() === '1,2,3'"},
      {vector_of<LONG>(VT_I4, last - 1, {1, 2}), L"v.join() === '1,2'"},
      {vector_of<LONG>(VT_I4, 0, {}), L"Array.isArray(v) && v.length === 0"},
      {vector_of<double>(VT_R8, 0, {0.5, 1e300}), L"v[0] === 0.5 && v[1] === 1e300"},
      {vector_of<LONGLONG>(VT_CY, 0, {12345}), L"v[0] === 1.2345"},
      {vector_of<DATE>(VT_DATE, 0, {36925}), L"v[0].getFullYear() === 2001"},
      {vector_of<VARIANT_BOOL>(VT_BOOL, 0, {VARIANT_TRUE, VARIANT_FALSE}), L"v.join() === 'true,false'"},
      {vector_of<BSTR>(VT_BSTR, 1, {a, b}), L"v.join() === 'a,b'"},
      {vector_of<IDispatch*>(VT_DISPATCH, 0, {object, object}), L"v[0] === p && v[1] === p"},
      {vector_of<BYTE>(VT_UI1, 0, {1, 255}), L"v instanceof Uint8Array && v.join() === '1,255'"},
      {vector_of<signed char>(VT_I1, 0, {1, -1}), L"v.join() === '1,-1'"},
      {nullptr, L"Array.isArray(v) && v.length === 0"},
  };
  for (const auto& row : rows) {
    CComVariant value;
    value.put()->vt = static_cast<VARTYPE>(row.array ? VT_ARRAY | row.array->vtElement : VT_ARRAY | VT_VARIANT);
    value.parray = row.array;
    EXPECT_EQ("true", text_of(value, row.expression)) << narrow(row.expression);
  }
}

TEST_F(Values, OfComponentsNest) {
  CComVariant inner(L"deep");
  for (int i = 0; i < 3; ++i) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, 2);
    const LONG index = 1;
    ASSERT_EQ(S_OK, SafeArrayPutElement(array, &index, &inner));
    inner.reset();
    inner.put()->vt = VT_ARRAY | VT_VARIANT;
    inner.parray = array;
  }
  EXPECT_EQ("[null,[null,[null,\"deep\"]]]", text_of(inner, L"JSON.stringify(v)"));
}

TEST_F(Values, OfSeveralDimensionsNestFromTheFirst) {
  const SAFEARRAYBOUND bounds[] = {{2, 0}, {3, 1}};
  SAFEARRAY* array = SafeArrayCreate(VT_I4, 2, bounds);
  ASSERT_NE(nullptr, array);
  for (LONG x = 0; x < 2; ++x) {
    for (LONG y = 1; y < 4; ++y) {
      const LONG indices[] = {x, y};
      LONG value = x * 10 + y;
      ASSERT_EQ(S_OK, SafeArrayPutElement(array, indices, &value));
    }
  }
  probe->kept.put()->vt = VT_ARRAY | VT_I4;
  probe->kept.parray = array;
  EXPECT_EQ("[[1,2,3],[11,12,13]]", text(L"JSON.stringify(o.Give())"));
  EXPECT_EQ(
      "2;1;2;0;13;1,11,2,12,3,13",
      text(L"(b => [b.dimensions(), b.ubound(1), b.ubound(2), b.lbound(), b.getItem(1, 2), b.toArray()].join(';'))"
           L"(new VBArray(o.Give()))"));
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
