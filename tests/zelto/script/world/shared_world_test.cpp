// A world that pages share which cannot tell: what they have of each other, and what they do to each other.
#include "zelto/script/world/kept_world_fixture.h"

#include <functional>
#include <utility>

#include "script/world/world.h"

namespace test {
namespace {

using zelto::script::World;

class SharedWorld : public KeptWorldTest {
 protected:
  static ProgramPtr a_page(const std::wstring& script) { return page_of(script, "/site/a.asp"); }
  static ProgramPtr b_page(const std::wstring& script) { return page_of(script, "/site/b.asp"); }

  // The world that the page runs in.
  JSContextRef world_of(const ProgramPtr& program) {
    ask(program);
    return context;
  }

  // In turns, twice each, as pages get a world that is kept when they come again.
  void warm(const ProgramPtr& a, const ProgramPtr& b) {
    for (int i = 0; i < 2; ++i) {
      ask(a);
      ask(b);
    }
  }

  // How often the page's world is another one, while `spoil` is called before each of some requests.
  int worlds_lost_by(const ProgramPtr& program, const std::function<void()>& spoil) {
    ask(program);
    JSContextRef last = world_of(program);
    int lost = 0;
    for (int i = 0; i < 6; ++i) {
      spoil();
      lost += world_of(program) != std::exchange(last, context);
    }
    return lost;
  }
};

TEST_F(SharedWorld, IsUsedByPagesThatCannotTell) {
  const ProgramPtr a = a_page(L"var n = 1; function f() { return n } let l = f(); u = 1; Response.Write(l)");
  const ProgramPtr b = b_page(L"'use strict'; class C {} const c = /(a)/.exec('a'); Response.Write(C.name)");
  warm(a, b);
  EXPECT_EQ(world_of(a), world_of(b));
}

TEST_F(SharedWorld, IsNoneForPagesThatCanTell) {
  const ProgramPtr a = a_page(L"var n = 1; Response.Write(n)");
  for (const wchar_t* script : {L"Response.Write(typeof this.n)", L"Response.Write('n' in globalThis)",
                                L"var f = o.valueOf; f()", L"Symbol.for('n')"}) {
    const ProgramPtr b = b_page(script);
    warm(a, b);
    JSContextRef others = world_of(a);
    EXPECT_NE(others, world_of(b)) << narrow(script);
    EXPECT_EQ(context, world_of(b)) << narrow(script);
  }
}

TEST_F(SharedWorld, IsUsedByPagesThatHandItToObjects) {
  const ProgramPtr a = a_page(L"var n = 6; function f() { return n + 1 } let l = 5; o.Hold(this); o.Act()");
  const ProgramPtr b = b_page(L"o.Act()");
  std::vector<LONG> answers;
  probe->action = [&] {
    const CComPtr<IDispatch> held = std::exchange(probe->held, nullptr);
    for (const wchar_t* name : {L"f", L"n", L"l"}) {
      CComVariant answer;
      const bool is_found = held && SUCCEEDED(probe->CallMember(held.get(), CComBSTR(name), &answer));
      answers.push_back(is_found ? answer.lVal : 0);
    }
    return S_OK;
  };
  warm(a, b);
  EXPECT_EQ(world_of(a), world_of(b));
  answers.clear();
  ask(a);
  ask(b);
  EXPECT_EQ((std::vector<LONG>{7, 6, 5, 0, 0, 0}), answers);
}

TEST_F(SharedWorld, ShowsThePagesNamesWhereTheScriptGetsHoldOfIt) {
  always("1function25",
         L"var n = 1; function f() {} u = 2; o.Keep(this); var g = o.Give(); "
         L"Response.Write(g.n + typeof g.f + g.u); g.n = 5; Response.Write(n)");
  always("a,g", L"var a, g; let l; o.Keep(this); Response.Write(Object.keys(o.Give()).join())");
  always("3", L"var n = 3, x = { Take: function (g) { Response.Write(g.n) } }; x.Take(this)");
  always("4", L"var n = 4, x = {}; x.Self = this; Response.Write(x.Self.n)");
  always("5", L"var n = 5, x = {}; function f() { x.Self = this } f(); Response.Write(x.Self.n)");
  always("6", L"var n = 6; o.Keep(this); o.Call(function (g) { Response.Write(g.n) }, o.Give())");
  always("undefined", L"var n = 7, x = { m: function () { x.Self = this } }; x.m(); Response.Write(typeof x.Self.n)");
}

// Components ask for names that the page's text does not have, and those may still be there.
TEST_F(SharedWorld, AnswersForNamesThatThePageMakes) {
  const ProgramPtr a = a_page(
      L"var names = ['ma', 'de'], gap = ''; o.Hold(this); o.Keep(this); o.Act(); var g = o.Give(); g[names.join(gap)] "
      L"= 7;"
      L"o.Act(); Response.Write(typeof g)");
  const ProgramPtr b = b_page(L"var turn = 1; o.Hold(this); o.Act(); late = 8; o.Act()");
  std::vector<VARTYPE> answers;
  probe->action = [&] {
    for (const wchar_t* name : {L"made", L"late", L"none"}) {
      CComVariant answer;
      const bool is_found = SUCCEEDED(probe->CallMember(probe->held.get(), CComBSTR(name), &answer));
      answers.push_back(is_found ? answer.vt : static_cast<VARTYPE>(VT_EMPTY));
    }
    return S_OK;
  };
  for (int i = 0; i < 4; ++i) {
    answers.clear();
    EXPECT_EQ("object", ask(a));
    EXPECT_EQ((std::vector<VARTYPE>{VT_EMPTY, VT_EMPTY, VT_EMPTY, VT_I4, VT_EMPTY, VT_EMPTY}), answers);
    answers.clear();
    ask(b);
    EXPECT_EQ((std::vector<VARTYPE>{VT_EMPTY, VT_EMPTY, VT_EMPTY, VT_EMPTY, VT_I4, VT_EMPTY}), answers);
  }
}

// A page that another one executes gets hold of that one's world by an object of it.
TEST_F(SharedWorld, ShowsNothingThatAnInnerPageHasHidden) {
  const ProgramPtr inner = b_page(
      L"Object.defineProperty(o.Give().constructor.constructor('return this')(), 'escape', { writable: false })");
  const ProgramPtr outer = a_page(L"o.Keep({}); o.Act()");
  const ProgramPtr third = page_of(L"escape = 1; Response.Write(typeof escape)", "/site/c.asp");
  probe->action = [&] { return run_within(inner); };
  for (int i = 0; i < 4; ++i) {
    ask(outer);
    EXPECT_EQ("number", ask(third)) << i;
  }
}

TEST_F(SharedWorld, ShowsNothingThatAPageHasHiddenByNamesThatItMade) {
  const ProgramPtr hiding = a_page(
      L"var k = 'constr' + 'uctor', g = (function () {})[k]('return this')(), O = ({})[k];"
      L"O['define' + 'Property'](g, 'hidden', { value: 1, configurable: true })");
  const ProgramPtr third = b_page(L"Response.Write(typeof hidden)");
  for (int i = 0; i < 4; ++i) {
    ask(hiding);
    EXPECT_EQ("undefined", ask(third)) << i;
  }
}

TEST_F(SharedWorld, HasAnObjectSetThePagesNamesByTheirValue) {
  probe->action = [&] {
    VARIANT given[2]{};
    const CComBSTR name(L"n");
    given[1].vt = VT_BSTR;
    given[1].bstrVal = name;
    given[0].vt = VT_I4;
    given[0].lVal = 8;
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS params{given, &put, 2, 1};
    const CComPtr<IDispatch> held = std::exchange(probe->held, nullptr);
    return held->Invoke(DISPID_VALUE, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_PROPERTYPUT, &params, nullptr, nullptr,
                        nullptr);
  };
  always("8", L"var n = 7; o.Hold(this); o.Act(); Response.Write(n)");
}

TEST_F(SharedWorld, ShowsNothingOfAnotherPage) {
  struct Pair {
    const wchar_t* first;
    const wchar_t* second;
    const char* answer;  // the second's
  };
  for (const Pair& pair : std::initializer_list<Pair>{
           {L"var v = 1; function f() {}", L"Response.Write(typeof v + typeof f)", "undefinedundefined"},
           {L"let l = 1; const c = 2; class C {}", L"Response.Write(typeof l + typeof C)", "undefinedundefined"},
           {L"u = 1", L"Response.Write(typeof u); u = 2; Response.Write(u)", "undefined2"},
           {L"u = 1", L"u", " ReferenceError: Can't find variable: u at /site/b.asp:1"},
           {L"var n = 1; function f() { return n }", L"function f() { return n } var n = 2; Response.Write(f())", "2"},
           {L"var n = 1", L"n = 2; Response.Write(n)", "2"},
           {L"Array.prototype.last = 1", L"Response.Write(typeof [].last)", "undefined"},
           {L"if (![].last) Array.prototype.last = 1", L"Array.prototype.last = 2; Response.Write([].last)", "2"},
           {L"parseInt = 1", L"Response.Write(typeof parseInt)", "function"},
           {L"/(a)/.exec('a')", L"Response.Write('[' + RegExp.$1 + ']')", "[]"},
           {L"var s = Symbol.for('k'); Array.prototype[s] = 1", L"Response.Write(typeof [][Symbol.for('k')])",
            "undefined"},
           {L"Promise.resolve().then(function () { late = 1 })", L"Response.Write(typeof late)", "undefined"},
           {L"Promise.resolve().then(function () { late = 1 }); Response.End()", L"Response.Write(typeof late)",
            "undefined"},
           {L"throw new Error('x')", L"missing()", " ReferenceError: Can't find variable: missing at /site/b.asp:1"},
           {L"return", L"Response.Write(1)", "1"},
           {L"var Response", L"Response.Write(1)", "1"},
           {L"this.t = 1; var v = 1", L"Response.Write(typeof t + typeof v)", "undefinedundefined"},
           {L"t = 1", L"Response.Write(typeof this.t)", "undefined"}}) {
    const ProgramPtr first = a_page(pair.first);
    const ProgramPtr second = b_page(pair.second);
    const std::string alone = ask(first);
    for (int i = 0; i < 5; ++i) {
      EXPECT_EQ(pair.answer, ask(second)) << i << ": " << narrow(pair.first);
      EXPECT_EQ(alone, ask(first)) << i << ": " << narrow(pair.second);
    }
  }
}

TEST_F(SharedWorld, ShowsNothingOfThePageThatExecutesAnother) {
  const ProgramPtr inner = b_page(L"Response.Write(typeof n + typeof u); n = 3; var u = 4; Response.Write(n + u)");
  const ProgramPtr outer = a_page(L"var n = 1; u = 2; o.Act(); Response.Write(n + u); o.Act()");
  probe->action = [&] { return run_within(inner); };
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ("undefinedundefined73undefinedundefined7", ask(outer)) << i;
    EXPECT_EQ("undefinedundefined7", ask(inner)) << i;
  }
}

TEST_F(SharedWorld, HasThePageTextOfEach) {
  const auto page_with = [](const wchar_t* literal) {
    auto program = std::make_shared<Program>(*page_of(L"$zelto_html(0); $zelto_html(0)"));
    program->literals.emplace_back(literal);
    return ProgramPtr(std::move(program));
  };
  const ProgramPtr a = page_with(L"one");
  ProgramPtr b = page_with(L"two");
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ("oneone", ask(a)) << i;
    EXPECT_EQ("twotwo", ask(b)) << i;
  }
  b = page_with(L"edited");
  for (int i = 0; i < 4; ++i) EXPECT_EQ("editededited", ask(b)) << i;
}

