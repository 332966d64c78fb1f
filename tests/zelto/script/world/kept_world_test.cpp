// A world that is kept for a page: when it is used again, and what of one request the next one finds there.
#include "zelto/script/world/kept_world_fixture.h"

namespace test {
namespace {

class KeptWorld : public KeptWorldTest {};

TEST_F(KeptWorld, IsUsedAgain) {
  EXPECT_TRUE(is_kept(L"var a = 1; function f() {} Response.Write(a)"));
  EXPECT_TRUE(is_kept(L"undeclared = 1; Response.Write(undeclared)"));
  EXPECT_TRUE(is_kept(L"let a = 1; const b = 2; class C {} Response.Write(a + b)"));
  EXPECT_TRUE(is_kept(L"throw new Error('x')"));
  EXPECT_TRUE(is_kept(L"Response.End()"));
  EXPECT_TRUE(is_kept(L"/(a)/.exec('a'); Response.Write(RegExp.$1)"));
  EXPECT_TRUE(is_kept(L"console.log('x')"));
  EXPECT_TRUE(is_kept(L"this.x = 1; (function () { this.y = 2 })()"));
  EXPECT_TRUE(is_kept(L"new Enumerator([1])"));
  EXPECT_TRUE(is_kept(L"new VBArray([1])"));
  EXPECT_TRUE(is_kept(L"new ActiveXObject('Scripting.Dictionary')"));
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
        L"var f = isNaN; delete isNaN; isNaN = f",
        L"var g = (function () { return this })(), d = 'defineProperty'; ({})['constr' + 'uctor'][d](g, 'escape',"
        L"{ writable: false })",
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

// The engine keeps names in a table of its own, and whoever releases one last has to be inside of it.
TEST_F(KeptWorld, LetsGoOfTheNamesThatAPageHasMade) {
  const ProgramPtr program = page_of(
      L"o.Act(); var p = o.Inner, found = 0; for (var i = 0; i < 16; i++) { var name = '';"
      L"for (var at = 0; at < 5; at++) { var c = 'close'[at]; name += i >> at & 1 ? c.toUpperCase() : c }"
      L"found += typeof p[name] == 'function' } Response.Write(String(found))");
  probe->action = [&] {
    probe->inner.attach(new test::Probe());
    return S_OK;
  };
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ("16", ask(program));
    engine.collect_garbage();
  }
}

TEST_F(KeptWorld, IsAnotherForAPageThatRunsInItself) {
  const ProgramPtr program =
      page_of(L"var depth = typeof depth; Response.Write(depth); o.Act(); Response.Write(depth)");
  int depth = 0;
  probe->action = [&] { return ++depth > 2 ? S_OK : run_within(program); };
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
  const ProgramPtr program = page_of(L"var n = typeof u; u = 1; Response.Write(n); if (o.Name == 'slow') for (;;) {}");
  for (int i = 0; i < 3; ++i) EXPECT_EQ("undefined", ask(program));
  probe->name = L"slow";
  engine.set_time_limit(std::chrono::milliseconds(300));  // time to write, even where it is slow
  EXPECT_EQ("undefined", ask(program));
  engine.set_time_limit(std::chrono::milliseconds(0));
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

// What the page before had at hand is not the next one's.
TEST_F(KeptWorld, CallsTheMethodsOfTheRequestsOwnObject) {
  const ProgramPtr program = page_of(L"for (var i = 0; i < 40; i++) o.Keep('x' + i); Response.Write(o.Give())");
  for (LONG i = 0; i < 5; ++i) {
    const CComPtr<Probe> before = probe;
    probe = korlib::make<Probe>();
    EXPECT_EQ("x39", ask(program));
    EXPECT_EQ(L"x39", korlib::view_of(probe->kept.bstrVal));
    before->kept.reset();
    EXPECT_EQ("x39", ask(program));
    EXPECT_EQ(VT_EMPTY, before->kept.vt);
  }
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
  for (int i = 0; i < 200; ++i) pages.push_back(page_of(L"var n = " + std::to_wstring(i) + L"; Response.Write(n)"));
  for (int round = 0; round < 4; ++round) {
    for (int i = 0; i < 200; ++i) EXPECT_EQ(std::to_string(i), ask(pages[static_cast<std::size_t>(i)]));
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
