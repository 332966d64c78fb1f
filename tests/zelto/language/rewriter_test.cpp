#include "language/rewriter.h"

#include <gtest/gtest.h>
#include <korlib_host/unicode.h>

#include <algorithm>

#include "language/own_source.h"
#include "language/tokens.h"

namespace zelto::language {
namespace {

struct Row {
  const wchar_t* source;
  const wchar_t* rewritten;  // null: stays as it is
};

class Rewriter : public ::testing::TestWithParam<Row> {};

std::string narrow(std::wstring_view text) { return korlib::to_utf8(text); }

TEST_P(Rewriter, PutsItIntoWordsOfTheEngine) {
  const Row& row = GetParam();
  EXPECT_EQ(narrow(row.rewritten ? row.rewritten : row.source), narrow(rewrite(row.source).text));
}

TEST_P(Rewriter, KeepsLinesWhereTheyAre) {
  const std::wstring text = rewrite(GetParam().source).text;
  const std::wstring_view source = GetParam().source;
  EXPECT_EQ(std::count(source.begin(), source.end(), L'\n'), std::count(text.begin(), text.end(), L'\n'));
}

TEST_P(Rewriter, LosesNothingOfTheSource) {
  Program program;
  set_text(program, rewrite(GetParam().source));
  EXPECT_EQ(korlib::to_utf16(GetParam().source), own_source(program, program.text));
}

constexpr Row kAssignments[] = {
    {L"Session('x') = 1", L"$zelto.at(Session,'x').v = 1"},
    {L"Session('x') += a / b / c;", L"$zelto.at(Session,'x').v += a / b / c;"},
    {L"Session('x') ||= 1; Session('y') ?\?= 2; Session('z') **= 3; a('b') >>>= 4",
     L"$zelto.at(Session,'x').v ||= 1; $zelto.at(Session,'y').v ?\?= 2; $zelto.at(Session,'z').v **= 3; "
     L"$zelto.at(a,'b').v >>>= 4"},
    {L"Session('x')++; ++Session('x'); --a.b('y')",
     L"$zelto.at(Session,'x').v++; ++$zelto.at(Session,'x').v; --$zelto.at(a.b,'y').v"},
    {L"Session('a')\n++\nx", nullptr},
    {L"Response.Cookies('a')('b') = 'v' + g(1)",
     L"$zelto.at($zelto_of(Response,\"Cookies\",\"Response\").Cookies('a'),'b').v = 'v' + g(1)"},
    {L"f(x)(y)[z](w) = v", L"$zelto.at(f(x)(y)[z],w).v = v"},
    {L"a[i('x') = 1](2) = 3", L"$zelto.at(a[$zelto.at(i,'x').v = 1],2).v = 3"},
    {L"(Session)('x') = 1", L"$zelto.at((Session),'x').v = 1"},
    {L"f() = 1", L"$zelto.at(f,).v = 1"},
    {L"f(/* ) */ 1 /* d */) = 2", L"$zelto.at(f,/* ) */ 1 /* d */).v = 2"},
    {L"Session(\n  'x'\n)\n= 1", L"$zelto.at(Session,\n  'x'\n).v\n= 1"},
    {L"a('x') = b('y') = 1", L"$zelto.at(a,'x').v = $zelto.at(b,'y').v = 1"},
    {L"x => Session('a') = 1", L"x => $zelto.at(Session,'a').v = 1"},
    {L"f`t`(1) = 2", L"$zelto.at(f`t`,1).v = 2"},
    {L"new Foo(1) = 2", nullptr},
    {L"[.a(1) = 2, .b.C(), / .Item]; o.Count\\()", nullptr},
    {L"if (a == b) c = d", nullptr},
    {L"while (x) = 1", L"if($zelto_never);else while (x) = 1"},
    {L"function f(a, b = g(1)) { return a }", nullptr},
    {L"f(x) == 1; f(x) === 1; f(x) => 1; f(x) <= 1", nullptr},
    {L"class A { m(a) { } n(b) { } }", nullptr},
    {L"'Session(1) = 2'; \"f(x) = 1\"; `f(x) = 1`; /f(x) = 1/; // f(x) = 1", nullptr},
    {L"/* f(x) = 1 */ <!-- f(x) = 1\n--> f(x) = 1", nullptr},
};
INSTANTIATE_TEST_SUITE_P(AssignmentsToCalls, Rewriter, ::testing::ValuesIn(kAssignments));

constexpr Row kFunctions[] = {
    {L"Response.Write(a)", L"$zelto_write(Response,a)"},
    {L"Response.Write(a.b, c.d)", L"$zelto_write(Response,$zelto_value(a.b), $zelto_value(c.d))"},
    {L"Response.Write /* c */ (a)", L"$zelto_write(Response /* c */ ,a)"},
    {L"Response. Write(a)", L"$zelto_of(Response,\"Write\",\"Response\"). Write(a)"},
    {L"Response.Write(Server.HTMLEncode(a))", L"$zelto_write(Response,$zelto_html_encode(Server,a))"},
    {L"t += Server.URLEncode(a) + '='", L"t += $zelto_url_encode(Server,a) + '='"},
    {L"Response.Write(a).b", L"$zelto_value($zelto_write(Response,a).b, 1)"},
    {L"Response.Write(...a)", L"$zelto_write(Response,...$zelto_never?0:a)"},
    {L"(Response.Write)(a)", nullptr},
    {L"Response\n.Write(a)", nullptr},
    {L"Response.Write\n(a)", nullptr},
    {L"Response.write(a)", nullptr},
    {L"response.Write(a)", L"$zelto_of(response,\"Write\",\"response\").Write(a)"},
    {L"page.Response.Write(a)", nullptr},
    {L"page?.Response.Write(a)", nullptr},
    {L"Response?.Write(a)", nullptr},
    {L"new Response.Write(a)", nullptr},
    {L"Response.Write(a) = b", L"$zelto.at(Response.Write,a).v = b"},
    {L"Response.Write(a)++", L"$zelto.at(Response.Write,a).v++"},
    {L"++Response.Write(a)", L"++$zelto.at(Response.Write,a).v"},
    {L"Response.Flush(a)", L"$zelto_of(Response,\"Flush\",\"Response\").Flush(a)"},
};
INSTANTIATE_TEST_SUITE_P(FunctionsOfTheLanguage, Rewriter, ::testing::ValuesIn(kFunctions));

constexpr Row kMemberCalls[] = {
    {L"page.SetView(a, b)", L"$zelto_of(page,\"SetView\",\"page\").SetView(a, b)"},
    {L"page.AddScript(this)", L"$zelto_of(page,\"AddScript\",\"page\").AddScript($zelto_given(this,page))"},
    {L"row.Script = this; b = row.Script = this", L"row.Script = $zelto_given(this,row); b = row.Script = this"},
    {L"t = page . View /* c */ (a)", L"t = $zelto_of(page,\"View\",\"page\") . View /* c */ (a)"},
    {L"page.SetView(a.b, c.D(e))",
     L"$zelto_of(page,\"SetView\",\"page\").SetView($zelto_value(a.b), $zelto_of(c,\"D\",\"c\").D(e))"},
    {L"rs.Fields('x').Value = 1", L"$zelto_of(rs,\"Fields\",\"rs\").Fields('x').Value = 1"},
    {L"rs.Fields('x').Close;", L"$zelto_value($zelto_of(rs,\"Fields\",\"rs\").Fields('x').Close, 1);"},
    {L"rs.Fields('x').Value()", L"$zelto_call($zelto_of(rs,\"Fields\",\"rs\").Fields('x'), \"Value\",)"},
    {L"rs.Fields('x')('y') = 1", L"$zelto.at($zelto_of(rs,\"Fields\",\"rs\").Fields('x'),'y').v = 1"},
    {L"page.View('x') = 1", L"$zelto.at(page.View,'x').v = 1"},
    {L"page.setView(a); a.page.SetView(b); this.SetView(a); super.SetView(a); (page).SetView(a)", nullptr},
    {L"page?.SetView(a); page.View?.(a); a?.page.SetView(b); new page.View(a); page.\\u0041(a)", nullptr},
    {L"page\n.SetView(a)\npage.\nSetView(a)\npage.SetView\n(a)", nullptr},
};
INSTANTIATE_TEST_SUITE_P(CallsOfMembers, Rewriter, ::testing::ValuesIn(kMemberCalls));

constexpr Row kReads[] = {
    {L"rs.Close;", L"$zelto_value(rs.Close, 1);"},
    {L"rs.Close\nrs.Open", L"$zelto_value(rs.Close, 1)\n$zelto_value(rs.Open, 1)"},
    {L"rs.Close // done", L"$zelto_value(rs.Close, 1) // done"},
    {L"rs.Close\n(foo)", nullptr},
    {L"rs.Close\n[0]", nullptr},
    {L"rs.Close\n`t`", nullptr},
    {L"rs.Close\nin x", nullptr},
    {L"rs.Close\n+ 1", nullptr},
    {L"rs.Close\n++x", L"$zelto_value(rs.Close, 1)\n++x"},
    {L"rs.Close\n!x", L"$zelto_value(rs.Close, 1)\n!x"},
    {L"rs.Close\n{ a }", L"$zelto_value(rs.Close, 1)\n{ a }"},
    {L"rs('x').Delete;", L"$zelto_value(rs('x').Delete, 1);"},
    {L"if (x) rs.MoveNext; else rs.Close", L"if (x) $zelto_value(rs.MoveNext, 1); else $zelto_value(rs.Close, 1)"},
    {L"while (!rs.EOF) { rs.MoveNext }", L"if($zelto_never);else while (!rs.EOF) { $zelto_value(rs.MoveNext, 1) }"},
    {L"do rs.MoveNext; while (!rs.EOF) rs.Close;",
     L"if($zelto_never);else do $zelto_value(rs.MoveNext, 1); while (!rs.EOF) $zelto_value(rs.Close, 1);"},
    {L"switch (a) { case b ? c : d: rs.Close; default: rs.Open }",
     L"switch (a) { case b ? c : d: $zelto_value(rs.Close, 1); default: $zelto_value(rs.Open, 1) }"},
    {L"label: rs.Close;", L"label: $zelto_value(rs.Close, 1);"},
    {L"try { a.b } catch { c.d } finally { e.f }",
     L"try { $zelto_value(a.b, 1) } catch { $zelto_value(c.d, 1) } finally { $zelto_value(e.f, 1) }"},
    {L"for (;a.b;) {}", L"if($zelto_never);else for (;a.b;) {}"},
    {L"a.b, c.d;", nullptr},
    {L"a ? b : c.d", nullptr},
    {L"var t = s.ReadText, u = v.w;", L"var t = $zelto_value(s.ReadText), u = $zelto_value(v.w);"},
    {L"t += s.ReadText", L"t += $zelto_value(s.ReadText)"},
    {L"return a.b", L"return $zelto_value(a.b)"},
    {L"return\na.b", L"return\n$zelto_value(a.b, 1)"},
    {L"x = a.b + c", nullptr},
    {L"x = a.b()", nullptr},
    {L"x = a.b\n(c)", nullptr},
    {L"x = a.b ? c.d : e.f", nullptr},
    {L"x = { y: a.b, return: c.d, throw: 1 }", nullptr},
    {L"x = function () { a.b }; y = () => { c.d }",
     L"x = function () { $zelto_value(a.b, 1) }; y = () => { $zelto_value(c.d, 1) }"},
    {L"if (a.b) c", L"if ($zelto_value(a.b)) c"},
    {L"while (a.b) c(); do c(); while (a.b)",
     L"if($zelto_never);else while ($zelto_value(a.b)) c(); if($zelto_never);else do c(); while ($zelto_value(a.b))"},
    {L"switch (a.b) {}", L"switch ($zelto_value(a.b)) {}"},
    {L"with (a.b) c()", nullptr},
    {L"if (a.b && c.d) e", nullptr},
    {L"f(a.b)", L"f($zelto_value(a.b))"},
    {L"f(a, b.c, d.e)(g.h)", L"f(a, $zelto_value(b.c), $zelto_value(d.e))($zelto_value(g.h))"},
    {L"f(a.b + c, [d.e, f.g], { h: i.j })", nullptr},
    {L"f(a.b, ...c.d)", L"f($zelto_value(a.b), ...$zelto_never?0:c.d)"},
    {L"f((a.b), g(c.d))", L"f((a.b), g($zelto_value(c.d)))"},
    {L"(a.b)(c)", nullptr},
    {L"(a.b, c.d)", nullptr},
    {L"new F(a.b)", L"new F($zelto_value(a.b))"},
    {L"f(`${a.b}`, c.d)", L"f(`${a.b}`, $zelto_value(c.d))"},
    {L"throw x", L"throw $zelto.thrown = x"},
    {L"a.throw; b.return; c.if.case",
     L"$zelto_value(a.throw, 1); $zelto_value(b.return, 1); $zelto_value(c.if.case, 1)"},
    {L"class A { static { a.b } x = 1 }\nc.d",
     L"class A { static { $zelto_value(a.b, 1) } x = 1 }\n$zelto_value(c.d, 1)"},
};
INSTANTIATE_TEST_SUITE_P(MembersWithoutParentheses, Rewriter, ::testing::ValuesIn(kReads));

constexpr Row kPlaces[] = {
    {L"var [a] = b.c, {d} = e", L"var [a] = $zelto_never?0:$zelto_value(b.c), {d} = $zelto_never?0:e"},
    {L"let [a = 1, {b} = c] = d; [a, b] = [b, a]",
     L"let [a = 1, {b} = $zelto_never?0:c] = $zelto_never?0:d; [a, b] = $zelto_never?0:[b, a]"},
    {L"({a} = b); x = ({a} = b) => a", L"({a} = $zelto_never?0:b); x = ({a} = $zelto_never?0:b) => a"},
    {L"a = [...b, ...[...c]]; f(d, ...e.Item(1)); new G(...h); super(...i); k?.(...l); for (m of [...n]) ;",
     L"a = [...$zelto_never?0:b, ...$zelto_never?0:[...$zelto_never?0:c]]; f(d, "
     L"...$zelto_never?0:$zelto_of(e,\"Item\",\"e\").Item(1)); "
     L"new G(...$zelto_never?0:h); super(...$zelto_never?0:i); k?.(...$zelto_never?0:l); "
     L"for (m of [...$zelto_never?0:n]) ;"},
    {L"(a, [b]) => { f(...a) }; x = { m([a]) { return [...a] } }; if ([...a].length) {}",
     L"(a, [b]) => { f(...$zelto_never?0:a) }; x = { m([a]) { return [...$zelto_never?0:a] } }; "
     L"if ([...$zelto_never?0:a].length) {}"},
    {L"function f(...a) {} (...a) => a; async (...a) => a; class C { m(...a) {} static n([b, ...a]) {} }", nullptr},
    {L"({ m(...a) {}, ...b }); for (const [...a] of b) c; for ({ d: [...e] } of b) c; ([...a]) => a", nullptr},
    {L"try { } catch ([...a]) { } try { } catch ({ b: [...a] }) { } function g({ a: [...b] }) {}", nullptr},
    {L"[a, ...b] = c; var { d: [...e] } = f", L"[a, ...b] = $zelto_never?0:c; var { d: [...e] } = $zelto_never?0:f"},
    {L"a[0] = b; a.b[c] = d; f()[1] = 2; x\n[1] = 2; let = {}", nullptr},
    {L"class A { [k] = function() {}; static [k] = 1; x; [l] = class {} }", nullptr},
    {L"const c = 1; function f() { c = 2; if (d) c++; else c(); d = c; e.c = 1 }",
     L"const c = 1; function f() { if($zelto_never);else c = 2; if (d) if($zelto_never);else c++; else c(); d = c; e.c "
     L"= "
     L"1 }"},
    {L"do a(); while (b) while (c) d()",
     L"if($zelto_never);else do a(); while (b) if($zelto_never);else while (c) d()"},
    {L"do do a\nwhile (b)\nwhile (c); while (d);",
     L"if($zelto_never);else do if($zelto_never);else do a\nwhile (b)\nwhile (c); if($zelto_never);else while (d);"},
    {L"do if (a) while (b) c(); else l: for (;;) d(); while (e)",
     L"if($zelto_never);else do if (a) if($zelto_never);else while (b) c(); else if($zelto_never);else l: for (;;) "
     L"d(); "
     L"while (e)"},
    {L"do try { while (a) b() } catch { } finally { } while (c) do switch (d) { case 1: } while (e)",
     L"if($zelto_never);else do try { if($zelto_never);else while (a) b() } catch { } finally { } while (c) "
     L"if($zelto_never);else do switch (d) { case 1: } while (e)"},
    {L"do x = function() { do y(); while (1) }; while (2)",
     L"if($zelto_never);else do x = function() { if($zelto_never);else do y(); while (1) }; while (2)"},
    // No script.
    {L"do a(); b(); while (c) d()", L"if($zelto_never);else do a(); b(); while (c) d()"},
};
INSTANTIATE_TEST_SUITE_P(PlacesOfLoopsAndOfWhatFailsWithoutOne, Rewriter, ::testing::ValuesIn(kPlaces));

constexpr Row kBareCalls[] = {
    {L"rs.EOF()", L"$zelto_call(rs, \"EOF\", \"rs\")"},
    {L"while (!rs.eof()) rs.MoveNext()",
     L"if($zelto_never);else while (!$zelto_call(rs, \"eof\", \"rs\")) $zelto_call(rs, \"MoveNext\", \"rs\")"},
    {L"d.Count() + d.Keys().length", L"$zelto_call(d, \"Count\", \"d\") + $zelto_call(d, \"Keys\", \"d\").length"},
    {L"a.B().C()", L"$zelto_call($zelto_call(a, \"B\", \"a\"), \"C\",)"},
    {L"x = a.B().Close;", L"x = $zelto_value($zelto_call(a, \"B\", \"a\").Close);"},
    {L"a.B()('x') = 1", L"$zelto.at($zelto_call(a, \"B\", \"a\"),'x').v = 1"},
    {L"a('x').B()", L"$zelto_call(a('x'), \"B\",)"},
    {L"a . B /* c */ ( )", L"$zelto_call(a ,  \"B\" /* c */ , \"a\" )"},
    {L"a\n.B()", L"$zelto_call(a\n, \"B\", \"a\")"},
    {L"a.b.c.D()", L"$zelto_call(a.b.c, \"D\", \"a.b.c\")"},
    {L"throw(a).B()", L"throw $zelto.thrown =$zelto_call((a), \"B\",)"},
    {L"this.Name()", L"$zelto_call(this, \"Name\", \"this\")"},
    {L"a.B(1); a.b(); a.trim(); s.toString(); B()",
     L"$zelto_of(a,\"B\",\"a\").B(1); a.b(); a.trim(); s.toString(); B()"},
    {L"new a.B(); new a.B().C()", nullptr},
    {L"a?.B(); a?.b.C(); a[b?.c].D()", nullptr},
    {L"a?.['b'].C(); a?.[0][0].D(); a?.(1).E(); a.f?.(2).G()", nullptr},
    {L"class A extends B { M() { super.M() } }", nullptr},
    {L"a.B() = 1", L"$zelto.at(a.B,).v = 1"},
};
INSTANTIATE_TEST_SUITE_P(CallsWithoutArguments, Rewriter, ::testing::ValuesIn(kBareCalls));

constexpr Row kItems[] = {
    {L"v = list.Item || 'none'", L"v = $zelto_value(list.Item) || 'none'"},
    {L"if (!l.Item) f([l.item], { k: l.Item })",
     L"if (!$zelto_value(l.Item)) f([$zelto_value(l.item)], { k: $zelto_value(l.Item) })"},
    {L"q('a').Item.length + q('a').Item.split(',')[0]",
     L"$zelto_value(q('a').Item).length + $zelto_value(q('a').Item).split(',')[0]"},
    {L"v = l.Item; l.Item;", L"v = $zelto_value(l.Item); $zelto_value(l.Item, 1);"},
    {L"l.Item(1); l.Item = 1; l.Item += 1; l.Item++; --l.Item; delete l.Item; new l.Item; l?.Item; a?.b.Item",
     L"$zelto_of(l,\"Item\",\"l\").Item(1); l.Item = 1; l.Item += 1; l.Item++; --l.Item; delete l.Item; new l.Item; "
     L"l?.Item; a?.b.Item"},
    {L"[l.item] = v; ({ a: l.item } = v)", L"[l.item] = $zelto_never?0:v; ({ a: l.item } = $zelto_never?0:v)"},
    {L"for (l.item of v) ;", L"for (l.item of v) ;"},
};
INSTANTIATE_TEST_SUITE_P(Items, Rewriter, ::testing::ValuesIn(kItems));

constexpr Row kErrors[] = {
    {L"throw new Error(5, 'text')", L"throw $zelto.thrown = $zelto_error( Error,5, 'text')"},
    {L"new Error('a'); new Error(f(1, 2)); new MyError(1, 'a'); new a.Error(1, 2); new Error", nullptr},
    {L"try { } catch (e) { f(e) }", L"try { } catch (e) { $zelto_caught(e); f(e) }"},
    {L"try { } catch(e){}", L"try { } catch(e){ $zelto_caught(e);}"},
    {L"try { } catch { } try { } catch ({ message }) { }", nullptr},
    {L"class A { catch(e) { } }; x = { catch(e) { } }; p.catch(e => { }); catch_(e)", nullptr},
};
INSTANTIATE_TEST_SUITE_P(Errors, Rewriter, ::testing::ValuesIn(kErrors));

// Each holds `f(x) = 1` once as code, after something that a careless reader takes the wrong way.
constexpr Row kSlashes[] = {
    {L"a = b / c / d; f(x) = 1", L"a = b / c / d; $zelto.at(f,x).v = 1"},
    {L"a = /[/]'/; f(x) = 1", L"a = /[/]'/; $zelto.at(f,x).v = 1"},
    {L"if (a) /'/.test(b); f(x) = 1", L"if (a) /'/.test(b); $zelto.at(f,x).v = 1"},
    {L"(a) / b; c = '/'; f(x) = 1", L"(a) / b; c = '/'; $zelto.at(f,x).v = 1"},
    {L"{ } /'/.test(b); f(x) = 1", L"{ } /'/.test(b); $zelto.at(f,x).v = 1"},
    {L"a = { } / b; c = '/'; f(x) = 1", L"a = { } / b; c = '/'; $zelto.at(f,x).v = 1"},
    {L"a = function () { } / b; c = '/'; f(x) = 1", L"a = function () { } / b; c = '/'; $zelto.at(f,x).v = 1"},
    {L"function g() { } /'/.test(b); f(x) = 1", L"function g() { } /'/.test(b); $zelto.at(f,x).v = 1"},
    {L"async function g() { } /'/.test(b); f(x) = 1", L"async function g() { } /'/.test(b); $zelto.at(f,x).v = 1"},
    {L"a = class { } / b; c = '/'; f(x) = 1", L"a = class { } / b; c = '/'; $zelto.at(f,x).v = 1"},
    {L"class A extends B { } /'/.test(b); f(x) = 1", L"class A extends B { } /'/.test(b); $zelto.at(f,x).v = 1"},
    {L"a = () => { }\n/'/.test(b); f(x) = 1", L"a = () => { }\n/'/.test(b); $zelto.at(f,x).v = 1"},
    {L"a++ / b; c = '/'; f(x) = 1", L"a++ / b; c = '/'; $zelto.at(f,x).v = 1"},
    {L"a = b\n++/'/.x; f(x) = 1", L"a = b\n++/'/.x; $zelto.at(f,x).v = 1"},
    {L"typeof /'/; f(x) = 1", L"typeof /'/; $zelto.at(f,x).v = 1"},
    {L"a = this / b; c = '/'; f(x) = 1", L"a = this / b; c = '/'; $zelto.at(f,x).v = 1"},
    {L"a.return / b; c = '/'; f(x) = 1", L"a.return / b; c = '/'; $zelto.at(f,x).v = 1"},
    {L"for (a of /'/.exec(b)) f(x) = 1", L"for (a of /'/.exec(b)) $zelto.at(f,x).v = 1"},
    {L"a = 1. / 2; b = 1..c / 3; d = .5 / 1e+3; e = '/'; f(x) = 1",
     L"a = 1. / 2; b = 1..c / 3; d = .5 / 1e+3; e = '/'; $zelto.at(f,x).v = 1"},
    {L"a = 0xe+1 / 2; b = '/'; f(x) = 1", L"a = 0xe+1 / 2; b = '/'; $zelto.at(f,x).v = 1"},
    {L"a = b ?.5 : '/'; f(x) = 1", L"a = b ?.5 : '/'; $zelto.at(f,x).v = 1"},
    {L"`${ { a: '}' }.a }` / 2; b = '/'; f(x) = 1", L"`${ { a: '}' }.a }` / 2; b = '/'; $zelto.at(f,x).v = 1"},
    {L"`a${ `b${ f(x) = 1 }c` }d`; e = '`'", L"`a${ `b${ $zelto.at(f,x).v = 1 }c` }d`; e = '`'"},
    {L"`${a}${b / 2}${/}'/}`; f(x) = 1", L"`${a}${b / 2}${/}'/}`; $zelto.at(f,x).v = 1"},
    {L"a = '\\'f(y) = 2'; f(x) = 1", L"a = '\\'f(y) = 2'; $zelto.at(f,x).v = 1"},
    {L"a = 'b\\\n c'; f(x) = 1", L"a = 'b\\\n c'; $zelto.at(f,x).v = 1"},
    {L"a <!-- b '\nf(x) = 1", L"a <!-- b '\n$zelto.at(f,x).v = 1"},
    {L"a-->b; f(x) = 1", L"a-->b; $zelto.at(f,x).v = 1"},
    {L"\x00E4\x00F6 = \x4E00 / 2; f(x) = 1", L"\x00E4\x00F6 = \x4E00 / 2; $zelto.at(f,x).v = 1"},
};
INSTANTIATE_TEST_SUITE_P(Slashes, Rewriter, ::testing::ValuesIn(kSlashes));

// The engine is to say what is wrong with these.
constexpr Row kBroken[] = {
    {L"f(x) = 'open", nullptr},
    {L"f(x) = `open", nullptr},
    {L"f(x) = `${", nullptr},
    {L"f(x) = /open", nullptr},
    {L"f(x) = 1 }", nullptr},
    {L"f(x) = (1", nullptr},
    {L"f(x) = (1]", nullptr},
    {L"f(x) = 1 /*", nullptr},
    {L"f(x) = 'a\nb'", nullptr},
    {L"f(x) = `a${ b ) }`", nullptr},
    {L"", nullptr},
    {L"\\", nullptr},
    {L"f(x) = '\\", nullptr},
    {L"#", nullptr},
};
INSTANTIATE_TEST_SUITE_P(Broken, Rewriter, ::testing::ValuesIn(kBroken));

TEST(RewriterScope, SeesNamesThatAreNoPropertiesOfTheGlobalObject) {
  EXPECT_TRUE(rewrite(L"let a = 1").scope.declares_lexical_names);
  EXPECT_TRUE(rewrite(L"const a = 1").scope.declares_lexical_names);
  EXPECT_TRUE(rewrite(L"class A { }").scope.declares_lexical_names);
  EXPECT_FALSE(rewrite(L"var a; function b() { let c } { const d = 1 } x = class { }").scope.declares_lexical_names);
}

// These would take minutes if a chain, or what is around an item, were walked again for each of its parts.
TEST(Rewriter, WalksLongScriptsOnce) {
  const struct {
    const wchar_t* begin;
    const wchar_t* part;
    const wchar_t* end;
    const wchar_t* inserted;  // at least once for each part
    wchar_t close = 0;        // likewise, after the end
  } rows[] = {
      {L"a", L".B()", L"", L"$zelto_call("},
      {L"a", L"(1)", L" = 2", L""},
      {L"++a", L"(++b(1))", L"", L"$zelto.at("},
      {L"x = a", L".b.Item", L".c", L"$zelto_value("},
      {L"x = 0", L"+ [a.Item", L"", L"$zelto_value(", L']'},
      {L"", L"rs.Item;", L"", L"$zelto_value("},
      {L"f(", L"a.Item,", L"b)", L"$zelto_value("},
      {L"", L"new Error(", L"", L"", L')'},
      {L"", L"new Error(1, ", L"0", L"$zelto_error(", L')'},
      {L"", L"((((", L"a", L"", 0},
      {L"x?.y", L".C()", L"", L""},
      {L"a", L"`b`", L".C()", L""},
      {L"a = ", L"b = ", L"c", L""},
      {L"", L"\"'\" + '\"' + /[/]/ / ", L"1", L""},
      {L"", L";", L"", L""},
      {L"", L"a:", L"b", L""},
      {L"", L"\\u{61} ", L"", L""},
  };
  for (const auto& row : rows) {
    std::wstring text = row.begin;
    std::size_t parts = 0;
    for (; text.size() < 500'000; ++parts) text += row.part;
    text += row.end;
    if (row.close) text.append(parts, row.close);
    const std::wstring rewritten = rewrite(text).text;
    std::size_t found = 0;
    const std::wstring_view word = row.inserted;
    for (std::size_t at = 0; !word.empty() && (at = rewritten.find(word, at)) != std::wstring::npos; ++at) ++found;
    EXPECT_GE(found, word.empty() ? 0 : parts) << narrow(row.part);
    EXPECT_GE(rewritten.size(), text.size());
  }
}

// However a text is cut, the tokenizer ends, and what it answers lies within the text.
TEST(Tokens, StayWithinTheTextWhereverItEnds) {
  const std::wstring text =
      L"a('x') = `b${c}d` / /[e]/g; if (f) { g.h } else 'i' <!-- j\n/* k */ 1.5e+3 ?. l ?\?= \\u{6d}";
  for (std::size_t length = 0; length <= text.size(); ++length) {
    const auto tokens = tokenize(std::wstring_view(text).substr(0, length));
    for (const Token& token : tokens.value_or(Tokens()).all) {
      EXPECT_LE(token.begin, token.end);
      EXPECT_LE(token.end, length);
    }
  }
}

}  // namespace
}  // namespace zelto::language