TEST_F(SharedWorld, TellsOfEachPageWhatItHasNotDeclared) {
  std::string told;
  engine.set_on_undeclared([&told](const std::string& url, std::u16string_view names) {
    told += url + ": " + zelto::script::to_utf8(std::wstring(names.begin(), names.end())) + ";";
  });
  const ProgramPtr a = a_page(L"x = 1; y = 2");
  const ProgramPtr b = b_page(L"y = 1");
  for (int i = 0; i < 5; ++i) {
    ask(a);
    ask(b);
  }
  EXPECT_EQ("/site/a.asp: x, y;/site/b.asp: y;", told);
}

TEST_F(SharedWorld, EndsTheFunctionsOfEachPage) {
  const ProgramPtr a = a_page(L"o.Hold(function () { return 7 })");
  const ProgramPtr b = b_page(L"o.Act()");
  warm(a, b);
  HRESULT called = S_OK;
  probe->action = [&] {
    DISPPARAMS none{};
    called = probe->held->Invoke(DISPID_VALUE, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &none, nullptr,
                                 nullptr, nullptr);
    return S_OK;
  };
  for (int i = 0; i < 3; ++i) {
    called = S_OK;
    ask(a);
    ASSERT_TRUE(probe->held);
    ask(b);
    EXPECT_TRUE(FAILED(called)) << i;
    probe->held.reset();
  }
}

