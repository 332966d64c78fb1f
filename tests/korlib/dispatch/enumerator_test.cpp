#include <korlib_host/enumerator.h>
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include "korlib/dispatch/shelf.h"
#include "support/late_bound.h"

namespace {

using test::invoke;
using test::Slots;

constexpr WORD kCallOrRead = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

TEST(Enumerator, StepsThroughASnapshot) {
  CComPtr<Slots> slots = korlib::make<Slots>();
  for (int i = 0; i < 3; ++i) slots->values[static_cast<std::size_t>(i)] = CComVariant(LONG{i});
  CComPtr<IUnknown> unknown;
  ASSERT_EQ(S_OK, slots->get__NewEnum(unknown.put()));
  slots->values.clear();
  CComPtr<IEnumVARIANT> values;
  ASSERT_EQ(S_OK, unknown.query(values.put()));
  VARIANT two[2];
  ULONG fetched = 9;
  EXPECT_EQ(S_OK, values->Next(2, two, &fetched));
  EXPECT_EQ(2u, fetched);
  EXPECT_EQ(1, two[1].lVal);
  CComPtr<IEnumVARIANT> copy;
  EXPECT_EQ(S_OK, values->Clone(copy.put()));
  EXPECT_EQ(S_FALSE, values->Next(2, two, &fetched));
  EXPECT_EQ(1u, fetched);
  EXPECT_EQ(VT_EMPTY, two[1].vt);
  EXPECT_EQ(S_OK, copy->Skip(1));
  EXPECT_EQ(S_FALSE, copy->Skip(1));
  EXPECT_EQ(S_OK, copy->Reset());
  EXPECT_EQ(S_OK, copy->Next(1, two, nullptr));
  EXPECT_EQ(0, two[0].lVal);
}

TEST(Enumerator, IsReachedThroughTheObject) {
  CComPtr<Slots> slots = korlib::make<Slots>();
  for (const WORD flags : {DISPATCH_METHOD, DISPATCH_PROPERTYGET, kCallOrRead}) {
    const test::Answer answer = invoke(slots.get(), DISPID_NEWENUM, flags, {});
    EXPECT_EQ(S_OK, answer.hr);
    EXPECT_EQ(VT_UNKNOWN, answer.value.vt);
  }
}

}  // namespace
