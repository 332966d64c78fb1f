// A name that scripts are asked for one after the other, some of which fail in ways of their own.
#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "frame/script_event.h"

namespace test {
namespace {

using Log = std::vector<std::wstring>;

// Answers every look-up, and every request for a value, with one code, and notes that it was asked.
class Answering final : public IDispatch {
 public:
  Answering(Log& log, std::wstring name, HRESULT hr, DISPID id = DISPID_UNKNOWN)
      : log_(log), name_(std::move(name)), hr_(hr), id_(id) {}
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<IDispatch, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return ++references; }
  ULONG Release() override { return --references; }
  HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid, DISPID* ids) override {
    EXPECT_EQ(IID_NULL, riid);
    EXPECT_EQ(1u, count);
    EXPECT_EQ(LCID{2048}, lcid);
    log_.push_back(name_ + L" " + names[0]);
    ids[0] = id_;
    return hr_;
  }
  HRESULT Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) override {
    log_.push_back(name_);
    if (SUCCEEDED(hr_)) *result = korlib::long_variant(id_);
    return hr_;
  }

  ULONG references = 1;

 private:
  Log& log_;
  const std::wstring name_;
  const HRESULT hr_;
  const DISPID id_;
};

class ScriptLookUp : public testing::Test {
 protected:
  // Adds a script; a failing one leaves an identifier all the same.
  Answering& add(const std::wstring& name, HRESULT hr, DISPID id = 99) {
    Answering& script = scripts_.emplace_back(log_, name, hr, id);
    handler_.add(&script);
    return script;
  }
  void TearDown() override {
    event_ = {};
    handler_ = {};
    for (const Answering& script : scripts_) EXPECT_EQ(1u, script.references) << "a script is still held";
  }
  void expect_event(const Answering& script, DISPID id) const {
    EXPECT_EQ(&script, event_.dispatch.get());
    EXPECT_EQ(id, event_.dispid);
  }

  Log log_;
  std::deque<Answering> scripts_;
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
    Answering& found = add(L"b", S_OK, 7);
    add(L"c", hr);
    EXPECT_EQ(S_OK, handler_.GetEvent(L"x", event_)) << hr;
    expect_event(found, 7);
    EXPECT_EQ((Log{L"c x", L"b x"}), log_) << "the first one that knows it is enough";
  }
}

TEST_F(ScriptLookUp, TakesEverySuccess) {
  Answering& found = add(L"a", S_FALSE, 7);
  EXPECT_EQ(S_OK, handler_.GetEvent(L"x", event_));
  expect_event(found, 7);
}

TEST_F(ScriptLookUp, LeavesAnEventThatWasFoundBeforeWhenItFails) {
  Answering& found = add(L"a", S_OK, 7);
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
