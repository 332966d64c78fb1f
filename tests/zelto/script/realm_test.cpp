// Life of a realm: what it gives to a script, how pages end, and that nothing stays behind.
#include "script/realm.h"

#include <pthread.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "zelto/script/script_fixture.h"

namespace test {
namespace {

using zelto::language::compile;
using zelto::language::Program;
using zelto::script::Engine;
using zelto::script::kPageStopped;
using zelto::script::Outcome;
using RealmLife = ScriptTest;

TEST_F(RealmLife, StartsAfreshForEachRequest) {
  must_run(L"var x = 1; Array.prototype.extra = 2");
  realm.reset();
  open_realm();
  EXPECT_EQ("undefinedundefined", text(L"typeof x + [].extra"));
}

TEST_F(RealmLife, WritesTextOfThePageAndExpressions) {
  auto program =
      std::make_shared<Program>(*compile(L"$zelto_html(1); $zelto_out(1 + 1); $zelto_out(undefined); "
                                         L"$zelto_out(null); $zelto_out(true); $zelto_html(0); $zelto_html(9)",
                                         "/site/page.asp"));
  program->literals.emplace_back(L"end");
  program->literals.emplace_back(L"<p>\U0001F600");
  EXPECT_EQ(Outcome::completed, realm->run(program).kind);
  EXPECT_EQ(L"<p>\U0001F6002Trueend", page->text);  // as Write would
}

TEST_F(RealmLife, HandsOnWhatTheScriptLogs) {
  std::vector<zelto::script::LogLine> lines;
  realm->set_log([&lines](const zelto::script::LogLine& line) { lines.push_back(line); });
  must_run(
      L"console.log('a', 1, null, undefined, { b: [2] })\n"
      L"console.warn(new RangeError('far'), o.Name, [3])\n"
      L"function f() {\n console.error(f.name, 10n, Symbol('s')) }\nf()\n"
      L"console.info(); console.debug(new Proxy({}, { get() { throw 1 } }), { toJSON() { throw 1 } })");
  const auto at = [&lines](std::size_t i) {
    return lines[i].level + " " + std::to_string(lines[i].line) + " " + lines[i].text;
  };
  ASSERT_EQ(5U, lines.size());
  EXPECT_EQ("/site/page.asp", lines[0].file);
  EXPECT_EQ("log 1 a 1 null undefined {\"b\":[2]}", at(0));
  EXPECT_EQ("warn 2 RangeError: far probe [3]", at(1));
  EXPECT_EQ("error 4 f 10 Symbol(s)", at(2));
  EXPECT_EQ("info 6 ", at(3));
  EXPECT_EQ("debug 6 [object] [object]", at(4));
  realm.reset();
  open_realm();
  must_run(L"console.log('to nobody')");
}

TEST_F(RealmLife, MapsLinesToFiles) {
  auto program = std::make_shared<Program>(*compile(L"a();\nfunction a() {\n  null.x }", "/site/page.asp"));
  program->files = {"/site/page.asp", "/site/part.inc"};
  program->lines = {{0, 10, 0}, {1, 4, 0}, {1, 5, 20}};
  const Outcome outcome = realm->run(program);
  ASSERT_EQ(Outcome::failed, outcome.kind);
  EXPECT_EQ("TypeError: null is not an object (evaluating 'null.x') at /site/part.inc:5", said(outcome));
  EXPECT_GT(outcome.error->column, 20);
}

TEST_F(RealmLife, CallsAFunctionOfTheScript) {
  must_run(L"var n = 0; function Session_OnStart() { n++ }; const later = () => { n += 10 }");
  EXPECT_EQ(Outcome::completed, realm->call(L"Session_OnStart").kind);
  EXPECT_EQ(Outcome::completed, realm->call(L"later").kind);
  EXPECT_EQ(Outcome::completed, realm->call(L"Missing").kind);
  EXPECT_EQ("11", text(L"n"));
  must_run(L"function bad() { null.x } function end() { Response.End() }");
  EXPECT_EQ(Outcome::failed, realm->call(L"bad").kind);
  EXPECT_EQ(Outcome::stopped, realm->call(L"end").kind);
}

TEST_F(RealmLife, RunsAPageWithinAPage) {
  std::unique_ptr<zelto::script::Realm> inner;
  Outcome outcome;
  probe->action = [&] {
    inner = std::make_unique<zelto::script::Realm>(engine);
    inner->set_object(L"Response", page.get());
    outcome = inner->run(
        compile(L"Response.Write('inner'); this.x = 1; if (stop) Response.End(); var stop", "/site/inner.asp"));
    inner.reset();
    return outcome.kind == Outcome::stopped ? kPageStopped : S_OK;
  };
  must_run(L"o.Act(); Response.Write(typeof x)");
  EXPECT_EQ(L"innerundefined", page->text);
  EXPECT_EQ(Outcome::completed, outcome.kind);
}

// What an executed page leaves behind in the objects of the page that executed it.
TEST_F(RealmLife, SaysThatAnObjectsPageHasEnded) {
  probe->action = [&] {
    zelto::script::Realm inner(engine);
    inner.set_object(L"o", probe.get());
    return inner.run(compile(L"var box = o.Give(); box.object = o; box.method = o.Keep", "/site/inner.asp")).kind ==
                   Outcome::completed
               ? S_OK
               : E_FAIL;
  };
  must_run(L"var box = {}; o.Keep(box); o.Act()");
  for (const wchar_t* use : {L"box.object.Name", L"box.object.Name = 1", L"box.object('x')", L"box.object + ''",
                             L"box.object('x') = 1", L"box.method(1)", L"o.Keep(box.object)", L"o.Keep(box.method)"}) {
    EXPECT_EQ("Error: The page that made this object has ended at /site/page.asp:1", error_of(use)) << narrow(use);
  }
  probe->kept.reset();
  probe->action = nullptr;
  EXPECT_EQ("function", text(L"typeof box.object"));
}

TEST_F(RealmLife, EndsTheOuterPageWithTheInnerOne) {
  probe->action = [&] {
    zelto::script::Realm inner(engine);
    inner.set_object(L"Response", page.get());
    return inner.run(compile(L"Response.End()", "/site/inner.asp")).kind == Outcome::stopped ? kPageStopped : S_OK;
  };
  EXPECT_EQ(Outcome::stopped, run(L"try { o.Act() } catch (e) {} Response.Write('not reached')").kind);
  EXPECT_EQ(L"", page->text);
}

TEST_F(RealmLife, StoppingWithoutAScriptIsOnlyACode) {
  EXPECT_EQ(kPageStopped, zelto::script::stop_page());
  EXPECT_FALSE(zelto::script::is_unwinding());
  must_run(L"Response.Write('on')");
}

TEST_F(RealmLife, LetsGoOfEverything) {
  const int before = Probe::alive;
  probe->action = [this] {
    auto made = korlib::make<Probe>();
    probe->kept = CComVariant(static_cast<IDispatch*>(made.get()));
    return S_OK;
  };
  must_run(
      L"var all = []; for (var i = 0; i < 500; i++) { o.Act(); var x = o.Give(); all.push(x, x.Close); "
      L"x.Hold(() => x) }");
  probe->kept.reset();
  probe->action = nullptr;
  EXPECT_EQ(Probe::alive, before + 500);
  realm.reset();
  EXPECT_EQ(Probe::alive, before);
}

TEST_F(RealmLife, CollectsObjectsWhileItRuns) {
  probe->action = [this] {
    probe->kept = CComVariant(static_cast<IDispatch*>(korlib::make<Probe>().get()));
    return S_OK;
  };
  must_run(L"for (var i = 0; i < 30000; i++) { o.Act(); o.Give().Name }");
  EXPECT_LT(Probe::alive, 25000);
}

#ifdef __SANITIZE_THREAD__
constexpr std::size_t kStack = 3u << 20;  // less to go through for a tool that records every call
#else
constexpr std::size_t kStack = 8u << 20;
#endif

// Script calls object calls script: each level has engine and component frames.
TEST(Recursion, EndsWithAnErrorInAThreadOfAWorkersSize) {
  std::string said;
  std::function<void()> body = [&] {
    Engine engine;
    CComPtr<Probe> probe = korlib::make<Probe>();
    zelto::script::Realm realm(engine);
    realm.set_object(L"o", probe.get());
    const Outcome outcome = realm.run(compile(
        L"var depth = 0; function f() { depth++; o.Call(f, 1) }\nvar said; try { f() } catch (e) { var c = e; while "
        L"(c.cause) c = c.cause; said = c.name + ': ' + c.message } if (depth < 5) throw depth; throw said",
        "/site/page.asp"));
    said = outcome.error ? zelto::script::to_utf8(outcome.error->message) : "none";
  };
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kStack);
  pthread_t thread;
  const auto run = [](void* function) -> void* {
    (*static_cast<std::function<void()>*>(function))();
    return nullptr;
  };
  ASSERT_EQ(0, pthread_create(&thread, &attributes, run, &body));
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_TRUE(said == "RangeError: Out of stack space" || said == "RangeError: Maximum call stack size exceeded.")
      << said;
}

TEST_F(RealmLife, EndsRecursionOfTheScriptAlone) {
  EXPECT_EQ("RangeError: Maximum call stack size exceeded.", error_of(L"function f() { f() }\nf()").substr(0, 45));
  must_run(L"var x = 1");
}

TEST(Engines, ShareAProgramBetweenThreads) {
  const auto program = compile(
      L"var n = 0; function f(i) { return i } for (var i = 0; i < 2000; i++) n += f(i)\no.Keep(n)", "/site/page.asp");
  std::vector<std::thread> threads;
  std::atomic<int> right = 0;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      Engine engine;
      for (int i = 0; i < 20; ++i) {
        CComPtr<Probe> probe = korlib::make<Probe>();
        {
          zelto::script::Realm realm(engine);
          realm.set_object(L"o", probe.get());
          realm.run(program);
        }
        right += probe->kept.vt == VT_I4 && probe->kept.lVal == 1999000;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(80, right);
}

}  // namespace
}  // namespace test
