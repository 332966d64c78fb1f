// How a page ends that takes too much time or memory, or that is told to end, whatever it does against it.
#include <algorithm>
#include <atomic>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "zelto/script/script_fixture.h"

namespace test {
namespace {

using namespace std::chrono_literals;
using zelto::script::Outcome;
using zelto::script::Realm;
using RealmLimits = ScriptTest;

TEST_F(RealmLimits, StopsARunawayScript) {
  engine.set_time_limit(50ms);
  for (const wchar_t* script :
       {L"while (true) {}", L"for (;;) { try { for (;;) {} } catch (e) {} finally { continue } }",
        L"for (;;) o.Close()", L"/(a+)+b/.test('a'.repeat(10)); while (true);"}) {
    EXPECT_EQ(Outcome::timed_out, run(script).kind) << narrow(script);
  }
  engine.set_time_limit(0ms);
  must_run(L"var x = 1");
}

// Each job of a promise is short: no time-out came, and the worker was lost. The engine has compiled them when their
// time is over.
TEST_F(RealmLimits, StopsChainsOfPromises) {
  engine.set_time_limit(300ms);
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

TEST_F(RealmLimits, StopsPromisesThatTakeTooMuchMemory) {
  engine.set_memory_limit(std::size_t{64} << 20);
  EXPECT_EQ(Outcome::out_of_memory, run(L"var a = []; (async () => { for (;;) a.push([await a.length]) })()").kind);
}

// No limit ends a loop in compiled code that the engine did not make itself.
TEST_F(RealmLimits, OffersNoForeignCode) { EXPECT_EQ("undefined", text(L"typeof WebAssembly")); }

// The most that the process has had since start_peak(), in MiB.
void start_peak() { std::ofstream("/proc/self/clear_refs") << 5; }
long peak() {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word && word != "VmHWM:") continue;
  long kib = 0;
  status >> kib;
  return kib / 1024;
}

// Each is one operation of the engine: there was no look at the page in between, and it took gigabytes.
TEST_F(RealmLimits, StopsAnOperationThatTakesTooMuchMemory) {
#ifdef KOR_SANITIZED
  GTEST_SKIP() << "the sanitizer's allocator is in the place of the one that refuses";
#endif
  for (const wchar_t* script :
       {L"'x'.repeat(6e8).toUpperCase()", L"'a,'.repeat(2e8).split(',')", L"'\\ufdfa'.repeat(4e7).normalize('NFKD')",
        L"encodeURIComponent('\\u00e4'.repeat(2e8))", L"JSON.parse('[' + '1.5,'.repeat(1e8) + '1]')",
        L"new Array(1e8).fill('abcd').join('-')", L"'b'.repeat(3e8).replaceAll('b', 'cc')", L"new Array(3e8).fill(1.5)",
        L"try { 'x'.repeat(6e8).toUpperCase() } catch (e) {} o.Close(); shown = 1"}) {
    engine.set_memory_limit(std::size_t{64} << 20);
    start_peak();
    const long before = peak();
    EXPECT_EQ(Outcome::out_of_memory, run(script).kind) << narrow(script);
    EXPECT_LE(peak() - before, 400) << narrow(script);
    EXPECT_EQ("undefined", text(L"typeof shown")) << narrow(script);
  }
}

// The engine ends the process where it has no memory to give out a text that the host asks for.
TEST_F(RealmLimits, NeedsNoMoreOfAMessageThanItsBeginning) {
  constexpr std::size_t kMost = 20'000;
  for (const wchar_t* script :
       {L"throw new Error('x'.repeat(3e7))", L"throw 'x'.repeat(3e7)", L"throw { message: 'x'.repeat(3e7) }",
        L"throw { text: 'x'.repeat(3e7) }", L"(() => { var e = new Error('a'); e.stack = 'x'.repeat(3e7); throw e })()",
        L"throw new Error('a', { cause: new Error('x'.repeat(3e7)) })", L"throw new Error('x'.repeat(1e6) + '\\u00e4')",
        L"(() => { var e = new Error('a'); e.name = e.source = 'x'.repeat(3e7); throw e })()"}) {
    engine.collect_garbage();  // what the script before has left counts as well
    engine.set_memory_limit(std::size_t{100} << 20);
    const Outcome outcome = run(script);
    ASSERT_EQ(Outcome::failed, outcome.kind) << narrow(script);
    EXPECT_LE(outcome.error->message.size(), kMost) << narrow(script);
    EXPECT_LE(outcome.error->source.size(), kMost) << narrow(script);
    for (const zelto::language::Cause& cause : outcome.error->causes)
      EXPECT_LE(cause.message.size(), kMost) << narrow(script);
  }
  EXPECT_EQ("30000000",
            text(L"(() => { try { throw new Error('x'.repeat(3e7)) } catch (e) { return e.message.length } })()"));
}

// The process took all memory of the machine, and was ended by it.
TEST_F(RealmLimits, StopsAScriptThatTakesTooMuchMemory) {
  for (const wchar_t* script :
       {L"var a = []; for (;;) a.push({ n: a.length })", L"var a = []; for (;;) a.push(new Uint8Array(1e6).fill(1))",
        L"var m = new Map(); for (var i = 0;; i++) m.set(i, 'text ' + i)",
        L"for (var i = 0, a = 'a'.repeat(1000);; i++) Symbol.for(a + i)",
        L"var m = {}; for (var i = 0;; i++) m['k' + i] = i",
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

// A part of a large text keeps all of it.
TEST_F(RealmLimits, DoesNotBlameAPageForTextsThatTheLastOneRepeated) {
  engine.set_memory_limit(std::size_t{512} << 20);
  must_run(
      L"for (var k = 0; k < 16; k++) { var part = new Array(8e6).join('x').substr(1000 * k, 300);"
      L" for (var i = 0; i < 3; i++) o.TypeOf(part); }");
  realm.reset();
  open_realm();
  engine.set_memory_limit(std::size_t{96} << 20);
  must_run(L"for (var i = 0; i < 3e6; i++) ({ list: [i] })");
}

TEST_F(RealmLimits, CountsTheTimeThatObjectsTake) {
  engine.set_time_limit(50ms);
  probe->action = [] {
    std::this_thread::sleep_for(60ms);
    return S_OK;
  };
  EXPECT_EQ(Outcome::timed_out, run(L"o.Act(); o.Act(); Response.Write('not reached')").kind);
  EXPECT_EQ(L"", page->text);
}

TEST_F(RealmLimits, LetsThePageChangeItsTime) {
  engine.set_time_limit(1h);
  probe->action = [this] {
    engine.set_time_limit(30ms);
    return S_OK;
  };
  EXPECT_EQ(Outcome::timed_out, run(L"o.Act(); while (true) {}").kind);
}

TEST_F(RealmLimits, StopsThroughComponentFrames) {
  EXPECT_EQ(Outcome::stopped, run(L"function f() { try { Response.End() } catch (e) { Response.Write('a') } }\n"
                                  L"try { o.Call(f, 1) } catch (e) { Response.Write('b') } Response.Write('c')")
                                  .kind);
  EXPECT_EQ(L"", page->text);
  engine.set_time_limit(50ms);
  EXPECT_EQ(Outcome::timed_out,
            run(L"function f() { while (true) {} }\ntry { o.Call(f, 1) } catch (e) {} while (true) {}").kind);
}

// However the script guards itself, and however many frames of components lie between.
TEST_F(RealmLimits, StopsPastEveryGuardOfTheScript) {
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
TEST_F(RealmLimits, StopsWhereTheProcessorIsBusy) {
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

// The end may come at any moment while the host makes another page's realm, which is of no use half made.
TEST_F(RealmLimits, StopsAPageThatKeepsOpeningOthers) {
  const auto open_realm_and_run = [&](const auto& program) {
    Realm opened(engine, program);
    opened.set_object(L"Response", page.get());
    opened.run(program);
  };
  const auto inner = zelto::language::compile(L"var x = 1", "/site/inner.asp");
  probe->action = [&] {
    EXPECT_NO_THROW(open_realm_and_run(inner));
    return S_OK;
  };
  for (int i = 0; i < 12; ++i) {
    engine.set_time_limit(std::chrono::milliseconds(20 + i % 7));
    EXPECT_EQ(Outcome::timed_out, run(L"for (;;) o.Act()").kind) << i;
  }
}

TEST_F(RealmLimits, StopsWhenAnObjectHidesTheCode) {
  probe->action = [] {
    zelto::script::stop_page();
    return S_OK;
  };
  EXPECT_EQ(Outcome::stopped, run(L"o.Act(); Response.Write('not reached')").kind);
  EXPECT_EQ(L"", page->text);
}

}  // namespace
}  // namespace test
