// A world that is kept for a page: each request finds it as the first one did, whatever those before have done there.
#include "language/rewriter.h"
#include "zelto/script/script_fixture.h"

namespace test {
namespace {

using zelto::language::Program;
using zelto::script::Outcome;
using zelto::script::Realm;
using ProgramPtr = std::shared_ptr<const Program>;

class KeptWorld : public ScriptTest {
 protected:
  KeptWorld() { realm.reset(); }

  static ProgramPtr page_of(const std::wstring& script, const std::string& url = "/site/page.asp") {
    auto program = std::make_shared<Program>();
    program->url = url;
    zelto::language::set_text(*program, zelto::language::rewrite(script));
    return program;
  }

  // What the page writes, or how it fails.
  std::string ask(const ProgramPtr& program) {
    page->text.clear();
    open(program);
    const Outcome outcome = realm->run(program);
    std::string text = narrow(page->text);
    if (outcome.kind == Outcome::failed) text += " " + said(outcome);
    context = realm->context();
    realm.reset();
    return text;
  }

  void open(const ProgramPtr& program) {
    realm = std::make_unique<Realm>(engine, program);
    realm->set_object(L"Response", page.get());
    realm->set_object(L"o", probe.get());
    realm->set_output(page.get());
  }

  // Asked for again and again, with another page in between, the page answers the same.
  void always(const std::string& expected, const std::wstring& script) {
    const ProgramPtr program = page_of(script);
    const ProgramPtr between = page_of(L"var n = typeof n; other = typeof other; Response.Write(n + other)");
    for (int i = 0; i < 5; ++i) {
      EXPECT_EQ(expected, ask(program)) << i << ": " << narrow(script);
      EXPECT_EQ("undefinedundefined", ask(between)) << i << ": " << narrow(script);
    }
  }

  // Whether the page runs in the same world again.
  bool is_kept(const std::wstring& script) {
    const ProgramPtr program = page_of(script);
    ask(program);
    ask(program);
    JSContextRef second = context;
    ask(program);
    return context == second;
  }

