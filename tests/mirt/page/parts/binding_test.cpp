#include "page/binding.h"

#include "mirt/page/parts/parts_fixture.h"
#include "utility/members.h"

namespace test {
namespace {

class Binding : public PartsTest {
 protected:
  HRESULT put(const wchar_t* name, bool as_array = false) {
    return binding_.put_into(target_.get(), CComBSTR(name), as_array);
  }
  std::wstring stored(const wchar_t* name) { return item(target_.get(), name); }
  fake::RequestDictionary& query() { return *fakes_.request->query_string; }

  CComPtr<IKorLibDictionary> target_ = new_dictionary();
  page::RequestFields fields_{asp_};
  page::Memory memory_{asp_};
  page::Binding binding_{scripts_, fields_, memory_};
};

TEST_F(Binding, StoresAFieldAsItIsOrDecoded) {
  query().set(L"f", {L"a&#x42;"});
  EXPECT_EQ(S_OK, put(L"f"));
  EXPECT_EQ(L"(no text)", stored(L"f")) << "the list of its values";
  binding_.decodes = true;
  EXPECT_EQ(S_OK, put(L"f"));
  CComBSTR decoded;
  EXPECT_EQ(S_OK, mirt::utility::submit_decode(CComBSTR(L"a&#x42;"), decoded.put()));
  EXPECT_EQ(decoded.view(), stored(L"f"));
}

TEST_F(Binding, MakesAnArrayOfOneNamedFieldOnly) {
  query().set(L"f", {L"1", L"2"});
  const auto type_of = [this] {
    CComVariant value;
    EXPECT_EQ(S_OK, target_->get_Item(korlib::borrowed(CComBSTR(L"f").get()), &value));
    return value.vt;
  };
  EXPECT_EQ(S_OK, put(L"f", true));
  EXPECT_EQ(VT_ARRAY | VT_VARIANT, type_of());
  EXPECT_EQ(S_OK, put(L"", true));
  EXPECT_EQ(VT_DISPATCH, type_of());
}

TEST_F(Binding, OfAllFieldsLeavesTheCommandOut) {
  binding_.decodes = true;
  query().set(L"a", {L"1"});
  query().set(L"c", {L"Save"});
  query().set(L"", {L"nameless"});
  EXPECT_EQ(S_OK, put(nullptr));
  EXPECT_EQ(L"1", stored(L"a"));
  EXPECT_EQ(L"nameless", stored(L""));
  EXPECT_EQ(L"(none)", stored(L"c"));
  EXPECT_EQ(S_OK, put(L"c"));
  EXPECT_EQ(L"Save", stored(L"c"));
}

TEST_F(Binding, WritesTheScriptsVariablesWithoutATarget) {
  target_.reset();
  binding_.decodes = true;
  script_->value(L"a", L"before");
  query().set(L"a", {L"1"});
  query().set(L"b", {L"2"});
  query().set(L"d", {L"3"});
  script_->value(L"d", L"before");
  EXPECT_EQ(DISP_E_UNKNOWNNAME, put(L""));
  EXPECT_EQ(L"1", std::wstring(korlib::view_of(script_->current(L"a").bstrVal)));
  EXPECT_EQ(L"before", std::wstring(korlib::view_of(script_->current(L"d").bstrVal))) << "after the failure";
}

TEST_F(Binding, CountsOnlyTheLastElementsFailure) {
  binding_.decodes = true;
  query().set_values(L"f", {null_value(), CComVariant(L"2")});
  EXPECT_EQ(S_OK, put(L"f", true));
  query().set_values(L"f", {CComVariant(L"1"), null_value()});
  EXPECT_EQ(DISP_E_TYPEMISMATCH, put(L"f", true));
}

}  // namespace
}  // namespace test
