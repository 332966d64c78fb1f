// The controller as a typed caller sees it: what becomes of out-arguments, and of arguments that are null.
#include <korlib/dbcommand.h>

#include "mirt/page/page_fixture.h"

namespace test {
namespace {

// Never read through: an out-argument that a failing call leaves as it was would show it.
template <class T>
T* poison() {
  return reinterpret_cast<T*>(0x10);
}

class TypedCalls : public PageTest {
 protected:
  void SetUp() override { ASSERT_EQ(S_OK, CComPtr<IDispatch>(page()).query(typed_.put())); }
  void TearDown() override {
    typed_.reset();
    PageTest::TearDown();
  }
  CComPtr<IMirt> typed_;
};

TEST_F(TypedCalls, AFailureClearsTheOutArgument) {
  asp_.calls->fail("Request.ServerVariables", E_ABORT);
  asp_.calls->fail("Server.URLEncode", E_ABORT);
  const struct {
    const char* what;
    HRESULT hr;
    std::function<HRESULT(IDispatch**)> call;
  } objects[] = {
      {"Bag", E_FAIL, [&](IDispatch** out) { return typed_->get_Bag(out); }},
      {"View", E_FAIL, [&](IDispatch** out) { return typed_->get_View(out); }},
      {"Include", S_OK, [&](IDispatch** out) { return typed_->get_Include(out); }},
      {"Request", E_ABORT, [&](IDispatch** out) { return typed_->get_Request(out); }},
      {"NewMail", E_NOTIMPL, [&](IDispatch** out) { return typed_->NewMail(nullptr, 0, out); }},
      {"NewADOCommand", E_POINTER, [&](IDispatch** out) { return typed_->NewADOCommand(nullptr, nullptr, 1, out); }},
  };
  for (const auto& row : objects) {
    auto* out = poison<IDispatch>();
    EXPECT_EQ(row.hr, row.call(&out)) << row.what;
    EXPECT_EQ(nullptr, out) << row.what;
  }
  BSTR text = poison<wchar_t>();
  EXPECT_EQ(E_ABORT, typed_->ToCommand(CComBSTR(L"x"), &text));
  EXPECT_EQ(nullptr, text);
  text = poison<wchar_t>();
  EXPECT_EQ(E_ABORT, typed_->ToParameter(CComBSTR(L"x"), CComBSTR(L"y"), &text));
  EXPECT_EQ(nullptr, text);
  auto* templator = poison<IMirtedTemplator>();
  EXPECT_EQ(CONTEXT_E_NOCONTEXT, typed_->NewTemplator(nullptr, &templator));
  EXPECT_EQ(nullptr, templator);
  CComVariant number(LONG{1});
  VARIANT_BOOL exists = 77;
  EXPECT_EQ(E_INVALIDARG, typed_->MessageExists(&number, &exists));
  EXPECT_EQ(VARIANT_FALSE, exists);
}

TEST_F(TypedCalls, ANullOutArgumentIsRefused) {
  CComVariant value(LONG{1});
  VARIANT_BOOL exists = VARIANT_FALSE;
  EXPECT_EQ(E_INVALIDARG, typed_->get_View(nullptr));
  const HRESULT answers[] = {
      typed_->get_Bag(nullptr),
      typed_->get_Include(nullptr),
      typed_->get_Request(nullptr),
      typed_->get_Script(nullptr),
      typed_->get_Output(nullptr),
      typed_->get_Name(nullptr),
      typed_->get_Backable(nullptr),
      typed_->ToCommand(nullptr, nullptr),
      typed_->ToParameter(nullptr, nullptr, nullptr),
      typed_->ToArray(script_.get(), nullptr),
      typed_->NewTemplator(nullptr, nullptr),
      typed_->NewADOCommand(&value, nullptr, 1, nullptr),
      typed_->MessageExists(&value, nullptr),
      typed_->MessageExists(nullptr, &exists),
      typed_->AddMessage(nullptr, nullptr),
      typed_->FireEvent(nullptr, nullptr, nullptr, nullptr),
  };
  for (std::size_t i = 0; i < std::size(answers); ++i) EXPECT_EQ(E_POINTER, answers[i]) << i;
  EXPECT_EQ(E_NOTIMPL, typed_->NewMail(nullptr, 0, nullptr));
}

TEST_F(TypedCalls, ANullTextIsTheEmptyOne) {
  EXPECT_EQ(S_OK, typed_->Write(nullptr, VARIANT_FALSE));
  EXPECT_EQ(S_OK, typed_->ProcessTemplate(nullptr));
  EXPECT_EQ(S_OK, typed_->AddLog(nullptr, nullptr));
  EXPECT_EQ(fake::Texts{L"[:]"}, asp_.response->log);
  CComBSTR text;
  EXPECT_EQ(S_OK, typed_->ToParameter(nullptr, nullptr, text.put()));
  EXPECT_EQ(L"=&", text.view());
  CComVariant message(L"m");
  EXPECT_EQ(S_OK, typed_->AddMessage(&message, nullptr));
  EXPECT_EQ(L"m", draw(L"(#%_Message|(#%_Message_Text#)#)"));
  VARIANT_BOOL exists = 77;
  EXPECT_EQ(S_OK, typed_->FireEvent(nullptr, &message, nullptr, &exists));
  EXPECT_EQ(VARIANT_FALSE, exists);
  EXPECT_EQ(S_OK, typed_->put_CommandName(nullptr));
  EXPECT_EQ(S_OK, typed_->get_CommandName(text.put()));
  EXPECT_EQ(nullptr, text.get());
  EXPECT_EQ(E_FAIL, typed_->DrawTemplate(nullptr));
}

TEST_F(TypedCalls, ATextKeepsItsOddLength) {
  CComBSTR odd;
  odd.attach(SysAllocStringByteLen("abcdefg", 7));
  EXPECT_EQ(S_OK, typed_->put_Name(odd));
  CComBSTR kept;
  EXPECT_EQ(S_OK, typed_->get_Name(kept.put()));
  EXPECT_EQ(7u, kept.byte_length());
}

TEST_F(TypedCalls, AnEventWithoutAnArgumentGetsAnEmptyOne) {
  script().function(L"f", [](const Arguments&) { return CComVariant(L"answer"); });
  VARIANT_BOOL exists = VARIANT_FALSE;
  EXPECT_EQ(S_OK, typed_->FireEvent(CComBSTR(L"f"), nullptr, nullptr, &exists));
  ASSERT_EQ(1u, script().calls().size());
  EXPECT_EQ(VT_EMPTY, script().calls()[0].arguments.at(1).vt);
}

TEST_F(TypedCalls, ANullScriptIsKeptAndKnowsNoName) {
  EXPECT_EQ(S_OK, typed_->putref_Script(nullptr));
  auto* out = poison<IDispatch>();
  EXPECT_EQ(S_OK, typed_->get_Script(&out));
  EXPECT_EQ(poison<IDispatch>(), out);
  script().value(L"v", L"v");
  EXPECT_EQ(L"v", draw(L"(#:v#)"));
}

TEST_F(TypedCalls, ANullOutputLetsGoOfTheOld) {
  const ULONG held = asp_.response->AddRef();
  EXPECT_EQ(S_OK, typed_->putref_Output(nullptr));
  EXPECT_LT(asp_.response->Release(), held);
  auto* out = poison<IUnknown>();
  EXPECT_EQ(S_OK, typed_->get_Output(&out));
  EXPECT_EQ(nullptr, out);
  EXPECT_EQ(E_FAIL, typed_->Write(CComBSTR(L"x"), VARIANT_FALSE));
}

}  // namespace
}  // namespace test
