// The fields of a request: which collection they come from, and the command among them.
#include "mirt/page/page_fixture.h"

namespace test {
namespace {

class SubmittedFields : public PageTest {
 protected:
  std::wstring command_of_request() {
    const CComPtr<IDispatch> fresh = new_page();
    std::wstring name;
    const CComPtr<FakeScript> own = FakeScript::make();
    own->function(L"On_StartCommand", [&](const Arguments& a) {
      name = text_of(get(a[0].pdispVal, L"Command"));
      return CComVariant(false);
    });
    call(fresh.get(), L"AddScript", own);
    const Answer answer = call(fresh.get(), L"Process");
    own->forget_calls();
    return FAILED(answer.hr) ? text_of(answer) : name;
  }
  IDispatch* collection_of_request() { return object_of(get(page(), L"Request")).get(); }
};

TEST_F(SubmittedFields, TheCommandComesFromItsField) {
  asp_.request->query_string->set(L"c", {L"Save"});
  EXPECT_EQ(L"Save", command_of_request());
  asp_.request->query_string->set(L"c", {L"Save", L"Drop"});
  EXPECT_EQ(L"Save, Drop", command_of_request());
  const std::wstring with_nul(L"Sa\0ve", 5);
  asp_.request->query_string->set(L"c", {with_nul});
  EXPECT_EQ(with_nul, command_of_request());
  asp_.request->query_string->clear();
  EXPECT_EQ(L"", command_of_request());
}

TEST_F(SubmittedFields, ACommandThatIsSetIsNotAskedFor) {
  put(page(), L"Command", L"given");
  script().function(L"OnCommand_given", [](const Arguments&) { return CComVariant(); });
  process();
  EXPECT_EQ(0, asp_.calls->count("QueryString.Item"));
}

TEST_F(SubmittedFields, WhatFailsOnTheWayToTheCommandEndsProcess) {
  for (const char* name :
       {"Request.ServerVariables", "ServerVariables.Item", "Request.QueryString", "QueryString.Item"}) {
    // The intake of a multipart body asks first, and takes a failure for "none".
    asp_.calls->fail(name, E_ACCESSDENIED, 0);
    EXPECT_EQ(L"<code 80070005>", command_of_request()) << name;
    asp_.calls->succeed(name);
  }
  asp_.request->query_string->set_raw(L"c", value_of(std::vector<CComVariant>{}));
  EXPECT_EQ(L"<code 80020005>", command_of_request());
}

TEST_F(SubmittedFields, TheMethodAndTypeChooseTheCollection) {
  const struct {
    const wchar_t *method, *type;
    bool form;
  } cases[] = {
      {L"GET", L"application/x-www-form-urlencoded", false},
      {L"POST", L"application/x-www-form-urlencoded", true},
      {L"POST", L"application/x-www-form-urlencoded; charset=UTF-8", true},
      {L"POST", L"application/x-www-form-urlencodedX", true},
      {L"POST", L"Application/x-www-form-urlencoded", false},
      {L"POST", L"application/x-www-form-urlencode", false},
      {L"POST", L"text/plain", false},
      {L"POST", L"", false},
      {L"post", L"application/x-www-form-urlencoded", false},
      {L"POSTS", L"application/x-www-form-urlencoded", false},
      {L"PUT", L"application/x-www-form-urlencoded", false},
  };
  for (const auto& row : cases) {
    asp_.request->server_variables->set(L"HTTP_METHOD", {row.method});
    asp_.request->server_variables->set(L"HTTP_CONTENT_TYPE", {row.type});
    const IDispatch* expected = row.form ? asp_.request->form.get() : asp_.request->query_string.get();
    EXPECT_EQ(expected, collection_of_request()) << testing::PrintToString(std::wstring(row.type));
  }
}

TEST_F(SubmittedFields, WhatTheHostFailsWithIsPassedOn) {
  asp_.post_form();
  for (const char* name : {"Request.ServerVariables", "ServerVariables.Item", "Request.Form"}) {
    asp_.calls->fail(name, E_ACCESSDENIED);
    EXPECT_EQ(E_ACCESSDENIED, get(page(), L"Request").hr) << name;
    asp_.calls->succeed(name);
  }
  asp_.calls->fail("ServerVariables.Item", E_ABORT, 1);
  EXPECT_EQ(E_ABORT, get(page(), L"Request").hr) << "the type, after the method";
  asp_.calls->succeed("ServerVariables.Item");
  for (const wchar_t* name : {L"HTTP_CONTENT_TYPE", L"HTTP_METHOD"}) {
    asp_.request->server_variables->set_raw(name, null_value());
    EXPECT_EQ(DISP_E_TYPEMISMATCH, get(page(), L"Request").hr) << testing::PrintToString(std::wstring(name));
  }
}

}  // namespace
}  // namespace test
