#include <korlib/variant.h>

#include <gtest/gtest.h>

#include <cstring>

#include <korlib_host/diagnostics.h>

#include "korlib/variant/default_object.h"
#include "korlib/variant/values.h"

namespace {

constexpr VARTYPE kPlainTypes[] = {VT_EMPTY, VT_NULL, VT_I1,   VT_I2, VT_I4, VT_I8, VT_INT,  VT_UI1,  VT_UI2,
                                   VT_UI4,   VT_UI8,  VT_UINT, VT_R4, VT_R8, VT_CY, VT_DATE, VT_BOOL, VT_ERROR};

TEST(Variant, IsEmptyAfterInit) {
  VARIANT v;
  v.vt = VT_BSTR;
  v.llVal = -1;
  VariantInit(&v);
  EXPECT_EQ(VT_EMPTY, v.vt);
  EXPECT_EQ(0, v.llVal);
}

TEST(Variant, ClearsEveryPlainType) {
  for (const VARTYPE vt : kPlainTypes) {
    VARIANT v{};
    v.vt = vt;
    v.llVal = -1;
    EXPECT_EQ(S_OK, VariantClear(&v)) << vt;
    EXPECT_EQ(VT_EMPTY, v.vt);
  }
}

TEST(Variant, RefusesTypesThatDoNotExist) {
  const VARTYPE no_types[] = {
      VT_VARIANT, 14, 15, 24, 36, 72, 0x0FFF, 0x1008, VT_BYREF, VT_BYREF | VT_NULL, VT_ARRAY, VT_ARRAY | 14, 0x8003};
  for (const VARTYPE vt : no_types) {
    VARIANT v{};
    v.vt = vt;
    EXPECT_EQ(DISP_E_BADVARTYPE, VariantClear(&v)) << vt;
    EXPECT_EQ(vt, v.vt);
    CComVariant target(7);
    EXPECT_EQ(DISP_E_BADVARTYPE, VariantCopy(&target, &v)) << vt;
    EXPECT_EQ(DISP_E_BADVARTYPE, VariantCopyInd(&target, &v)) << vt;
    EXPECT_EQ(DISP_E_BADVARTYPE, VariantChangeType(&target, &v, 0, VT_I4)) << vt;
    EXPECT_PRED2(values::same, target, values::i4(7));
  }
}

TEST(Variant, ReleasesWhatItHoldsOnce) {
  auto object = DefaultObject::holding({});
  VARIANT v{};
  v.vt = VT_DISPATCH;
  v.pdispVal = object.get();
  object->AddRef();
  EXPECT_EQ(S_OK, VariantClear(&v));
  EXPECT_EQ(1u, object->references());
  EXPECT_EQ(S_OK, VariantClear(&v));
  EXPECT_EQ(1u, object->references());
}

TEST(Variant, ClearsAReferenceWithoutTouchingTheValue) {
  CComVariant value(L"text");
  CComVariant reference = values::reference_to(value);
  EXPECT_EQ(S_OK, VariantClear(&reference));
  EXPECT_EQ(L"text", korlib::view_of(value.bstrVal));
}

TEST(Variant, KeepsALockedArray) {
  CComSafeArray array(VT_UI1, 2);
  SAFEARRAY* const raw = array.get();
  CComVariant v;
  array.detach_to(&v);
  ASSERT_EQ(S_OK, SafeArrayLock(raw));
  EXPECT_EQ(DISP_E_ARRAYISLOCKED, VariantClear(&v));
  EXPECT_EQ(VT_ARRAY | VT_UI1, v.vt);
  EXPECT_EQ(raw, v.parray);
  // Nor can it be replaced by something else.
  const CComVariant other(L"other");
  EXPECT_EQ(DISP_E_ARRAYISLOCKED, VariantCopy(&v, &other));
  EXPECT_EQ(DISP_E_ARRAYISLOCKED, VariantChangeType(&v, &other, 0, VT_BSTR));
  EXPECT_EQ(raw, v.parray);
  SafeArrayUnlock(raw);
}

TEST(Variant, CopiesEveryPlainTypeBitByBit) {
  for (const VARTYPE vt : kPlainTypes) {
    VARIANT source{};
    source.vt = vt;
    source.llVal = 0x0102030405060708;
    CComVariant target(L"old");
    EXPECT_EQ(S_OK, VariantCopy(&target, &source));
    EXPECT_EQ(vt, target.vt);
    EXPECT_EQ(source.llVal, target.llVal);
  }
}

TEST(Variant, CopiesTextDeeply) {
  const CComVariant source(std::wstring_view(L"a\0b", 3));
  CComVariant target;
  EXPECT_EQ(S_OK, VariantCopy(&target, &source));
  EXPECT_NE(target.bstrVal, source.bstrVal);
  EXPECT_EQ(std::wstring_view(L"a\0b", 3), korlib::view_of(target.bstrVal));
}

TEST(Variant, CopiesBytesThatAreNoWholeCharacters) {
  CComVariant source;
  source.vt = VT_BSTR;
  source.bstrVal = SysAllocStringByteLen("abcde", 5);
  CComVariant target;
  EXPECT_EQ(S_OK, VariantCopy(&target, &source));
  EXPECT_EQ(5u, SysStringByteLen(target.bstrVal));
  EXPECT_EQ(0, std::memcmp(target.bstrVal, "abcde", 5));
}

TEST(Variant, CopiesANullTextAsNull) {
  CComVariant source = values::of_type(VT_BSTR);
  CComVariant target(L"old");
  EXPECT_EQ(S_OK, VariantCopy(&target, &source));
  EXPECT_EQ(VT_BSTR, target.vt);
  EXPECT_EQ(nullptr, target.bstrVal);
}

TEST(Variant, CountsObjectsWhenCopying) {
  auto object = DefaultObject::holding({});
  {
    const CComVariant source(object.get());
    CComVariant target;
    EXPECT_EQ(S_OK, VariantCopy(&target, &source));
    EXPECT_EQ(object.get(), target.pdispVal);
    EXPECT_EQ(3u, object->references());
  }
  EXPECT_EQ(1u, object->references());
}

TEST(Variant, CopiesArraysDeeply) {
  CComSafeArray array(VT_VARIANT, 2);
  array.data<VARIANT>()[1] = L"inside";
  CComVariant source;
  array.detach_to(&source);
  CComVariant target;
  EXPECT_EQ(S_OK, VariantCopy(&target, &source));
  EXPECT_EQ(VT_ARRAY | VT_VARIANT, target.vt);
  ASSERT_NE(target.parray, source.parray);
  VARIANT* const copied = static_cast<VARIANT*>(target.parray->pvData);
  EXPECT_EQ(VT_EMPTY, copied[0].vt);
  EXPECT_EQ(L"inside", korlib::view_of(copied[1].bstrVal));
}

TEST(Variant, CopiesOntoItself) {
  CComVariant v(L"same");
  EXPECT_EQ(S_OK, VariantCopy(&v, &v));
  EXPECT_EQ(L"same", korlib::view_of(v.bstrVal));
  EXPECT_EQ(S_OK, VariantCopyInd(&v, &v));
  EXPECT_EQ(L"same", korlib::view_of(v.bstrVal));
}

TEST(Variant, CopiesAnElementOverTheArrayThatHoldsIt) {
  CComSafeArray array(VT_VARIANT, 1);
  VARIANT* const element = array.data<VARIANT>();
  *element = L"element";
  CComVariant v;
  array.detach_to(&v);
  EXPECT_EQ(S_OK, VariantCopy(&v, element));
  EXPECT_EQ(L"element", korlib::view_of(v.bstrVal));
}

TEST(Variant, TakesTextThatLiesInItself) {
  CComVariant v(L"one");
  VARIANT& value = v;
  value = value.bstrVal + 1;
  ASSERT_EQ(VT_BSTR, v.vt);
  EXPECT_STREQ(L"ne", v.bstrVal);
  value = static_cast<const wchar_t*>(nullptr);
  EXPECT_EQ(VT_BSTR, v.vt);
  EXPECT_EQ(nullptr, v.bstrVal);
}

TEST(Variant, CopiesReferencesAsReferences) {
  CComVariant value(LONG{7});
  const CComVariant reference = values::reference_to(value);
  CComVariant target;
  EXPECT_EQ(S_OK, VariantCopy(&target, &reference));
  EXPECT_EQ(VT_BYREF | VT_I4, target.vt);
  EXPECT_EQ(&value.lVal, target.plVal);
}

TEST(Variant, FollowsAReferenceOfEveryTypeToItsValue) {
  auto object = DefaultObject::holding({});
  CComSafeArray array(VT_I4, 3);
  CComVariant array_value;
  array.detach_to(&array_value);
  CComVariant cases[] = {values::i1(-3),
                         values::i2(-300),
                         values::i4(-70000),
                         values::i8(-5000000000),
                         values::integer(-7),
                         values::ui1(200),
                         values::ui2(60000),
                         values::ui4(4000000000u),
                         values::ui8(18000000000000000000u),
                         values::unsigned_integer(7),
                         values::r4(1.5f),
                         values::r8(0.1),
                         values::cy(12345),
                         values::date(45000.5),
                         values::boolean(true),
                         values::error(DISP_E_PARAMNOTFOUND),
                         values::text(L"text"),
                         CComVariant(object.get()),
                         CComVariant(static_cast<IUnknown*>(object.get())),
                         array_value};
  for (CComVariant& value : cases) {
    for (const CComVariant& reference : {values::reference_to(value), values::reference_to_variant(value)}) {
      CComVariant target(L"old");
      ASSERT_EQ(S_OK, VariantCopyInd(&target, &reference)) << reference.vt;
      EXPECT_EQ(value.vt, target.vt);
      if (value.vt & VT_ARRAY) {
        EXPECT_NE(target.parray, value.parray);
        EXPECT_EQ(3u, target.parray->rgsabound[0].cElements);
      } else {
        EXPECT_PRED2(values::same, target, value);
      }
    }
  }
}

TEST(Variant, FollowsAReferenceToAVariantThatIsAReference) {
  CComVariant value(L"deep");
  CComVariant inner = values::reference_to(value);
  const CComVariant outer = values::reference_to_variant(inner);
  CComVariant target;
  EXPECT_EQ(S_OK, VariantCopyInd(&target, &outer));
  EXPECT_EQ(L"deep", korlib::view_of(target.bstrVal));
}

TEST(Variant, FollowsItsOwnReferenceInPlace) {
  CComVariant value(L"mine");
  CComVariant v = values::reference_to(value);
  EXPECT_EQ(S_OK, VariantCopyInd(&v, &v));
  EXPECT_EQ(VT_BSTR, v.vt);
  EXPECT_NE(v.bstrVal, value.bstrVal);
}

TEST(Variant, IsLeftAloneWhenItIsItsOwnTarget) {
  CComVariant v(L"text");
  const BSTR text = v.bstrVal;
  EXPECT_EQ(S_OK, VariantCopy(&v, &v));
  EXPECT_EQ(S_OK, VariantCopyInd(&v, &v));
  EXPECT_EQ(S_OK, VariantChangeType(&v, &v, 0, VT_BSTR));
  EXPECT_EQ(text, v.bstrVal);
  // What cannot be replaced need not be.
  CComSafeArray array(VT_UI1, 2);
  SAFEARRAY* const raw = array.get();
  CComVariant locked;
  array.detach_to(&locked);
  ASSERT_EQ(S_OK, SafeArrayLock(raw));
  EXPECT_EQ(S_OK, VariantCopyInd(&locked, &locked));
  EXPECT_EQ(S_OK, VariantChangeType(&locked, &locked, 0, VT_ARRAY | VT_UI1));
  EXPECT_EQ(raw, locked.parray);
  SafeArrayUnlock(raw);
}

TEST(Variant, RefusesReferencesThatLeadNowhere) {
  CComVariant circle;
  circle.vt = VT_BYREF | VT_VARIANT;
  circle.pvarVal = &circle;
  CComVariant other = values::reference_to_variant(circle);
  CComVariant nowhere = values::of_type(VT_BYREF | VT_I4);
  CComVariant no_variant = values::of_type(VT_BYREF | VT_VARIANT);
  for (const CComVariant* reference : {&circle, &other, &nowhere, &no_variant}) {
    CComVariant target(L"kept");
    EXPECT_EQ(E_INVALIDARG, VariantCopyInd(&target, reference));
    EXPECT_EQ(E_INVALIDARG, VariantChangeType(&target, reference, 0, VT_BSTR));
    EXPECT_EQ(L"kept", korlib::view_of(target.bstrVal));
  }
}

TEST(Variant, AnswersNullPointersWithACode) {
  CComVariant v;
  EXPECT_EQ(E_INVALIDARG, VariantClear(nullptr));
  EXPECT_EQ(E_INVALIDARG, VariantCopy(nullptr, &v));
  EXPECT_EQ(E_INVALIDARG, VariantCopy(&v, nullptr));
  EXPECT_EQ(E_INVALIDARG, VariantCopyInd(nullptr, &v));
  EXPECT_EQ(E_INVALIDARG, VariantChangeType(nullptr, &v, 0, VT_I4));
  EXPECT_EQ(E_INVALIDARG, VarCmp(nullptr, &v, 0, 0));
  EXPECT_EQ(E_INVALIDARG, VarCmp(&v, nullptr, 0, 0));
  VariantInit(nullptr);
}

TEST(Variant, KeepsTheTargetWhenMemoryIsShort) {
  if (!korlib_host::live_strings()) GTEST_SKIP() << "this build fails no strings";
  const CComVariant source(L"source");
  CComVariant target(L"kept");
  {
    const korlib_host::StringFailure failure(1);
    EXPECT_EQ(E_OUTOFMEMORY, VariantCopy(&target, &source));
  }
  {
    const korlib_host::StringFailure failure(1);
    const CComVariant number(LONG{5});
    EXPECT_EQ(E_OUTOFMEMORY, VariantChangeType(&target, &number, 0, VT_BSTR));
  }
  EXPECT_EQ(L"kept", korlib::view_of(target.bstrVal));
}

}  // namespace
