// Members that an object does not have, and the numbers of errors in `catch`.
#include "script/missing_member.h"

#include "script/written_source.h"
#include "zelto/script/script_test.h"

namespace test {
namespace {

using MissingMember = ScriptTest;
using zelto::script::name_distance;
using zelto::script::Outcome;

// Letters changed, added, left out, exchanged with a neighbour.
TEST(NameDistance, CountsSlipsOfThePen) {
  EXPECT_EQ(name_distance(L"MoveNext", L"movenext"), 0U);
  EXPECT_EQ(name_distance(L"MoveNext", L"MoveNex"), 1U);
  EXPECT_EQ(name_distance(L"MoveNext", L"MoveNxet"), 1U);
  EXPECT_EQ(name_distance(L"Write", L"Wriite"), 1U);
  EXPECT_EQ(name_distance(L"kitten", L"sitting"), 3U);
  EXPECT_EQ(name_distance(L"", L"abc"), 3U);
}

TEST_F(MissingMember, IsUndefinedWhenItIsRead) {
  EXPECT_EQ(text(L"[typeof o.Nothing, o.Nothing === undefined, o.Nothing ? 1 : 2, 'Nothing' in o, 'Name' in o]"),
            "undefined,true,2,false,true");
  must_run(L"Object.prototype.shared = 7");
  EXPECT_EQ(text(L"o.shared"), "7");
  EXPECT_EQ(text(L"(function () { with (o) { var outer = 5; return outer + Name } })()"), "5probe");
}

TEST_F(MissingMember, IsAnErrorWhenItIsCalledOrSet) {
  const std::string said = "Object doesn't support this property or method: 'Nane', did you mean 'Name'? (0x80020006)";
  for (const wchar_t* use : {L"o.Nane(1)", L"o.Nane()", L"o.Nane = 1", L"o.Nane;", L"o.Nane += 1", L"o.Nane('a') = 1",
                             L"o.Nane.length", L"o.Nane[0]", L"o.Nane(o.Name, o('k'))", L"o.Nane.trim()"}) {
    const Outcome outcome = run(use);
    ASSERT_EQ(outcome.kind, Outcome::failed) << narrow(use);
    EXPECT_EQ(narrow(outcome.error->message), said) << narrow(use);
    EXPECT_EQ(outcome.error->number, DISP_E_UNKNOWNNAME) << narrow(use);
    EXPECT_EQ(outcome.error->line, 1) << narrow(use);
    EXPECT_EQ(text(L"(function () { try { " + std::wstring(use) +
                   L" } catch (e) { return [e.message, e.description, e.number] } })()"),
              said + "," + said + ",-2147352570")
        << narrow(use);
    EXPECT_EQ(text(L"(function () { try { o.Call(function () { " + std::wstring(use) +
                   L" }, 1) } catch (e) { return [e.message, e.number] } })()"),
              said + ",-2147352570")
        << narrow(use);
  }
  EXPECT_EQ(error_of(L"o.Elsewhere = 1"),
            "Error: Object doesn't support this property or method: 'Elsewhere' (0x80020006) at /site/page.asp:1");
}

TEST_F(MissingMember, IsNotBlamedForWhatItDidNotDo) {
  must_run(L"var found = o.Missing");
  must_run(L"var plain = {}");
  EXPECT_EQ(error_of(L"o.Missing ? 1 : plain.other()"),
            "TypeError: plain.other is not a function. (In 'plain.other()', 'plain.other' is undefined) at "
            "/site/page.asp:1");
  must_run(L"if (o.Missing) 1; o.Close(); plain.nothing;");
  EXPECT_EQ(error_of(L"plain.Missing_too()"),
            "TypeError: plain.Missing_too is not a function. (In 'plain.Missing_too()', 'plain.Missing_too' is "
            "undefined) at /site/page.asp:1");
}

TEST_F(MissingMember, OfAClassWithTypeInformationIsToldWithItsKind) {
  must_run(L"var d = new ActiveXObject('Scripting.Dictionary')");
  EXPECT_EQ(error_of(L"d.RemovAll()"),
            "Error: Object doesn't support this property or method: 'Dictionary.RemovAll', did you mean 'RemoveAll'? "
            "(0x80020006) at /site/page.asp:1");
}

TEST_F(MissingMember, OfAPropertyCalledWithoutArgumentsIsItsValue) {
  EXPECT_EQ(text(L"o.Name() + o.NAME() + o.name() + o.ReadText()"), "probeprobeprobeeverything");
  must_run(L"var plain = { Up() { return this.x }, x: 5, count: 3 }; o.Close()");
  EXPECT_EQ(text(L"plain.Up()"), "5");
  EXPECT_EQ(probe->closed, 1);
  EXPECT_EQ(error_of(L"plain.count()"),
            "TypeError: plain.count is not a function. (In 'plain.count()', 'plain.count' is 3) at "
            "/site/page.asp:1");
  EXPECT_EQ(error_of(L"\nvar none; none.Up()"),
            "TypeError: undefined is not an object (evaluating 'none.Up') at /site/page.asp:2");
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
    ASSERT_EQ(outcome.kind, Outcome::failed) << narrow(row.script);
    EXPECT_EQ(narrow(outcome.error->message), row.message);
    EXPECT_EQ(text(L"(function () { try { " + std::wstring(row.script) + L" } catch (e) { return e.message } })()"),
              row.message);
  }
  EXPECT_EQ(narrow(zelto::script::as_written(L"$zelto.at(a.b,c(1),d).v is 1; $zelto_call(a ,  \"B\" /* c */  )")),
            "a.b(c(1),d) is 1; a.B()");
  EXPECT_EQ(narrow(zelto::script::as_written(L"$zelto_call($zelto_call(a.b, \"C\", \"a.b\"), \"D\")")), "a.b.C().D()");
  EXPECT_EQ(narrow(zelto::script::as_written(L"cut in '$zelto_call(a, \"B")), "cut in '$zelto_call(a, \"B");
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
    EXPECT_EQ(text(L"(function () { try { " + std::wstring(row.script) +
                   L" } catch (e) { return [e.number & 0xFFFF, (e.number >>> 16).toString(16), "
                   L"e.description === e.message] } })()"),
              std::string(row.number) + ",800a,true")
        << narrow(row.script);
  }
  EXPECT_EQ(text(L"(function () { try { throw new Error('own') } catch (e) { return e.number } })()"), "undefined");
}

