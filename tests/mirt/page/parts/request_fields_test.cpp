#include "page/request_fields.h"

#include "mirt/page/parts/parts_fixture.h"

namespace test {
namespace {

class RequestFields : public PartsTest {
 protected:
  RequestFields() {
    fakes_.request->query_string->set(L"f", {L"query"});
    fakes_.request->form->set(L"f", {L"form"});
  }
  static std::wstring first_text(const VARIANT& field) {
    const CComQIPtr<ZeltoTypeLibrary::IStringList> list(field.pdispVal);
    CComVariant text;
    return list && SUCCEEDED(list->get_Item(korlib::long_variant(1), &text))
               ? std::wstring(korlib::view_of(text.bstrVal))
               : L"(no value)";
  }
  std::wstring found(const wchar_t* name) {
    CComVariant value;
    return fields_.find(CComBSTR(name), &value) ? first_text(value) : L"(none)";
  }
  std::wstring submitted() {
    CComPtr<page::RequestFields::Collection> fields;
    EXPECT_EQ(S_OK, fields_.get_submitted(&fields));
    CComVariant value;
    EXPECT_EQ(S_OK, fields->get_Item(korlib::borrowed(CComBSTR(L"f").get()), &value));
    return first_text(value);
  }

  page::RequestFields fields_{asp_};
};

TEST_F(RequestFields, ComeFromTheFormOfAFormPostAndElseFromTheQuery) {
  EXPECT_EQ(L"query", submitted());
  fakes_.post_form();
  EXPECT_EQ(L"form", submitted());
  fakes_.request->server_variables->set(L"HTTP_CONTENT_TYPE", {L"text/plain"});
  EXPECT_EQ(L"query", submitted());
  fakes_.request->server_variables->set(L"HTTP_CONTENT_TYPE", {L"application/x-www-form-urlencoded; charset=utf-8"});
  EXPECT_EQ(L"form", submitted());
  fakes_.request->server_variables->set(L"HTTP_METHOD", {L"post"});
  EXPECT_EQ(L"query", submitted());
}

TEST_F(RequestFields, OfAnUploadComeFromItsForm) {
  fakes_.post_form();
  fakes_.request->server_variables->set(L"HTTP_CONTENT_TYPE", {L"multipart/form-data; boundary=b"});
  fakes_.request->body = "--b\r\nContent-Disposition: form-data; name=\"f\"\r\n\r\nupload\r\n--b--\r\n";
  EXPECT_EQ(L"query", submitted()) << "before it was read";
  EXPECT_EQ(S_OK, fields_.read_upload());
  EXPECT_EQ(L"upload", submitted());
  fakes_.request->query_string->clear();
  fakes_.request->form->clear();
  EXPECT_EQ(L"upload", found(L"f"));
  page::RequestFields later(asp_);
  CComVariant value;
  EXPECT_FALSE(later.find(CComBSTR(L"f"), &value));
  EXPECT_EQ(S_OK, later.read_upload());
  EXPECT_TRUE(later.find(CComBSTR(L"f"), &value)) << "the first one shares the form";
}

TEST_F(RequestFields, AreNotThereWithoutARequest) {
  asp_.request.reset();
  CComPtr<page::RequestFields::Collection> fields;
  EXPECT_EQ(E_FAIL, fields_.get_submitted(&fields));
  EXPECT_FALSE(fields);
}

TEST_F(RequestFields, AreFoundInTheFirstCollectionThatHasAValue) {
  fakes_.request->cookies->set(L"f", {L"cookie"});
  fakes_.request->client_certificate->set(L"f", {L"certificate"});
  fakes_.request->server_variables->set(L"f", {L"server"});
  for (const auto& [collection, expected] : {std::pair(fakes_.request->server_variables, L"server"),
                                             {fakes_.request->query_string, L"query"},
                                             {fakes_.request->form, L"form"},
                                             {fakes_.request->cookies, L"cookie"},
                                             {fakes_.request->client_certificate, L"certificate"}}) {
    EXPECT_EQ(expected, found(L"f"));
    collection->clear();
  }
  EXPECT_EQ(L"(none)", found(L"f"));
}

TEST_F(RequestFields, AreSoughtBehindACollectionThatFails) {
  fakes_.calls->fail("Request.QueryString", E_ABORT);
  EXPECT_EQ(L"form", found(L"f"));
  fakes_.request->form->set_raw(L"f", CComVariant(L"no list"));
  EXPECT_EQ(L"(none)", found(L"f"));
}

TEST_F(RequestFields, OfSeveralValuesMakeAnArray) {
  fakes_.request->query_string->set(L"f", {L"1", L"2"});
  CComVariant field;
  ASSERT_TRUE(fields_.find(CComBSTR(L"f"), &field));
  fakes_.calls->fail("StringList.Item", E_ABORT, 1);
  CComSafeArray values;
  EXPECT_EQ(S_OK, page::values_of(field.pdispVal, values.put()));
  ASSERT_EQ(2u, values.size());
  EXPECT_EQ(VT_BSTR, values.data<VARIANT>()[0].vt);
  EXPECT_EQ(VT_EMPTY, values.data<VARIANT>()[1].vt);
  SAFEARRAY* none = nullptr;
  EXPECT_EQ(E_POINTER, page::values_of(nullptr, &none));
  EXPECT_EQ(E_NOINTERFACE, page::values_of(script_.get(), &none));
  fakes_.calls->fail("StringList.Count", E_ABORT);
  EXPECT_EQ(S_OK, page::values_of(field.pdispVal, &none));
  EXPECT_EQ(nullptr, none);
}

}  // namespace
}  // namespace test
