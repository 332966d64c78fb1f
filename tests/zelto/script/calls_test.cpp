// Calls as an automation object receives them, flag by flag.
#include <functional>

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
    if (meanwhile) meanwhile(*params);
    Call call{id, flags, {}, params->cNamedArgs == 1 && params->rgdispidNamedArgs[0] == DISPID_PROPERTYPUT};
    for (UINT i = params->cArgs; i-- > 0;) call.arguments.emplace_back(params->rgvarg[i]);
    calls.push_back(std::move(call));
    if (exception) *info = *std::exchange(exception, nullptr);
    if (result && SUCCEEDED(answer_code)) VariantCopy(result, &answer);
    return answer_code;
  }

  std::function<void(const DISPPARAMS&)> meanwhile;  // called before anything is taken down
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
  Recorder others[4];
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

// Often enough for whatever is kept at hand.
TEST_F(Calls, ReachTheirObjectHoweverOften) {
  for (std::size_t i = 0; i < std::size(others); ++i) realm->set_object(L"r" + std::to_wstring(i), &others[i]);
  must_run(
      L"for (var i = 0; i < 100; i++) { r.Method(i); r0.Method(-i); r1.Method('r1'); r2.Method(i / 2);"
      L" r3.Method(); r1.Method(i) }");
  ASSERT_EQ(100U, recorder.calls.size());
  for (LONG i = 0; i < 100; ++i) {
    const auto at = static_cast<std::size_t>(i);
    EXPECT_EQ(i, recorder.calls[at].arguments.at(0).lVal);
    EXPECT_EQ(-i, others[0].calls.at(at).arguments.at(0).lVal);
    EXPECT_EQ(L"r1", korlib::view_of(others[1].calls.at(2 * at).arguments.at(0).bstrVal));
    EXPECT_EQ(i, others[1].calls.at(2 * at + 1).arguments.at(0).lVal);
    EXPECT_EQ(0U, others[3].calls.at(at).arguments.size());
  }
}

TEST_F(Calls, FindAnObjectAsItIsHoweverOftenItsMethodsAreCalled) {
  must_run(L"function often(o) { for (var i = 0; i < 50; i++) o.Method(i) } often(r)");
  EXPECT_EQ("no property,undefined,function,true", text(L"['Other' in r ? 'a property' : 'no property', typeof r.Other,"
                                                        L" typeof r.Method, r.hasOwnProperty('Method')]"));
  EXPECT_EQ(kPut, call_of(L"r.Method = 1").flags);
  EXPECT_EQ("7,7", text(L"(() => { var own = { Method(x) { this.x = x; return x } }; often(own);"
                        L" return [own.Method(7), own.x] })()"));
  must_run(
      L"var both = [r, { Method() { return 'own' } }], given = '';"
      L"for (var i = 0; i < 40; i++) { var each = both[i % 2]; given = each.Method(i) }");
  EXPECT_EQ("own", text(L"given"));
  EXPECT_EQ("TypeError: Object doesn't support this property or method: 'Other' (0x80020006) at /site/page.asp:1",
            error_of(L"r.Other(1)"));
}

TEST_F(Calls, HandOverTextsThatComeAgainAsTheyAre) {
  must_run(
      L"var t = ['a', 'a much longer text, of more characters than fit into a small buffer', '\\u{E4}\\u{1F600}', ''];"
      L"for (var i = 0; i < 400; i++) { for (var j = 0; j < 4; j++) r.Method(t[j]); r.Method('x' + i) }");
  const std::wstring_view texts[] = {L"a", L"a much longer text, of more characters than fit into a small buffer",
                                     L"\xE4\U0001F600", L""};
  ASSERT_EQ(2000U, recorder.calls.size());
  for (std::size_t i = 0; i < recorder.calls.size(); ++i) {
    const CComVariant& given = recorder.calls[i].arguments.at(0);
    ASSERT_EQ(VT_BSTR, given.vt);
    const std::wstring own = L"x" + std::to_wstring(i / 5);
    ASSERT_EQ(i % 5 == 4 ? std::wstring_view(own) : texts[i % 5], korlib::view_of(given.bstrVal)) << i;
  }
}

