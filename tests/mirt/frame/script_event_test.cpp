// Script functions and variables found by name.
#include "frame/script_event.h"

#include <memory>

#include "support/fake.h"
#include "support/fake_script.h"

namespace test {
namespace {

CEventHandler handler_of(std::initializer_list<CComPtr<FakeScript>> scripts) {
  CEventHandler handler;
  for (const auto& script : scripts) handler.add(script.get());
  return handler;
}

std::wstring text_in(const VARIANT& value) {
  return value.vt == VT_BSTR ? std::wstring(korlib::view_of(value.bstrVal)) : L"<no text>";
}

TEST(GetEvent, FindsTheScriptAddedLast) {
  const CComPtr<FakeScript> first = FakeScript::make();
  const CComPtr<FakeScript> second = FakeScript::make();
  for (const auto& script : {first, second}) script->value(L"both", 0);
  first->value(L"only first", 0);
  const CEventHandler handler = handler_of({first, second});
  CEvent event;
  EXPECT_EQ(S_OK, handler.GetEvent(L"both", event));
  EXPECT_EQ(second.get(), event.dispatch.get());
  EXPECT_EQ(id_of(second.get(), L"both"), event.dispid);
  EXPECT_EQ(S_OK, handler.GetEvent(L"only first", event));
  EXPECT_EQ(first.get(), event.dispatch.get());
}

// Makes the script answer every look-up, and every call, with a code of its own.
void refuse(BareScript& script, HRESULT hr) {
  script.on_look_up = [hr](const wchar_t*, DISPID* id) {
    *id = 99;
    return hr;
  };
  script.on_call = [hr](const BareScript::Call&) { return hr; };
}

TEST(GetEvent, AnswersWhatTheScriptAskedLastDid) {
  BareScript first;
  BareScript second;
  refuse(first, E_ACCESSDENIED);
  refuse(second, E_OUTOFMEMORY);
  CEventHandler handler;
  CEvent event;
  VARIANT value{};
  EXPECT_EQ(DISP_E_UNKNOWNNAME, handler.GetEvent(L"x", event));
  EXPECT_EQ(DISP_E_UNKNOWNNAME, handler.GetValue(L"x", &value));
  handler.add(&first);
  handler.add(&second);
  EXPECT_EQ(E_ACCESSDENIED, handler.GetEvent(L"x", event));
  EXPECT_FALSE(event.dispatch);
  EXPECT_EQ(DISPID_UNKNOWN, event.dispid);
  EXPECT_EQ(E_ACCESSDENIED, handler.GetValue(L"x", &value));
  EXPECT_EQ(VT_EMPTY, value.vt);
}

TEST(GetEvent, PassesOverAScriptThatIsNone) {
  const CComPtr<FakeScript> script = FakeScript::make();
  script->value(L"x", 0);
  CEventHandler handler;
  handler.add(script.get());
  handler.add(nullptr);
  EXPECT_EQ(nullptr, handler.last());
  CEvent event;
  EXPECT_EQ(S_OK, handler.GetEvent(L"x", event));
  EXPECT_EQ(DISP_E_UNKNOWNNAME, handler.GetEvent(L"y", event));
}

TEST(GetValue, AsksDefaultMembersForAKey) {
  const CComPtr<FakeScript> without = FakeScript::make();
  const CComPtr<FakeScript> with = FakeScript::make();
  with->function(L"", [](const Arguments& arguments) { return arguments.at(0); });
  const CEventHandler handler = handler_of({with, without});
  CComVariant value;
  EXPECT_EQ(S_OK, handler.GetValue(L"key", &value));
  EXPECT_EQ(L"key", text_in(value));
  ASSERT_EQ(1u, with->calls().size());
  EXPECT_EQ(DISPATCH_METHOD | DISPATCH_PROPERTYGET, with->calls()[0].flags);
}

class Event : public testing::Test {
 protected:
  CEvent event(const wchar_t* name) {
    CEvent found;
    EXPECT_EQ(S_OK, handler_of({script_}).GetEvent(name, found));
    return found;
  }

  CComPtr<FakeScript> script_ = FakeScript::make();
  CComPtr<FakeScript> owner_ = FakeScript::make();
};

TEST_F(Event, IsCalledWithItsOwnerAlone) {
  script_->function(L"f", [&](const Arguments& arguments) {
    EXPECT_EQ(2u, arguments.size());
    EXPECT_EQ(owner_.get(), arguments[0].pdispVal);
    EXPECT_EQ(VT_EMPTY, arguments[1].vt);
    return value_of(L"answer");
  });
  CEvent f = event(L"f");
  script_->forget_calls();
  EXPECT_EQ(S_OK, f.Fire(owner_.get(), nullptr));
  EXPECT_EQ(L"answer", text_in(f.result));
  EXPECT_EQ(DISPATCH_METHOD, script_->calls().at(0).flags);
}

TEST(GetValue, MayMeetAScriptThatAddsOthers) {
  BareScript script;
  CEventHandler handler;
  handler.add(&script);
  script.on_call = [&](const BareScript::Call& call) {
    EXPECT_EQ(DISPID_VALUE, call.id);
    handler.scripts.clear();
    EXPECT_EQ(2u, script.references);  // held for the call
    for (int i = 0; i < 100; ++i) handler.add(nullptr);
    return S_OK;
  };
  VARIANT value{};
  EXPECT_EQ(S_OK, handler.GetValue(L"x", &value));
  EXPECT_EQ(1u, script.references);
}

// An event that was found in a script which sees its arguments as they are.
class EventCall : public testing::Test {
 protected:
  EventCall() {
    event_.dispatch = &script_;
    event_.dispid = 5;
    script_.on_call = [this](const BareScript::Call& call) {
      EXPECT_EQ(5, call.id);
      look_(call);
      return answer_;
    };
  }

