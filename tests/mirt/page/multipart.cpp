// A page whose request is a multipart post. What the intake makes of a body is tested with it.
#include "mirt/page/page_test.h"

namespace test {
namespace {

class MultipartPage : public PageTest {
 protected:
  void SetUp() override {
    with_name();
    asp_.request->server_variables->set(L"HTTP_METHOD", {L"POST"});
    asp_.request->server_variables->set(L"HTTP_CONTENT_TYPE", {L"multipart/form-data; boundary=B"});
    body({{"a", "1"}, {"tags", "x"}, {"tags", "y"}});
  }
  void body(const std::vector<std::pair<std::string, std::string>>& fields) {
    asp_.request->body.clear();
    for (const auto& [name, value] : fields)
      asp_.request->body += "--B\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value + "\r\n";
    asp_.request->body += "--B--\r\n";
  }
};

TEST_F(MultipartPage, OffersTheFormAsItsRequest) {
  in_process([&] {
    const CComPtr<IDispatch> request = object_of(get(page(), L"Request"));
    const CComQIPtr<ZeltoTypeLibrary::IRequestDictionary> form(request.get());
    ASSERT_TRUE(form);
    int count = 0;
    EXPECT_EQ(S_OK, form->get_Count(&count));
    EXPECT_EQ(2, count);
    EXPECT_EQ(0, asp_.calls->count("Request.Form")) << "the host has given the body away";
  });
}

TEST_F(MultipartPage, OffersTheQueryStringWhereTheMethodIsAnother) {
  asp_.request->server_variables->set(L"HTTP_METHOD", {L"PUT"});
  in_process([&] { EXPECT_EQ(asp_.request->query_string.get(), object_of(get(page(), L"Request")).get()); });
}

TEST_F(MultipartPage, BindsFieldsByName) {
  in_process([&] {
    EXPECT_EQ(S_OK, call(page(), L"PutIntoView", L"tags", true).hr);
    const Answer tags = get(page(), L"View", L"tags");
    ASSERT_EQ(VT_ARRAY | VT_VARIANT, tags.value.vt);
    EXPECT_EQ(2u, tags.value.parray->rgsabound[0].cElements);
    EXPECT_EQ(L"y", draw(L"(#/tags|1#)"));
    EXPECT_EQ(S_OK, call(page(), L"PutIntoView", L"unknown", false).hr);
  });
}

TEST_F(MultipartPage, CannotBindAllFields) {
  in_process([&] { EXPECT_EQ(E_NOTIMPL, call(page(), L"PutIntoView", L"", false).hr); });
}

TEST_F(MultipartPage, AnEmptyFormBindsNothing) {
  body({});
  in_process([&] { EXPECT_EQ(S_OK, call(page(), L"PutIntoView", L"", false).hr); });
}

// The lists of a multipart form have a text only where the host describes them.
TEST_F(MultipartPage, IsSearchedBehindTheFormAndBeforeTheCookies) {
  in_process([&] {
    asp_.request->cookies->set(L"a", {L"cookie"});
    EXPECT_EQ(L"<code 80020005>[(#\\a#)]", draw(L"(#\\a#)").substr(0, 25));
    asp_.request->form->set(L"a", {L"form"});
    EXPECT_EQ(L"form", draw(L"(#\\a#)"));
    asp_.request->cookies->set(L"b", {L"cookie"});
    EXPECT_EQ(L"cookie", draw(L"(#\\b#)"));
  });
}

TEST_F(MultipartPage, AnUploadThatCannotBeReadEndsProcess) {
  asp_.calls->fail("Request.BinaryRead", E_FAIL);
  asp_.request->total_bytes = 1048576;
  const Answer answer = call(page(), L"Process");
  EXPECT_EQ(E_FAIL, answer.hr);
  EXPECT_EQ(L"Upload size exceeds maximum limit.[1048576B]", answer.description);
  EXPECT_TRUE(script().calls().empty());
}

TEST_F(MultipartPage, AMalformedUploadEndsProcessWithoutAText) {
  asp_.request->body.resize(asp_.request->body.rfind("--B--"));
  const Answer answer = call(page(), L"Process");
  EXPECT_EQ(E_FAIL, answer.hr);
  EXPECT_EQ(L"", answer.description);
  EXPECT_TRUE(script().calls().empty());
  // What stood before the fault is kept: the last part is not, as nothing ends it.
  const CComPtr<IDispatch> request = object_of(get(page(), L"Request"));
  const CComQIPtr<ZeltoTypeLibrary::IRequestDictionary> form(request.get());
  ASSERT_TRUE(form);
  const CComVariant key(L"tags");
  CComVariant tags;
  EXPECT_EQ(S_OK, form->get_Item(key, &tags));
  const CComQIPtr<ZeltoTypeLibrary::IStringList> values(tags.pdispVal);
  int count = 0;
  EXPECT_EQ(S_OK, values->get_Count(&count));
  EXPECT_EQ(1, count);
}

TEST_F(MultipartPage, ABodyOfAnotherTypeBindsFromTheQueryString) {
  asp_.request->query_string->set_raw(L"a", CComVariant(L"query"));
  for (const wchar_t* type : {L"multipart/form-data", L"Multipart/form-data; boundary=B", L"text/plain"}) {
    asp_.request->server_variables->set(L"HTTP_CONTENT_TYPE", {type});
    in_process([&] {
      EXPECT_EQ(S_OK, call(page(), L"PutIntoView", L"a", false).hr) << type;
      EXPECT_EQ(L"query", text_of(get(page(), L"View", L"a"))) << type;
    });
  }
  EXPECT_EQ(0, asp_.calls->count("Request.BinaryRead"));
}

}  // namespace
}  // namespace test
