#include <korlib/safearray.h>
#include <korlib_host/byte_array.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>

#include <korlib_host/diagnostics.h>

#include "korlib/arrays/arrays.h"
#include "korlib/variant/default_object.h"
#include "korlib/variant/values.h"

namespace {

using test::Array;
using test::vector_of;

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
    EXPECT_EQ(1u, SafeArrayGetDim(array.get()));
    EXPECT_EQ(type.size, SafeArrayGetElemsize(array.get()));
    VARTYPE vt = 0;
    EXPECT_EQ(S_OK, SafeArrayGetVartype(array.get(), &vt));
    EXPECT_EQ(type.vt, vt);
    const auto* const bytes = static_cast<const char*>(array->pvData);
    for (UINT i = 0; i < 3 * type.size; ++i) EXPECT_EQ(0, bytes[i]);
  }
}

TEST(SafeArray, RefusesTypesThatNoElementCanHave) {
  const VARTYPE no_types[] = {VT_EMPTY, VT_NULL, 14, 15, 24, VT_ARRAY | VT_I4, VT_BYREF | VT_I4};
  for (const VARTYPE vt : no_types) {
    EXPECT_EQ(nullptr, SafeArrayCreateVector(vt, 0, 1)) << vt;
  }
}

TEST(SafeArray, RefusesSizesThatCannotBeRepresented) {
  const SAFEARRAYBOUND huge[] = {{0xFFFFFFFF, 0}, {0xFFFFFFFF, 0}, {0xFFFFFFFF, 0}};
  EXPECT_EQ(nullptr, SafeArrayCreate(VT_VARIANT, 3, huge));
  EXPECT_EQ(nullptr, SafeArrayCreate(VT_UI1, 0, huge));
  EXPECT_EQ(nullptr, SafeArrayCreate(VT_UI1, 1, nullptr));
  EXPECT_EQ(nullptr, SafeArrayCreate(VT_UI1, 0x10000, huge));
  EXPECT_EQ(nullptr, SafeArrayCreateVector(VT_UI1, std::numeric_limits<LONG>::max(), 2));
  EXPECT_TRUE(vector_of(VT_UI1, 1, std::numeric_limits<LONG>::max()));
}

TEST(SafeArray, MayBeEmpty) {
  const Array array = vector_of(VT_VARIANT, 0);
  ASSERT_TRUE(array);
  EXPECT_NE(nullptr, array->pvData);
  LONG lower = -1;
  LONG upper = -1;
  EXPECT_EQ(S_OK, SafeArrayGetLBound(array.get(), 1, &lower));
  EXPECT_EQ(S_OK, SafeArrayGetUBound(array.get(), 1, &upper));
  EXPECT_EQ(0, lower);
  EXPECT_EQ(-1, upper);
  const LONG index = 0;
  void* element = &element;
  EXPECT_EQ(DISP_E_BADINDEX, SafeArrayPtrOfIndex(array.get(), &index, &element));
  EXPECT_EQ(nullptr, element);
}

// Two rows of three: element (row, column) lies at row + 2 * column.
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
  EXPECT_EQ(1u, object->references());
  EXPECT_EQ(strings, korlib_host::live_strings());
}

TEST(SafeArray, IsNeitherFreedNorResizedWhileLocked) {
  const Array array = vector_of(VT_UI1, 4);
  void* data = nullptr;
  EXPECT_EQ(S_OK, SafeArrayAccessData(array.get(), &data));
  EXPECT_EQ(array->pvData, data);
  EXPECT_EQ(S_OK, SafeArrayLock(array.get()));
  const SAFEARRAYBOUND bound{8, 0};
  EXPECT_EQ(DISP_E_ARRAYISLOCKED, SafeArrayDestroy(array.get()));
  EXPECT_EQ(DISP_E_ARRAYISLOCKED, SafeArrayRedim(array.get(), &bound));
  EXPECT_EQ(S_OK, SafeArrayUnlock(array.get()));
  EXPECT_EQ(DISP_E_ARRAYISLOCKED, SafeArrayDestroy(array.get()));
  EXPECT_EQ(S_OK, SafeArrayUnaccessData(array.get()));
  EXPECT_EQ(E_UNEXPECTED, SafeArrayUnlock(array.get()));
  EXPECT_EQ(E_UNEXPECTED, SafeArrayUnaccessData(array.get()));
  EXPECT_EQ(S_OK, SafeArrayRedim(array.get(), &bound));
}

