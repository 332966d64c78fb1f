// The script of a page that runs as a function, time and again: it cannot tell that from being run as a script.
#include "zelto/script/world/kept_world_fixture.h"

namespace test {
namespace {

class PageFunction : public KeptWorldTest {};

TEST_F(PageFunction, HasEveryDeclarationAnew) {
  always("undefined1", L"Response.Write(typeof a); var a = 1; Response.Write(a)");
  always("2", L"Response.Write(f()); function f() { return 2 }");
  always("undefined3", L"Response.Write(typeof g); if (1) { function g() { return 3 } } Response.Write(g())");
  always("1", L"let n = 0; n++; Response.Write(n)");
  always("C1", L"class C { static n = 0 } C.n++; Response.Write(C.name + C.n)");
  always("12", L"const { p, q: [r] } = { p: 1, q: [2] }; Response.Write(p + '' + r)");
  always(" ReferenceError: Cannot access uninitialized variable. at /site/page.asp:1", L"late; let late = 1");
  always("f1", L"function f() { f.count = (f.count || 0) + 1; return f.count } Response.Write(f.name + f())");
}

TEST_F(PageFunction, ForgetsWhatWasNotDeclared) {
  always("undefined1", L"Response.Write(typeof u); u = 1; Response.Write(u)");
  always("undefined2", L"function f() { v = 2 } Response.Write(typeof v); f(); Response.Write(v)");
  always("undefined3", L"function f() { this.w = 3 } Response.Write(typeof w); f(); Response.Write(w)");
  always("undefined4", L"Response.Write(typeof x); this.x = 4; Response.Write(x)");
  always("undefined5", L"Response.Write(typeof x); this['x'] = 5; Response.Write(globalThis.x)");
  always("undefined6",
         L"var s = Symbol.for('s'); Response.Write(typeof this[s]); this[s] = 6; Response.Write(this[s])");
}

TEST_F(PageFunction, TellsOnceWhatWasNotDeclared) {
  std::string told;
  engine.set_on_undeclared([&told](const std::string& url, std::u16string_view names) {
    told += url + ": " + zelto::script::to_utf8(std::wstring(names.begin(), names.end())) + ";";
  });
  const ProgramPtr program = page_of(L"var d = 1; a = 1; function f() { b = 2 } f(); this[Symbol.for('s')] = 3");
  for (int i = 0; i < 5; ++i) ask(program);
  EXPECT_EQ("/site/page.asp: a, b;", told);
}

TEST_F(PageFunction, ShowsWhatIsDeclaredInTheGlobalObject) {
  always("1f", L"var a = 1; function f() { return 'f' } Response.Write(this.a + this['f']())");
  always("2", L"var a = 1; this.a = 2; Response.Write(a)");
  always("3", L"var a = 1; function f() { this.a = 3 } f(); Response.Write(a)");
  always("a,f", L"var a; function f() {} Response.Write(Object.keys(this).join())");
  always("undefined", L"let a = 1; Response.Write(typeof this.a)");
  always("FalseFalse", L"var a = 1; Response.Write(delete this.a); Response.Write(delete globalThis.a)");
  always("True", L"var a; Response.Write('a' in this)");
}

TEST_F(PageFunction, LeavesObjectsAloneThatInheritFromTheGlobalOne) {
  always("15", L"var x = 1; var child = Object.create(this); child.x = 5; Response.Write(x + '' + child.x)");
  always("19", L"var x = 1; function K() { this.x = 9 } K.prototype = this; Response.Write(x + '' + new K().x)");
}

TEST_F(PageFunction, KeepsNoHiddenNames) {
  always("undefined",
         L"var s = Object.getOwnPropertySymbols(Array.prototype)[0]; Response.Write(typeof globalThis[s]);"
         L"globalThis[s] = 'leak'");
  always("undefined",
         L"function me() { return me.caller } var c = me(); Response.Write(String(c && c.seen || undefined));"
         L"if (c) c.seen = 1");
}

TEST_F(PageFunction, HasSymbolsThatItsFunctionsShareByAKey) {
  always("true,k,,,Symbol(k)",
         L"var s = Symbol.for('k'); Response.Write(String([s === Symbol.for('k'), Symbol.keyFor(s), "
         L"Symbol.keyFor(Symbol('k')),"
         L"Symbol.keyFor(Symbol.iterator), String(s)]))");
  always("true,__proto__,true",
         L"var s = Symbol.for('__proto__'); Response.Write(String([s === Symbol.for('__proto__'),"
         L"Symbol.keyFor(s), Symbol.for(1) === Symbol.for('1')]))");
  always("TypeError,TypeError,1,for,1,keyFor",
         L"var told = []; for (var f of [Symbol.for, Symbol.keyFor]) { try { f(f === Symbol.for ? Symbol() : 'k') }"
         L"catch (e) { told.push(e.name) } } told.push(Symbol.for.length, Symbol.for.name, Symbol.keyFor.length,"
         L"Symbol.keyFor.name); Response.Write(String(told))");
}

TEST_F(PageFunction, HasTheConstantsOfTheLanguage) {
  always("NaN", L"var NaN; Response.Write(String(NaN))");
  always("undefined", L"var undefined = 4; Response.Write(typeof undefined)");
}

TEST_F(PageFunction, KnowsNothingOfTheLastMatch) {
  always("[][][]a",
         L"Response.Write('[' + RegExp.$1 + '][' + RegExp.lastMatch + '][' + RegExp.input + ']');"
         L"/(a)/.exec('a'); Response.Write(RegExp.$1)");
}

TEST_F(PageFunction, LooksAsItDidToAPageThatChangesIt) {
  always("undefined1", L"Response.Write(typeof [].last); Array.prototype.last = 1; Response.Write([].last)");
  always("function", L"Response.Write(typeof [].push); delete Array.prototype.push");
  always("undefinedx", L"Response.Write(typeof ({}).p); var a = {}; a['__proto__']['p'] = 'x'; Response.Write(({}).p)");
  always("2", L"Response.Write(Math.max(1, 2)); Math.max = function () { return 9 }");
  always("undefined", L"Response.Write(typeof Math.max.cache); Math.max.cache = 1");
}

TEST_F(PageFunction, RunsStrictPages) {
  always(" ReferenceError: Can't find variable: u at /site/page.asp:1", L"'use strict'; u = 1");
  always("undefined", L"\"use strict\"\nfunction f() { return typeof this } Response.Write(f())");
  EXPECT_TRUE(is_kept(L"'use strict'; var a = 1"));
}

TEST_F(PageFunction, HasTheErrorsOfAScript) {
  for (const wchar_t* script :
       {L"return", L"return 1;", L"await 1; yield 2", L"new.target", L"let a; let a", L"break"}) {
    const std::string first = ask(page_of(script));
    EXPECT_NE(std::string::npos, first.find("SyntaxError")) << narrow(script) << ": " << first;
    always(first, script);
  }
  always(" ReferenceError: Can't find variable: arguments at /site/page.asp:1", L"arguments.length");
  always(" ReferenceError: Can't find variable: missing at /site/page.asp:3", L"var a;\n\n missing()");
}

TEST_F(PageFunction, ShowsTheSourceOfFunctions) {
  always("function f() { return 1 }", L"function f() { return 1 } Response.Write(String(f))");
}

TEST_F(PageFunction, AnswersWhatComponentsAskFor) {
  const std::wstring script =
      L"var v = 1; function f(x) { v = x; return 'f' + x } let l = 2; const c = 3; class K {} undeclared = 4;"
      L"Response.Write(o.CallMember(this, 'f') + v)";
  const ProgramPtr program = page_of(script);
  for (int i = 0; i < 4; ++i) {
    page->text.clear();
    open(program);
    ASSERT_EQ(Outcome::completed, realm->run(program).kind) << i;
    EXPECT_EQ(L"fundefinedundefined", page->text);
    EXPECT_EQ(2, CComVariant(global(L"l")).lVal) << i;
    EXPECT_EQ(3, CComVariant(global(L"c")).lVal) << i;
    EXPECT_EQ(4, CComVariant(global(L"undeclared")).lVal) << i;
    EXPECT_EQ(VT_EMPTY, global(L"none").vt) << i;
    EXPECT_EQ(VT_EMPTY, global(L"toString").vt) << i;
    EXPECT_EQ(VT_EMPTY, global(L"Response").vt) << i;
    realm.reset();
  }
}

}  // namespace
}  // namespace test
