#include <korlib/variant.h>

#include <gtest/gtest.h>

#include <cstring>

#include <korlib_host/diagnostics.h>

#include "default_object.h"
#include "values.h"

namespace {

constexpr VARTYPE kPlainTypes[] = {VT_EMPTY, VT_NULL, VT_I1,   VT_I2, VT_I4, VT_I8, VT_INT,  VT_UI1,  VT_UI2,
                                   VT_UI4,   VT_UI8,  VT_UINT, VT_R4, VT_R8, VT_CY, VT_DATE, VT_BOOL, VT_ERROR};

TEST(Variant, IsEmptyAfterInit) {
  VARIANT v;
  v.vt = VT_BSTR;
  v.llVal = -1;
  VariantInit(&v);
  EXPECT_EQ(v.vt, VT_EMPTY);
  EXPECT_EQ(v.llVal, 0);
}

TEST(Variant, ClearsEveryPlainType) {
  for (const VARTYPE vt : kPlainTypes) {
    VARIANT v{};
    v.vt = vt;
    v.llVal = -1;
    EXPECT_EQ(VariantClear(&v), S_OK) << vt;
    EXPECT_EQ(v.vt, VT_EMPTY);
  }
}

TEST(Variant, RefusesTypesThatDoNotExist) {
  const VARTYPE no_types[] = {
      VT_VARIANT, 14, 15, 24, 36, 72, 0x0FFF, 0x1008, VT_BYREF, VT_BYREF | VT_NULL, VT_ARRAY, VT_ARRAY | 14, 0x8003};
  for (const VARTYPE vt : no_types) {
    VARIANT v{};
    v.vt = vt;
    EXPECT_EQ(VariantClear(&v), DISP_E_BADVARTYPE) << vt;
    EXPECT_EQ(v.vt, vt);
    CComVariant target(7);
    EXPECT_EQ(VariantCopy(&target, &v), DISP_E_BADVARTYPE) << vt;
    EXPECT_EQ(VariantCopyInd(&target, &v), DISP_E_BADVARTYPE) << vt;
    EXPECT_EQ(VariantChangeType(&target, &v, 0, VT_I4), DISP_E_BADVARTYPE) << vt;
    EXPECT_PRED2(values::same, target, values::i4(7));
  }
}

TEST(Variant, ReleasesWhatItHoldsOnce) {
  auto object = DefaultObject::holding({});
  VARIANT v{};
  v.vt = VT_DISPATCH;
  v.pdispVal = object.get();
  object->AddRef();
  EXPECT_EQ(VariantClear(&v), S_OK);
  EXPECT_EQ(object->references(), 1u);
  EXPECT_EQ(VariantClear(&v), S_OK);
  EXPECT_EQ(object->references(), 1u);
}

TEST(Variant, ClearsAReferenceWithoutTouchingTheValue) {
  CComVariant value(L"text");
  CComVariant reference = values::reference_to(value);
  EXPECT_EQ(VariantClear(&reference), S_OK);
  EXPECT_EQ(korlib::view_of(value.bstrVal), L"text");
}

TEST(Variant, KeepsALockedArray) {
  CComSafeArray array(VT_UI1, 2);
  SAFEARRAY* const raw = array.get();
  CComVariant v;
  array.detach_to(&v);
  ASSERT_EQ(SafeArrayLock(raw), S_OK);
  EXPECT_EQ(VariantClear(&v), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(v.vt, VT_ARRAY | VT_UI1);
  EXPECT_EQ(v.parray, raw);
  // Nor can it be replaced by something else.
  const CComVariant other(L"other");
  EXPECT_EQ(VariantCopy(&v, &other), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(VariantChangeType(&v, &other, 0, VT_BSTR), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(v.parray, raw);
  SafeArrayUnlock(raw);
}

TEST(Variant, CopiesEveryPlainTypeBitByBit) {
  for (const VARTYPE vt : kPlainTypes) {
    VARIANT source{};
    source.vt = vt;
    source.llVal = 0x0102030405060708;
    CComVariant target(L"old");
    EXPECT_EQ(VariantCopy(&target, &source), S_OK);
    EXPECT_EQ(target.vt, vt);
    EXPECT_EQ(target.llVal, source.llVal);
  }
}

TEST(Variant, CopiesTextDeeply) {
  const CComVariant source(std::wstring_view(L"a\0b", 3));
  CComVariant target;
  EXPECT_EQ(VariantCopy(&target, &source), S_OK);
  EXPECT_NE(target.bstrVal, source.bstrVal);
  EXPECT_EQ(korlib::view_of(target.bstrVal), std::wstring_view(L"a\0b", 3));
}

TEST(Variant, CopiesBytesThatAreNoWholeCharacters) {
  CComVariant source;
  source.vt = VT_BSTR;
  source.bstrVal = SysAllocStringByteLen("abcde", 5);
  CComVariant target;
  EXPECT_EQ(VariantCopy(&target, &source), S_OK);
  EXPECT_EQ(SysStringByteLen(target.bstrVal), 5u);
  EXPECT_EQ(std::memcmp(target.bstrVal, "abcde", 5), 0);
}

TEST(Variant, CopiesANullTextAsNull) {
  CComVariant source = values::of_type(VT_BSTR);
  CComVariant target(L"old");
  EXPECT_EQ(VariantCopy(&target, &source), S_OK);
  EXPECT_EQ(target.vt, VT_BSTR);
  EXPECT_EQ(target.bstrVal, nullptr);
}

TEST(Variant, CountsObjectsWhenCopying) {
  auto object = DefaultObject::holding({});
  {
    const CComVariant source(object.get());
    CComVariant target;
    EXPECT_EQ(VariantCopy(&target, &source), S_OK);
    EXPECT_EQ(target.pdispVal, object.get());
    EXPECT_EQ(object->references(), 3u);
  }
  EXPECT_EQ(object->references(), 1u);
}

TEST(Variant, CopiesArraysDeeply) {
  CComSafeArray array(VT_VARIANT, 2);
  array.data<VARIANT>()[1] = L"inside";
  CComVariant source;
  array.detach_to(&source);
  CComVariant target;
  EXPECT_EQ(VariantCopy(&target, &source), S_OK);
  EXPECT_EQ(target.vt, VT_ARRAY | VT_VARIANT);
  ASSERT_NE(target.parray, source.parray);
  VARIANT* const copied = static_cast<VARIANT*>(target.parray->pvData);
  EXPECT_EQ(copied[0].vt, VT_EMPTY);
  EXPECT_EQ(korlib::view_of(copied[1].bstrVal), L"inside");
}

TEST(Variant, CopiesOntoItself) {
  CComVariant v(L"same");
  EXPECT_EQ(VariantCopy(&v, &v), S_OK);
  EXPECT_EQ(korlib::view_of(v.bstrVal), L"same");
  EXPECT_EQ(VariantCopyInd(&v, &v), S_OK);
  EXPECT_EQ(korlib::view_of(v.bstrVal), L"same");
}

TEST(Variant, CopiesAnElementOverTheArrayThatHoldsIt) {
  CComSafeArray array(VT_VARIANT, 1);
  VARIANT* const element = array.data<VARIANT>();
  *element = L"element";
  CComVariant v;
  array.detach_to(&v);
  EXPECT_EQ(VariantCopy(&v, element), S_OK);
  EXPECT_EQ(korlib::view_of(v.bstrVal), L"element");
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
  EXPECT_EQ(VariantCopy(&target, &reference), S_OK);
  EXPECT_EQ(target.vt, VT_BYREF | VT_I4);
  EXPECT_EQ(target.plVal, &value.lVal);
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
      ASSERT_EQ(VariantCopyInd(&target, &reference), S_OK) << reference.vt;
      EXPECT_EQ(target.vt, value.vt);
      if (value.vt & VT_ARRAY) {
        EXPECT_NE(target.parray, value.parray);
        EXPECT_EQ(target.parray->rgsabound[0].cElements, 3u);
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
  EXPECT_EQ(VariantCopyInd(&target, &outer), S_OK);
  EXPECT_EQ(korlib::view_of(target.bstrVal), L"deep");
}

TEST(Variant, FollowsItsOwnReferenceInPlace) {
  CComVariant value(L"mine");
  CComVariant v = values::reference_to(value);
  EXPECT_EQ(VariantCopyInd(&v, &v), S_OK);
  EXPECT_EQ(v.vt, VT_BSTR);
  EXPECT_NE(v.bstrVal, value.bstrVal);
}

TEST(Variant, IsLeftAloneWhenItIsItsOwnTarget) {
  CComVariant v(L"text");
  const BSTR text = v.bstrVal;
  EXPECT_EQ(VariantCopy(&v, &v), S_OK);
  EXPECT_EQ(VariantCopyInd(&v, &v), S_OK);
  EXPECT_EQ(VariantChangeType(&v, &v, 0, VT_BSTR), S_OK);
  EXPECT_EQ(v.bstrVal, text);
  // What cannot be replaced need not be.
  CComSafeArray array(VT_UI1, 2);
  SAFEARRAY* const raw = array.get();
  CComVariant locked;
  array.detach_to(&locked);
  ASSERT_EQ(SafeArrayLock(raw), S_OK);
  EXPECT_EQ(VariantCopyInd(&locked, &locked), S_OK);
  EXPECT_EQ(VariantChangeType(&locked, &locked, 0, VT_ARRAY | VT_UI1), S_OK);
  EXPECT_EQ(locked.parray, raw);
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
    EXPECT_EQ(VariantCopyInd(&target, reference), E_INVALIDARG);
    EXPECT_EQ(VariantChangeType(&target, reference, 0, VT_BSTR), E_INVALIDARG);
    EXPECT_EQ(korlib::view_of(target.bstrVal), L"kept");
  }
}

TEST(Variant, AnswersNullPointersWithACode) {
  CComVariant v;
  EXPECT_EQ(VariantClear(nullptr), E_INVALIDARG);
  EXPECT_EQ(VariantCopy(nullptr, &v), E_INVALIDARG);
  EXPECT_EQ(VariantCopy(&v, nullptr), E_INVALIDARG);
  EXPECT_EQ(VariantCopyInd(nullptr, &v), E_INVALIDARG);
  EXPECT_EQ(VariantChangeType(nullptr, &v, 0, VT_I4), E_INVALIDARG);
  EXPECT_EQ(VarCmp(nullptr, &v, 0, 0), E_INVALIDARG);
  EXPECT_EQ(VarCmp(&v, nullptr, 0, 0), E_INVALIDARG);
  VariantInit(nullptr);
}

TEST(Variant, KeepsTheTargetWhenMemoryIsShort) {
  if (!korlib_host::live_strings()) GTEST_SKIP() << "this build fails no strings";
  const CComVariant source(L"source");
  CComVariant target(L"kept");
  {
    const korlib_host::StringFailure failure(1);
    EXPECT_EQ(VariantCopy(&target, &source), E_OUTOFMEMORY);
  }
  {
    const korlib_host::StringFailure failure(1);
    const CComVariant number(LONG{5});
    EXPECT_EQ(VariantChangeType(&target, &number, 0, VT_BSTR), E_OUTOFMEMORY);
  }
  EXPECT_EQ(korlib::view_of(target.bstrVal), L"kept");
}

}  // namespace
