#include <korlib/safearray.h>
#include <korlib_host/byte_array.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>

#include <korlib_host/diagnostics.h>

#include "default_object.h"
#include "values.h"

namespace {

struct Destroy {
  void operator()(SAFEARRAY* array) const { EXPECT_EQ(SafeArrayDestroy(array), S_OK); }
};
using Array = std::unique_ptr<SAFEARRAY, Destroy>;

Array vector_of(VARTYPE vt, ULONG elements, LONG lower = 0) {
  return Array(SafeArrayCreateVector(vt, lower, elements));
}

const struct {
  VARTYPE vt;
  UINT size;
} kElementTypes[] = {{VT_I1, 1},    {VT_UI1, 1},  {VT_I2, 2},       {VT_UI2, 2},     {VT_BOOL, 2},
                     {VT_I4, 4},    {VT_UI4, 4},  {VT_INT, 4},      {VT_UINT, 4},    {VT_R4, 4},
                     {VT_ERROR, 4}, {VT_I8, 8},   {VT_UI8, 8},      {VT_R8, 8},      {VT_CY, 8},
                     {VT_DATE, 8},  {VT_BSTR, 8}, {VT_DISPATCH, 8}, {VT_UNKNOWN, 8}, {VT_VARIANT, 16}};

TEST(SafeArray, HoldsElementsOfEveryType) {
  for (const auto& type : kElementTypes) {
    const Array array = vector_of(type.vt, 3, 1);
    ASSERT_TRUE(array) << type.vt;
    EXPECT_EQ(SafeArrayGetDim(array.get()), 1u);
    EXPECT_EQ(SafeArrayGetElemsize(array.get()), type.size);
    VARTYPE vt = 0;
    EXPECT_EQ(SafeArrayGetVartype(array.get(), &vt), S_OK);
    EXPECT_EQ(vt, type.vt);
    const auto* const bytes = static_cast<const char*>(array->pvData);
    for (UINT i = 0; i < 3 * type.size; ++i) EXPECT_EQ(bytes[i], 0);
  }
}

TEST(SafeArray, RefusesTypesThatNoElementCanHave) {
  const VARTYPE no_types[] = {VT_EMPTY, VT_NULL, 14, 15, 24, VT_ARRAY | VT_I4, VT_BYREF | VT_I4};
  for (const VARTYPE vt : no_types) {
    EXPECT_EQ(SafeArrayCreateVector(vt, 0, 1), nullptr) << vt;
  }
}

TEST(SafeArray, RefusesSizesThatCannotBeRepresented) {
  const SAFEARRAYBOUND huge[] = {{0xFFFFFFFF, 0}, {0xFFFFFFFF, 0}, {0xFFFFFFFF, 0}};
  EXPECT_EQ(SafeArrayCreate(VT_VARIANT, 3, huge), nullptr);
  EXPECT_EQ(SafeArrayCreate(VT_UI1, 0, huge), nullptr);
  EXPECT_EQ(SafeArrayCreate(VT_UI1, 1, nullptr), nullptr);
  EXPECT_EQ(SafeArrayCreate(VT_UI1, 0x10000, huge), nullptr);
  EXPECT_EQ(SafeArrayCreateVector(VT_UI1, std::numeric_limits<LONG>::max(), 2), nullptr);
  EXPECT_TRUE(vector_of(VT_UI1, 1, std::numeric_limits<LONG>::max()));
}

TEST(SafeArray, MayBeEmpty) {
  const Array array = vector_of(VT_VARIANT, 0);
  ASSERT_TRUE(array);
  EXPECT_NE(array->pvData, nullptr);
  LONG lower = -1;
  LONG upper = -1;
  EXPECT_EQ(SafeArrayGetLBound(array.get(), 1, &lower), S_OK);
  EXPECT_EQ(SafeArrayGetUBound(array.get(), 1, &upper), S_OK);
  EXPECT_EQ(lower, 0);
  EXPECT_EQ(upper, -1);
  const LONG index = 0;
  void* element = &element;
  EXPECT_EQ(SafeArrayPtrOfIndex(array.get(), &index, &element), DISP_E_BADINDEX);
  EXPECT_EQ(element, nullptr);
}

// Two rows of three: element (row, column) lies at row + 2 * column.
TEST(SafeArray, NumbersItsDimensionsInDeclarationOrder) {
  const SAFEARRAYBOUND bounds[] = {{2, 10}, {3, -1}};
  const Array array(SafeArrayCreate(VT_I4, 2, bounds));
  ASSERT_TRUE(array);
  EXPECT_EQ(array->rgsabound[0].cElements, 3u);  // the last dimension is stored first
  EXPECT_EQ(array->rgsabound[1].cElements, 2u);
  const struct {
    UINT dim;
    LONG lower, upper;
  } cases[] = {{1, 10, 11}, {2, -1, 1}};
  for (const auto& c : cases) {
    LONG lower = 99;
    LONG upper = 99;
    EXPECT_EQ(SafeArrayGetLBound(array.get(), c.dim, &lower), S_OK);
    EXPECT_EQ(SafeArrayGetUBound(array.get(), c.dim, &upper), S_OK);
    EXPECT_EQ(lower, c.lower);
    EXPECT_EQ(upper, c.upper);
  }
  for (LONG row = 10; row <= 11; ++row) {
    for (LONG column = -1; column <= 1; ++column) {
      const LONG indices[] = {row, column};
      LONG value = row * 100 + column;
      EXPECT_EQ(SafeArrayPutElement(array.get(), indices, &value), S_OK);
      EXPECT_EQ(static_cast<LONG*>(array->pvData)[(row - 10) + 2 * (column + 1)], value);
      LONG got = 0;
      EXPECT_EQ(SafeArrayGetElement(array.get(), indices, &got), S_OK);
      EXPECT_EQ(got, value);
    }
  }
}

TEST(SafeArray, RefusesIndicesOutsideItsBounds) {
  const SAFEARRAYBOUND bounds[] = {{2, 10}, {3, -1}};
  const Array array(SafeArrayCreate(VT_I4, 2, bounds));
  const LONG cases[][2] = {{9, 0},
                           {12, 0},
                           {10, -2},
                           {10, 2},
                           {std::numeric_limits<LONG>::min(), 0},
                           {10, std::numeric_limits<LONG>::max()}};
  for (const auto& indices : cases) {
    LONG value = 5;
    EXPECT_EQ(SafeArrayPutElement(array.get(), indices, &value), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetElement(array.get(), indices, &value), DISP_E_BADINDEX);
    EXPECT_EQ(value, 5);
  }
  for (const UINT dim : {0u, 3u}) {
    LONG bound = 7;
    EXPECT_EQ(SafeArrayGetLBound(array.get(), dim, &bound), DISP_E_BADINDEX);
    EXPECT_EQ(bound, 0);
    bound = 7;
    EXPECT_EQ(SafeArrayGetUBound(array.get(), dim, &bound), DISP_E_BADINDEX);
    EXPECT_EQ(bound, 0);
  }
}

TEST(SafeArray, CopiesTextInAndOut) {
  const Array array = vector_of(VT_BSTR, 2);
  const LONG index = 1;
  const CComBSTR text(L"text");
  EXPECT_EQ(SafeArrayPutElement(array.get(), &index, text.get()), S_OK);
  const BSTR inside = static_cast<BSTR*>(array->pvData)[1];
  EXPECT_NE(inside, text.get());
  CComBSTR got;
  EXPECT_EQ(SafeArrayGetElement(array.get(), &index, got.put()), S_OK);
  EXPECT_NE(got.get(), inside);
  EXPECT_EQ(got.view(), L"text");
  EXPECT_EQ(SafeArrayPutElement(array.get(), &index, inside), S_OK);  // with itself
  EXPECT_EQ(korlib::view_of(static_cast<BSTR*>(array->pvData)[1]), L"text");
  EXPECT_EQ(SafeArrayPutElement(array.get(), &index, nullptr), S_OK);
  BSTR none = text.get();
  EXPECT_EQ(SafeArrayGetElement(array.get(), &index, &none), S_OK);
  EXPECT_EQ(none, nullptr);
}

TEST(SafeArray, CountsObjectsInAndOut) {
  const auto object = DefaultObject::holding({});
  {
    const Array array = vector_of(VT_DISPATCH, 1);
    const LONG index = 0;
    EXPECT_EQ(SafeArrayPutElement(array.get(), &index, object.get()), S_OK);
    EXPECT_EQ(object->references(), 2u);
    EXPECT_EQ(SafeArrayPutElement(array.get(), &index, object.get()), S_OK);  // the old one goes
    EXPECT_EQ(object->references(), 2u);
    CComPtr<IDispatch> got;
    EXPECT_EQ(SafeArrayGetElement(array.get(), &index, got.put()), S_OK);
    EXPECT_EQ(object->references(), 3u);
  }
  EXPECT_EQ(object->references(), 1u);
}

TEST(SafeArray, CopiesVariantsInAndOut) {
  const Array array = vector_of(VT_VARIANT, 1);
  const LONG index = 0;
  CComVariant value(L"first");
  EXPECT_EQ(SafeArrayPutElement(array.get(), &index, &value), S_OK);
  value = CComVariant(L"second");
  EXPECT_EQ(SafeArrayPutElement(array.get(), &index, &value), S_OK);
  VARIANT got;
  got.vt = VT_BSTR;
  got.llVal = -1;  // the receiver need not be initialised
  EXPECT_EQ(SafeArrayGetElement(array.get(), &index, &got), S_OK);
  EXPECT_EQ(korlib::view_of(got.bstrVal), L"second");
  VariantClear(&got);
  EXPECT_EQ(SafeArrayPutElement(array.get(), &index, nullptr), E_INVALIDARG);
}

TEST(SafeArray, FreesWhatItHolds) {
  const auto strings = korlib_host::live_strings();
  const auto object = DefaultObject::holding({});
  {
    const Array texts = vector_of(VT_BSTR, 3);
    static_cast<BSTR*>(texts->pvData)[2] = SysAllocString(L"x");
    const Array objects = vector_of(VT_UNKNOWN, 2);
    static_cast<IUnknown**>(objects->pvData)[0] = object.get();
    object->AddRef();
    const Array values = vector_of(VT_VARIANT, 2);
    static_cast<VARIANT*>(values->pvData)[0] = L"y";
    const Array nested = vector_of(VT_VARIANT, 1);
    CComSafeArray inner(VT_BSTR, 1);
    inner.data<BSTR>()[0] = SysAllocString(L"z");
    inner.detach_to(static_cast<VARIANT*>(nested->pvData));
  }
  EXPECT_EQ(object->references(), 1u);
  EXPECT_EQ(korlib_host::live_strings(), strings);
}

TEST(SafeArray, IsNeitherFreedNorResizedWhileLocked) {
  const Array array = vector_of(VT_UI1, 4);
  void* data = nullptr;
  EXPECT_EQ(SafeArrayAccessData(array.get(), &data), S_OK);
  EXPECT_EQ(data, array->pvData);
  EXPECT_EQ(SafeArrayLock(array.get()), S_OK);
  const SAFEARRAYBOUND bound{8, 0};
  EXPECT_EQ(SafeArrayDestroy(array.get()), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(SafeArrayRedim(array.get(), &bound), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(SafeArrayUnlock(array.get()), S_OK);
  EXPECT_EQ(SafeArrayDestroy(array.get()), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(SafeArrayUnaccessData(array.get()), S_OK);
  EXPECT_EQ(SafeArrayUnlock(array.get()), E_UNEXPECTED);
  EXPECT_EQ(SafeArrayUnaccessData(array.get()), E_UNEXPECTED);
  EXPECT_EQ(SafeArrayRedim(array.get(), &bound), S_OK);
}

TEST(SafeArray, IsNotFreedWhileAnArrayInsideIsLocked) {
  const Array outer = vector_of(VT_VARIANT, 2);
  static_cast<VARIANT*>(outer->pvData)[0] = L"kept";
  CComSafeArray inner(VT_UI1, 1);
  SAFEARRAY* const raw = inner.get();
  inner.detach_to(&static_cast<VARIANT*>(outer->pvData)[1]);
  SafeArrayLock(raw);
  EXPECT_EQ(SafeArrayDestroy(outer.get()), DISP_E_ARRAYISLOCKED);
  const SAFEARRAYBOUND shorter{1, 0};
  EXPECT_EQ(SafeArrayRedim(outer.get(), &shorter), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(korlib::view_of(static_cast<VARIANT*>(outer->pvData)[0].bstrVal), L"kept");
  EXPECT_EQ(static_cast<VARIANT*>(outer->pvData)[1].parray, raw);
  SafeArrayUnlock(raw);
}

// What an element refers to is not the array's: neither freed with it nor asked for locks.
TEST(SafeArray, IsFreedWhateverAReferenceInsideLeadsTo) {
  CComSafeArray other(VT_I4, 1);
  struct {
    SAFEARRAY* array;
    unsigned char behind[sizeof(SAFEARRAY)];
  } place;
  place.array = other.get();
  std::memset(place.behind, 1, sizeof place.behind);  // as an array it would be a locked one
  ASSERT_EQ(SafeArrayLock(other.get()), S_OK);
  SAFEARRAY* const array = SafeArrayCreateVector(VT_VARIANT, 0, 1);
  auto* const element = static_cast<VARIANT*>(array->pvData);
  element->vt = VT_BYREF | VT_ARRAY | VT_I4;
  element->byref = &place.array;
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
  EXPECT_EQ(place.array->cLocks, 1u);
  SafeArrayUnlock(other.get());
}

TEST(SafeArray, IsLockedAsOftenAsItCanCount) {
  CComSafeArray array(VT_I4, 1);
  array.get()->cLocks = std::numeric_limits<ULONG>::max() - 1;
  EXPECT_EQ(SafeArrayLock(array.get()), S_OK);
  EXPECT_EQ(SafeArrayLock(array.get()), E_UNEXPECTED);
  EXPECT_EQ(array.get()->cLocks, std::numeric_limits<ULONG>::max());
  array.get()->cLocks = 0;
}

TEST(SafeArray, CopiesDeeplyWithItsBounds) {
  const SAFEARRAYBOUND bounds[] = {{2, 10}, {3, -1}};
  const Array array(SafeArrayCreate(VT_BSTR, 2, bounds));
  const LONG indices[] = {11, 1};
  EXPECT_EQ(SafeArrayPutElement(array.get(), indices, CComBSTR(L"corner").get()), S_OK);
  SAFEARRAY* raw = nullptr;
  ASSERT_EQ(SafeArrayCopy(array.get(), &raw), S_OK);
  const Array copy(raw);
  EXPECT_EQ(SafeArrayGetDim(raw), 2u);
  LONG upper = 0;
  EXPECT_EQ(SafeArrayGetUBound(raw, 1, &upper), S_OK);
  EXPECT_EQ(upper, 11);
  CComBSTR got;
  EXPECT_EQ(SafeArrayGetElement(raw, indices, got.put()), S_OK);
  EXPECT_EQ(got.view(), L"corner");
  EXPECT_NE(static_cast<BSTR*>(raw->pvData)[5], static_cast<BSTR*>(array->pvData)[5]);
}

TEST(SafeArray, CopiesUnlockedFromALockedOne) {
  const Array array = vector_of(VT_I4, 1);
  SafeArrayLock(array.get());
  SAFEARRAY* raw = nullptr;
  ASSERT_EQ(SafeArrayCopy(array.get(), &raw), S_OK);
  EXPECT_EQ(SafeArrayDestroy(raw), S_OK);
  SafeArrayUnlock(array.get());
}

TEST(SafeArray, FreesAHalfMadeCopyWhenMemoryIsShort) {
  const auto before = korlib_host::live_strings();
  if (!before) GTEST_SKIP() << "this build fails no strings";
  {
    const Array array = vector_of(VT_BSTR, 3);
    for (LONG i = 0; i < 3; ++i) SafeArrayPutElement(array.get(), &i, CComBSTR(L"x").get());
    for (unsigned nth = 1; nth <= 3; ++nth) {
      const korlib_host::StringFailure failure(nth);
      SAFEARRAY* copy = array.get();
      EXPECT_EQ(SafeArrayCopy(array.get(), &copy), E_OUTOFMEMORY);
      EXPECT_EQ(copy, nullptr);
    }
  }
  EXPECT_EQ(korlib_host::live_strings(), before);
}

TEST(SafeArray, ResizesItsLastDimension) {
  const auto strings = korlib_host::live_strings();
  {
    const SAFEARRAYBOUND bounds[] = {{2, 0}, {2, 0}};
    const Array array(SafeArrayCreate(VT_BSTR, 2, bounds));
    for (LONG i = 0; i < 2; ++i) {
      for (LONG j = 0; j < 2; ++j) {
        const LONG indices[] = {i, j};
        SafeArrayPutElement(array.get(), indices, CComBSTR(i ? L"one" : L"zero").get());
      }
    }
    const SAFEARRAYBOUND longer{4, 5};
    EXPECT_EQ(SafeArrayRedim(array.get(), &longer), S_OK);
    const LONG kept[] = {1, 6};
    const LONG fresh[] = {1, 8};
    CComBSTR got;
    EXPECT_EQ(SafeArrayGetElement(array.get(), kept, got.put()), S_OK);
    EXPECT_EQ(got.view(), L"one");
    EXPECT_EQ(SafeArrayGetElement(array.get(), fresh, got.put()), S_OK);
    EXPECT_EQ(got.get(), nullptr);
    const SAFEARRAYBOUND shorter{1, 0};
    EXPECT_EQ(SafeArrayRedim(array.get(), &shorter), S_OK);
    const LONG first[] = {1, 0};
    EXPECT_EQ(SafeArrayGetElement(array.get(), first, got.put()), S_OK);
    EXPECT_EQ(got.view(), L"one");
    EXPECT_EQ(SafeArrayGetElement(array.get(), kept, got.put()), DISP_E_BADINDEX);
    const SAFEARRAYBOUND nothing{0, 0};
    EXPECT_EQ(SafeArrayRedim(array.get(), &nothing), S_OK);
    const SAFEARRAYBOUND impossible{2, std::numeric_limits<LONG>::max()};
    EXPECT_EQ(SafeArrayRedim(array.get(), &impossible), E_INVALIDARG);
  }
  EXPECT_EQ(korlib_host::live_strings(), strings);
}

TEST(SafeArray, AnswersNullPointersWithACode) {
  LONG number = 0;
  void* data = nullptr;
  VARTYPE vt = 0;
  SAFEARRAY* copy = nullptr;
  const SAFEARRAYBOUND bound{1, 0};
  EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
  EXPECT_EQ(SafeArrayGetDim(nullptr), 0u);
  EXPECT_EQ(SafeArrayGetElemsize(nullptr), 0u);
  EXPECT_EQ(SafeArrayCopy(nullptr, &copy), E_INVALIDARG);
  EXPECT_EQ(SafeArrayLock(nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayUnlock(nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayAccessData(nullptr, &data), E_INVALIDARG);
  EXPECT_EQ(SafeArrayUnaccessData(nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayPutElement(nullptr, &number, &number), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetElement(nullptr, &number, &number), E_INVALIDARG);
  EXPECT_EQ(SafeArrayPtrOfIndex(nullptr, &number, &data), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &number), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetUBound(nullptr, 1, &number), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetVartype(nullptr, &vt), E_INVALIDARG);
  EXPECT_EQ(SafeArrayRedim(nullptr, &bound), E_INVALIDARG);
  const Array array = vector_of(VT_I4, 1);
  EXPECT_EQ(SafeArrayCopy(array.get(), nullptr), E_POINTER);
  EXPECT_EQ(SafeArrayAccessData(array.get(), nullptr), E_POINTER);
  EXPECT_EQ(SafeArrayPtrOfIndex(array.get(), nullptr, &data), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetLBound(array.get(), 1, nullptr), E_POINTER);
}

TEST(SafeArray, TakesOverMemoryThatIsThereAlready) {
  char* const bytes = static_cast<char*>(std::malloc(3));
  std::memcpy(bytes, "abc", 3);
  const Array array(korlib_host::adopt_bytes(bytes, 3));
  ASSERT_TRUE(array);
  EXPECT_EQ(array->pvData, bytes);
  LONG upper = 0;
  VARTYPE vt = VT_EMPTY;
  EXPECT_EQ(SafeArrayGetUBound(array.get(), 1, &upper), S_OK);
  EXPECT_EQ(upper, 2);
  EXPECT_EQ(SafeArrayGetVartype(array.get(), &vt), S_OK);
  EXPECT_EQ(vt, VT_UI1);
  const SAFEARRAYBOUND longer{5, 0};
  ASSERT_EQ(SafeArrayRedim(array.get(), &longer), S_OK);
  EXPECT_EQ(std::memcmp(array->pvData, "abc\0\0", 5), 0);
}

TEST(SafeArray, TakesOverNothingAsAnEmptyArray) {
  const Array array(korlib_host::adopt_bytes(nullptr, 0));
  ASSERT_TRUE(array);
  EXPECT_EQ(array->rgsabound[0].cElements, 0u);
  EXPECT_NE(array->pvData, nullptr);
}

TEST(SafeArray, LeavesMemoryThatIsTooLargeToItsOwner) {
  char byte = 0;
  EXPECT_EQ(korlib_host::adopt_bytes(&byte, std::size_t{1} << 31), nullptr);
}

}  // namespace