  BareScript script_;
  std::function<void(const BareScript::Call&)> look_ = [](const BareScript::Call&) {};
  HRESULT answer_ = S_OK;
  CEvent event_;
};

TEST_F(EventCall, PassesTheArgumentByReference) {
  BareScript owner;
  CComVariant argument(L"x");
  look_ = [&](const BareScript::Call& call) {
    EXPECT_EQ(DISPATCH_METHOD, call.flags);
    EXPECT_EQ(2u, call.params.cArgs);
    EXPECT_EQ(0u, call.params.cNamedArgs);
    EXPECT_EQ(VT_BYREF | VT_VARIANT, call.params.rgvarg[0].vt);
    EXPECT_EQ(&argument, call.params.rgvarg[0].pvarVal);
    EXPECT_EQ(VT_DISPATCH, call.params.rgvarg[1].vt);
    EXPECT_EQ(&owner, call.params.rgvarg[1].pdispVal);
    EXPECT_EQ(1u, owner.references);  // not counted for the call
    EXPECT_EQ(&event_.result, call.result);
    *call.params.rgvarg[0].pvarVal = L"changed";
  };
  EXPECT_EQ(S_OK, event_.Fire(&owner, &argument));
  EXPECT_EQ(L"changed", text_in(argument));
}

TEST_F(EventCall, ReadsAndWritesAProperty) {
  look_ = [&](const BareScript::Call& call) {
    EXPECT_EQ(DISPATCH_PROPERTYGET, call.flags);
    EXPECT_EQ(0u, call.params.cArgs);
    EXPECT_EQ(0u, call.params.cNamedArgs);
    EXPECT_EQ(&event_.result, call.result);
  };
  EXPECT_EQ(S_OK, event_.Get());
  CComVariant value(L"v");
  look_ = [&](const BareScript::Call& call) {
    EXPECT_EQ(DISPATCH_PROPERTYPUT, call.flags);
    EXPECT_EQ(1u, call.params.cArgs);
    EXPECT_EQ(1u, call.params.cNamedArgs);
    EXPECT_EQ(DISPID_PROPERTYPUT, call.params.rgdispidNamedArgs[0]);
    EXPECT_EQ(L"v", text_in(call.params.rgvarg[0]));
    EXPECT_EQ(nullptr, call.result);
  };
  EXPECT_EQ(S_OK, event_.Put(&value));
  EXPECT_EQ(E_POINTER, event_.Put(nullptr));
}

TEST_F(EventCall, MakesEverySuccessOneAndPassesFailuresOn) {
  CComVariant value;
  const struct { HRESULT answer, expected; } rows[] = {{S_FALSE, S_OK}, {DISP_E_EXCEPTION, DISP_E_EXCEPTION}};
  for (const auto& row : rows) {
    answer_ = row.answer;
    EXPECT_EQ(row.expected, event_.Fire(&script_, nullptr));
    EXPECT_EQ(row.expected, event_.Get());
    EXPECT_EQ(row.expected, event_.Put(&value));
  }
}

TEST_F(EventCall, ForgetsTheLastResultFirst) {
  event_.result = CComVariant(L"old");
  look_ = [](const BareScript::Call& call) { EXPECT_EQ(VT_EMPTY, call.result->vt); };
  EXPECT_EQ(S_OK, event_.Get());
}

TEST_F(EventCall, HoldsTheScriptMeanwhile) {
  look_ = [&](const BareScript::Call&) {
    event_.dispatch.reset();
    EXPECT_EQ(2u, script_.references);
  };
  EXPECT_EQ(S_OK, event_.Get());
  EXPECT_EQ(1u, script_.references);
}

TEST_F(EventCall, NeedsAnEventThatWasFound) {
  CEvent none;
  CComVariant value;
  EXPECT_EQ(E_UNEXPECTED, none.Fire(nullptr, nullptr));
  EXPECT_EQ(E_UNEXPECTED, none.Get());
  EXPECT_EQ(E_UNEXPECTED, none.Put(&value));
}

TEST_F(Event, TakesTheTextsOfAMarkAsAnArray) {
  std::wstringstream a(L"a");
  std::wstringstream empty;
  std::wstringstream odd(std::wstring(L"x\0y", 3));
  script_->function(L"f", [](const Arguments& arguments) {
    EXPECT_EQ(VT_ARRAY | VT_VARIANT, arguments.at(1).vt);
    const SAFEARRAY* array = arguments[1].parray;
    std::wstring all =
        std::to_wstring(array->rgsabound[0].cElements) + L" from " + std::to_wstring(array->rgsabound[0].lLbound);
    for (ULONG i = 0; i < array->rgsabound[0].cElements; ++i) {
      all += L";" + text_in(static_cast<const VARIANT*>(array->pvData)[i]);
    }
    return value_of(all);
  });
  CEvent f = event(L"f");
  EXPECT_EQ(S_OK, fire_with_texts(f, owner_.get(), {&a, &empty, &odd}));
  EXPECT_EQ(std::wstring(L"3 from 0;a;;x\0y", 15), text_in(f.result));
  EXPECT_EQ(S_OK, fire_with_texts(f, owner_.get(), {}));
  EXPECT_EQ(L"0 from 0", text_in(f.result));
}

}  // namespace
}  // namespace test
