#include <cwchar>

#include "mirt/utility/utility_objects.h"
#include "support/fake.h"

namespace test {
namespace {

using SearchMembers = UtilityMembers;
ON_BOTH_OBJECTS(SearchMembers);

using List = std::vector<CComVariant>;

TEST_P(SearchMembers, FindStringComparesTextExactly) {
  const List xyz = {value_of(L"x"), value_of(L"y"), value_of(L"z")};
  const struct {
    CComVariant list;
    CComVariant wanted;
    bool found;
  } rows[] = {
      {value_of(L"a"), value_of(L"a"), true},
      {value_of(L"a"), value_of(L"A"), false},
      {value_of(xyz), value_of(L"z"), true},
      {value_of(xyz), value_of(L"w"), false},
      {value_of(L"y"), value_of(xyz), true},
      {value_of(xyz), value_of(List{value_of(L"p"), value_of(L"y")}), true},
      {value_of(xyz), value_of(List{value_of(L"y"), value_of(L"p")}), true},
      {value_of(xyz), value_of(List{value_of(L"p"), value_of(L"q")}), false},
      {value_of(List{}), value_of(L"z"), false},
      {value_of(xyz), value_of(List{}), false},
      {value_of(1), value_of(L"1"), true},
      {value_of(List{value_of(0.5), value_of(true)}), value_of(L"True"), true},
      {value_of(List{value_of(10)}), value_of(List{value_of(L"1"), value_of(10.0)}), true},
      {CComVariant(), value_of(L""), true},  // an empty value's text
      {value_of(std::wstring(L"a\0b", 3)), value_of(std::wstring(L"a\0c", 3)), false},
  };
  for (const auto& row : rows) {
    const Answer answer = call(L"FindString", row.list, row.wanted);
    EXPECT_EQ(S_OK, answer.hr);
    EXPECT_EQ(row.found, is_true(answer))
        << testing::PrintToString(row.list) << " / " << testing::PrintToString(row.wanted);
  }
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

TEST_P(SearchMembers, FindStringFailsWithTheConversion) {
  CComPtr<FakeScript> textless = FakeScript::make();
  const CComVariant object = value_of(static_cast<IDispatch*>(textless.get()));
  CComVariant converted;
  const HRESULT code = VariantChangeType(&converted, &object, 0, VT_BSTR);
  ASSERT_TRUE(FAILED(code));
  EXPECT_EQ(code, call(L"FindString", L"a", object).hr);
  EXPECT_EQ(code, call(L"FindString", object, L"a").hr);
  EXPECT_EQ(code, call(L"FindString", L"a", List{value_of(L"a"), object}).hr);
  // An element behind the one that matches is not looked at.
  EXPECT_TRUE(is_true(call(L"FindString", List{value_of(L"a"), object}, L"a")));
  EXPECT_EQ(DISP_E_TYPEMISMATCH, call(L"FindString", L"a", null_value()).hr);
}

TEST_P(SearchMembers, FindStringTakesOnlyArraysOfValues) {
  EXPECT_EQ(E_INVALIDARG, call(L"FindString", std::vector<std::uint8_t>{1, 2}, L"1").hr);
  CComVariant no_array;
  no_array.vt = VT_ARRAY | VT_VARIANT;
  no_array.parray = nullptr;
  EXPECT_EQ(E_INVALIDARG, call(L"FindString", no_array, L"1").hr);
  EXPECT_EQ(E_INVALIDARG, call(L"FindString", L"1", no_array).hr);
}

}  // namespace
}  // namespace test
