// The form, its value lists and its files, as a page and its binding see them.
#include "mirt/upload/upload_fixture.h"
#include "upload/upload_classes.h"

namespace test {
namespace {

class MultipartForm : public UploadTest {};

TEST_F(MultipartForm, CountsNamesOnce) {
  ASSERT_EQ(S_OK, upload(text_part("tags", "a") + text_part("tags", "b") + text_part("x", "") + kEnd));
  EXPECT_EQ(2, count());
  EXPECT_EQ(L"a, b", text(L"tags"));
  EXPECT_EQ(L"a", text(L"tags", 1));
  EXPECT_EQ(L"b", text(L"tags", 2));
  EXPECT_EQ(L"", text(L"x"));
}

TEST_F(MultipartForm, FindsNamesExactly) {
  ASSERT_EQ(S_OK, upload(text_part("a", "lower") + text_part("A", "upper") + text_part("12", "number") + kEnd));
  EXPECT_EQ(L"lower", text(L"a"));
  EXPECT_EQ(L"upper", text(L"A"));
  CComVariant found;
  EXPECT_EQ(S_OK, form_->get_Item(korlib::long_variant(12), &found));
  EXPECT_EQ(VT_DISPATCH, found.vt) << "a number asks for the field of that name";
  VARIANT nothing;
  nothing.vt = 0xA5A5;
  EXPECT_EQ(S_OK, form_->get_Item(korlib::long_variant(1), &nothing));
  EXPECT_EQ(VT_EMPTY, nothing.vt);
  const CComBSTR unknown(L"unknown");
  EXPECT_EQ(S_OK, form_->get_Item(korlib::borrowed(unknown.get()), &nothing));
  EXPECT_EQ(VT_EMPTY, nothing.vt);
}

TEST_F(MultipartForm, FindsANameUpToItsFirstNul) {
  ASSERT_EQ(S_OK, upload(text_part("n", "value") + kEnd));
  EXPECT_EQ(L"value", text(std::wstring(L"n\0more", 6)));
}

TEST_F(MultipartForm, RefusesAKeyWithoutText) {
  ASSERT_EQ(S_OK, upload(kEnd));
  const CComVariant key = null_value();
  VARIANT value;
  value.vt = 0xA5A5;
  EXPECT_EQ(DISP_E_TYPEMISMATCH, form_->get_Item(key, &value));
  EXPECT_EQ(VT_EMPTY, value.vt);
}

TEST_F(MultipartForm, OffersNoKeysAndNoEnumeration) {
  ASSERT_EQ(S_OK, upload(text_part("a", "1") + kEnd));
  VARIANT key;
  key.vt = 0xA5A5;
  EXPECT_EQ(E_NOTIMPL, form_->get_Key(korlib::long_variant(1), &key));
  EXPECT_EQ(VT_EMPTY, key.vt);
  IUnknown* names = form_.get();  // poison
  EXPECT_EQ(E_NOTIMPL, form_->get__NewEnum(&names));
  EXPECT_EQ(nullptr, names);
  IUnknown* values = form_.get();
  EXPECT_EQ(E_NOTIMPL, list(L"a")->get__NewEnum(&values));
  EXPECT_EQ(nullptr, values);
  EXPECT_EQ(E_POINTER, form_->get_Count(nullptr));
  EXPECT_EQ(E_POINTER, form_->get_Item(korlib::long_variant(1), nullptr));
}

// Its members are for early-bound callers, where the host brings no type information of its own.
TEST_F(MultipartForm, KnowsNoNames) {
  ASSERT_EQ(S_OK, upload(text_part("a", "1") + kEnd));
  for (const wchar_t* name : {L"Item", L"Count", L"Key"}) {
    EXPECT_EQ(DISP_E_UNKNOWNNAME, call(form_.get(), name).hr);
    EXPECT_EQ(DISP_E_UNKNOWNNAME, call(list(L"a").get(), name).hr);
  }
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(form_.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {}).hr);
}

class ValueList : public UploadTest {};

TEST_F(ValueList, CountsFromOne) {
  ASSERT_EQ(S_OK, upload(text_part("t", "a") + text_part("t", "b") + kEnd));
  const auto values = list(L"t");
  int count = -1;
  EXPECT_EQ(S_OK, values->get_Count(&count));
  EXPECT_EQ(2, count);
  VARIANT value;
  for (const LONG index : {0, 3, -1, 2147483647}) {
    value.vt = 0xA5A5;
    EXPECT_EQ(DISP_E_BADINDEX, values->get_Item(korlib::long_variant(index), &value)) << index;
    EXPECT_EQ(VT_EMPTY, value.vt);
  }
  CComVariant second;
  const CComVariant two = value_of(L"2");  // named: an argument taken from a temporary is never freed
  const CComVariant no_number = value_of(L"x");
  EXPECT_EQ(S_OK, values->get_Item(two, &second));
  EXPECT_EQ(L"b", std::wstring(korlib::view_of(second.bstrVal)));
  EXPECT_EQ(DISP_E_TYPEMISMATCH, values->get_Item(no_number, second.put()));
  EXPECT_EQ(E_POINTER, values->get_Item(korlib::long_variant(1), nullptr));
  EXPECT_EQ(E_POINTER, values->get_Count(nullptr));
}

// An index is missing when it is an error, whichever.
TEST_F(ValueList, GivesAllWithoutAnIndex) {
  ASSERT_EQ(S_OK, upload(text_part("t", "a") + text_part("t", "b") + kEnd));
  for (const HRESULT code : {DISP_E_PARAMNOTFOUND, E_FAIL, S_OK}) {
    VARIANT index{};
    index.vt = VT_ERROR;
    index.scode = code;
    CComVariant all;
    EXPECT_EQ(S_OK, list(L"t")->get_Item(index, &all)) << code;
    ASSERT_EQ(VT_BSTR, all.vt) << code;
    EXPECT_EQ(L"a, b", std::wstring(korlib::view_of(all.bstrVal))) << code;
  }
}

// One that no form made, as a host may ask for it.
TEST_F(ValueList, HoldsNothingBeforeItShowsAField) {
  CComPtr<fake::asp::IStringList> values;
  ASSERT_EQ(S_OK, g_oCF_MultipartFormStringList.CreateInstance(nullptr, korlib::iid_of<fake::asp::IStringList>,
                                                               values.put_void()));
  int count = -1;
  EXPECT_EQ(S_OK, values->get_Count(&count));
  EXPECT_EQ(0, count);
  for (const VARIANT& index : {korlib::omitted(), korlib::long_variant(1)}) {
    VARIANT value;
    value.vt = 0xA5A5;
    EXPECT_EQ(E_UNEXPECTED, values->get_Item(index, &value));
    EXPECT_EQ(VT_EMPTY, value.vt);
  }
}

TEST_F(ValueList, GivesItsOnlyValueAsItIs) {
  ASSERT_EQ(S_OK, upload(file_part("f", "a.txt", "x") + kEnd));
  EXPECT_EQ(VT_DISPATCH, value(L"f").vt);
}

// A file has no text form on this host, so a list that holds one cannot be joined.
TEST_F(ValueList, FailsToJoinWhatHasNoText) {
  ASSERT_EQ(S_OK, upload(text_part("f", "x") + file_part("f", "a.txt", "x") + kEnd));
  CComVariant joined;
  EXPECT_TRUE(FAILED(list(L"f")->get_Item(korlib::omitted(), &joined)));
  EXPECT_EQ(VT_EMPTY, joined.vt);
}

TEST_F(ValueList, KeepsItsFormWhileItIsHeld) {
  ASSERT_EQ(S_OK, upload(text_part("t", "a") + kEnd));
  const auto values = list(L"t");
  form_.reset();
  CComVariant value;
  EXPECT_EQ(S_OK, values->get_Item(korlib::omitted(), &value));
  EXPECT_EQ(L"a", std::wstring(korlib::view_of(value.bstrVal)));
}

}  // namespace
}  // namespace test
