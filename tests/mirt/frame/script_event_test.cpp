// Script functions and variables found by name.
#include "frame/script_event.h"

#include <memory>

#include "support/fake.h"

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

// Answers every look-up with a code of its own.
class Refusing final : public IDispatch {
 public:
  explicit Refusing(HRESULT hr) : hr_(hr) {}
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<IDispatch, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return 2; }
  ULONG Release() override { return 1; }
  HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID* ids) override {
    ids[0] = 99;
    return hr_;
  }
  HRESULT Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override { return hr_; }

 private:
  HRESULT hr_;
};

TEST(GetEvent, AnswersWhatTheScriptAskedLastDid) {
  Refusing first(E_ACCESSDENIED);
  Refusing second(E_OUTOFMEMORY);
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

// Sees the arguments as they are, references included.
class Looking final : public IDispatch {
 public:
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<IDispatch, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return ++references; }
  ULONG Release() override { return --references; }
  HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  HRESULT Invoke(DISPID id, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params, VARIANT* result,
                 EXCEPINFO* excepinfo, UINT* argerr) override {
    EXPECT_EQ(expected_id, id);
    EXPECT_EQ(IID_NULL, riid);
    EXPECT_EQ(LCID{2048}, lcid);
    EXPECT_EQ(nullptr, excepinfo);
    EXPECT_EQ(nullptr, argerr);
    look(flags, *params, result);
    return answer;
  }

  std::function<void(WORD, const DISPPARAMS&, VARIANT*)> look;
  DISPID expected_id = 5;
  HRESULT answer = S_OK;
  ULONG references = 1;
};

TEST(GetValue, MayMeetAScriptThatAddsOthers) {
  Looking script;
  CEventHandler handler;
  handler.add(&script);
  script.expected_id = DISPID_VALUE;
  script.look = [&](WORD, const DISPPARAMS&, VARIANT*) {
    handler.scripts.clear();
    EXPECT_EQ(2u, script.references);  // held for the call
    for (int i = 0; i < 100; ++i) handler.add(nullptr);
  };
  VARIANT value{};
  EXPECT_EQ(S_OK, handler.GetValue(L"x", &value));
  EXPECT_EQ(1u, script.references);
}

TEST(EventCall, PassesTheArgumentByReference) {
  Looking script;
  Looking owner;
  CEvent event;
  event.dispatch = &script;
  event.dispid = 5;
  CComVariant argument(L"x");
  script.look = [&](WORD flags, const DISPPARAMS& params, VARIANT* result) {
    EXPECT_EQ(DISPATCH_METHOD, flags);
    EXPECT_EQ(2u, params.cArgs);
    EXPECT_EQ(0u, params.cNamedArgs);
    EXPECT_EQ(VT_BYREF | VT_VARIANT, params.rgvarg[0].vt);
    EXPECT_EQ(&argument, params.rgvarg[0].pvarVal);
    EXPECT_EQ(VT_DISPATCH, params.rgvarg[1].vt);
    EXPECT_EQ(&owner, params.rgvarg[1].pdispVal);
    EXPECT_EQ(1u, owner.references);  // not counted for the call
    EXPECT_EQ(&event.result, result);
    *params.rgvarg[0].pvarVal = L"changed";
  };
  EXPECT_EQ(S_OK, event.Fire(&owner, &argument));
  EXPECT_EQ(L"changed", text_in(argument));
}

TEST(EventCall, ReadsAndWritesAProperty) {
  Looking script;
  CEvent event;
  event.dispatch = &script;
  event.dispid = 5;
  script.look = [&](WORD flags, const DISPPARAMS& params, VARIANT* result) {
    EXPECT_EQ(DISPATCH_PROPERTYGET, flags);
    EXPECT_EQ(0u, params.cArgs);
    EXPECT_EQ(0u, params.cNamedArgs);
    EXPECT_EQ(&event.result, result);
  };
  EXPECT_EQ(S_OK, event.Get());
  CComVariant value(L"v");
  script.look = [&](WORD flags, const DISPPARAMS& params, VARIANT* result) {
    EXPECT_EQ(DISPATCH_PROPERTYPUT, flags);
    EXPECT_EQ(1u, params.cArgs);
    EXPECT_EQ(1u, params.cNamedArgs);
    EXPECT_EQ(DISPID_PROPERTYPUT, params.rgdispidNamedArgs[0]);
    EXPECT_EQ(L"v", text_in(params.rgvarg[0]));
    EXPECT_EQ(nullptr, result);
  };
  EXPECT_EQ(S_OK, event.Put(&value));
  EXPECT_EQ(E_POINTER, event.Put(nullptr));
}

TEST(EventCall, MakesEverySuccessOneAndPassesFailuresOn) {
  Looking script;
  CEvent event;
  event.dispatch = &script;
  event.dispid = 5;
  CComVariant value;
  script.look = [](WORD, const DISPPARAMS&, VARIANT*) {};
  script.answer = S_FALSE;
  EXPECT_EQ(S_OK, event.Fire(&script, nullptr));
  EXPECT_EQ(S_OK, event.Get());
  EXPECT_EQ(S_OK, event.Put(&value));
  script.answer = DISP_E_EXCEPTION;
  EXPECT_EQ(DISP_E_EXCEPTION, event.Fire(&script, nullptr));
  EXPECT_EQ(DISP_E_EXCEPTION, event.Get());
  EXPECT_EQ(DISP_E_EXCEPTION, event.Put(&value));
}

TEST(EventCall, ForgetsTheLastResultFirst) {
  Looking script;
  CEvent event;
  event.dispatch = &script;
  event.dispid = 5;
  event.result = CComVariant(L"old");
  script.look = [](WORD, const DISPPARAMS&, VARIANT* result) { EXPECT_EQ(VT_EMPTY, result->vt); };
  EXPECT_EQ(S_OK, event.Get());
}

TEST(EventCall, HoldsTheScriptMeanwhile) {
  Looking script;
  CEvent event;
  event.dispatch = &script;
  event.dispid = 5;
  script.look = [&](WORD, const DISPPARAMS&, VARIANT*) {
    event.dispatch.reset();
    EXPECT_EQ(2u, script.references);
  };
  EXPECT_EQ(S_OK, event.Get());
  EXPECT_EQ(1u, script.references);
}

TEST(EventCall, NeedsAnEventThatWasFound) {
  CEvent event;
  CComVariant value;
  EXPECT_EQ(E_UNEXPECTED, event.Fire(nullptr, nullptr));
  EXPECT_EQ(E_UNEXPECTED, event.Get());
  EXPECT_EQ(E_UNEXPECTED, event.Put(&value));
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
