// What goes wrong, on both sides of the border and across it.
#include "zelto/script/script_fixture.h"

namespace test {
namespace {

using Errors = ScriptTest;
using zelto::script::Outcome;

TEST_F(Errors, OfObjectsHaveTheirWordsSourceAndNumber) {
  EXPECT_EQ("true,it broke,Probe,-2147467259",
            text(L"(() => { try { o.Fail(-2147467259, 'it broke') } catch (e) { return [e instanceof Error, e.message, "
                 L"e.source, e.number] } })()"));
  EXPECT_EQ("Probe: it broke at /site/page.asp:3", error_of(L"\n\n  o.Fail(-2147467259, 'it broke')"));
  const Outcome outcome = run(L"o.Fail(-2147467259, 'it broke')");
  EXPECT_EQ(E_FAIL, outcome.error->number);
}

TEST_F(Errors, WithoutWordsNameMemberAndCode) {
  struct {
    const wchar_t* script;
    const char* said;
  } const rows[] = {
      {L"o.Fail(-2147352571)", "Error: Type mismatch: 'Fail' (0x80020005) at /site/page.asp:1"},
      {L"o.Fail(-2147024809)", "Error: Invalid argument: 'Fail' (0x80070057) at /site/page.asp:1"},
      {L"o.Fail(-2147220000)", "Error: Automation error: 'Fail' (0x800405E0) at /site/page.asp:1"},
      {L"o.Keep()", "Error: Wrong number of arguments: 'Keep' takes 1, not 0 at /site/page.asp:1"},
      {L"o.Keep(1, 2)", "Error: Wrong number of arguments: 'Keep' takes 1, not 2 at /site/page.asp:1"},
      {L"o.Keep;", "Error: Wrong number of arguments: 'Keep' takes 1, not 0 at /site/page.asp:1"},
      {L"o.Inner = 1",
       "Error: Object doesn't support this property or method: 'Inner' (0x80020003) at /site/page.asp:1"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.said, error_of(row.script));
}

// Often enough for whatever is kept at hand.
TEST_F(Errors, AreTheSameHoweverOftenTheMethodHasBeenCalled) {
  EXPECT_EQ("50,50", text(L"(() => { var right = 0, ended = 0; for (var i = 0; i < 50; i++) {"
                          L" try { o.Fail(-2147467259, 'it broke') } catch (e) {"
                          L" if (e.message + e.source + e.number === 'it brokeProbe-2147467259') right++ }"
                          L" finally { ended++ } } return [right, ended] })()"));
  EXPECT_EQ("Probe: it broke at /site/page.asp:3",
            error_of(L"for (var i = 0; i <= 40; i++)\n\n  o.Fail(i < 40 ? 0 : -2147467259, 'it broke')"));
}

TEST_F(Errors, DoNotInheritTheWordsOfAnEarlierOne) {
  must_run(L"try { o.Fail(-2147467259, 'first') } catch (e) {}");
  EXPECT_EQ("Error: Unspecified error: 'Fail' (0x80004005) at /site/page.asp:1", error_of(L"o.Fail(-2147467259)"));
}

TEST_F(Errors, AreNotToldInWordsThatAComponentWentOnFrom) {
  must_run(L"function again() { return 1 }");
  probe->action = [this] {
    korlib::raise(E_FAIL, L"Probe", L"stale");
    CComPtr<IDispatch> script;
    script.attach(realm->global());
    CComVariant result;
    EXPECT_EQ(S_OK, probe->CallMember(script.get(), CComBSTR(L"again"), &result));
    return E_FAIL;
  };
  EXPECT_EQ("Error: Unspecified error: 'Act' (0x80004005) at /site/page.asp:1", error_of(L"o.Act()"));
}

TEST_F(Errors, NameAnUnknownNameOfTheirOwnCallOnly) {
  EXPECT_EQ("Error: The script does not declare 'zip': 'CallMember' (0x80020006) at /site/page.asp:1",
            error_of(L"o.CallMember({}, 'zip')"));
  EXPECT_EQ("Error: Object doesn't support this property or method: 'Fail' (0x80020006) at /site/page.asp:1",
            error_of(L"o.Fail(-2147352570)"));
}

TEST_F(Errors, KeepTheirNumberOnTheWayOutOfAScriptFunction) {
  EXPECT_EQ("-2147352571,Probe,inner,-2147352571",
            text(L"(() => { try { o.Call(() => o.Fail(-2147352571, 'inner'), 1) } "
                 L"catch (e) { return [e.number, e.source, e.message, e.cause.number] } })()"));
  const Outcome outcome = run(L"o.Call(() => o.Fail(-2147352571, 'inner'), 1)");
  EXPECT_EQ(DISP_E_TYPEMISMATCH, outcome.error->number);
  // E_FAIL with other words is a failure of the component's own.
  probe->action = [this] {
    CComVariant result;
    EXPECT_EQ(E_FAIL, probe->Call(probe->kept.pdispVal, VARIANT{}, &result));
    return korlib::raise(E_FAIL, L"Probe", L"outer");
  };
  must_run(L"o.Keep(() => { throw new Error('inner') })");
  EXPECT_EQ("outer,Probe,inner",
            text(L"(() => { try { o.Act() } catch (e) { return [e.message, e.source, e.cause.message] } })()"));
}

TEST_F(Errors, OfTheScriptHaveTheirPlace) {
  struct {
    const wchar_t* script;
    const char* said;
  } const rows[] = {
      {L"\nnull.x", "TypeError: null is not an object (evaluating 'null.x') at /site/page.asp:2"},
      {L"var n = null;\nn.Method(1)", "TypeError: null is not an object (evaluating 'n.Method') at /site/page.asp:2"},
      {L"var m; try { m.Method(1) } catch ({ message }) { throw message }",
       ": undefined is not an object (evaluating 'm.Method') at /site/page.asp:1"},
      {L"\n\nthrow new RangeError('far')", "RangeError: far at /site/page.asp:3"},
      {L"function f() {\n throw 'text'\n}\nf()", ": text at /site/page.asp:2"},
      {L"\nthrow { message: 'made', number: 7, source: 'me' }", "me: made at /site/page.asp:2"},
      {L"\nthrow 5", ": The script threw 5. at /site/page.asp:2"},
      {L"\nvar a = ;", "SyntaxError: Unexpected token ';' at /site/page.asp:2"},
      {L"f(1) = 2; function f() {}", "ReferenceError: Left side of assignment is not a reference. at /site/page.asp:1"},
      {L"nowhere(1) = 2", "ReferenceError: Can't find variable: nowhere at /site/page.asp:1"},
      {L"(async () => {\n throw new Error('later') })()", "Error: later at /site/page.asp:2"},
  };
  for (const auto& row : rows) {
    const std::string said = error_of(row.script);
    EXPECT_EQ(row.said, said);
  }
}

TEST_F(Errors, ThatTravelThroughComponentsKeepTheFirstAsCause) {
  must_run(
      L"function inner() {\n  throw new TypeError('deep')\n}\n"
      L"var said; try { o.Call(inner, 1) } catch (e) { said = [e.message, e.cause === undefined, e.cause instanceof "
      L"TypeError, e.cause.line, e.number] }");
  EXPECT_EQ("deep,false,true,2,-2147467259", text(L"said"));
  EXPECT_EQ("TypeError: deep at /site/page.asp:2",
            error_of(L"function inner() {\n  throw new TypeError('deep')\n}\n\no.Call(inner, 1)"));
  // What was thrown need be no Error to keep its place.
  EXPECT_EQ("Error: text at /site/page.asp:2", error_of(L"function inner() {\n  throw 'text'\n}\n\no.Call(inner, 1)"));
  EXPECT_EQ("5,5",
            text(L"(() => { try { o.Call(() => { throw 5 }, 1) } catch (e) { return [e.message, e.cause] } })()"));
  // Each component on the way adds one link.
  EXPECT_EQ("far,RangeError,",
            text(L"(() => { function a() { throw new RangeError('far') } function b() { o.Call(a, 1) }\n"
                 L"try { o.Call(b, 1) } catch (e) { return [e.cause.message, e.cause.cause.name, e.cause.cause.cause] "
                 L"} })()"));
  // A cause belongs to one failure, not to the next.
  EXPECT_EQ("undefined",
            text(L"(() => { try { o.Call(inner, 1) } catch (e) {} try { o.Keep() } catch (e) { return e.cause } })()"));
}

TEST_F(Errors, AreRaisedByTheHelpersOfOlderPages) {
  EXPECT_EQ("TypeError: VBArray expected at /site/page.asp:1", error_of(L"new VBArray({})"));
  EXPECT_EQ("RangeError: Subscript out of range at /site/page.asp:1", error_of(L"new VBArray([1]).getItem(1)"));
  EXPECT_EQ("Error:", error_of(L"new Enumerator(p.Inner = 1)").substr(0, 6));
}

}  // namespace
}  // namespace test
