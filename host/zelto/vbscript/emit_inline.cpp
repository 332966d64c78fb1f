// What is done to plain variables and to what stands in the text is written where it stands, with the library behind it
// for other kinds of values: so the engine learns of each place by itself what it sees there.
#include <fmt/xchar.h>

#include <algorithm>

#include "base/letter_case.h"
#include "vbscript/emitter.h"

namespace zelto::vbscript {

// A variable that reading does nothing else to; empty for anything else.
std::wstring Emitter::plain_variable(const Expression& e) const {
  if (e.kind != Expression::name) return {};
  const Symbol* const symbol = find(base::folded(e.text));
  const bool is_plain = symbol && !symbol->is_reference && !symbol->is_outer &&
                        (symbol->kind == Symbol::variable || symbol->kind == Symbol::result);
  return is_plain ? symbol->text : std::wstring();
}

// The question whether the operands are numbers, or integers; empty where nothing needs to be asked.
std::wstring Emitter::question(Expression& e, bool of_integers) {
  std::wstring text;
  for (const ExpressionPtr& part : e.parts) {
    if (is_numeric(*part)) continue;
    const std::wstring name = plain_variable(*part);
    text += fmt::format(L"{}typeof {} === \"number\"", text.empty() ? L"" : L" && ", name);
    if (of_integers) text += fmt::format(L" && ({0} | 0) === {0}", name);
  }
  return text;
}

// Whether the operation can be written so: of variables, integer literals and counters.
bool Emitter::is_inline(Expression& e) {
  if (is_fragment_ || e.parts.size() != 2) return false;
  for (const ExpressionPtr& part : e.parts) {
    const bool is_counting =
        type_of(*part) == Type::integer && (part->kind == Expression::number || part->kind == Expression::name);
    if (!is_counting && plain_variable(*part).empty()) return false;
  }
  return true;
}

// False where nothing is asked.
bool Emitter::put_in_place(const std::wstring& asked, std::wstring_view symbol, Expression& e,
                           std::wstring_view behind) {
  if (asked.empty()) return false;
  // Not by value(), which may make an object of what a variable has as a number.
  const auto operand = [&](Expression& part) {
    const std::wstring text = plain_variable(part);
    if (text.empty()) return value(part);
    out_.at(part.place);
    put(text);
  };
  put(L"(" + asked + L" ? (");
  operand(*e.parts[0]);
  put(fmt::format(L" {} ", symbol));
  operand(*e.parts[1]);
  put(fmt::format(L"{}) : ", behind));
  call_operation(e);
  put(L")");
  return true;
}

bool Emitter::inline_operation(Expression& e, std::wstring_view symbol) {
  const bool is_division = e.op == Operator::idiv || e.op == Operator::mod;
  if (e.op != Operator::add && e.op != Operator::sub && !is_division) return false;
  const Expression& right = *e.parts[e.parts.size() - 1];
  if (is_division && (right.kind != Expression::number || right.value <= 0)) return false;
  const bool has_double = std::ranges::any_of(e.parts, [&](const ExpressionPtr& part) { return is_double(*part); });
  if (has_double || !is_inline(e)) return false;
  const std::wstring asked = question(e, true);
  return put_in_place(asked, symbol, e, is_division ? L" | 0" : L"");
}

bool Emitter::inline_comparison(Expression& e, std::wstring_view symbol) {
  const Expression& right = *e.parts[1];
  const bool is_text = right.kind == Expression::string && (e.op == Operator::eq || e.op == Operator::ne) &&
                       !is_fragment_ && !plain_variable(*e.parts[0]).empty();
  if (!is_text && !is_inline(e)) return false;
  const std::wstring asked =
      is_text ? fmt::format(L"typeof {} === \"string\"", plain_variable(*e.parts[0])) : question(e, false);
  return put_in_place(asked, symbol, e, {});
}

}  // namespace zelto::vbscript
