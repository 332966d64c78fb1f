// What the page's own functions find, and what they may change, while Process runs.
#include <algorithm>

#include "mirt/page/page_fixture.h"
#include "support/fake_script.h"

namespace test {
namespace {

class WhileProcessing : public PageTest {
 protected:
  using Action = std::function<void()>;
  void on(const std::wstring& event, Action action) {
    script().function(event, [action = std::move(action)](const Arguments&) {
      action();
      return CComVariant();
    });
  }
  void name(const wchar_t* value) { put(page(), L"Name", value); }
  CComPtr<IDispatch> bag() { return object_of(get(page(), L"Bag")); }
  IUnknown* stored(const std::wstring& key) {
    const auto found = asp_.session->values().find(key);
    return found == asp_.session->values().end() ? nullptr : found->second.punkVal;
  }
  bool was_called(const std::wstring& function) {
    const auto called = script().called();
    return std::find(called.begin(), called.end(), function) != called.end();
  }
  void watch(std::initializer_list<const wchar_t*> events) {
    for (const wchar_t* event : events) on(event, [] {});
  }
};

// It is the last function of a page, and comes when View and Include have gone.
TEST_F(WhileProcessing, LastAccessFindsNeitherViewNorInclude) {
  with_name();
  int looked = 0;
  const auto look = [&](bool is_there) {
    ++looked;
    const Answer view = get(page(), L"View");
    EXPECT_EQ(is_there ? S_OK : E_FAIL, view.hr);
    EXPECT_EQ(L"", view.description);
    const Answer include = get(page(), L"Include");
    EXPECT_EQ(S_OK, include.hr);
    EXPECT_EQ(is_there, object_of(include) != nullptr);
    EXPECT_EQ(is_there ? S_OK : E_FAIL, call(page(), L"PutIntoView", L"x", false).hr);
    EXPECT_EQ(is_there ? L"" : L"<code 80004005>", draw(L"(#/x#)"));
    EXPECT_EQ(is_there ? L"" : L"<code 80004005>", draw(L"(#@x#)"));
    EXPECT_TRUE(bag()) << "what the page keeps in the session stays its own";
  };
  on(L"On_FirstAccess", [&] { look(true); });
  on(L"On_EndProcess", [&] {
    look(true);
    EXPECT_EQ(S_OK, call(page(), L"Abandon").hr);
  });
  on(L"On_LastAccess", [&] { look(false); });
  process();
  EXPECT_EQ(3, looked);
}

TEST_F(WhileProcessing, ANewNameIsAnotherStateAtTheEnd) {
  with_name();
  watch({L"On_FirstAccess", L"On_LastAccess"});
  in_process([&] {
    EXPECT_EQ(S_OK, put(bag().get(), L"Item", L"k", L"of p").hr);
    name(L"q");
    EXPECT_EQ(L"of p", text_of(get(bag().get(), L"Item", L"k"))) << "the state is the one that was bound";
  });
  EXPECT_TRUE(stored(L"p"));
  EXPECT_FALSE(stored(L"q"));
  EXPECT_TRUE(was_called(L"On_LastAccess")) << "there is none under the name";
  EXPECT_EQ(L"of p", text_of(get(bag().get(), L"Item", L"k")));

  script().forget_calls();
  process();
  EXPECT_TRUE(stored(L"q"));
  EXPECT_TRUE(was_called(L"On_FirstAccess"));
  EXPECT_FALSE(was_called(L"On_LastAccess"));
  EXPECT_FALSE(is_true(call(bag().get(), L"Exists", L"k")));
}

TEST_F(WhileProcessing, ANewNameWithAStateOfItsOwnEndsNothing) {
  name(L"q");
  process();
  name(L"p");
  process();
  watch({L"On_LastAccess"});
  in_process([&] { name(L"q"); });
  EXPECT_FALSE(was_called(L"On_LastAccess"));
}

TEST_F(WhileProcessing, ANameTakenAwayLeavesNothingToEnd) {
  with_name();
  watch({L"On_LastAccess"});
  in_process([&] {
    EXPECT_EQ(S_OK, call(page(), L"Abandon").hr);
    name(L"");
  });
  EXPECT_FALSE(stored(L"p"));
  EXPECT_FALSE(was_called(L"On_LastAccess"));
  EXPECT_TRUE(bag());
}

TEST_F(WhileProcessing, ANameThatComesLateBindsNothingBeforeTheNextProcess) {
  watch({L"On_FirstAccess", L"On_LastAccess"});
  on(L"On_StartProcess", [&] { with_name(); });
  in_process([&] {
    EXPECT_EQ(L"<code 80004005>Could not get Bag. Please specify property 'Name'.", text_of(get(page(), L"Bag")));
  });
  EXPECT_TRUE(asp_.session->values().empty());
  EXPECT_FALSE(was_called(L"On_FirstAccess"));
  EXPECT_TRUE(was_called(L"On_LastAccess"));
  script().forget_calls();
  process();
  EXPECT_TRUE(stored(L"p"));
  EXPECT_TRUE(was_called(L"On_FirstAccess"));
}

TEST_F(WhileProcessing, AbandonTakesTheStateOfTheNameAsItIsThen) {
  name(L"q");
  process();
  name(L"p");
  in_process([&] {
    name(L"q");
    EXPECT_EQ(S_OK, call(page(), L"Abandon").hr);
  });
  EXPECT_TRUE(stored(L"p"));
  EXPECT_FALSE(stored(L"q"));
}

// Every function of the script takes the argument that it is called with, and puts another in its place.
class FireEventArgument : public PageTest {
 protected:
  void SetUp() override {
    changing_.on_call = [this](const BareScript::Call& call) {
      if (call.params.cArgs != 2) return DISP_E_BADPARAMCOUNT;
      VARIANT& argument = call.params.rgvarg[0];  // the last one
      type_ = argument.vt;
      if (argument.vt != (VT_BYREF | VT_VARIANT)) return S_OK;
      taken_ = CComVariant(*argument.pvarVal);
      VariantClear(argument.pvarVal);
      CComVariant(L"changed").detach_to(argument.pvarVal);
      return answer_;
    };
    fresh_ = new_page();
    EXPECT_EQ(S_OK, call(fresh_.get(), L"AddScript", static_cast<IDispatch*>(&changing_)).hr);
  }
  void TearDown() override {
    fresh_.reset();
    EXPECT_EQ(1u, changing_.references);
    PageTest::TearDown();
  }
  static std::wstring text_in(const VARIANT& value) {
    return value.vt == VT_BSTR ? std::wstring(korlib::view_of(value.bstrVal)) : L"<no text>";
  }

