// State that outlives a request, and the properties that show it.
#include "mirt/page/dictionary_class.h"
#include "mirt/page/page_fixture.h"

namespace test {
namespace {

class SessionState : public PageTest {
 protected:
  // One more request of the same browser, with a page of its own.
  CComPtr<IDispatch> next_request() {
    CComPtr<IDispatch> next = new_page();
    call(next.get(), L"AddScript", script_);
    put(next.get(), L"Name", L"p");
    return next;
  }
  void count(const std::wstring& name, int* counter) {
    script().function(name, [counter](const Arguments&) {
      ++*counter;
      return CComVariant();
    });
  }
};

TEST_F(SessionState, IsMadeOnceAndKeptUnderTheName) {
  int first = 0;
  count(L"On_FirstAccess", &first);
  with_name();
  process();
  EXPECT_EQ(1, first);
  ASSERT_EQ(1u, asp_.session->values().count(L"p"));
  EXPECT_EQ(VT_UNKNOWN, asp_.session->values()[L"p"].vt);
  EXPECT_EQ(1, asp_.calls->count("Session.putref_Value"));

  const CComPtr<IDispatch> next = next_request();
  EXPECT_EQ(S_OK, call(next.get(), L"Process").hr);
  EXPECT_EQ(1, first);
  EXPECT_EQ(object_of(get(page(), L"Bag")), object_of(get(next.get(), L"Bag")));
}

TEST_F(SessionState, ABagRemembersBetweenRequests) {
  with_name();
  process();
  EXPECT_EQ(S_OK, put(object_of(get(page(), L"Bag")).get(), L"Item", L"k", L"v").hr);
  const CComPtr<IDispatch> next = next_request();
  call(next.get(), L"Process");
  EXPECT_EQ(L"v", text_of(get(object_of(get(next.get(), L"Bag")).get(), L"Item", L"k")));
}

TEST_F(SessionState, NeedsANameAndASession) {
  int events = 0;
  count(L"On_FirstAccess", &events);
  count(L"On_LastAccess", &events);
  process();
  EXPECT_EQ(0, events);
  EXPECT_EQ(L"<code 80004005>Could not get Bag. Please specify property 'Name'.", text_of(get(page(), L"Bag")));
  EXPECT_EQ(L"<code 80004005>Could not get Bag. Please specify property 'Name'.",
            text_of(call(page(), L"PutIntoBag", L"x", false)));

  asp_.without_session();
  const CComPtr<IDispatch> other = new_page();
  put(other.get(), L"Name", L"p");
  EXPECT_EQ(S_OK, call(other.get(), L"Process").hr);
  EXPECT_EQ(L"<code 80004005>Could not get Bag. Please specify property 'Name'.", text_of(get(other.get(), L"Bag")));
}

TEST_F(SessionState, TheBagIsUnavailableBeforeProcess) {
  with_name();
  EXPECT_EQ(L"<code 80004005>Could not get Bag. Please specify property 'Name'.", text_of(get(page(), L"Bag")));
}

TEST_F(SessionState, AReadThatFailsMakesANewOne) {
  with_name();
  process();
  const IUnknown* before = asp_.session->values()[L"p"].punkVal;
  asp_.calls->fail("Session.Value", E_ABORT);
  int first = 0;
  count(L"On_FirstAccess", &first);
  process();
  EXPECT_EQ(1, first);
  EXPECT_NE(before, asp_.session->values()[L"p"].punkVal);
}

TEST_F(SessionState, AValueOfAnotherTypeIsReplaced) {
  CComVariant null_object;
  null_object.vt = VT_UNKNOWN;
  const CComVariant dispatch(static_cast<IDispatch*>(script_.get()));
  for (const CComVariant& value : {CComVariant(L"text"), CComVariant(LONG{1}), null_object, dispatch}) {
    asp_.session->values()[L"p"] = value;
    with_name();
    process();
    EXPECT_EQ(VT_UNKNOWN, asp_.session->values()[L"p"].vt);
    EXPECT_TRUE(object_of(get(page(), L"Bag")));
  }
}

TEST_F(SessionState, AForeignObjectUnderTheNameIsAnError) {
  asp_.session->values()[L"p"] = CComVariant(static_cast<IUnknown*>(script_.get()));
  with_name();
  EXPECT_EQ(E_NOINTERFACE, call(page(), L"Process").hr);
}

TEST_F(SessionState, AStoreThatFailsEndsProcess) {
  with_name();
  int events = 0;
  count(L"On_FirstAccess", &events);
  asp_.calls->fail("Session.putref_Value", E_ACCESSDENIED);
  EXPECT_EQ(E_ACCESSDENIED, call(page(), L"Process").hr);
  EXPECT_EQ(0, events);
  EXPECT_TRUE(object_of(get(page(), L"Bag"))) << "the page has it all the same";
}

// What came before a failing step stays.
TEST_F(SessionState, ProcessReadsTheUploadThenMakesTheDictionariesThenBinds) {
  with_name();
  asp_.session->values()[L"p"] = CComVariant(static_cast<IUnknown*>(script_.get()));
  asp_.calls->fail("Request.TotalBytes", E_ACCESSDENIED);
  asp_.request->server_variables->set(L"HTTP_CONTENT_TYPE", {L"multipart/form-data; boundary=B"});
  EXPECT_EQ(E_ACCESSDENIED, call(page(), L"Process").hr);
  EXPECT_EQ(E_FAIL, get(page(), L"View").hr);
  asp_.request->server_variables->set(L"HTTP_CONTENT_TYPE", {L"text/plain"});
  EXPECT_EQ(E_NOINTERFACE, call(page(), L"Process").hr);
  EXPECT_EQ(S_OK, get(page(), L"View").hr);
  EXPECT_TRUE(object_of(get(page(), L"Include")));
  EXPECT_TRUE(script().asked().empty());
}

TEST_F(SessionState, ADictionaryThatCannotBeMadeEndsProcess) {
  with_name();
  page();
  DictionaryClass dictionaries;
  for (const int allowed : {0, 1}) {
    dictionaries.fail(E_ACCESSDENIED, allowed);
    EXPECT_EQ(E_ACCESSDENIED, call(page(), L"Process").hr);
    EXPECT_EQ(E_FAIL, get(page(), L"View").hr);
  }
  EXPECT_TRUE(asp_.session->values().empty());
  EXPECT_TRUE(script().asked().empty());
}

TEST_F(SessionState, ABagThatCannotBeMadeIsMissedWhenItIsAskedFor) {
  with_name();
  page();
  {
    DictionaryClass dictionaries;
    dictionaries.fail(E_ACCESSDENIED, 2);  // View and Include are made
    process();
  }
  const Answer bag = get(page(), L"Bag");
  EXPECT_EQ(E_FAIL, bag.hr);
  EXPECT_EQ(L"", bag.description);
  EXPECT_EQ(L"<code 80004005>", draw(L"(#&x#)"));
  EXPECT_EQ(E_FAIL, call(page(), L"PutIntoBag", L"x", false).hr);
}

TEST_F(SessionState, TheAnswerOfFirstAccessIsIgnoredButItsFailureIsNot) {
  with_name();
  script().function(L"On_FirstAccess", [](const Arguments&) { return CComVariant(false); });
  script().function(L"On_StartProcess", [](const Arguments&) { return CComVariant(); });
  process();
  EXPECT_EQ((std::vector<std::wstring>{L"On_FirstAccess", L"On_StartProcess"}), script().called());
  asp_.session->values().clear();
  script().failing(L"On_FirstAccess", E_ABORT);
  EXPECT_EQ(E_ABORT, call(page(), L"Process").hr);
}

TEST_F(SessionState, AbandonDropsItAndFiresLastAccess) {
  with_name();
  int last = 0;
  count(L"On_LastAccess", &last);
  process();
  EXPECT_EQ(0, last);
  in_process([&] { EXPECT_EQ(S_OK, call(page(), L"Abandon").hr); });
  EXPECT_EQ(1, last);
  EXPECT_EQ(0u, asp_.session->values().count(L"p"));
  EXPECT_TRUE(object_of(get(page(), L"Bag"))) << "the page keeps what it has";
  int first = 0;
  count(L"On_FirstAccess", &first);
  process();
  EXPECT_EQ(1, first);
}

TEST_F(SessionState, LastAccessDecidesHowProcessEnds) {
  with_name();
  script().failing(L"On_LastAccess", E_ABORT);
  script().function(L"On_EndDraw", [&](const Arguments&) {
    asp_.session->values().clear();
    return CComVariant();
  });
  EXPECT_EQ(E_ABORT, call(page(), L"Process").hr);
}

TEST_F(SessionState, AFailingEndProcessKeepsTheDictionaries) {
  with_name();
  script().failing(L"On_EndProcess", E_ABORT);
  script().function(L"On_LastAccess", [](const Arguments&) {
    ADD_FAILURE();
    return CComVariant();
  });
  EXPECT_EQ(E_ABORT, call(page(), L"Process").hr);
  EXPECT_EQ(S_OK, get(page(), L"View").hr);
}

TEST_F(SessionState, AbandonPassesOnWhatTheHostSays) {
  with_name();
  asp_.calls->fail("Session.Contents", E_ABORT);
  EXPECT_EQ(E_ABORT, call(page(), L"Abandon").hr);
  asp_.calls->succeed("Session.Contents");
  asp_.calls->fail("Contents.Remove", E_ACCESSDENIED);
  EXPECT_EQ(E_ACCESSDENIED, call(page(), L"Abandon").hr);
  asp_.calls->fail("Contents.Remove", S_FALSE);
  EXPECT_EQ(S_OK, call(page(), L"Abandon").hr) << "every success is one";
  asp_.without_session();
  const Answer answer = call(new_page().get(), L"Abandon");
  EXPECT_EQ(E_FAIL, answer.hr);
  EXPECT_EQ(L"", answer.description);
}

TEST_F(SessionState, ViewAndIncludeExistWhileProcessRuns) {
  const Answer view = get(page(), L"View");
  EXPECT_EQ(E_FAIL, view.hr);
  EXPECT_EQ(L"", view.description);
  const Answer include = get(page(), L"Include");
  EXPECT_EQ(S_OK, include.hr);
  EXPECT_FALSE(object_of(include));
  in_process([&] {
    EXPECT_EQ(S_OK, call(page(), L"SetView", L"k", L"v").hr);
    EXPECT_EQ(L"v", text_of(get(page(), L"View", L"k")));
    EXPECT_EQ(L"v", text_of(get(object_of(get(page(), L"View")).get(), L"Item", L"k")));
    EXPECT_TRUE(object_of(get(page(), L"Include")));
  });
  EXPECT_EQ(E_FAIL, get(page(), L"View").hr);
  EXPECT_FALSE(object_of(get(page(), L"Include")));
  in_process([&] { EXPECT_EQ(VT_EMPTY, get(page(), L"View", L"k").value.vt) << "a new one each time"; });
}

TEST_F(SessionState, ViewRefusesANullOutArgument) {
  CComPtr<IMirt> typed;
  ASSERT_EQ(S_OK, CComPtr<IDispatch>(page()).query(typed.put()));
  EXPECT_EQ(E_INVALIDARG, typed->get_View(nullptr));
}

// A clock that stands still makes two draws alike; only the count tells them apart then.
TEST_F(SessionState, ACommandKeyChangesWithEveryCommand) {
  with_name();
  put(page(), L"Backable", false);
  std::wstring before;
  in_process([&] { before = draw(L"(#?#)"); });
  ASSERT_EQ(7u, before.size());
  EXPECT_EQ(L'1', before[6]) << "drawn after the command has run";
  in_process([&] { EXPECT_EQ(L'2', draw(L"(#?#)")[6]); });
}

TEST_F(SessionState, ANotBackablePageTakesItsCommandFromTheChangingField) {
  with_name();
  put(page(), L"Backable", false);
  process();
  const std::wstring field = draw(L"(#?#)");
  int saved = 0;
  count(L"OnCommand_Save", &saved);
  asp_.request->query_string->set(field, {L"Save"});
  asp_.request->query_string->set(L"c", {L"Other"});
  const CComPtr<IDispatch> next = next_request();
  put(next.get(), L"Backable", false);
  EXPECT_EQ(S_OK, call(next.get(), L"Process").hr);
  EXPECT_EQ(1, saved);

  // The same page again, from the browser's history: the field is no longer expected.
  const CComPtr<IDispatch> again = next_request();
  put(again.get(), L"Backable", false);
  EXPECT_EQ(S_OK, call(again.get(), L"Process").hr);
  EXPECT_EQ(1, saved);
}

TEST_F(SessionState, ANotBackablePageNeedsAName) {
  put(page(), L"Backable", false);
  const Answer answer = call(page(), L"Process");
  EXPECT_EQ(E_FAIL, answer.hr);
  EXPECT_EQ(L"Could not get Command Name. Please specify property 'Name'.", answer.description);
  asp_.calls->fail("Request.QueryString", E_ACCESSDENIED);
  EXPECT_EQ(E_ACCESSDENIED, call(page(), L"Process").hr) << "the fields are there before their name is asked for";
  asp_.calls->succeed("Request.QueryString");
  put(page(), L"Command", L"given");
  script().function(L"OnCommand_given", [](const Arguments&) { return CComVariant(); });
  EXPECT_EQ(L"Could not increment Command. Please specify property 'Name'.", call(page(), L"Process").description);
}

TEST_F(SessionState, AFailingEndCommandKeepsTheKey) {
  with_name();
  put(page(), L"Backable", false);
  script().failing(L"On_EndCommand", E_ABORT);
  EXPECT_EQ(E_ABORT, call(page(), L"Process").hr);
  EXPECT_EQ(L'0', draw(L"(#?#)")[6]);
}

}  // namespace
}  // namespace test
