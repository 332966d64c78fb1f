// Trees as text: (op a b), calls f[a b], members a.b
#include "vbscript/parser.h"

#include <gtest/gtest.h>

namespace zelto::vbscript {
namespace {

std::string text_of(const Expression& e);

std::string operation_of(const Expression& e) {
  static constexpr const char* kNames[] = {"^", "neg", "plus", "*",  "/",  "\\",  "mod", "+",  "-",   "&",   "=",  "<>",
                                           "<", ">",   "<=",   ">=", "is", "not", "and", "or", "xor", "eqv", "imp"};
  std::string text = std::string("(") + kNames[static_cast<int>(e.op)];
  for (const auto& part : e.parts) text += " " + text_of(*part);
  return text + ")";
}

std::string text_of(const Expression& e) {
  const std::string name(e.text.begin(), e.text.end());
  switch (e.kind) {
    case Expression::operation:
      return operation_of(e);
    case Expression::number:
      return std::to_string(static_cast<int>(e.value));
    case Expression::member:
      return (e.parts.empty() ? "" : text_of(*e.parts[0])) + "." + name;
    case Expression::parenthesized:
      return "{" + text_of(*e.parts[0]) + "}";
    case Expression::call: {
      std::string text = text_of(*e.parts[0]) + "[";
      for (std::size_t i = 1; i < e.parts.size(); ++i)
        text += (i > 1 ? " " : "") + (e.parts[i] ? text_of(*e.parts[i]) : "?");
      return text + "]";
    }
    default:
      return name.empty() ? "literal" : name;
  }
}

struct Row {
  const wchar_t* text;
  const char* tree;
};

TEST(Parser, BindsOperatorsByTheirPrecedence) {
  constexpr Row kRows[] = {
      {L"a + b * c", "(+ a (* b c))"},
      {L"a * b + c", "(+ (* a b) c)"},
      {L"-a ^ b", "(neg (^ a b))"},
      {L"a ^ -b", "(^ a (neg b))"},
      {L"a ^ b ^ c", "(^ (^ a b) c)"},
      {L"a * b \\ c Mod d + e", "(+ (mod (\\ (* a b) c) d) e)"},
      {L"a & b + c", "(& a (+ b c))"},
      {L"a & b = c", "(= (& a b) c)"},
      {L"Not a = b", "(not (= a b))"},
      {L"Not a And b", "(and (not a) b)"},
      {L"a = Not b", "(= a (not b))"},
      {L"a And b Or c Xor d Eqv e Imp f", "(imp (eqv (xor (or (and a b) c) d) e) f)"},
      {L"a Is Nothing", "(is a literal)"},
      {L"a - b - c", "(- (- a b) c)"},
      {L"a < b = c", "(= (< a b) c)"},
      {L"(a + b) * c", "(* {(+ a b)} c)"},
      {L"a.b(c)(d).e", "a.b[c][d].e"},
      {L"f(a, , b)", "f[a ? b]"},
      {L"f()", "f[]"},
      {L"[a b].[If]", "a b.If"},
      {L"a.if", "a.if"},
  };
  for (const Row& row : kRows) EXPECT_EQ(row.tree, text_of(*parse_expression(row.text)));
}

TEST(Parser, TellsTheArgumentsOfACallWithoutParentheses) {
  constexpr Row kRows[] = {
      {L"f", "f[]"},
      {L"f a", "f[a]"},
      {L"f(a)", "f[{a}]"},
      {L"f (a)", "f[{a}]"},
      {L"f (a), b", "f[{a} b]"},
      {L"f (a) & b", "f[(& {a} b)]"},
      {L"f -a", "f[(neg a)]"},
      {L"f a, , b", "f[a ? b]"},
      {L"o.f a", "o.f[a]"},
      {L"o.f(a).g b", "o.f[a].g[b]"},
      {L"Call f(a)", "f[a]"},
      {L"Call f", "f[]"},
      {L"f .a", "f[.a]"},
  };
  for (const Row& row : kRows) {
    const Script script = parse(row.text);
    ASSERT_EQ(1u, script.body.size());
    EXPECT_EQ(Statement::call, script.body[0]->kind);
    EXPECT_EQ(row.tree, text_of(*script.body[0]->first));
  }
}

TEST(Parser, PutsAnElseInALineToItsIf) {
  const Script script = parse(L"If a Then b = 1 : c = 2 Else d = 3\ne = 4");
  ASSERT_EQ(2u, script.body.size());
  const Statement& one = *script.body[0];
  ASSERT_EQ(2u, one.branches.size());
  EXPECT_EQ(2u, one.branches[0].body.size());
  EXPECT_EQ(1u, one.branches[1].body.size());
  EXPECT_TRUE(one.branches[1].tests.empty());
}

}  // namespace
}  // namespace zelto::vbscript