TEST(SafeArray, IsNotFreedWhileAnArrayInsideIsLocked) {
  const Array outer = vector_of(VT_VARIANT, 2);
  static_cast<VARIANT*>(outer->pvData)[0] = L"kept";
  CComSafeArray inner(VT_UI1, 1);
  SAFEARRAY* const raw = inner.get();
  inner.detach_to(&static_cast<VARIANT*>(outer->pvData)[1]);
  SafeArrayLock(raw);
  EXPECT_EQ(DISP_E_ARRAYISLOCKED, SafeArrayDestroy(outer.get()));
  const SAFEARRAYBOUND shorter{1, 0};
  EXPECT_EQ(DISP_E_ARRAYISLOCKED, SafeArrayRedim(outer.get(), &shorter));
  EXPECT_EQ(L"kept", korlib::view_of(static_cast<VARIANT*>(outer->pvData)[0].bstrVal));
  EXPECT_EQ(raw, static_cast<VARIANT*>(outer->pvData)[1].parray);
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
  ASSERT_EQ(S_OK, SafeArrayLock(other.get()));
  SAFEARRAY* const array = SafeArrayCreateVector(VT_VARIANT, 0, 1);
  auto* const element = static_cast<VARIANT*>(array->pvData);
  element->vt = VT_BYREF | VT_ARRAY | VT_I4;
  element->byref = &place.array;
  EXPECT_EQ(S_OK, SafeArrayDestroy(array));
  EXPECT_EQ(1u, place.array->cLocks);
  SafeArrayUnlock(other.get());
}

TEST(SafeArray, IsLockedAsOftenAsItCanCount) {
  CComSafeArray array(VT_I4, 1);
  array.get()->cLocks = std::numeric_limits<ULONG>::max() - 1;
  EXPECT_EQ(S_OK, SafeArrayLock(array.get()));
  EXPECT_EQ(E_UNEXPECTED, SafeArrayLock(array.get()));
  EXPECT_EQ(std::numeric_limits<ULONG>::max(), array.get()->cLocks);
  array.get()->cLocks = 0;
}

TEST(SafeArray, CopiesDeeplyWithItsBounds) {
  const SAFEARRAYBOUND bounds[] = {{2, 10}, {3, -1}};
  const Array array(SafeArrayCreate(VT_BSTR, 2, bounds));
  const LONG indices[] = {11, 1};
  EXPECT_EQ(S_OK, SafeArrayPutElement(array.get(), indices, CComBSTR(L"corner").get()));
  SAFEARRAY* raw = nullptr;
  ASSERT_EQ(S_OK, SafeArrayCopy(array.get(), &raw));
  const Array copy(raw);
  EXPECT_EQ(2u, SafeArrayGetDim(raw));
  LONG upper = 0;
  EXPECT_EQ(S_OK, SafeArrayGetUBound(raw, 1, &upper));
  EXPECT_EQ(11, upper);
  CComBSTR got;
  EXPECT_EQ(S_OK, SafeArrayGetElement(raw, indices, got.put()));
  EXPECT_EQ(L"corner", got.view());
  EXPECT_NE(static_cast<BSTR*>(raw->pvData)[5], static_cast<BSTR*>(array->pvData)[5]);
}

TEST(SafeArray, CopiesUnlockedFromALockedOne) {
  const Array array = vector_of(VT_I4, 1);
  SafeArrayLock(array.get());
  SAFEARRAY* raw = nullptr;
  ASSERT_EQ(S_OK, SafeArrayCopy(array.get(), &raw));
  EXPECT_EQ(S_OK, SafeArrayDestroy(raw));
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
      EXPECT_EQ(E_OUTOFMEMORY, SafeArrayCopy(array.get(), &copy));
      EXPECT_EQ(nullptr, copy);
    }
  }
  EXPECT_EQ(before, korlib_host::live_strings());
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
    EXPECT_EQ(S_OK, SafeArrayRedim(array.get(), &longer));
    const LONG kept[] = {1, 6};
    const LONG fresh[] = {1, 8};
    CComBSTR got;
    EXPECT_EQ(S_OK, SafeArrayGetElement(array.get(), kept, got.put()));
    EXPECT_EQ(L"one", got.view());
    EXPECT_EQ(S_OK, SafeArrayGetElement(array.get(), fresh, got.put()));
    EXPECT_EQ(nullptr, got.get());
    const SAFEARRAYBOUND shorter{1, 0};
    EXPECT_EQ(S_OK, SafeArrayRedim(array.get(), &shorter));
    const LONG first[] = {1, 0};
    EXPECT_EQ(S_OK, SafeArrayGetElement(array.get(), first, got.put()));
    EXPECT_EQ(L"one", got.view());
    EXPECT_EQ(DISP_E_BADINDEX, SafeArrayGetElement(array.get(), kept, got.put()));
    const SAFEARRAYBOUND nothing{0, 0};
    EXPECT_EQ(S_OK, SafeArrayRedim(array.get(), &nothing));
    const SAFEARRAYBOUND impossible{2, std::numeric_limits<LONG>::max()};
    EXPECT_EQ(E_INVALIDARG, SafeArrayRedim(array.get(), &impossible));
  }
  EXPECT_EQ(strings, korlib_host::live_strings());
}

