#include <cwchar>

#include "mirt/utility/utility_objects.h"
#include "support/fake.h"

namespace test {
namespace {

using SearchMembers = UtilityMembers;
ON_BOTH_OBJECTS(SearchMembers);

using List = std::vector<CComVariant>;

TEST_P(SearchMembers, FindStringComparesWholeTexts) {
  EXPECT_FALSE(is_true(call(L"FindString", std::wstring(L"a\0b", 3), std::wstring(L"a\0c", 3))));
  EXPECT_TRUE(is_true(call(L"FindString", std::wstring(L"a\0b", 3), std::wstring(L"a\0b", 3))));
  EXPECT_TRUE(is_true(call(L"FindString", CComVariant(), L"")));  // an empty value's text
}

TEST_P(SearchMembers, FindStringLeavesTheArraysAsTheyAre) {
  CComVariant list = value_of(List{value_of(L"x"), value_of(2)});
  EXPECT_TRUE(is_true(call(L"FindString", by_reference(&list), 2)));
  ASSERT_EQ(VT_ARRAY | VT_VARIANT, list.vt);
  EXPECT_EQ(0u, list.parray->cLocks);
  const auto* elements = static_cast<const VARIANT*>(list.parray->pvData);
  EXPECT_EQ(VT_BSTR, elements[0].vt);
  EXPECT_EQ(VT_I4, elements[1].vt);
}

// However an array comes, all its elements are its values.
TEST_P(SearchMembers, FindStringTakesArraysOfAnyShape) {
  CComVariant list = value_of(List{value_of(L"x"), value_of(L"y")});
  CComVariant reference;
  reference.vt = VT_BYREF | VT_ARRAY | VT_VARIANT;
  reference.pparray = &list.parray;
  EXPECT_TRUE(is_true(call(L"FindString", reference, L"y")));
  EXPECT_FALSE(is_true(call(L"FindString", reference, L"z")));

  const SAFEARRAYBOUND bounds[] = {{2, 5}, {2, -1}};
  CComVariant table;
  table.vt = VT_ARRAY | VT_VARIANT;
  table.parray = SafeArrayCreate(VT_VARIANT, 2, bounds);
  LONG last[] = {6, 0};
  CComVariant element(L"in the corner");
  ASSERT_EQ(S_OK, SafeArrayPutElement(table.parray, last, &element));
  EXPECT_TRUE(is_true(call(L"FindString", table, L"in the corner")));
  EXPECT_FALSE(is_true(call(L"FindString", table, L"elsewhere")));
}

TEST_P(SearchMembers, FindStringTakesAnObjectByItsDefaultValue) {
  CComPtr<FakeScript> object = FakeScript::make();
  object->value(L"", L"a");
  const CComVariant as_value = value_of(static_cast<IDispatch*>(object.get()));
  EXPECT_TRUE(is_true(call(L"FindString", List{value_of(L"b"), as_value}, L"a")));
  EXPECT_TRUE(is_true(call(L"FindString", L"a", as_value)));
  EXPECT_FALSE(is_true(call(L"FindString", L"A", as_value)));
}

TEST_P(SearchMembers, FindStringFailsWithTheConversion) {
  CComPtr<FakeScript> textless = FakeScript::make();
  const CComVariant object = value_of(static_cast<IDispatch*>(textless.get()));
  CComVariant converted;
  const HRESULT code = VariantChangeType(&converted, &object, 0, VT_BSTR);
  ASSERT_TRUE(FAILED(code));
  EXPECT_EQ(code, call(L"FindString", L"a", object).hr);
  EXPECT_EQ(code, call(L"FindString", object, L"a").hr);
  EXPECT_EQ(code, call(L"FindString", L"a", List{value_of(L"a"), object}).hr);
  // An element after the one that matches is not looked at.
  EXPECT_TRUE(is_true(call(L"FindString", List{value_of(L"a"), object}, L"a")));
}

TEST_P(SearchMembers, FindStringNeedsTheArrayThatItIsGiven) {
  CComVariant no_array;
  no_array.vt = VT_ARRAY | VT_VARIANT;
  no_array.parray = nullptr;
  EXPECT_EQ(E_INVALIDARG, call(L"FindString", no_array, L"1").hr);
  EXPECT_EQ(E_INVALIDARG, call(L"FindString", L"1", no_array).hr);
  CComVariant no_reference;
  no_reference.vt = VT_BYREF | VT_ARRAY | VT_VARIANT;
  for (SAFEARRAY** reference : {static_cast<SAFEARRAY**>(nullptr), &no_array.parray}) {
    no_reference.pparray = reference;
    EXPECT_EQ(E_INVALIDARG, call(L"FindString", no_reference, L"1").hr);
    EXPECT_EQ(E_INVALIDARG, call(L"FindString", L"1", no_reference).hr);
  }
}

}  // namespace
}  // namespace test
