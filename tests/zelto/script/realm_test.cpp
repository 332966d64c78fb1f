// Life of a realm: what it gives to a script, how pages end, and that nothing stays behind.
#include "script/realm.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "zelto/script/script_fixture.h"

namespace test {
namespace {

using namespace std::chrono_literals;
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
      std::make_shared<Program>(*compile(L"$zelto.html(1); $zelto.out(1 + 1); $zelto.out(undefined); "
                                         L"$zelto.out(null); $zelto.out(true); $zelto.html(0); $zelto.html(9)",
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

TEST_F(RealmLife, StopsARunawayScript) {
  engine.set_time_limit(50ms);
  for (const wchar_t* script :
       {L"while (true) {}", L"for (;;) { try { for (;;) {} } catch (e) {} finally { continue } }",
        L"for (;;) o.Close()", L"/(a+)+b/.test('a'.repeat(10)); while (true);"}) {
    EXPECT_EQ(Outcome::timed_out, run(script).kind) << narrow(script);
  }
  engine.set_time_limit(0ms);
  must_run(L"var x = 1");
}

// Each job of a promise is short: no time-out came, and the worker was lost.
TEST_F(RealmLife, StopsChainsOfPromises) {
  engine.set_time_limit(50ms);
  for (const wchar_t* script :
       {L"function f() { Promise.resolve().then(f) }\nf()", L"(async () => { for (;;) await null })()",
        L"function f() { Promise.resolve().then(f) }\nfor (var i = 0; i < 1000; i++) f()",
        L"function f() { Promise.resolve().then(f); Promise.resolve().then(f) }\nf()",
        L"var endless = { then(resolve) { resolve(endless) } }; Promise.resolve(endless)",
        L"(async () => { for (;;) try { await null } catch (e) {} finally { continue } })()",
        L"(async () => { for (;;) try { await o.Close() } catch (e) {} })()"}) {
    EXPECT_EQ(Outcome::timed_out, run(script).kind) << narrow(script);
  }
  EXPECT_EQ(Outcome::stopped,
            run(L"(async () => { for (;;) try { await null; Response.End() } catch (e) {} })()").kind);
  engine.set_time_limit(0ms);
  must_run(L"var n = 0; (async () => { for (var i = 0; i < 1000; i++) await n++ })()");
  EXPECT_EQ("1000", text(L"n")) << "and none of their jobs is left for the next page";
}

TEST_F(RealmLife, StopsPromisesThatTakeTooMuchMemory) {
  engine.set_memory_limit(std::size_t{64} << 20);
  EXPECT_EQ(Outcome::out_of_memory, run(L"var a = []; (async () => { for (;;) a.push([await a.length]) })()").kind);
}

// No limit ends a loop in compiled code that the engine did not make itself.
TEST_F(RealmLife, OffersNoForeignCode) { EXPECT_EQ("undefined", text(L"typeof WebAssembly")); }

// The process took all memory of the machine, and was ended by it.
TEST_F(RealmLife, StopsAScriptThatTakesTooMuchMemory) {
  for (const wchar_t* script :
       {L"var a = []; for (;;) a.push({ n: a.length })", L"var a = []; for (;;) a.push(new Uint8Array(1e6).fill(1))",
        L"var m = new Map(); for (var i = 0;; i++) m.set(i, 'text ' + i)",
        L"var a = []; for (;;) { try { for (;;) a.push([a.length]) } catch (e) {} finally { continue } }",
        L"var a = []; function f() { for (;;) a.push([a.length]) }\ntry { o.Call(f, 1) } catch (e) {} for (;;) {}"}) {
    engine.set_memory_limit(std::size_t{64} << 20);
    EXPECT_EQ(Outcome::out_of_memory, run(script).kind) << narrow(script);
    realm.reset();
    open_realm();
    // The next page is not blamed for what the last one held, but for a little that the engine takes for reachable
    // because an old address lies on the stack. Garbage, here some 300 MB of it, is none either.
    engine.set_memory_limit(std::size_t{160} << 20);
    must_run(L"for (var i = 0; i < 3e6; i++) ({ list: [i] })");
  }
}

TEST_F(RealmLife, CountsTheTimeThatObjectsTake) {
  engine.set_time_limit(50ms);
  probe->action = [] {
    std::this_thread::sleep_for(60ms);
    return S_OK;
  };
  EXPECT_EQ(Outcome::timed_out, run(L"o.Act(); o.Act(); Response.Write('not reached')").kind);
  EXPECT_EQ(L"", page->text);
}

TEST_F(RealmLife, LetsThePageChangeItsTime) {
  engine.set_time_limit(1h);
  probe->action = [this] {
    engine.set_time_limit(30ms);
    return S_OK;
  };
  EXPECT_EQ(Outcome::timed_out, run(L"o.Act(); while (true) {}").kind);
}

TEST_F(RealmLife, StopsThroughComponentFrames) {
  EXPECT_EQ(Outcome::stopped, run(L"function f() { try { Response.End() } catch (e) { Response.Write('a') } }\n"
                                  L"try { o.Call(f, 1) } catch (e) { Response.Write('b') } Response.Write('c')")
                                  .kind);
  EXPECT_EQ(L"", page->text);
  engine.set_time_limit(50ms);
  EXPECT_EQ(Outcome::timed_out,
            run(L"function f() { while (true) {} }\ntry { o.Call(f, 1) } catch (e) {} while (true) {}").kind);
}

// However the script guards itself, and however many frames of components lie between.
TEST_F(RealmLife, StopsPastEveryGuardOfTheScript) {
  struct {
    const wchar_t* end;
    Outcome::Kind kind;
  } const ways[] = {{L"Response.End()", Outcome::stopped}, {L"while (true) {}", Outcome::timed_out}};
  const wchar_t* const guards[] = {
      L"try { END } catch (e) { Response.Write('x') } finally { Response.Write('x') } Response.Write('x')",
      L"(function () { try { END } finally { return 1 } })(); Response.Write('x')",
      L"for (;;) { try { END } catch (e) { continue } finally { Response.Write('x') } }",
      L"(async () => { try { END } catch (e) { Response.Write('x') } })(); Response.Write('x')",
      L"Promise.resolve().then(() => { END }).catch(() => Response.Write('x')).finally(() => Response.Write('x'))",
      L"for (var i of (function* () { try { END; yield 1 } finally { Response.Write('x') } })()) Response.Write('x')",
      L"[3, 1, 2].sort(() => { END; return Response.Write('x') }); Response.Write('x')",
      (L"function f() { try { o.Call(g, 1) } catch (e) { Response.Write('x') } finally { Response.Write('x') } }\n"
       L"function g() { try { END } finally { o.Call(h, 1) } }\nfunction h() { Response.Write('x') }\n"
       L"try { o.Call(f, 1) } finally { o.Call(h, 1) }"),
  };
  for (const auto& way : ways) {
    engine.set_time_limit(way.kind == Outcome::timed_out ? 20ms : 0ms);
    for (std::wstring script : guards) {
      script.replace(script.find(L"END"), 3, way.end);
      EXPECT_EQ(way.kind, run(script).kind) << narrow(script);
      EXPECT_EQ(L"", page->text) << narrow(script);
      page->text.clear();
    }
  }
  engine.set_time_limit(0ms);
  must_run(L"Response.Write('the next page')");
  EXPECT_EQ(L"the next page", page->text);
}

// A page whose every call was refused went on for ever: each refusal put its end off, by the clock on the wall, while
// the engine counted the time of a processor that others had.
TEST_F(RealmLife, StopsWhereTheProcessorIsBusy) {
  std::atomic<bool> is_over = false;
  std::vector<std::jthread> burners(std::size_t{4} * std::max(1U, std::thread::hardware_concurrency()));
  for (std::jthread& burner : burners) {
    burner = std::jthread([&] {
      while (!is_over) continue;
    });
  }
  engine.set_time_limit(20ms);
  EXPECT_EQ(Outcome::timed_out, run(L"for (;;) { try { o.Close() } catch (e) {} }").kind);
  is_over = true;
}

TEST_F(RealmLife, StopsWhenAnObjectHidesTheCode) {
  probe->action = [] {
    zelto::script::stop_page();
    return S_OK;
  };
  EXPECT_EQ(Outcome::stopped, run(L"o.Act(); Response.Write('not reached')").kind);
  EXPECT_EQ(L"", page->text);
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