  JSContextRef context = nullptr;  // of the page that was asked for last
};

TEST_F(KeptWorld, IsUsedAgain) {
  EXPECT_TRUE(is_kept(L"var a = 1; function f() {} Response.Write(a)"));
  EXPECT_TRUE(is_kept(L"undeclared = 1; Response.Write(undeclared)"));
  EXPECT_TRUE(is_kept(L"let a = 1; const b = 2; class C {} Response.Write(a + b)"));
  EXPECT_TRUE(is_kept(L"throw new Error('x')"));
  EXPECT_TRUE(is_kept(L"Response.End()"));
  EXPECT_TRUE(is_kept(L"/(a)/.exec('a'); Response.Write(RegExp.$1)"));
  EXPECT_TRUE(is_kept(L"console.log('x')"));
  EXPECT_TRUE(is_kept(L"this.x = 1; (function () { this.y = 2 })()"));
}

TEST_F(KeptWorld, IsNoneWhereAPageMayReachBehindItsFunction) {
  for (const wchar_t* script :
       {L"eval('1')", L"new Function('return 1')()", L"Function('return 1')()", L"this['eval']('1')",
        L"(function () {}).constructor('return 1')()", L"\\u0065val('1')", L"new WeakRef({})", L"var console = 1",
        L"var Response", L"function toString() {}", L"var escape = 1"}) {
    EXPECT_FALSE(is_kept(script)) << narrow(script);
  }
}

TEST_F(KeptWorld, IsGivenUpWhenThePageHasChangedIt) {
  for (const wchar_t* script :
       {L"Array.prototype.last = function () {}",
        L"delete Array.prototype.push",
        L"String.prototype.trim = 1",
        L"Math.max = Math.min",
        L"Math.max.cache = 1",
        L"Object.freeze(Array.prototype)",
        L"Object.freeze(Math)",
        L"Object.defineProperty(Map.prototype, 'size', { get() { return 1 } })",
        L"Object.setPrototypeOf(Array.prototype, {})",
        L"Object.prototype.x = 1",
        L"parseInt = 1",
        L"Object.defineProperty(this, 'hidden', { value: 1 })",
        L"delete this.escape",
        L"Object.freeze(this)",
        L"Object.preventExtensions(this)",
        L"Error.stackTraceLimit = 1",
        L"console.log = 1",
        L"Object.getPrototypeOf(function* () {}).x = 1",
        L"Object.getPrototypeOf([][Symbol.iterator]()).next = 1",
        L"Object.getPrototypeOf(Response).x = 1",
        L"Object.defineProperty(this, 'Response', { get() {} })",
        L"Object.prototype.__proto__ = null; ({}).constructor.x = 1",
        L"$zelto_call.x = 1",
        L"Array.prototype[1] = 1",
        L"Array.prototype.length = 3",
        L"Array.prototype[Symbol.iterator] = 1",
        L"var a = {}; a['__proto__']['polluted'] = 1",
        L"({}).toString.cache = 1",
        L"Object.prototype.__defineGetter__('late', function () { return 1 })",
        L"[o][0].Close.cache = 1",
        L"Object.getPrototypeOf([o][0].Close).x = 1",
        L"Object.getPrototypeOf([].values().map(function (x) { return x })).x = 1",
        L"Object.getPrototypeOf(new Intl.Segmenter('en').segment('a')).x = 1",
        L"Object.defineProperty(Math.max, 'name', { value: 'x' })",
        L"var O = Object; O['define' + 'Property'](globalThis, 'escape', { get() { for (;;); } })",
        L"var O = Object; O['define' + 'Property'](globalThis, 'escape', { enumerable: true })",
        L"var O = Object; O['define' + 'Property'](globalThis, 'Response', { enumerable: true })"}) {
    EXPECT_FALSE(is_kept(script)) << narrow(script);
  }
}

TEST_F(KeptWorld, HasEveryDeclarationAnew) {
  always("undefined1", L"Response.Write(typeof a); var a = 1; Response.Write(a)");
  always("2", L"Response.Write(f()); function f() { return 2 }");
  always("undefined3", L"Response.Write(typeof g); if (1) { function g() { return 3 } } Response.Write(g())");
  always("1", L"let n = 0; n++; Response.Write(n)");
  always("C1", L"class C { static n = 0 } C.n++; Response.Write(C.name + C.n)");
  always("12", L"const { p, q: [r] } = { p: 1, q: [2] }; Response.Write(p + '' + r)");
  always(" ReferenceError: Cannot access uninitialized variable. at /site/page.asp:1", L"late; let late = 1");
  always("f1", L"function f() { f.count = (f.count || 0) + 1; return f.count } Response.Write(f.name + f())");
}

TEST_F(KeptWorld, ForgetsWhatWasNotDeclared) {
  always("undefined1", L"Response.Write(typeof u); u = 1; Response.Write(u)");
  always("undefined2", L"function f() { v = 2 } Response.Write(typeof v); f(); Response.Write(v)");
  always("undefined3", L"function f() { this.w = 3 } Response.Write(typeof w); f(); Response.Write(w)");
  always("undefined4", L"Response.Write(typeof x); this.x = 4; Response.Write(x)");
  always("undefined5", L"Response.Write(typeof x); this['x'] = 5; Response.Write(globalThis.x)");
  always("undefined6",
         L"var s = Symbol.for('s'); Response.Write(typeof this[s]); this[s] = 6; Response.Write(this[s])");
}

TEST_F(KeptWorld, TellsOnceWhatWasNotDeclared) {
  std::string told;
  engine.set_on_undeclared([&told](const std::string& url, std::u16string_view names) {
    told += url + ": " + zelto::script::to_utf8(std::wstring(names.begin(), names.end())) + ";";
  });
  const ProgramPtr program = page_of(L"var d = 1; a = 1; function f() { b = 2 } f(); this[Symbol.for('s')] = 3");
  for (int i = 0; i < 5; ++i) ask(program);
  EXPECT_EQ("/site/page.asp: a, b;", told);
}

TEST_F(KeptWorld, ShowsWhatIsDeclaredInTheGlobalObject) {
  always("1f", L"var a = 1; function f() { return 'f' } Response.Write(this.a + this['f']())");
  always("2", L"var a = 1; this.a = 2; Response.Write(a)");
  always("3", L"var a = 1; function f() { this.a = 3 } f(); Response.Write(a)");
  always("a,f", L"var a; function f() {} Response.Write(Object.keys(this).join())");
  always("undefined", L"let a = 1; Response.Write(typeof this.a)");
  always("FalseFalse", L"var a = 1; Response.Write(delete this.a); Response.Write(delete globalThis.a)");
  always("True", L"var a; Response.Write('a' in this)");
}

TEST_F(KeptWorld, LeavesObjectsAloneThatInheritFromTheGlobalOne) {
  always("15", L"var x = 1; var child = Object.create(this); child.x = 5; Response.Write(x + '' + child.x)");
  always("19", L"var x = 1; function K() { this.x = 9 } K.prototype = this; Response.Write(x + '' + new K().x)");
}

TEST_F(KeptWorld, KeepsNoHiddenNames) {
  always("undefined",
         L"var s = Object.getOwnPropertySymbols(Array.prototype)[0]; Response.Write(typeof globalThis[s]);"
         L"globalThis[s] = 'leak'");
  always("undefined",
         L"function me() { return me.caller } var c = me(); Response.Write(String(c && c.seen || undefined));"
         L"if (c) c.seen = 1");
}

TEST_F(KeptWorld, HasTheConstantsOfTheLanguage) {
  always("NaN", L"var NaN; Response.Write(String(NaN))");
  always("undefined", L"var undefined = 4; Response.Write(typeof undefined)");
}

TEST_F(KeptWorld, KnowsNothingOfTheLastMatch) {
  always("[][][]a",
         L"Response.Write('[' + RegExp.$1 + '][' + RegExp.lastMatch + '][' + RegExp.input + ']');"
         L"/(a)/.exec('a'); Response.Write(RegExp.$1)");
}

TEST_F(KeptWorld, LooksAsItDidToAPageThatChangesIt) {
  always("undefined1", L"Response.Write(typeof [].last); Array.prototype.last = 1; Response.Write([].last)");
  always("function", L"Response.Write(typeof [].push); delete Array.prototype.push");
  always("undefinedx", L"Response.Write(typeof ({}).p); var a = {}; a['__proto__']['p'] = 'x'; Response.Write(({}).p)");
  always("2", L"Response.Write(Math.max(1, 2)); Math.max = function () { return 9 }");
  always("undefined", L"Response.Write(typeof Math.max.cache); Math.max.cache = 1");
}

TEST_F(KeptWorld, RunsStrictPages) {
  always(" ReferenceError: Can't find variable: u at /site/page.asp:1", L"'use strict'; u = 1");
  always("undefined", L"\"use strict\"\nfunction f() { return typeof this } Response.Write(f())");
  EXPECT_TRUE(is_kept(L"'use strict'; var a = 1"));
}

TEST_F(KeptWorld, HasTheErrorsOfAScript) {
  for (const wchar_t* script :
       {L"return", L"return 1;", L"await 1; yield 2", L"new.target", L"let a; let a", L"break"}) {
    const std::string first = ask(page_of(script));
    EXPECT_NE(std::string::npos, first.find("SyntaxError")) << narrow(script) << ": " << first;
    always(first, script);
  }
  always(" ReferenceError: Can't find variable: arguments at /site/page.asp:1", L"arguments.length");
  always(" ReferenceError: Can't find variable: missing at /site/page.asp:3", L"var a;\n\n missing()");
}

TEST_F(KeptWorld, ShowsTheSourceOfFunctions) {
  always("function f() { return 1 }", L"function f() { return 1 } Response.Write(String(f))");
}

TEST_F(KeptWorld, AnswersWhatComponentsAskFor) {
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

TEST_F(KeptWorld, ReleasesTheObjectsOfEachRequest) {
  const ProgramPtr program = page_of(L"var kept = o; undeclared = o; this.x = o; o.Hold(function () { return 7 })");
  const auto references = [this] {
    probe->AddRef();
    return probe->Release();
  };
  const ULONG before = references();
  for (int i = 0; i < 5; ++i) {
    ask(program);
    EXPECT_EQ(before, references()) << i;
    DISPPARAMS none{};
    ASSERT_TRUE(probe->held);
    EXPECT_TRUE(FAILED(probe->held->Invoke(DISPID_VALUE, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &none,
                                           nullptr, nullptr, nullptr)))
        << "its page has ended";
    probe->held.reset();
  }
}

TEST_F(KeptWorld, IsAnotherForAPageThatRunsInItself) {
  const ProgramPtr program =
      page_of(L"var depth = typeof depth; Response.Write(depth); o.Act(); Response.Write(depth)");
  int depth = 0;
  probe->action = [&] {
    if (++depth > 2) return S_OK;
    Realm inner(engine, program);
    inner.set_object(L"Response", page.get());
    inner.set_object(L"o", probe.get());
    inner.set_output(page.get());
    return inner.run(program).kind == Outcome::completed ? S_OK : E_FAIL;
  };
  for (int i = 0; i < 4; ++i) {
    depth = 0;
    EXPECT_EQ("undefinedundefinedundefinedundefinedundefinedundefined", ask(program)) << i;
  }
}

// What a page has begun ends with the outermost of those that run: its world is not given to another one before.
TEST_F(KeptWorld, WaitsForWhatAnInnerPageHasBegun) {
  const ProgramPtr inner = page_of(L"Response.Write(typeof late); Promise.resolve().then(function () { late = 1 })");
  probe->action = [&] {
    Realm one(engine, inner);
    one.set_object(L"Response", page.get());
    one.set_output(page.get());
    return one.run(inner).kind == Outcome::completed ? S_OK : E_FAIL;
  };
  always("undefinedundefined", L"o.Act(); o.Act()");
}

TEST_F(KeptWorld, LosesNothingToAPageThatIsBrokenOff) {
  engine.set_time_limit(std::chrono::milliseconds(50));
  const ProgramPtr program = page_of(L"var n = typeof u; u = 1; Response.Write(n); if (o.Name == 'slow') for (;;) {}");
  for (int i = 0; i < 3; ++i) EXPECT_EQ("undefined", ask(program));
  probe->name = L"slow";
  EXPECT_EQ("undefined", ask(program));
  probe->name = L"probe";
  for (int i = 0; i < 3; ++i) EXPECT_EQ("undefined", ask(program));
}

// The wrapper of Response, say, stays in the world; what it stands for does not.
TEST_F(KeptWorld, HasTheObjectsOfTheRequest) {
  const ProgramPtr program =
      page_of(L"Response.Write(o.Name + typeof p); var close = [o][0].Close; close(); o.Close()");
  const CComPtr<Probe> first = probe;
  for (int i = 0; i < 6; ++i) {
    probe = korlib::make<Probe>();
    probe->name = (L"probe " + std::to_wstring(i)).c_str();
    EXPECT_EQ("probe " + std::to_string(i) + "undefined", ask(program)) << i;
    EXPECT_EQ(2, probe->closed) << i;
  }
  EXPECT_EQ(0, first->closed);
}

TEST_F(KeptWorld, HasOnlyTheNamesThatAreSet) {
  const ProgramPtr program = page_of(L"Response.Write(typeof p); p = 5; Response.Write(typeof p)");
  const auto ask_with = [&](bool has_p) {
    page->text.clear();
    open(program);
    if (has_p) realm->set_object(L"p", other.get());
    EXPECT_EQ(Outcome::completed, realm->run(program).kind);
    realm.reset();
    return narrow(page->text);
  };
  for (int i = 0; i < 4; ++i) EXPECT_EQ("functionnumber", ask_with(true)) << i;
  for (int i = 0; i < 4; ++i) EXPECT_EQ("undefinednumber", ask_with(false)) << i;
  for (int i = 0; i < 4; ++i) EXPECT_EQ("functionnumber", ask_with(true)) << i;
}

TEST_F(KeptWorld, IsThePagesOwn) {
  const ProgramPtr a = page_of(L"function name() { return 'a' } Response.Write(name())", "/site/a.asp");
  const ProgramPtr b = page_of(L"function name() { return 'b' } Response.Write(name())", "/site/b.asp");
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ("a", ask(a));
    EXPECT_EQ("b", ask(b));
  }
}

TEST_F(KeptWorld, HasRoomForTheBusiestPages) {
  std::vector<ProgramPtr> pages;
  for (int i = 0; i < 100; ++i) pages.push_back(page_of(L"var n = " + std::to_wstring(i) + L"; Response.Write(n)"));
  for (int round = 0; round < 4; ++round) {
    for (int i = 0; i < 100; ++i) EXPECT_EQ(std::to_string(i), ask(pages[static_cast<std::size_t>(i)]));
  }
}

TEST_F(KeptWorld, LetsAPageTryAgainLater) {
  const ProgramPtr program = page_of(L"if (o.Name == 'bad') Array.prototype.x = 1; Response.Write(typeof [].x)");
  for (int i = 0; i < 3; ++i) EXPECT_EQ("undefined", ask(program));
  probe->name = L"bad";
  EXPECT_EQ("number", ask(program));
  probe->name = L"probe";
  JSContextRef last = nullptr;
  int again = 0;
  for (int i = 0; i < 200; ++i) {
    EXPECT_EQ("undefined", ask(program)) << i;
    again += context == std::exchange(last, context);
  }
  EXPECT_GT(again, 100);
}

}  // namespace
}  // namespace test
