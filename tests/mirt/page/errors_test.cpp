// The error text of a failure: gone when the component goes on from it, kept when it does not.
#include <korlib/activation.h>

#include "mirt/page/page_fixture.h"

namespace test {
namespace {

// Every call here succeeds, and leaves no error object that a later failure would show.
class GoingOn : public PageTest {
 protected:
  void SetUp() override { asp_.calls->raise_words(); }
  // A script object whose default member fails with an error text: a value that cannot be shown.
  CComPtr<FakeScript> without_text() {
    CComPtr<FakeScript> object = FakeScript::make();
    object->failing(L"", E_FAIL, L"The object's words.");
    return object;
  }
};

// A session mark on a page without a session fails without an error text.
const std::wstring kSilent = L"<code 80004005>";

TEST_F(GoingOn, FromCollectionsThatFail) {
  asp_.without_session();
  asp_.request->cookies->set(L"a", {L"cookie"});
  for (const char* each : {"Request.ServerVariables", "Request.QueryString", "Request.Form"}) {
    asp_.calls->fail(each, E_FAIL);
  }
  const Answer answer = call(page(), L"ProcessTemplate", L"(#\\a#)(#\\none#)");
  EXPECT_EQ(S_OK, answer.hr);
  EXPECT_EQ(L"", answer.description);
  EXPECT_EQ(kSilent + L"cookie", draw(L"(#\\a#)(#=s#)"));
  asp_.calls->fail("Request.Cookies", E_FAIL);
  asp_.calls->fail("Request.ClientCertificate", E_FAIL);
  EXPECT_EQ(kSilent, draw(L"(#\\a#)(#=s#)"));
}

TEST_F(GoingOn, FromAFieldThatFails) {
  asp_.request->query_string->set(L"a", {L"x"});
  for (const char* each : {"StringList.Count", "StringList.Item"}) asp_.calls->fail(each, E_FAIL);
  const Answer answer = call(page(), L"ProcessTemplate", L"(#\\a#)");
  EXPECT_EQ(S_OK, answer.hr);
  EXPECT_EQ(L"", answer.description);
}

TEST_F(GoingOn, FromATemplateThatIsReplaced) {
  asp_.without_session();
  use_folder();
  std::filesystem::create_directories(folder() / "broken.html");
  file("other.html", "other");
  file("page.html", "(#`broken#)(#=s#)");
  script().function(L"On_TemplateNotFound", [](const Arguments& a) {
    // Not late-bound: those calls of a test clear the error object.
    const CComQIPtr<IMirt> page(a[0].pdispVal);
    EXPECT_EQ(S_OK, page->put_Template(CComBSTR(L"other")));
    return CComVariant(false);
  });
  EXPECT_EQ(kSilent + L"other", draw_file(L"page"));
}

// The event itself fails without a text, and must not show that of the file.
TEST_F(GoingOn, FromATemplateBeforeTheScriptIsAsked) {
  use_folder();
  std::filesystem::create_directories(folder() / "broken.html");
  script().failing(L"On_TemplateNotFound", E_FAIL);
  EXPECT_EQ(kSilent, draw_file(L"broken"));
}

TEST_F(GoingOn, FromValuesThatStayEmptyInAnArray) {
  asp_.request->query_string->set(L"a", {L"x", L"y"});
  const CComVariant key(L"a");
  CComVariant list;
  ASSERT_EQ(S_OK, asp_.request->query_string->get_Item(key, &list));
  asp_.calls->fail("StringList.Item", E_FAIL);
  const Answer empty = call(page(), L"ToArray", list);
  EXPECT_EQ(S_OK, empty.hr);
  EXPECT_EQ(VT_ARRAY | VT_VARIANT, empty.value.vt);
  EXPECT_EQ(L"", empty.description);
  asp_.calls->fail("StringList.Count", E_FAIL);
  const Answer none = call(page(), L"ToArray", list);
  EXPECT_EQ(S_OK, none.hr);
  EXPECT_EQ(VT_EMPTY, none.value.vt);
  EXPECT_EQ(L"", none.description);
}

TEST_F(GoingOn, FromAnElementThatCannotBeDecodedBeforeTheLast) {
  asp_.request->query_string->set_values(L"a", {value_of(without_text()), CComVariant(L"x")});
  put(page(), L"SubmitDecodeOnPutInto", true);
  script().accept_new_names();
  script().value(L"a", CComVariant());
  const Answer answer = call(page(), L"PutIntoProp", L"a", true);
  EXPECT_EQ(S_OK, answer.hr);
  EXPECT_EQ(L"", answer.description);
  asp_.request->query_string->set_values(L"a", {CComVariant(L"x"), value_of(without_text())});
  EXPECT_TRUE(FAILED(call(page(), L"PutIntoProp", L"a", true).hr)) << "the last one counts";
}

TEST_F(GoingOn, FromASessionThatCannotBeRead) {
  with_name();
  asp_.calls->fail("Session.Value", E_FAIL);
  const Answer answer = call(page(), L"Process");
  EXPECT_EQ(S_OK, answer.hr);
  EXPECT_EQ(L"", answer.description);
}

TEST_F(GoingOn, FromAContextWithoutASession) {
  asp_.calls->fail("Context.Session", E_FAIL);
  take_error();
  const CComPtr<IDispatch> page = new_page();
  EXPECT_EQ(L"", take_error().description);
}

TEST_F(GoingOn, FromAValueThatIsShownAsNothing) {
  put(page(), L"NullIsEmpty", true);
  script().value(L"v", without_text());
  const Answer answer = call(page(), L"ProcessTemplate", L"(#:v#)");
  EXPECT_EQ(S_OK, answer.hr);
  EXPECT_EQ(L"", answer.description);
  put(page(), L"NullIsEmpty", false);
  EXPECT_NE(S_OK, call(page(), L"ProcessTemplate", L"(#:v#)").hr) << "it has no text";
}

TEST_F(GoingOn, FromAnElementThatEqualsNothing) {
  script().value(L"n", value_of(std::vector<CComVariant>{value_of(without_text()), CComVariant(L"v")}));
  const Answer answer = call(page(), L"ProcessTemplate", L"(#%_InputDefaultP|n#|#v#|#yes#|#no#)");
  EXPECT_EQ(S_OK, answer.hr);
  EXPECT_EQ(L"", answer.description);
  EXPECT_EQ(L"yes", output());
}

TEST_F(GoingOn, FromFunctionsThatTheScriptDoesNotHave) {
  script().refuse_in_words(L"The script's words.");
  const Answer processed = call(page(), L"Process");
  EXPECT_EQ(S_OK, processed.hr);
  EXPECT_EQ(L"", processed.description);
  const Answer fired = call(page(), L"FireEvent", L"none", 1, 1);
  EXPECT_EQ(S_OK, fired.hr);
  EXPECT_EQ(L"", fired.description);
  call(page(), L"AddMessage", L"m", L"");
  const Answer drawn = call(page(), L"ProcessTemplate", L"(#%_Message|(#%_Message_Text#)#)");
  EXPECT_EQ(S_OK, drawn.hr);
  EXPECT_EQ(L"", drawn.description);
  in_process([&] {
    const Answer unbound = call(page(), L"ProcessTemplate", L"(#%_InputP|n#|#text#|#none#)");
    EXPECT_EQ(S_OK, unbound.hr);
    EXPECT_EQ(L"", unbound.description);
  });
}

TEST_F(GoingOn, FromAFunctionThatCannotBeRead) {
  script().refuse_in_words(L"The script's words.");
  script().function(L"f", [](const Arguments&) { return CComVariant(L"called"); });
  const Answer answer = call(page(), L"ProcessTemplate", L"(#:f#)");
  EXPECT_EQ(S_OK, answer.hr);
  EXPECT_EQ(L"", answer.description);
  EXPECT_EQ(L"called", output());
}

TEST_F(GoingOn, FromAScriptThatAnotherOneStandsInFor) {
  const CComPtr<FakeScript> later = FakeScript::make();
  later->refuse_in_words(L"The later script's words.");
  script().value(L"v", CComVariant(L"earlier"));
  call(page(), L"AddScript", later);
  const Answer answer = call(page(), L"ProcessTemplate", L"(#:v#)");
  EXPECT_EQ(S_OK, answer.hr);
  EXPECT_EQ(L"", answer.description);
}

TEST_F(GoingOn, FromAnObjectWithoutItemsToItsProperty) {
  const CComPtr<FakeScript> object = FakeScript::make();
  object->failing(L"", DISP_E_MEMBERNOTFOUND, L"The object's words.");
  object->value(L"k", CComVariant(L"property"));
  script().value(L"o", object);
  const Answer answer = call(page(), L"ProcessTemplate", L"(#:o|k#)");
  EXPECT_EQ(S_OK, answer.hr);
  EXPECT_EQ(L"", answer.description);
  EXPECT_EQ(L"property", output());
}

TEST_F(GoingOn, FromANameThatIsAKey) {
  script().refuse_in_words(L"The script's words.");
  script().function(L"", [](const Arguments&) { return CComVariant(L"by key"); });
  const CComPtr<IDispatch> templator = module_.create(L"TextTemplator");
  EXPECT_EQ(S_OK, putref(templator.get(), L"Script", script_).hr);
  const Answer answer = call(templator.get(), L"ProcessTemplate", L"(#none#)");
  EXPECT_EQ(S_OK, answer.hr);
  EXPECT_EQ(L"", answer.description);
}

// Where the stack is used up no script can be asked, so a name is not missing because of it.
class NoStackForALookUp : public PageTest {
 protected:
  void SetUp() override { script().fail_unknown_names(korlib::kOutOfStack); }
};

TEST_F(NoStackForALookUp, OfADrawEventIsReported) {
  EXPECT_EQ(L"<code 800A001C>[(#%none#)]", draw(L"(#%none#)"));
  EXPECT_EQ(L"<code 800A001C>[(#%_Message#)]", draw(L"(#%_Message|m#)")) << "a built-in one is not drawn in its place";
}

TEST_F(NoStackForALookUp, InAChildIsReported) {
  const korlib_host::ContextScope scope(asp_.context.get());
  const CComPtr<IDispatch> child = object_of(call(page(), L"NewTemplator", L"Row_"));
  ASSERT_TRUE(child);
  EXPECT_EQ(S_OK, putref(child.get(), L"Script", script_).hr);
  EXPECT_EQ(L"<code 800A001C>", text_of(call(child.get(), L"ProcessTemplate", L"(#%none#)")));
}

TEST_F(NoStackForALookUp, InATextTemplatorIsReportedAndNoKeyIsAskedFor) {
  script().function(L"", [](const Arguments&) { return CComVariant(L"by key"); });
  const CComPtr<IDispatch> templator = module_.create(L"TextTemplator");
  EXPECT_EQ(S_OK, putref(templator.get(), L"Script", script_).hr);
  EXPECT_EQ(L"<code 800A001C>", text_of(call(templator.get(), L"ProcessTemplate", L"(#none#)")));
  script().fail_unknown_names(DISP_E_UNKNOWNNAME);
  EXPECT_EQ(S_OK, call(templator.get(), L"ProcessTemplate", L"(#none#)").hr);
  EXPECT_EQ(L"by key", text_of(call(templator.get(), L"Flush")));
}

}  // namespace
}  // namespace test
