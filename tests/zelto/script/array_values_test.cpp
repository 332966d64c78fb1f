// Arrays and bytes by value, both ways.
#include <type_traits>
#include <vector>

#include "zelto/script/values_fixture.h"

namespace test {
namespace {

using ArrayValues = ValuesTest;

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

TEST_F(ArrayValues, ThatAreBytesAreCopied) {
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

TEST_F(ArrayValues, ThatAreArraysNestAndAreCopied) {
  must_run(L"var a = [1, 'b', [true, null, undefined], {}]; o.Keep(a); a[0] = 2");
  EXPECT_EQ("1b3truenullundefinedtrue",
            text(L"(v => v[0] + v[1] + v[2].length + v[2][0] + v[2][1] + v[2][2] + (v[3] === a[3]))(o.Give())"));
  must_run(L"o.Keep([1,,3])");
  EXPECT_EQ("1||3", text(L"o.Give().join('|')"));
}

TEST_F(ArrayValues, ThatAreArraysOfOneTypeComeBackAsArrays) {
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

TEST_F(ArrayValues, OfComponentsNest) {
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

TEST_F(ArrayValues, OfSeveralDimensionsNestFromTheFirst) {
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

}  // namespace
}  // namespace test
