// Members that an object does not have, and the numbers of errors in `catch`.
#include "zelto/script/script_fixture.h"

namespace test {
namespace {

using MissingMember = ScriptTest;
using zelto::script::Outcome;

TEST_F(MissingMember, IsUndefinedWhenItIsRead) {
  EXPECT_EQ("undefined,true,2,false,true",
            text(L"[typeof o.Nothing, o.Nothing === undefined, o.Nothing ? 1 : 2, 'Nothing' in o, 'Name' in o]"));
  must_run(L"Object.prototype.shared = 7");
  EXPECT_EQ("7", text(L"o.shared"));
  EXPECT_EQ("5probe", text(L"(function () { with (o) { var outer = 5; return outer + Name } })()"));
}

TEST_F(MissingMember, IsAnErrorWhenItIsCalledOrSet) {
  const std::string said = "Object doesn't support this property or method: 'Nane', did you mean 'Name'? (0x80020006)";
  for (const wchar_t* use : {L"o.Nane(1)", L"o.Nane()", L"o.Nane = 1", L"o.Nane;", L"o.Nane += 1", L"o.Nane('a') = 1",
                             L"o.Nane.length", L"o.Nane[0]", L"o.Nane(o.Name, o('k'))", L"o.Nane.trim()"}) {
    const Outcome outcome = run(use);
    ASSERT_EQ(Outcome::failed, outcome.kind) << narrow(use);
    EXPECT_EQ(said, narrow(outcome.error->message)) << narrow(use);
    EXPECT_EQ(DISP_E_UNKNOWNNAME, outcome.error->number) << narrow(use);
    EXPECT_EQ(1, outcome.error->line) << narrow(use);
    EXPECT_EQ(said + "," + said + ",-2147352570",
              text(L"(function () { try { " + std::wstring(use) +
                   L" } catch (e) { return [e.message, e.description, e.number] } })()"))
        << narrow(use);
    EXPECT_EQ(said + ",-2147352570", text(L"(function () { try { o.Call(function () { " + std::wstring(use) +
                                          L" }, 1) } catch (e) { return [e.message, e.number] } })()"))
        << narrow(use);
  }
  EXPECT_EQ("Error: Object doesn't support this property or method: 'Elsewhere' (0x80020006) at /site/page.asp:1",
            error_of(L"o.Elsewhere = 1"));
}

TEST_F(MissingMember, IsNotBlamedForWhatItDidNotDo) {
  must_run(L"var found = o.Missing");
  must_run(L"var plain = {}");
  EXPECT_EQ(
      "TypeError: plain.other is not a function. (In 'plain.other()', 'plain.other' is undefined) at "
      "/site/page.asp:1",
      error_of(L"o.Missing ? 1 : plain.other()"));
  must_run(L"if (o.Missing) 1; o.Close(); plain.nothing;");
  EXPECT_EQ(
      "TypeError: plain.Missing_too is not a function. (In 'plain.Missing_too()', 'plain.Missing_too' is "
      "undefined) at /site/page.asp:1",
      error_of(L"plain.Missing_too()"));
}

TEST_F(MissingMember, OfAClassWithTypeInformationIsToldWithItsKind) {
  must_run(L"var d = new ActiveXObject('Scripting.Dictionary')");
  EXPECT_EQ(
      "Error: Object doesn't support this property or method: 'Dictionary.RemovAll', did you mean 'RemoveAll'? "
      "(0x80020006) at /site/page.asp:1",
      error_of(L"d.RemovAll()"));
}

TEST_F(MissingMember, OfAPropertyCalledWithoutArgumentsIsItsValue) {
  EXPECT_EQ("probeprobeprobeeverything", text(L"o.Name() + o.NAME() + o.name() + o.ReadText()"));
  must_run(L"var plain = { Up() { return this.x }, x: 5, count: 3 }; o.Close()");
  EXPECT_EQ("5", text(L"plain.Up()"));
  EXPECT_EQ(1, probe->closed);
  EXPECT_EQ(
      "TypeError: plain.count is not a function. (In 'plain.count()', 'plain.count' is 3) at "
      "/site/page.asp:1",
      error_of(L"plain.count()"));
  EXPECT_EQ("TypeError: undefined is not an object (evaluating 'none.Up') at /site/page.asp:2",
            error_of(L"\nvar none; none.Up()"));
}

TEST_F(MissingMember, LeavesNoWordOfTheHostInMessages) {
  struct {
    const wchar_t* script;
    const char* message;
  } const rows[] = {
      {L"({ A() { return { B: 1 } } }).A().c()",
       "({ A() { return { B: 1 } } }).A().c is not a function. (In '({ A() { return { B: 1 } } }).A().c()', '({ A() { "
       "return { B: 1 } } }).A().c' is undefined)"},
      {L"var a = { b: {} }, f = v => v; f(a.b).c.d", "undefined is not an object (evaluating 'f(a.b).c.d')"},
      {L"o('k') = 1; o('k').x.y", "undefined is not an object (evaluating 'o('k').x.y')"},
      {L"var g = () => undefined; g(p.ReadText, new Error(1, 'x')).z",
       "undefined is not an object (evaluating 'g(p.ReadText, new Error(1, 'x')).z')"},
  };
  for (const auto& row : rows) {
    const Outcome outcome = run(row.script);
    ASSERT_EQ(Outcome::failed, outcome.kind) << narrow(row.script);
    EXPECT_EQ(row.message, narrow(outcome.error->message));
    EXPECT_EQ(row.message,
              text(L"(function () { try { " + std::wstring(row.script) + L" } catch (e) { return e.message } })()"));
  }
}

TEST_F(MissingMember, HasTheNumbersOfTheOlderDialectWhenCaught) {
  struct {
    const wchar_t* script;
    const char* number;  // & 0xFFFF, and what it is made of
  } const rows[] = {
      {L"nowhere", "5009"},
      {L"var x = 5; x()", "5002"},
      {L"({}).f()", "438"},
      {L"({})['a']()", "438"},
      {L"null.x", "5007"},
      {L"1 in 2", "5007"},
      {L"new 5", "445"},
      {L"new VBArray(1)", "5013"},
      {L"new VBArray([]).getItem(3)", "9"},
      {L"(function f() { f() })()", "28"},
      {L"new Array(-1)", "5029"},
      {L"(1).toFixed(200)", "5026"},
      {L"(1).toPrecision(200)", "5027"},
      {L"(1).toString(99)", "5"},
      {L"new RegExp('(')", "5017"},
      {L"eval('a b')", "1002"},
      {L"decodeURIComponent('%')", "5025"},
      {L"encodeURIComponent('\\ud800')", "5024"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(std::string(row.number) + ",800a,true",
              text(L"(function () { try { " + std::wstring(row.script) +
                   L" } catch (e) { return [e.number & 0xFFFF, (e.number >>> 16).toString(16), "
                   L"e.description === e.message] } })()"))
        << narrow(row.script);
  }
  EXPECT_EQ("undefined", text(L"(function () { try { throw new Error('own') } catch (e) { return e.number } })()"));
}

TEST_F(MissingMember, OfTheEngineKeepsItsNumberOnTheWayOut) {
  EXPECT_EQ("5009,ReferenceError", text(L"(function () { try { o.Call(function () { nowhere }, 1) } "
                                        L"catch (e) { return [e.number & 0xFFFF, e.cause.name] } })()"));
  const Outcome outcome = run(L"nowhere");
  EXPECT_EQ(korlib::hresult(0x800A1391), outcome.error->number);
  EXPECT_EQ(outcome.error->number, run(L"try { nowhere } catch (e) { throw e }").error->number);
  EXPECT_EQ(E_FAIL, run(L"throw new Error('own')").error->number);
}

TEST_F(MissingMember, CannotBeBroughtAboutByWhatAPageReplaces) {
  must_run(L"Reflect = null; JSON = null; Object = null; TypeError = null; Error = null; Array = null");
  EXPECT_EQ("everythingprobe", text(L"o.ReadText() + o.Name()"));
  EXPECT_EQ("TypeError: undefined is not an object (evaluating 'none.Up') at /site/page.asp:1",
            error_of(L"var none; none.Up()"));
}

TEST_F(MissingMember, IsNoneWhereAnObjectIsCalledForNothing) {
  must_run(L"o('k') = 'v'; p.Hold(o)");
  EXPECT_EQ("vtrue", text(L"o()('k') + (o() === o)"));
  auto field = korlib::make<Field>();
  field->value = CComVariant(L"value");
  realm->set_object(L"field", field.get());
  EXPECT_EQ("value", text(L"field()"));
}

TEST_F(MissingMember, LeavesErrorsTheirOwnNumberAndText) {
  EXPECT_EQ("5,text,text,true,",
            text(L"(function () { try { throw new Error(5, 'text') } catch (e) { return [e.number, e.message, "
                 L"e.description, e instanceof Error, Object.keys(e)] } })()"));
  EXPECT_EQ("7,,m,d", text(L"(function () { var e = new Error('m', { cause: 7 }); e.description = 'd'; "
                           L"return [e.cause, e.number, e.message, e.description] })()"));
  EXPECT_EQ("Error: text at /site/page.asp:2", error_of(L"\nthrow new Error(5, 'text')"));
  EXPECT_EQ("5", text(L"(function () { class Own extends Error { }; return new Own(5, 'text').message })()"));
}

}  // namespace
}  // namespace test
