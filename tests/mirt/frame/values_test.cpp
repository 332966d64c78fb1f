// Values and arrays without the runtime's help.
#include "frame/values.h"

#include <gtest/gtest.h>

#include <cstring>

#include <korlib/comvariant.h>

#include "support/late_bound.h"

namespace test {
namespace {

// The bits of a value: each type has its own number of them, and what lies behind in memory is not its.
TEST(CopyFollowed, TakesWhatAReferenceOfEachTypeRefersTo) {
  const struct {
    VARTYPE vt;
    std::size_t bytes;
  } rows[] = {{VT_I1, 1},  {VT_UI1, 1}, {VT_I2, 2},   {VT_UI2, 2}, {VT_BOOL, 2},  {VT_I4, 4},
              {VT_UI4, 4}, {VT_INT, 4}, {VT_UINT, 4}, {VT_R4, 4},  {VT_ERROR, 4}, {VT_I8, 8},
              {VT_UI8, 8}, {VT_R8, 8},  {VT_CY, 8},   {VT_DATE, 8}};
  for (const auto& row : rows) {
    BYTE memory[8];
    std::memset(memory, 0x11, sizeof memory);
    VARIANT reference{};
    reference.vt = static_cast<VARTYPE>(VT_BYREF | row.vt);
    reference.byref = memory;
    CComVariant copy;
    EXPECT_EQ(S_OK, mirt::copy_followed(&copy, reference)) << row.vt;
    EXPECT_EQ(row.vt, copy.vt);
    ULONGLONG expected = 0;
    std::memset(&expected, 0x11, row.bytes);
    EXPECT_EQ(expected, copy.ullVal) << row.vt;
  }
}

TEST(CopyFollowed, CopiesDeeply) {
  CComVariant text(L"text");
  VARIANT reference{};
  reference.vt = VT_BYREF | VT_BSTR;
  reference.pbstrVal = &text.bstrVal;
  CComVariant copy;
  EXPECT_EQ(S_OK, mirt::copy_followed(&copy, reference));
  ASSERT_EQ(VT_BSTR, copy.vt);
  EXPECT_NE(text.bstrVal, copy.bstrVal);
  EXPECT_EQ(L"text", std::wstring(korlib::view_of(copy.bstrVal)));

  CComVariant list = value_of(std::vector<CComVariant>{CComVariant(L"a")});
  reference.vt = VT_BYREF | VT_ARRAY | VT_VARIANT;
  reference.pparray = &list.parray;
  CComVariant through;
  through.vt = VT_BYREF | VT_VARIANT;
  through.pvarVal = &reference;
  EXPECT_EQ(S_OK, mirt::copy_followed(&copy, through)) << "a reference to a variant that is one itself";
  ASSERT_EQ(VT_ARRAY | VT_VARIANT, copy.vt);
  EXPECT_NE(list.parray, copy.parray);
  EXPECT_EQ(1u, copy.parray->rgsabound[0].cElements);
}

TEST(CopyFollowed, RefusesReferencesThatLeadNowhere) {
  for (const VARTYPE vt : {VT_VARIANT, VT_BSTR, VT_I4}) {
    VARIANT reference{};
    reference.vt = static_cast<VARTYPE>(VT_BYREF | vt);
    CComVariant copy;
    EXPECT_EQ(E_INVALIDARG, mirt::copy_followed(&copy, reference)) << vt;
  }
  VARIANT itself{};
  itself.vt = VT_BYREF | VT_VARIANT;
  itself.pvarVal = &itself;
  CComVariant copy;
  EXPECT_EQ(E_INVALIDARG, mirt::copy_followed(&copy, itself));
}

TEST(ArrayLock, KeepsAnArrayForAScope) {
  const SAFEARRAYBOUND bounds[] = {{2, 0}, {3, 5}};
  SAFEARRAY* const array = SafeArrayCreate(VT_I4, 2, bounds);
  ASSERT_TRUE(array);
  EXPECT_EQ(6u, mirt::element_count(*array));
  {
    const mirt::ArrayLock lock(array);
    EXPECT_EQ(DISP_E_ARRAYISLOCKED, SafeArrayDestroy(array));
  }
  EXPECT_EQ(S_OK, SafeArrayDestroy(array));
}

}  // namespace
}  // namespace test