TEST(SafeArray, AnswersNullPointersWithACode) {
  LONG number = 0;
  void* data = nullptr;
  VARTYPE vt = 0;
  SAFEARRAY* copy = nullptr;
  const SAFEARRAYBOUND bound{1, 0};
  EXPECT_EQ(S_OK, SafeArrayDestroy(nullptr));
  EXPECT_EQ(0u, SafeArrayGetDim(nullptr));
  EXPECT_EQ(0u, SafeArrayGetElemsize(nullptr));
  EXPECT_EQ(E_INVALIDARG, SafeArrayCopy(nullptr, &copy));
  EXPECT_EQ(E_INVALIDARG, SafeArrayLock(nullptr));
  EXPECT_EQ(E_INVALIDARG, SafeArrayUnlock(nullptr));
  EXPECT_EQ(E_INVALIDARG, SafeArrayAccessData(nullptr, &data));
  EXPECT_EQ(E_INVALIDARG, SafeArrayUnaccessData(nullptr));
  EXPECT_EQ(E_INVALIDARG, SafeArrayPutElement(nullptr, &number, &number));
  EXPECT_EQ(E_INVALIDARG, SafeArrayGetElement(nullptr, &number, &number));
  EXPECT_EQ(E_INVALIDARG, SafeArrayPtrOfIndex(nullptr, &number, &data));
  EXPECT_EQ(E_INVALIDARG, SafeArrayGetLBound(nullptr, 1, &number));
  EXPECT_EQ(E_INVALIDARG, SafeArrayGetUBound(nullptr, 1, &number));
  EXPECT_EQ(E_INVALIDARG, SafeArrayGetVartype(nullptr, &vt));
  EXPECT_EQ(E_INVALIDARG, SafeArrayRedim(nullptr, &bound));
  const Array array = vector_of(VT_I4, 1);
  EXPECT_EQ(E_POINTER, SafeArrayCopy(array.get(), nullptr));
  EXPECT_EQ(E_POINTER, SafeArrayAccessData(array.get(), nullptr));
  EXPECT_EQ(E_INVALIDARG, SafeArrayPtrOfIndex(array.get(), nullptr, &data));
  EXPECT_EQ(E_POINTER, SafeArrayGetLBound(array.get(), 1, nullptr));
}

TEST(SafeArray, TakesOverMemoryThatIsThereAlready) {
  char* const bytes = static_cast<char*>(std::malloc(3));
  std::ranges::copy(std::string_view("abc"), bytes);
  const Array array(korlib_host::adopt_bytes(bytes, 3));
  ASSERT_TRUE(array);
  EXPECT_EQ(bytes, array->pvData);
  LONG upper = 0;
  VARTYPE vt = VT_EMPTY;
  EXPECT_EQ(S_OK, SafeArrayGetUBound(array.get(), 1, &upper));
  EXPECT_EQ(2, upper);
  EXPECT_EQ(S_OK, SafeArrayGetVartype(array.get(), &vt));
  EXPECT_EQ(VT_UI1, vt);
  const SAFEARRAYBOUND longer{5, 0};
  ASSERT_EQ(S_OK, SafeArrayRedim(array.get(), &longer));
  EXPECT_EQ(0, std::memcmp(array->pvData, "abc\0\0", 5));
}

TEST(SafeArray, TakesOverNothingAsAnEmptyArray) {
  const Array array(korlib_host::adopt_bytes(nullptr, 0));
  ASSERT_TRUE(array);
  EXPECT_EQ(0u, array->rgsabound[0].cElements);
  EXPECT_NE(nullptr, array->pvData);
}

TEST(SafeArray, LeavesMemoryThatIsTooLargeToItsOwner) {
  char byte = 0;
  EXPECT_EQ(nullptr, korlib_host::adopt_bytes(&byte, std::size_t{1} << 31));
}

}  // namespace
