// A name that scripts are asked for one after the other, some of which fail in ways of their own.
#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "frame/script_event.h"
#include "support/fake_script.h"

namespace test {
namespace {

using Log = std::vector<std::wstring>;

class ScriptLookUp : public testing::Test {
 protected:
  // Adds a script that answers every look-up, and every request for a value, with one code, and notes that it was
  // asked; a failing one leaves an identifier all the same.
  BareScript& add(const std::wstring& name, HRESULT hr, DISPID id = 99) {
    BareScript& script = scripts_.emplace_back();
    script.on_look_up = [=, this](const wchar_t* wanted, DISPID* found) {
      log_.push_back(name + L" " + wanted);
      *found = id;
      return hr;
    };
    script.on_call = [=, this](const BareScript::Call& call) {
      log_.push_back(name);
      if (SUCCEEDED(hr)) *call.result = korlib::long_variant(id);
      return hr;
    };
    handler_.add(&script);
    return script;
  }
  void TearDown() override {
    event_ = {};
    handler_ = {};
    for (const BareScript& script : scripts_) EXPECT_EQ(1u, script.references) << "a script is still held";
  }
  void expect_event(const BareScript& script, DISPID id) const {
    EXPECT_EQ(&script, event_.dispatch.get());
    EXPECT_EQ(id, event_.dispid);
  }

  Log log_;
  std::deque<BareScript> scripts_;
  CEventHandler handler_;
  CEvent event_;
};

TEST_F(ScriptLookUp, GoesFromTheLastAddedToTheFirstAndAnswersAsTheFirstDid) {
  add(L"a", E_ACCESSDENIED);
  add(L"b", E_OUTOFMEMORY);
  add(L"c", DISP_E_UNKNOWNNAME);
  add(L"d", E_FAIL);
  EXPECT_EQ(E_ACCESSDENIED, handler_.GetEvent(L"x", event_));
  EXPECT_EQ((Log{L"d x", L"c x", L"b x", L"a x"}), log_);
}

TEST_F(ScriptLookUp, ForgetsOtherFailuresWhereTheFirstAddedDoesNotKnowTheName) {
  add(L"a", DISP_E_UNKNOWNNAME);
  add(L"b", E_ACCESSDENIED);
  EXPECT_EQ(DISP_E_UNKNOWNNAME, handler_.GetEvent(L"x", event_));
  EXPECT_EQ((Log{L"b x", L"a x"}), log_);
}

TEST_F(ScriptLookUp, GoesOnBehindAnyFailureUntilAScriptKnowsTheName) {
  for (const HRESULT hr :
       {DISP_E_UNKNOWNNAME, E_FAIL, E_ACCESSDENIED, E_OUTOFMEMORY, E_NOTIMPL, DISP_E_PARAMNOTFOUND}) {
    handler_ = {};
    log_.clear();
    add(L"a", S_OK, 3);
    BareScript& found = add(L"b", S_OK, 7);
    add(L"c", hr);
    EXPECT_EQ(S_OK, handler_.GetEvent(L"x", event_)) << hr;
    expect_event(found, 7);
    EXPECT_EQ((Log{L"c x", L"b x"}), log_) << "the first one that knows it is enough";
  }
}

TEST_F(ScriptLookUp, TakesEverySuccess) {
  BareScript& found = add(L"a", S_FALSE, 7);
  EXPECT_EQ(S_OK, handler_.GetEvent(L"x", event_));
  expect_event(found, 7);
}

TEST_F(ScriptLookUp, LeavesAnEventThatWasFoundBeforeWhenItFails) {
  BareScript& found = add(L"a", S_OK, 7);
  ASSERT_EQ(S_OK, handler_.GetEvent(L"x", event_));
  handler_ = {};
  add(L"b", E_ACCESSDENIED, 8);
  EXPECT_EQ(E_ACCESSDENIED, handler_.GetEvent(L"x", event_));
  expect_event(found, 7);
}

TEST_F(ScriptLookUp, OfAValueGoesTheSameWay) {
  add(L"a", E_ACCESSDENIED);
  add(L"b", E_OUTOFMEMORY);
  add(L"c", DISP_E_MEMBERNOTFOUND);
  VARIANT value{};
  EXPECT_EQ(E_ACCESSDENIED, handler_.GetValue(L"x", &value));
  EXPECT_EQ(VT_EMPTY, value.vt);
  EXPECT_EQ((Log{L"c", L"b", L"a"}), log_);
  add(L"d", S_OK, 7);
  add(L"e", E_FAIL);
  log_.clear();
  EXPECT_EQ(S_OK, handler_.GetValue(L"x", &value));
  EXPECT_EQ(7, value.lVal);
  EXPECT_EQ((Log{L"e", L"d"}), log_);
}

}  // namespace
}  // namespace test
