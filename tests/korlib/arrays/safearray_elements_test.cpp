// Safe arrays from inside: bounds and single elements.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include <korlib_host/diagnostics.h>

#include "korlib/arrays/arrays.h"
#include "korlib/variant/default_object.h"
#include "korlib/variant/values.h"

namespace {

using test::Array;
using test::vector_of;

TEST(SafeArrayElements, NumbersItsDimensionsInDeclarationOrder) {
  const SAFEARRAYBOUND bounds[] = {{2, 10}, {3, -1}};
  const Array array(SafeArrayCreate(VT_I4, 2, bounds));
  ASSERT_TRUE(array);
  EXPECT_EQ(3u, array->rgsabound[0].cElements);  // the last dimension is stored first
  EXPECT_EQ(2u, array->rgsabound[1].cElements);
  const struct {
    UINT dim;
    LONG lower, upper;
  } cases[] = {{1, 10, 11}, {2, -1, 1}};
  for (const auto& c : cases) {
    LONG lower = 99;
    LONG upper = 99;
    EXPECT_EQ(S_OK, SafeArrayGetLBound(array.get(), c.dim, &lower));
    EXPECT_EQ(S_OK, SafeArrayGetUBound(array.get(), c.dim, &upper));
    EXPECT_EQ(c.lower, lower);
    EXPECT_EQ(c.upper, upper);
  }
  for (LONG row = 10; row <= 11; ++row) {
    for (LONG column = -1; column <= 1; ++column) {
      const LONG indices[] = {row, column};
      LONG value = row * 100 + column;
      EXPECT_EQ(S_OK, SafeArrayPutElement(array.get(), indices, &value));
      EXPECT_EQ(value, static_cast<LONG*>(array->pvData)[(row - 10) + 2 * (column + 1)]);
      LONG got = 0;
      EXPECT_EQ(S_OK, SafeArrayGetElement(array.get(), indices, &got));
      EXPECT_EQ(value, got);
    }
  }
}

TEST(SafeArrayElements, RefusesIndicesOutsideItsBounds) {
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
    EXPECT_EQ(DISP_E_BADINDEX, SafeArrayPutElement(array.get(), indices, &value));
    EXPECT_EQ(DISP_E_BADINDEX, SafeArrayGetElement(array.get(), indices, &value));
    EXPECT_EQ(5, value);
  }
  for (const UINT dim : {0u, 3u}) {
    LONG bound = 7;
    EXPECT_EQ(DISP_E_BADINDEX, SafeArrayGetLBound(array.get(), dim, &bound));
    EXPECT_EQ(0, bound);
    bound = 7;
    EXPECT_EQ(DISP_E_BADINDEX, SafeArrayGetUBound(array.get(), dim, &bound));
    EXPECT_EQ(0, bound);
  }
}

TEST(SafeArrayElements, CopiesTextInAndOut) {
  const Array array = vector_of(VT_BSTR, 2);
  const LONG index = 1;
  const CComBSTR text(L"text");
  EXPECT_EQ(S_OK, SafeArrayPutElement(array.get(), &index, text.get()));
  const BSTR inside = static_cast<BSTR*>(array->pvData)[1];
  EXPECT_NE(inside, text.get());
  CComBSTR got;
  EXPECT_EQ(S_OK, SafeArrayGetElement(array.get(), &index, got.put()));
  EXPECT_NE(got.get(), inside);
  EXPECT_EQ(L"text", got.view());
  EXPECT_EQ(S_OK, SafeArrayPutElement(array.get(), &index, inside));  // with itself
  EXPECT_EQ(L"text", korlib::view_of(static_cast<BSTR*>(array->pvData)[1]));
  EXPECT_EQ(S_OK, SafeArrayPutElement(array.get(), &index, nullptr));
  BSTR none = text.get();
  EXPECT_EQ(S_OK, SafeArrayGetElement(array.get(), &index, &none));
  EXPECT_EQ(nullptr, none);
}

TEST(SafeArrayElements, CountsObjectsInAndOut) {
  const auto object = DefaultObject::holding({});
  {
    const Array array = vector_of(VT_DISPATCH, 1);
    const LONG index = 0;
    EXPECT_EQ(S_OK, SafeArrayPutElement(array.get(), &index, object.get()));
    EXPECT_EQ(2u, object->references());
    EXPECT_EQ(S_OK, SafeArrayPutElement(array.get(), &index, object.get()));  // the old one goes
    EXPECT_EQ(2u, object->references());
    CComPtr<IDispatch> got;
    EXPECT_EQ(S_OK, SafeArrayGetElement(array.get(), &index, got.put()));
    EXPECT_EQ(3u, object->references());
  }
  EXPECT_EQ(1u, object->references());
}

TEST(SafeArrayElements, CopiesVariantsInAndOut) {
  const Array array = vector_of(VT_VARIANT, 1);
  const LONG index = 0;
  CComVariant value(L"first");
  EXPECT_EQ(S_OK, SafeArrayPutElement(array.get(), &index, &value));
  value = CComVariant(L"second");
  EXPECT_EQ(S_OK, SafeArrayPutElement(array.get(), &index, &value));
  VARIANT got;
  got.vt = VT_BSTR;
  got.llVal = -1;  // the receiver need not be initialised
  EXPECT_EQ(S_OK, SafeArrayGetElement(array.get(), &index, &got));
  EXPECT_EQ(L"second", korlib::view_of(got.bstrVal));
  VariantClear(&got);
  EXPECT_EQ(E_INVALIDARG, SafeArrayPutElement(array.get(), &index, nullptr));
}

}  // namespace