TEST_F(SharedWorld, IsSpoiledOnceByAPage) {
  const ProgramPtr b = b_page(L"var n = typeof [].x; Response.Write(n)");
  const ProgramPtr changing = a_page(L"Array.prototype.x = 1");
  EXPECT_LE(worlds_lost_by(b, [&] { ask(changing); }), 1);
  const ProgramPtr taking = a_page(L"var m = 1, x = {}; x.Self = this");
  EXPECT_LE(worlds_lost_by(b, [&] { ask(taking); }), 1);
  const ProgramPtr making = a_page(L"var m = 1, f = function () {}, k = 'constr' + 'uctor'; f[k]('return m')()");
  EXPECT_LE(worlds_lost_by(b, [&] { ask(making); }), 1);
  JSContextRef own = world_of(taking);
  EXPECT_EQ(own, world_of(taking));
  const ProgramPtr no_script = a_page(L"return 1");
  EXPECT_EQ(0, worlds_lost_by(b, [&] { ask(no_script); }));
  const ProgramPtr endless = a_page(L"for (;;);");
  EXPECT_LE(worlds_lost_by(b,
                           [&] {
                             engine.set_time_limit(std::chrono::milliseconds(10));
                             ask(endless);
                             engine.set_time_limit(std::chrono::milliseconds(0));
                           }),
            1);
  // It has a name of the host's more or less each time.
  const ProgramPtr named = a_page(L"Response.Write(typeof p)");
  bool has_p = false;
  EXPECT_LE(worlds_lost_by(b,
                           [&] {
                             open(named);
                             if ((has_p = !has_p)) realm->set_object(L"p", other.get());
                             EXPECT_EQ(Outcome::completed, realm->run(named).kind);
                             realm.reset();
                           }),
            1);
}

