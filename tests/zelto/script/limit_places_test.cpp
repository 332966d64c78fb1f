// Where a script was when its time or its memory ran out.
#include <algorithm>
#include <chrono>
#include <string>

#include "zelto/script/script_fixture.h"

namespace test {
namespace {

using namespace std::chrono_literals;
using zelto::script::Outcome;

class LimitPlaces : public ScriptTest {
 protected:
  // "3 f 7": the line, and the functions with how far they had come, the innermost first.
  static std::string place(const Outcome& outcome) {
    if (!outcome.error) return "no place";
    std::string text = std::to_string(outcome.error->line);
    for (const zelto::language::Frame& call : outcome.error->calls) {
      if (!call.function.empty()) text += " " + narrow(call.function) + " " + std::to_string(call.line);
    }
    return text;
  }
};

// Loops that call nothing were told by the line of the last call in front of them, or by their function's first one.
TEST_F(LimitPlaces, OfATimeOutAreTheLoopThatRan) {
  constexpr struct {
    const wchar_t* script;
    const char* place;
  } kRows[] = {
      {L"Response.Write(1);\n\nwhile (true) {}", "3"},
      {L"var i = 0;\nResponse.Write(i);\n\nfor (;;)\n  i++;", "4"},
      {L"function f() {\n  var i = 0;\n  while (true) { i++ }\n}\nf()", "3 f 3"},
      {L"var i = 0, k;\nfor (k = 0; k < 100; k++) i--;\nouter:\ndo { i++ } while (true)", "3"},
      {L"var i = 0;\ndo { i++ } while (i < 5)\n\nwhile (i) i++;", "4"},
      {L"var i = 0;\ndo i++; while (i < 5)\n\nwhile (i) i++;", "4"},
      {L"if (0)\n  for (;;) ;\nelse\n  for (;;) {\n    for (var k = 0; k < 1e12; k++) ;\n  }", "5"},
      {L"\na: b: for (;;) continue a", "2"},
      {L"[2, 1].sort(function by(x, y) {\n  for (;;) ;\n  return x - y\n})", "2 by 2"},
      {L"Response.Write(1);\nfor (;;)\n  Math.max(1, 2)", "2"},
      {L"var made = { do() { return { while: 1 } } };\nfor (;;) ;", "2"},
      {L"var t = 'for (;;) ;';\nswitch (1) {\n  case 1: for (;;) ;\n}", "3"},
      {L"function g() {\n  for (;;) ;\n}\no.Call(g, 1)", "2 g 2"},
  };
  for (const auto& row : kRows) {
    engine.set_time_limit(100ms);
    const Outcome outcome = run(row.script);
    EXPECT_EQ(Outcome::timed_out, outcome.kind) << narrow(row.script);
    const std::string told = place(outcome);
    EXPECT_EQ(row.place, told) << narrow(row.script);
  }
}

TEST_F(LimitPlaces, HaveTheColumnOfTheLoop) {
  engine.set_time_limit(100ms);
  const Outcome outcome = run(L"var n = 1; for (;;) ;");
  ASSERT_TRUE(outcome.error);
  EXPECT_EQ(12, outcome.error->column);
}

TEST_F(LimitPlaces, OfTooMuchMemoryAreTheLoopOrTheOperation) {
#ifdef KOR_SANITIZED
  GTEST_SKIP() << "the sanitizer's allocator is in the place of the one that refuses";
#endif
  constexpr struct {
    const wchar_t* script;
    const char* place;
  } kRows[] = {
      {L"var a = [], b;\nResponse.Write(1);\nfor (;;) {\n  b = [a];\n  a = b;\n}", "3"},
      {L"function grow() {\n  return 'x'.repeat(6e8).toUpperCase()\n}\n\ngrow()", "2 grow 2"},
  };
  for (const auto& row : kRows) {
    engine.set_memory_limit(std::size_t{64} << 20);
    const Outcome outcome = run(row.script);
    EXPECT_EQ(Outcome::out_of_memory, outcome.kind) << narrow(row.script);
    EXPECT_EQ(row.place, place(outcome)) << narrow(row.script);
    realm.reset();
    open_realm();
  }
}

TEST_F(LimitPlaces, DoNotShowInWhatTheScriptDoes) {
  EXPECT_EQ("6", text(L"(() => { var n = 0; a: for (var i = 0; i < 3; i++) { for (;;) { n++; continue a } }"
                      L" if (0) while (0); else do n++; while (n < 5); do { n++ } while (n < 6) return n })()"));
  EXPECT_EQ("TypeError: f is not a function. (In 'f(function() { for (;;) ; })', 'f' is 1) at /site/page.asp:1",
            error_of(L"var f = 1; f(function() { for (;;) ; })"));
  EXPECT_EQ("null is not an object (evaluating 'x of list')",
            text(L"(() => { function f(list) { for (var x of list) ; } try { f(null) } catch (e) { "
                 L"return e.message } })()"));
  EXPECT_EQ("null is not an object", text(L"(() => { function f(n) { for (;;) break; var [q] = n } try { f(null) } "
                                          L"catch (e) { return e.message } })()"));
}

}  // namespace
}  // namespace test