TEST_F(Calls, KeepTheirTextsWhateverIsCalledMeanwhile) {
  constexpr std::wstring_view kText = L"a text that comes again";
  const auto run = [&] {
    must_run(
        L"var t = 'a text that comes again';"
        L"function others() {"
        L" for (var i = 100; i < 300; i++) { var u = 'another text, it is ' + i; for (var j = 0; j < 3; j++) "
        L"r.Method(u) } }"
        L"for (var i = 0; i < 5; i++) { r.Method(t); r.Method(t); r.Method(t); r.Method(t, others) }");
  };
  const auto call_function = [](const DISPPARAMS& params) {
    if (params.cArgs < 2) return;
    DISPPARAMS none{};
    EXPECT_EQ(S_OK, params.rgvarg[0].pdispVal->Invoke(DISPID_VALUE, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD,
                                                      &none, nullptr, nullptr, nullptr));
  };
  const auto forget = [&](const DISPPARAMS& params) {
    call_function(params);
    if (params.cArgs == 2) engine.texts().clear();  // as when memory is short
  };
  for (const bool forgets : {false, true}) {
    if (forgets)
      recorder.meanwhile = forget;
    else
      recorder.meanwhile = call_function;
    recorder.calls.clear();
    run();
    ASSERT_EQ(5U * (3 + 600 + 1), recorder.calls.size());
    for (std::size_t at = 603; at < recorder.calls.size(); at += 604) {
      EXPECT_EQ(kText, korlib::view_of(recorder.calls[at].arguments.at(0).bstrVal)) << at;
    }
  }
}

// However much room there is for it in UTF-8.
TEST_F(Calls, HandOverTextsOfAnyLength) {
  must_run(
      L"for (var n = 1; n < 300; n++) for (var k = 0; k < 4; k++) if (k < n)"
      L" r.Method('\\u3000'.repeat(k) + 'x'.repeat(n - k)), r.Method('x'.repeat(n - k) + '\\u3000'.repeat(k))");
  auto call = recorder.calls.begin();
  for (std::size_t n = 1; n < 300; ++n) {
    for (std::size_t k = 0; k < 4 && k < n; ++k) {
      const std::wstring wide(k, L'\x3000');
      const std::wstring rest(n - k, L'x');
      ASSERT_LT(call, recorder.calls.end() - 1);
      ASSERT_EQ(wide + rest, korlib::view_of((call++)->arguments.at(0).bstrVal)) << n << ' ' << k;
      ASSERT_EQ(rest + wide, korlib::view_of((call++)->arguments.at(0).bstrVal)) << n << ' ' << k;
    }
  }
}

// Strings come and go, and others come to be where they were.
TEST_F(Calls, HandOverWhatTheScriptHasWhileItsStringsAreCollected) {
  for (int round = 0; round < 5; ++round) {
    must_run(L"for (var i = 0; i < 50; i++) { var t = 'again ' + i; for (var j = 0; j < 5; j++) r.Method(t) }");
    engine.collect_garbage();
    recorder.calls.clear();
    must_run(L"for (var i = 0; i < 5000; i++) r.Method('once ' + i)");
    ASSERT_EQ(5000U, recorder.calls.size());
    for (std::size_t at = 0; at < recorder.calls.size(); ++at) {
      ASSERT_EQ(L"once " + std::to_wstring(at), korlib::view_of(recorder.calls[at].arguments.at(0).bstrVal));
    }
  }
}

TEST_F(Calls, HandOverNumbersAsIntegersWhereTheyAre) {
  struct {
    const wchar_t* number;
    VARTYPE type;
    double value;
  } const rows[] = {{L"0", VT_I4, 0},
                    {L"-1", VT_I4, -1},
                    {L"2147483647", VT_I4, 2147483647.0},
                    {L"-2147483648", VT_I4, -2147483648.0},
                    {L"2147483648", VT_R8, 2147483648.0},
                    {L"0.5", VT_R8, 0.5},
                    {L"4 / 2", VT_I4, 2},
                    {L"-4294967296", VT_R8, -4294967296.0}};
  for (const auto& row : rows) {
    const Recorder::Call call = call_of(L"r.Method(" + std::wstring(row.number) + L")");
    ASSERT_EQ(1U, call.arguments.size());
    EXPECT_EQ(row.type, call.arguments[0].vt) << narrow(row.number);
    EXPECT_EQ(row.value, row.type == VT_I4 ? call.arguments[0].lVal : call.arguments[0].dblVal) << narrow(row.number);
  }
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
