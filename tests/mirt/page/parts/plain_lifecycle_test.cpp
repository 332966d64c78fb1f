#include "page/lifecycle.h"

#include <gtest/gtest.h>

#include "support/fake.h"
#include "support/late_bound.h"

namespace test {
namespace {

// The lifecycle as it is without the controller, whose own steps accept an empty command and draw files.
class PlainLifecycle : public testing::Test, protected CMirtConcept {
 protected:
  PlainLifecycle() : CMirtConcept(owner()) { handler_.add(script_.get()); }
  void TearDown() override { script_->forget_calls(); }
  static IDispatch* owner() {
    static const CComPtr<FakeScript> owner = FakeScript::make();
    return owner.get();
  }
  void define(std::initializer_list<const wchar_t*> names) {
    for (const wchar_t* name : names) script_->function(name, [](const Arguments&) { return CComVariant(); });
  }
  // How Process ends: the text of its error, empty for success.
  std::wstring ending() {
    take_error();
    script_->forget_calls();
    const HRESULT hr = CMirtConcept::Process();
    const ErrorText error = take_error();
    EXPECT_EQ(error.description.empty() ? S_OK : E_FAIL, hr);
    EXPECT_EQ(error.description.empty() ? L"" : L"Mirt", error.source);
    return error.description;
  }

  CComPtr<FakeScript> script_ = FakeScript::make();
};

TEST_F(PlainLifecycle, FiresOneFunctionAStep) {
  command_ = CComBSTR(L"Save");
  template_ = CComBSTR(L"list");
  define({L"OnCommand_Save", L"OnTemplate_list"});
  EXPECT_EQ(L"", ending());
  EXPECT_EQ((std::vector<std::wstring>{L"On_StartProcess", L"On_StartCommand", L"OnCommand_Save", L"On_EndCommand",
                                       L"On_StartDraw", L"OnTemplate_list", L"On_EndDraw", L"On_EndProcess"}),
            script_->asked());
}

TEST_F(PlainLifecycle, NeedsSomebodyForTheCommandAndForTheTemplate) {
  EXPECT_EQ(L"Unknown Command ''.", ending());
  command_ = CComBSTR(L"Save");
  EXPECT_EQ(L"Unknown Command 'Save'.", ending());
  define({L"OnCommand_Save"});
  EXPECT_EQ(L"Unknown Template ''.", ending());
  template_ = CComBSTR(L"list");
  EXPECT_EQ(L"Unknown Template 'list'.", ending());
  define({L"OnTemplate_list"});
  EXPECT_EQ(L"", ending());
}

// What a step has answered so far stays when its function, or the look-up of that, fails.
TEST_F(PlainLifecycle, AFailureLeavesTheAnswerAsItWas) {
  for (const bool before : {true, false}) {
    script_->failing(L"On_StartDraw", E_ABORT);
    bool answer = before;
    EXPECT_EQ(E_ABORT, CMirtConcept::On_StartDraw(answer));
    EXPECT_EQ(before, answer);
    script_->remove(L"On_StartDraw");
    script_->fail_unknown_names(E_ACCESSDENIED);
    EXPECT_EQ(E_ACCESSDENIED, CMirtConcept::On_StartDraw(answer));
    EXPECT_EQ(E_ACCESSDENIED, CMirtConcept::Draw(answer));
    EXPECT_EQ(before, answer);
    script_->fail_unknown_names(DISP_E_UNKNOWNNAME);
  }
}

}  // namespace
}  // namespace test
