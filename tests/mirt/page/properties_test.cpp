// The controller's own properties, and its binding to a request.
#include "mirt/page/page_fixture.h"

namespace test {
namespace {

class PageProperties : public PageTest {};

TEST_F(PageProperties, StringsStartAsDocumentedAndKeepWhatTheyAreGiven) {
  const struct {
    const wchar_t *name, *initial;
  } cases[] = {{L"Command", L""},
               {L"Template", L""},
               {L"TemplateFolder", L""},
               {L"TemplateExt", L""},
               {L"TemplateCharset", L"UTF-8"},
               {L"DefaultTemplate", L""},
               {L"TemplatePermissionPath", L""},
               {L"CommandName", L"c"},
               {L"Name", L""}};
  const std::wstring odd(L"a\0b\xD800 \x1F600 'c'", 10);
  for (const auto& row : cases) {
    EXPECT_EQ(row.initial, text_of(get(page(), row.name))) << testing::PrintToString(std::wstring(row.name));
    EXPECT_EQ(S_OK, put(page(), row.name, odd).hr);
    EXPECT_EQ(odd, text_of(get(page(), row.name)));
    EXPECT_EQ(S_OK, put(page(), row.name, L"").hr);
    EXPECT_EQ(L"", text_of(get(page(), row.name)));
  }
}

TEST_F(PageProperties, BooleansAreTrueOnlyForTrue) {
  const struct {
    const wchar_t* name;
    bool initial;
  } cases[] = {{L"Backable", true},
               {L"NullIsEmpty", false},
               {L"SubmitDecodeOnPutInto", false},
               {L"CacheTemplate", true},
               {L"SelfEncode", false}};
  for (const auto& row : cases) {
    EXPECT_EQ(row.initial, is_true(get(page(), row.name)));
    for (const VARIANT_BOOL value : {VARIANT_TRUE, VARIANT_BOOL{1}, VARIANT_BOOL{-2}, VARIANT_FALSE}) {
      CComVariant given(true);
      given.boolVal = value;
      EXPECT_EQ(S_OK, put(page(), row.name, given).hr);
      const Answer answer = get(page(), row.name);
      ASSERT_EQ(VT_BOOL, answer.value.vt);
      EXPECT_EQ(value == VARIANT_TRUE ? VARIANT_TRUE : VARIANT_FALSE, answer.value.boolVal);
    }
  }
}

TEST_F(PageProperties, ScriptIsTheOneAddedLast) {
  const CComPtr<FakeScript> second = FakeScript::make();
  EXPECT_EQ(object_of(get(page(), L"Script")).get(), script_.get());
  EXPECT_EQ(S_OK, putref(page(), L"Script", second).hr);
  EXPECT_EQ(object_of(get(page(), L"Script")).get(), second.get());
}

// It was never released then: the fixture looks at what is alive in the end.
TEST_F(PageProperties, APageMayBeItsOwnScript) {
  EXPECT_EQ(S_OK, call(page(), L"AddScript", page()).hr);
  EXPECT_EQ(S_OK, putref(page(), L"Script", page()).hr);
  EXPECT_EQ(page(), object_of(get(page(), L"Script")).get());
  put(page(), L"DefaultTemplate", L"list");
  call(page(), L"ProcessTemplate", L"(#:DefaultTemplate#)");
  EXPECT_EQ(L"list", output());
}

TEST_F(PageProperties, ScriptLeavesTheOutArgumentAloneWhenThereIsNone) {
  const CComPtr<IDispatch> empty = new_page();
  CComPtr<IMirt> typed;
  ASSERT_EQ(S_OK, empty.query(typed.put()));
  IDispatch* const marker = page();
  IDispatch* out = marker;
  EXPECT_EQ(S_OK, typed->get_Script(&out));
  EXPECT_EQ(marker, out);
}

// Objects are made in memory that others used before.
TEST_F(PageProperties, APageRemembersNothingOfTheOneBeforeIt) {
  const struct {
    const wchar_t* name;
    CComVariant value;
  } cases[] = {{L"Command", value_of(L"x")},
               {L"Template", value_of(L"x")},
               {L"TemplateFolder", value_of(L"x")},
               {L"TemplateExt", value_of(L"x")},
               {L"TemplateCharset", value_of(L"x")},
               {L"DefaultTemplate", value_of(L"x")},
               {L"TemplatePermissionPath", value_of(L"x")},
               {L"CommandName", value_of(L"x")},
               {L"Name", value_of(L"x")},
               {L"Backable", value_of(false)},
               {L"NullIsEmpty", value_of(true)},
               {L"SubmitDecodeOnPutInto", value_of(true)},
               {L"CacheTemplate", value_of(false)},
               {L"SelfEncode", value_of(true)}};
  std::vector<CComVariant> fresh;
  for (int round = 0; round < 3; ++round) {
    const CComPtr<IDispatch> one = new_page();
    for (std::size_t i = 0; i < std::size(cases); ++i) {
      const Answer answer = get(one.get(), cases[i].name);
      if (round == 0) fresh.push_back(answer.value);
      EXPECT_EQ(VARCMP_EQ, VarCmp(&fresh[i], &answer.value, 0, 0))
          << testing::PrintToString(std::wstring(cases[i].name));
      EXPECT_EQ(S_OK, put(one.get(), cases[i].name, cases[i].value).hr);
    }
    EXPECT_FALSE(object_of(get(one.get(), L"Script")));
    EXPECT_FALSE(is_true(call(one.get(), L"MessageExists", CComVariant(korlib::omitted()))));
    EXPECT_EQ(E_FAIL, get(one.get(), L"Bag").hr);
    EXPECT_TRUE(get(one.get(), L"Output").value.punkVal);
    call(one.get(), L"AddScript", script_);
    call(one.get(), L"AddMessage", L"m", L"");
    put(one.get(), L"Command", L"");
    put(one.get(), L"Template", L"");
    put(one.get(), L"DefaultTemplate", L"");
    EXPECT_EQ(S_OK, call(one.get(), L"Process").hr);
    EXPECT_TRUE(object_of(get(one.get(), L"Bag")));
    putref(one.get(), L"Output", script_);
  }
}

TEST_F(PageProperties, OutputIsTheResponseUntilItIsReplaced) {
  const Answer answer = get(page(), L"Output");
  ASSERT_EQ(VT_UNKNOWN, answer.value.vt);
  const CComQIPtr<ZeltoTypeLibrary::IResponse> response(answer.value.punkVal);
  EXPECT_EQ(response.get(), asp_.response.get());
  EXPECT_EQ(E_INVALIDARG, putref(page(), L"Output", script_).hr);
  EXPECT_EQ(E_FAIL, call(page(), L"Write", L"x", false).hr);
}

class Binding : public PageTest {
 protected:
  HRESULT create() {
    CComPtr<IClassFactory> factory;
    EXPECT_EQ(S_OK, module_.class_object(L"Mirt", factory.put()));
    const korlib_host::ContextScope scope(asp_.context.get());
    CComPtr<IDispatch> made;
    const HRESULT hr = factory->CreateInstance(nullptr, IID_IDispatch, made.put_void());
    EXPECT_TRUE(made) << "the new object stays with the caller";
    return hr;
  }
};

TEST_F(Binding, TakesTheObjectsInOrderAndStopsAtTheFirstFailure) {
  const char* const names[] = {"Context.Server", "Context.Application", "Context.Request", "Context.Response"};
  for (std::size_t i = 0; i < std::size(names); ++i) {
    asp_.calls->log.clear();
    asp_.calls->fail(names[i], E_ACCESSDENIED);
    EXPECT_EQ(E_ACCESSDENIED, create());
    EXPECT_EQ(std::vector<std::string>(names, names + i + 1), asp_.calls->log);
    asp_.calls->succeed(names[i]);
  }
}

TEST_F(Binding, RefusesAnObjectOfAnotherKind) {
  for (const wchar_t* name : {L"Server", L"Application", L"Request", L"Response", L"Session"}) {
    CComVariant& property = asp_.context->properties[name];
    const CComVariant before = property;
    property = CComVariant(static_cast<IDispatch*>(script_.get()));
    EXPECT_EQ(E_NOINTERFACE, create()) << testing::PrintToString(std::wstring(name));
    property = before;
  }
}

TEST_F(Binding, NeedsNoSession) {
  asp_.calls->fail("Context.Session", E_ABORT);
  EXPECT_EQ(S_OK, create());
  asp_.calls->succeed("Context.Session");
  asp_.context->properties[L"Session"] = CComVariant(L"none");
  EXPECT_EQ(S_OK, create());
}

// What a host gets when it uses an object that could not be bound.
TEST_F(Binding, AnUnboundPageFailsCleanly) {
  CComPtr<IClassFactory> factory;
  ASSERT_EQ(S_OK, module_.class_object(L"Mirt", factory.put()));
  CComPtr<IDispatch> bare;
  EXPECT_EQ(CONTEXT_E_NOCONTEXT, factory->CreateInstance(nullptr, IID_IDispatch, bare.put_void()));
  ASSERT_TRUE(bare);
  EXPECT_TRUE(FAILED(call(bare.get(), L"Process").hr));
  EXPECT_EQ(E_FAIL, call(bare.get(), L"Write", L"x", true).hr);
  EXPECT_EQ(E_FAIL, call(bare.get(), L"Write", L"x", false).hr);
  EXPECT_EQ(E_FAIL, call(bare.get(), L"Redirect", L"x").hr);
  EXPECT_EQ(E_FAIL, call(bare.get(), L"AddLog", L"x", L"y").hr);
  EXPECT_EQ(E_FAIL, call(bare.get(), L"Abandon").hr);
  EXPECT_EQ(E_FAIL, call(bare.get(), L"ToCommand", L"x").hr);
  EXPECT_EQ(E_FAIL, call(bare.get(), L"ToParameter", L"x", L"y").hr);
  EXPECT_EQ(E_FAIL, call(bare.get(), L"PutIntoProp", L"x", false).hr);
  EXPECT_EQ(E_FAIL, get(bare.get(), L"Request").hr);
  EXPECT_EQ(E_FAIL, get(bare.get(), L"Bag").hr);
  for (const wchar_t* mark : {L"(#+x#)", L"(#=x#)", L"(#$x#)", L"(#*x#)", L"(#@x#)", L"(#&x#)"})
    EXPECT_EQ(E_FAIL, call(bare.get(), L"ProcessTemplate", mark).hr);
}

}  // namespace
}  // namespace test