TEST_F(MissingMember, OfTheEngineKeepsItsNumberOnTheWayOut) {
  EXPECT_EQ(text(L"(function () { try { o.Call(function () { nowhere }, 1) } "
                 L"catch (e) { return [e.number & 0xFFFF, e.cause.name] } })()"),
            "5009,ReferenceError");
  const Outcome outcome = run(L"nowhere");
  EXPECT_EQ(outcome.error->number, korlib::hresult(0x800A1391));
  EXPECT_EQ(run(L"try { nowhere } catch (e) { throw e }").error->number, outcome.error->number);
  EXPECT_EQ(run(L"throw new Error('own')").error->number, E_FAIL);
}

TEST_F(MissingMember, CannotBeBroughtAboutByWhatAPageReplaces) {
  must_run(L"Reflect = null; JSON = null; Object = null; TypeError = null; Error = null; Array = null");
  EXPECT_EQ(text(L"o.ReadText() + o.Name()"), "everythingprobe");
  EXPECT_EQ(error_of(L"var none; none.Up()"),
            "TypeError: undefined is not an object (evaluating 'none.Up') at /site/page.asp:1");
}

TEST_F(MissingMember, IsNoneWhereAnObjectIsCalledForNothing) {
  must_run(L"o('k') = 'v'; p.Hold(o)");
  EXPECT_EQ(text(L"o()('k') + (o() === o)"), "vtrue");
  auto field = korlib::make<Field>();
  field->value = CComVariant(L"value");
  realm->set_object(L"field", field.get());
  EXPECT_EQ(text(L"field()"), "value");
}

TEST_F(MissingMember, LeavesErrorsTheirOwnNumberAndText) {
  EXPECT_EQ(text(L"(function () { try { throw new Error(5, 'text') } catch (e) { return [e.number, e.message, "
                 L"e.description, e instanceof Error, Object.keys(e)] } })()"),
            "5,text,text,true,");
  EXPECT_EQ(text(L"(function () { var e = new Error('m', { cause: 7 }); e.description = 'd'; "
                 L"return [e.cause, e.number, e.message, e.description] })()"),
            "7,,m,d");
  EXPECT_EQ(error_of(L"\nthrow new Error(5, 'text')"), "Error: text at /site/page.asp:2");
  EXPECT_EQ(text(L"(function () { class Own extends Error { }; return new Own(5, 'text').message })()"), "5");
}

}  // namespace
}  // namespace test
