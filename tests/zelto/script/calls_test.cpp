// Calls as an automation object receives them, flag by flag.
#include "support/still.h"
#include "zelto/script/script_fixture.h"

namespace test {
namespace {

// Takes down every call. `Value` can be read; `Method` cannot, as a method answers; `Item` needs an argument.
class Recorder final : public StillDispatch<> {
 public:
  enum Id : DISPID { item = DISPID_VALUE, value = 1, method = 2 };
  struct Call {
    DISPID id;
    WORD flags;
    std::vector<CComVariant> arguments;  // in the order of the call
    bool puts;                           // the first of what was handed over is named DISPID_PROPERTYPUT
  };

  HRESULT GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
    const std::wstring_view name(names[0]);
    *ids = name == L"Value" ? value : name == L"Method" ? method : name == L"Item" ? item : DISPID_UNKNOWN;
    return *ids == DISPID_UNKNOWN ? DISP_E_UNKNOWNNAME : S_OK;
  }
  HRESULT Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO* info,
                 UINT*) override {
    if (flags == DISPATCH_PROPERTYGET && id == method) return DISP_E_MEMBERNOTFOUND;
    if (flags == DISPATCH_PROPERTYGET && id == item) return DISP_E_BADPARAMCOUNT;
    Call call{id, flags, {}, params->cNamedArgs == 1 && params->rgdispidNamedArgs[0] == DISPID_PROPERTYPUT};
    for (UINT i = params->cArgs; i-- > 0;) call.arguments.emplace_back(params->rgvarg[i]);
    calls.push_back(std::move(call));
    if (exception) *info = *std::exchange(exception, nullptr);
    if (result && SUCCEEDED(answer_code)) VariantCopy(result, &answer);
    return answer_code;
  }

  std::vector<Call> calls;
  CComVariant answer;
  HRESULT answer_code = S_OK;
  EXCEPINFO* exception = nullptr;  // handed out once
};

class Calls : public ScriptTest {
 protected:
  Calls() { realm->set_object(L"r", &recorder); }
  ~Calls() override { realm.reset(); }
  // The last call of the script.
  Recorder::Call call_of(std::wstring_view script) {
    recorder.calls.clear();
    must_run(script);
    if (recorder.calls.empty()) return {DISPID_UNKNOWN, 0, {}, false};
    return std::move(recorder.calls.back());
  }
  Recorder recorder;
};

constexpr WORD kGet = DISPATCH_PROPERTYGET;
constexpr WORD kPut = DISPATCH_PROPERTYPUT;
constexpr WORD kPutObject = DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF;
constexpr WORD kCall = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

TEST_F(Calls, SayWhatTheScriptWants) {
  struct {
    const wchar_t* script;
    DISPID id;
    WORD flags;
    std::vector<VARTYPE> arguments;
  } const rows[] = {
      {L"r.Value", Recorder::value, kGet, {}},
      {L"r.Method()", Recorder::method, kCall, {}},
      {L"r.Method;", Recorder::method, kCall, {}},
      {L"r.Method(1, 'a')", Recorder::method, kCall, {VT_I4, VT_BSTR}},
      {L"r.Item('a')", Recorder::item, kCall, {VT_BSTR}},
      {L"r('a')", Recorder::item, kCall, {VT_BSTR}},
      {L"r[3]", Recorder::item, kCall, {VT_I4}},
      {L"r.Value = 1", Recorder::value, kPut, {VT_I4}},
      {L"r.Value = null", Recorder::value, kPut, {VT_NULL}},
      {L"r.Value = undefined", Recorder::value, kPut, {VT_EMPTY}},
      {L"r.Value = [1]", Recorder::value, kPut, {VT_ARRAY | VT_VARIANT}},
      {L"r.Value = {}", Recorder::value, kPutObject, {VT_DISPATCH}},
      {L"r.Value = p", Recorder::value, kPutObject, {VT_DISPATCH}},
      {L"r('a') = 1", Recorder::item, kPut, {VT_BSTR, VT_I4}},
      {L"r('a') = p", Recorder::item, kPutObject, {VT_BSTR, VT_DISPATCH}},
      {L"r('a', 'b') = p", Recorder::item, kPutObject, {VT_BSTR, VT_BSTR, VT_DISPATCH}},
      {L"r.Item('a') = 1", Recorder::item, kPut, {VT_BSTR, VT_I4}},
      {L"r[3] = function () {}", Recorder::item, kPutObject, {VT_I4, VT_DISPATCH}},
      // An omitted argument keeps its place.
      {L"r.Method(undefined)", Recorder::method, kCall, {VT_ERROR}},
      {L"r.Method(1, undefined, 'c')", Recorder::method, kCall, {VT_I4, VT_ERROR, VT_BSTR}},
      {L"r(undefined, true)", Recorder::item, kCall, {VT_ERROR, VT_BOOL}},
      {L"r(undefined) = 1", Recorder::item, kPut, {VT_ERROR, VT_I4}},
  };
  for (const auto& row : rows) {
    const Recorder::Call call = call_of(row.script);
    EXPECT_EQ(row.id, call.id) << narrow(row.script);
    EXPECT_EQ(row.flags, call.flags) << narrow(row.script);
    EXPECT_EQ((row.flags & kPut) != 0, call.puts) << narrow(row.script);
    std::vector<VARTYPE> types;
    for (const CComVariant& argument : call.arguments) {
      types.push_back(argument.vt);
      EXPECT_TRUE(argument.vt != VT_ERROR || argument.scode == DISP_E_PARAMNOTFOUND) << narrow(row.script);
    }
    EXPECT_EQ(row.arguments, types) << narrow(row.script);
  }
}

TEST_F(Calls, HandOverBooleansAsTheTwoThatThereAre) {
  EXPECT_EQ(VARIANT_TRUE, call_of(L"r.Method(true)").arguments[0].boolVal);
  EXPECT_EQ(VARIANT_FALSE, call_of(L"r.Method(false)").arguments[0].boolVal);
  EXPECT_EQ(static_cast<unsigned short>(VARIANT_TRUE), 0xFFFF);
}

TEST_F(Calls, CompoundAssignmentsReadAndPut) {
  recorder.answer = CComVariant(LONG{5});
  const Recorder::Call call = call_of(L"r('a') += 2");
  EXPECT_EQ(2U, recorder.calls.size());
  EXPECT_EQ(kCall, recorder.calls[0].flags);
  EXPECT_EQ(kPut, call.flags);
  EXPECT_EQ(7, call.arguments[1].lVal);
}

TEST_F(Calls, FailWithTheWordsOfTheExceptionInfo) {
  EXCEPINFO info{};
  info.bstrSource = korlib::new_bstr(L"Engine room");
  info.bstrDescription = korlib::new_bstr(L"Steam is out");
  info.scode = E_ABORT;
  recorder.exception = &info;
  recorder.answer_code = DISP_E_EXCEPTION;
  EXPECT_EQ("Steam is out,Engine room,-2147467260",
            text(L"(() => { try { r.Value } catch (e) { return [e.message, e.source, e.number] } })()"));
  EXCEPINFO deferred{};
  deferred.pfnDeferredFillIn = [](EXCEPINFO* late) -> HRESULT {
    late->bstrDescription = korlib::new_bstr(L"On second thought");
    return S_OK;
  };
  recorder.exception = &deferred;
  EXPECT_EQ("Error: On second thought at /site/page.asp:1", error_of(L"r.Value = 1"));
  EXPECT_EQ("Error: Exception occurred: 'Value' (0x80020009) at /site/page.asp:1", error_of(L"r.Value"));
}

}  // namespace
}  // namespace test