TEST_F(SharedWorld, IsAnotherForOtherNamesOfTheHosts) {
  const ProgramPtr a = a_page(L"Response.Write(typeof p)");
  const ProgramPtr b = b_page(L"Response.Write(typeof p)");
  const auto ask_with_p = [&] {
    page->text.clear();
    open(a);
    realm->set_object(L"p", other.get());
    EXPECT_EQ(Outcome::completed, realm->run(a).kind);
    JSContextRef used = realm->context();
    realm.reset();
    return used;
  };
  JSContextRef worlds[2]{};
  for (int i = 0; i < 4; ++i) {
    JSContextRef with_p = ask_with_p();
    EXPECT_EQ(L"function", page->text);
    EXPECT_EQ("undefined", ask(b));
    if (i > 1) {
      EXPECT_EQ(worlds[0], with_p);
      EXPECT_EQ(worlds[1], context);
    }
    worlds[0] = with_p;
    worlds[1] = context;
  }
}

TEST_F(SharedWorld, KeepsNoFunctionOfAPageThatIsGone) {
  World world(engine);
  world.set_use(World::Use::shared);
  const ProgramPtr stays = a_page(L"var n = 1");
  ASSERT_TRUE(world.page_of(stays));
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(world.add(b_page(L"var n = " + std::to_wstring(i))));
  EXPECT_EQ(4u, world.programs().size());
  world.drop_ended();
  ASSERT_EQ(1u, world.programs().size());
  EXPECT_TRUE(world.has(stays));
}

TEST_F(SharedWorld, OutlastsEditsOfAPage) {
  const ProgramPtr b = b_page(L"Response.Write('b')");
  EXPECT_EQ(0, worlds_lost_by(b, [&, edit = 0]() mutable {
              const std::string text = std::to_string(++edit);
              const ProgramPtr edited = a_page(L"var n = " + std::to_wstring(edit) + L"; Response.Write(n)");
              for (int i = 0; i < 3; ++i) EXPECT_EQ(text, ask(edited)) << i;
            }));
}

}  // namespace
}  // namespace test
