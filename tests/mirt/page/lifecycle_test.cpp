// The steps of a page, through Process.
#include "mirt/page/page_fixture.h"

namespace test {
namespace {

using Names = std::vector<std::wstring>;

class Lifecycle : public PageTest {
 protected:
  void answering(const std::wstring& name, const CComVariant& answer) {
    script().function(name, [answer](const Arguments&) { return answer; });
  }
  // Every function of the page's script that Process can call, each going on.
  void define_all() {
    for (const std::wstring& name : all_) answering(name, CComVariant());
    put(page(), L"Command", L"Save");
    put(page(), L"Template", L"list");
  }
  Names run() {
    script().forget_calls();
    process();
    return script().called();
  }
  const Names all_ = {L"On_StartProcess", L"On_StartCommand", L"OnCommand_Save", L"On_EndCommand",
                      L"On_StartDraw",    L"OnTemplate_list", L"On_EndDraw",     L"On_EndProcess"};
};

TEST_F(Lifecycle, RunsEveryStepInOrder) {
  define_all();
  EXPECT_EQ(all_, run());
}

TEST_F(Lifecycle, PassesThePageAndNothingElseToEveryFunction) {
  define_all();
  process();
  for (const FakeScript::Call& made : script().calls()) {
    ASSERT_EQ(2u, made.arguments.size()) << testing::PrintToString(made.name);
    ASSERT_EQ(VT_DISPATCH, made.arguments[0].vt);
    EXPECT_EQ(page(), made.arguments[0].pdispVal);
    EXPECT_EQ(VT_EMPTY, made.arguments[1].vt);
    EXPECT_EQ(DISPATCH_METHOD, made.flags);
  }
}

TEST_F(Lifecycle, NeedsNoFunctionAtAll) { EXPECT_EQ(Names(), run()); }

struct Cancelling {
  const wchar_t* function;
  Names steps;
};

TEST_F(Lifecycle, AFunctionThatAnswersFalseCancelsWhatItGuards) {
  const Cancelling cases[] = {
      {L"On_StartProcess", {L"On_StartProcess", L"On_EndProcess"}},
      {L"On_StartCommand",
       {L"On_StartProcess", L"On_StartCommand", L"On_EndCommand", L"On_StartDraw", L"OnTemplate_list", L"On_EndDraw",
        L"On_EndProcess"}},
      {L"On_EndCommand", all_},
      {L"On_StartDraw",
       {L"On_StartProcess", L"On_StartCommand", L"OnCommand_Save", L"On_EndCommand", L"On_StartDraw", L"On_EndDraw",
        L"On_EndProcess"}},
      {L"On_EndDraw", all_},
      {L"On_EndProcess", all_},
  };
  for (const Cancelling& row : cases) {
    define_all();
    answering(row.function, CComVariant(false));
    EXPECT_EQ(row.steps, run()) << testing::PrintToString(std::wstring(row.function));
  }
}

CComVariant odd_true() {
  CComVariant value(true);
  value.boolVal = 1;
  return value;
}

TEST_F(Lifecycle, OnlyABooleanOtherThanTrueCancels) {
  static VARIANT_BOOL false_elsewhere = VARIANT_FALSE;
  CComVariant by_ref;
  by_ref.vt = VT_BYREF | VT_BOOL;
  by_ref.pboolVal = &false_elsewhere;
  const struct {
    CComVariant answer;
    bool cancels;
  } cases[] = {
      {CComVariant(), false},     {CComVariant(LONG{0}), false},
      {CComVariant(L""), false},  {null_value(), false},
      {CComVariant(true), false}, {by_ref, false},
      {CComVariant(false), true}, {odd_true(), true},
  };
  for (const auto& row : cases) {
    define_all();
    answering(L"On_StartProcess", row.answer);
    EXPECT_EQ(row.cancels ? 2u : 8u, run().size()) << testing::PrintToString(row.answer);
  }
}

TEST_F(Lifecycle, ACommandOrTemplateThatAFunctionRefusesIsUnknown) {
  define_all();
  answering(L"OnCommand_Save", CComVariant(false));
  EXPECT_EQ(L"<code 80004005>Unknown Command 'Save'.", text_of(call(page(), L"Process")));
}

TEST_F(Lifecycle, ACommandWithoutAFunctionIsAnError) {
  define_all();
  put(page(), L"Command", L"Drop'; --");
  const Answer answer = call(page(), L"Process");
  EXPECT_EQ(E_FAIL, answer.hr);
  EXPECT_EQ(L"Unknown Command 'Drop'; --'.", answer.description);
  EXPECT_EQ(L"Mirt", answer.source);
  EXPECT_EQ((Names{L"On_StartProcess", L"On_StartCommand"}), script().called());
}

TEST_F(Lifecycle, AnEmptyCommandNeedsNoFunctionButMayHaveOne) {
  answering(L"OnCommand_", CComVariant());
  EXPECT_EQ(Names{L"OnCommand_"}, run());
  answering(L"OnCommand_", CComVariant(false));
  EXPECT_EQ(Names{L"OnCommand_"}, run());
}

TEST_F(Lifecycle, ACommandThatItsFunctionTakesBackIsNoCommand) {
  define_all();
  script().function(L"OnCommand_Save", [](const Arguments& a) {
    put(a[0].pdispVal, L"Command", L"");
    return CComVariant(false);
  });
  EXPECT_EQ(all_, run());
}

TEST_F(Lifecycle, AnEmptyTemplateDrawsNothing) {
  answering(L"OnTemplate_", CComVariant(false));
  EXPECT_EQ(Names{L"OnTemplate_"}, run());
  EXPECT_EQ(L"", output());
}

TEST_F(Lifecycle, AFailingFunctionEndsProcessAtOnce) {
  for (std::size_t i = 0; i < all_.size(); ++i) {
    define_all();
    script().failing(all_[i], DISP_E_EXCEPTION, L"broken");
    script().forget_calls();
    const Answer answer = call(page(), L"Process");
    EXPECT_EQ(DISP_E_EXCEPTION, answer.hr);
    EXPECT_EQ(L"broken", answer.description);
    EXPECT_EQ(Names(all_.begin(), all_.begin() + static_cast<std::ptrdiff_t>(i) + 1), script().called());
  }
}

TEST_F(Lifecycle, ALookUpThatFailsOtherwiseEndsProcess) {
  script().fail_unknown_names(E_ACCESSDENIED);
  EXPECT_EQ(E_ACCESSDENIED, call(page(), L"Process").hr);
  EXPECT_EQ(Names{L"On_StartProcess"}, script().asked());
}

TEST_F(Lifecycle, TheScriptAddedLastShadowsEarlierOnes) {
  const CComPtr<FakeScript> later = FakeScript::make();
  answering(L"On_StartProcess", CComVariant());
  answering(L"On_EndProcess", CComVariant());
  later->function(L"On_StartProcess", [](const Arguments&) { return CComVariant(); });
  page();
  EXPECT_EQ(S_OK, putref(page(), L"Script", later).hr);
  EXPECT_EQ(Names{L"On_EndProcess"}, run());
  EXPECT_EQ(Names{L"On_StartProcess"}, later->called());
  later->forget_calls();
}

TEST_F(Lifecycle, AFunctionMayChooseCommandAndTemplate) {
  define_all();
  put(page(), L"Command", L"other");
  put(page(), L"Template", L"other");
  script().function(L"On_StartCommand", [](const Arguments& a) {
    put(a[0].pdispVal, L"Command", L"Save");
    return CComVariant();
  });
  script().function(L"On_StartDraw", [](const Arguments& a) {
    put(a[0].pdispVal, L"Template", L"list");
    return CComVariant();
  });
  EXPECT_EQ(all_, run());
}

TEST_F(Lifecycle, TheDefaultTemplateStandsInForNone) {
  answering(L"OnTemplate_home", CComVariant());
  put(page(), L"DefaultTemplate", L"home");
  EXPECT_EQ(Names{L"OnTemplate_home"}, run());
  EXPECT_EQ(L"home", text_of(get(page(), L"Template")));
}

TEST_F(Lifecycle, TheDrawEventSeesTheDefaultTemplate) {
  put(page(), L"DefaultTemplate", L"home");
  std::wstring seen;
  script().function(L"On_StartDraw", [&](const Arguments& a) {
    seen = text_of(get(a[0].pdispVal, L"Template"));
    return CComVariant(false);
  });
  process();
  EXPECT_EQ(L"home", seen);
}

TEST_F(Lifecycle, ATemplateEventThatRefusesRedirectsTheDraw) {
  put(page(), L"Template", L"List");
  script().function(L"OnDrawTemplate_List", [](const Arguments& a) {
    put(a[0].pdispVal, L"Template", L"Empty");
    return CComVariant(false);
  });
  answering(L"OnDrawTemplate_Empty", CComVariant());
  answering(L"OnTemplate_Empty", CComVariant());
  EXPECT_EQ((Names{L"OnDrawTemplate_List", L"OnDrawTemplate_Empty", L"OnTemplate_Empty"}), run());
}

TEST_F(Lifecycle, ATemplateEventThatFailsEndsTheDraw) {
  define_all();
  script().failing(L"OnDrawTemplate_list", E_ABORT);
  EXPECT_EQ(E_ABORT, call(page(), L"Process").hr);
}

TEST_F(Lifecycle, ATemplateThatAFunctionRefusesIsDrawnFromItsFile) {
  use_folder();
  file("list.html", "from a file");
  put(page(), L"Template", L"list");
  answering(L"OnTemplate_list", CComVariant(false));
  process();
  EXPECT_EQ(L"from a file", output());
}

TEST_F(Lifecycle, AFunctionThatRefusesMayNameAnotherFile) {
  use_folder();
  file("list.html", "the list");
  file("other.html", "the other");
  put(page(), L"Template", L"list");
  script().function(L"OnTemplate_list", [](const Arguments& a) {
    put(a[0].pdispVal, L"Template", L"other");
    return CComVariant(false);
  });
  process();
  EXPECT_EQ(L"the other", output());
}

TEST_F(Lifecycle, ProcessMayRunAgain) {
  define_all();
  EXPECT_EQ(all_, run());
  EXPECT_EQ(all_, run());
}

TEST_F(Lifecycle, ProcessWithinProcessRunsToItsEnd) {
  int depth = 0;
  Names inner;
  script().function(L"On_StartCommand", [&](const Arguments& a) {
    if (depth++ == 0) {
      EXPECT_EQ(S_OK, call(a[0].pdispVal, L"Process").hr);
    }
    return CComVariant();
  });
  process();
  EXPECT_EQ(2, depth);
  EXPECT_EQ(E_FAIL, get(page(), L"View").hr);
}

TEST_F(Lifecycle, ThePageSurvivesGivingUpItsLastReferenceInAnEvent) {
  CComPtr<IDispatch> held = new_page();
  const CComPtr<FakeScript> own = FakeScript::make();
  call(held.get(), L"AddScript", own);
  own->function(L"On_StartProcess", [&](const Arguments&) {
    held.reset();
    own->forget_calls();  // their arguments hold the page too
    return CComVariant();
  });
  own->function(L"On_EndProcess", [&](const Arguments& a) {
    EXPECT_EQ(L"c", text_of(get(a[0].pdispVal, L"CommandName")));
    return CComVariant();
  });
  IDispatch* raw = held.get();
  // Called without a reference of the caller's own, which call() does not take either.
  EXPECT_EQ(S_OK, call(raw, L"Process").hr);
  EXPECT_EQ(Names{L"On_EndProcess"}, own->called());
  own->forget_calls();
}

TEST_F(Lifecycle, AScriptMayAddAScriptWhileItIsAskedOrCalled) {
  const CComPtr<FakeScript> added = FakeScript::make();
  added->function(L"On_EndProcess", [](const Arguments&) { return CComVariant(); });
  script().function(L"On_StartProcess", [&](const Arguments& a) {
    for (int i = 0; i < 100; ++i) call(a[0].pdispVal, L"AddScript", added);
    return CComVariant();
  });
  process();
  EXPECT_EQ(Names{L"On_EndProcess"}, added->called());
  added->forget_calls();
}

}  // namespace
}  // namespace test