  BareScript changing_;
  VARTYPE type_ = VT_EMPTY;
  CComVariant taken_;
  HRESULT answer_ = S_OK;
  CComPtr<IDispatch> fresh_;
};

TEST_F(FireEventArgument, IsTheCallersVariable) {
  CComVariant variable(L"before");
  CComVariant result;
  const Answer answer = call(fresh_.get(), L"FireEvent", L"f", by_reference(&variable), by_reference(&result));
  EXPECT_TRUE(is_true(answer));
  EXPECT_EQ(VT_BYREF | VT_VARIANT, type_);
  EXPECT_EQ(L"before", text_in(taken_));
  EXPECT_EQ(L"changed", text_in(variable));
}

TEST_F(FireEventArgument, IsTheTypedCallersVariable) {
  CComPtr<IMirt> typed;
  ASSERT_EQ(S_OK, fresh_.query(typed.put()));
  const CComBSTR name(L"f");
  CComVariant variable(L"before");
  CComVariant result;
  VARIANT_BOOL exists = VARIANT_FALSE;
  EXPECT_EQ(S_OK, typed->FireEvent(name, &variable, &result, &exists));
  EXPECT_EQ(L"changed", text_in(variable));
  EXPECT_EQ(S_OK, typed->FireEvent(name, nullptr, &result, &exists));
  EXPECT_EQ(VT_EMPTY, type_) << "no variable, no reference";
}

TEST_F(FireEventArgument, StaysChangedWhenTheFunctionFails) {
  answer_ = E_ABORT;
  CComVariant variable(L"before");
  CComVariant result(L"result");
  EXPECT_EQ(E_ABORT, call(fresh_.get(), L"FireEvent", L"f", by_reference(&variable), by_reference(&result)).hr);
  EXPECT_EQ(L"changed", text_in(variable));
  EXPECT_EQ(L"result", text_in(result));
}

}  // namespace
}  // namespace test
