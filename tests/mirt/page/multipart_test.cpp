// A page whose request is a multipart post. What the intake makes of a body is tested with it.
#include "mirt/page/page_fixture.h"

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

// What TotalBytes cannot say: a host answers with the largest number, or one that has become negative.
TEST_F(MultipartPage, AnUploadLargerThanALongIsToldInItsTrueSize) {
  asp_.calls->fail("Request.BinaryRead", E_FAIL);
  const struct {
    LONG total;
    const wchar_t* announced;  // CONTENT_LENGTH; null for none
    const wchar_t* told;
  } rows[] = {
      {2147483647, L"3221225472", L"3221225472"},
      {-1073741824, L"3221225472", L"3221225472"},
      {2147483647, nullptr, L"2147483647"},
      {2147483647, L"", L"2147483647"},
      {2147483647, L"3 GB", L"2147483647"},
      {2147483646, L"3221225472", L"2147483646"},
      {1048576, L"7", L"1048576"},
  };
  for (const auto& row : rows) {
    asp_.request->server_variables->clear();
    asp_.request->server_variables->set(L"HTTP_METHOD", {L"POST"});
    asp_.request->server_variables->set(L"HTTP_CONTENT_TYPE", {L"multipart/form-data; boundary=B"});
    if (row.announced) asp_.request->server_variables->set(L"CONTENT_LENGTH", {row.announced});
    asp_.request->total_bytes = row.total;
    const Answer answer = call(page(), L"Process");
    EXPECT_EQ(E_FAIL, answer.hr);
    EXPECT_EQ(std::wstring(L"Upload size exceeds maximum limit.[") + row.told + L"B]", answer.description);
  }
}

class SpentBody : public MultipartPage {
 protected:
  // The host gives the body away once.
  void spend() { asp_.request->body_value = null_value(); }
  std::wstring field(IDispatch* page) {
    const CComQIPtr<ZeltoTypeLibrary::IRequestDictionary> form(object_of(get(page, L"Request")).get());
    if (!form) return L"no form";
    const CComVariant key(L"a");
    CComVariant list;
    EXPECT_EQ(S_OK, form->get_Item(key, &list));
    if (list.vt != VT_DISPATCH) return L"no field";
    const CComQIPtr<ZeltoTypeLibrary::IStringList> values(list.pdispVal);
    CComVariant text;
    EXPECT_EQ(S_OK, values->get_Item(korlib::omitted(), &text));
    return std::wstring(korlib::view_of(text.bstrVal));
  }
};

TEST_F(SpentBody, LeavesTheFormThatWasRead) {
  process();
  const CComPtr<IDispatch> form = object_of(get(page(), L"Request"));
  spend();
  process();
  EXPECT_EQ(form.get(), object_of(get(page(), L"Request")).get());
  EXPECT_EQ(L"1", field(page()));
}

TEST_F(SpentBody, SharesTheFormWithLaterControllersOfTheRequest) {
  process();
  spend();
  const CComPtr<IDispatch> second = new_page();
  EXPECT_EQ(S_OK, call(second.get(), L"Process").hr);
  EXPECT_EQ(L"1", field(second.get()));
  EXPECT_EQ(object_of(get(page(), L"Request")).get(), object_of(get(second.get(), L"Request")).get());
}

// The second one has become the one that shares.
TEST_F(SpentBody, SharesTheFormWhenTheFirstControllerHasGone) {
  CComPtr<IDispatch> first = new_page();
  EXPECT_EQ(S_OK, call(first.get(), L"Process").hr);
  spend();
  const CComPtr<IDispatch> second = new_page();
  EXPECT_EQ(S_OK, call(second.get(), L"Process").hr);
  first.reset();
  const CComPtr<IDispatch> third = new_page();
  EXPECT_EQ(S_OK, call(third.get(), L"Process").hr);
  EXPECT_EQ(L"1", field(third.get()));
}

TEST_F(SpentBody, HasNoFormWhenNobodySharesOne) {
  {
    const CComPtr<IDispatch> first = new_page();
    EXPECT_EQ(S_OK, call(first.get(), L"Process").hr);
  }
  spend();
  process();
  EXPECT_EQ(asp_.request->query_string.get(), object_of(get(page(), L"Request")).get());
}

TEST_F(SpentBody, IsNotSharedWithAnotherRequest) {
  process();
  fake::Asp other;
  other.request->server_variables->set(L"HTTP_METHOD", {L"POST"});
  other.request->server_variables->set(L"HTTP_CONTENT_TYPE", {L"multipart/form-data; boundary=B"});
  other.request->body_value = null_value();
  CComPtr<IDispatch> stranger;
  {
    const korlib_host::ContextScope scope(other.context.get());
    stranger = module_.create(L"Mirt");
  }
  EXPECT_EQ(S_OK, call(stranger.get(), L"Process").hr);
  EXPECT_EQ(other.request->query_string.get(), object_of(get(stranger.get(), L"Request")).get());
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
