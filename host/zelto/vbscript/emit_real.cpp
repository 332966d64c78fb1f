// Arithmetic that ends in Doubles, with plain numbers. A Double that is a whole number is an object elsewhere
// ($Double), since its kind could not be told from that of an Integer; in a loop such objects take most of the time.
//
// - An expression such as `x / 2 + y`, whose result is a Double whenever its operands are Integers, Longs and Doubles,
// is
//   calculated at once, and its result made an object where that must be. An operand of any other kind, or what cannot
//   be calculated, leads to NaN or Infinity, and then the library does all of it anew, step by step: so no operand may
//   do anything but be read, and nothing in between may hide that it is infinite.
// - A variable that a loop assigns such results to, or sums of the elements of an array, has a plain number also where
// that is a whole one. A second variable
//   beside it, its mark, then tells that the number is a Double; whoever reads the variable makes the object. That is
//   for variables that nothing but the statements of their procedure can see, in scripts that count no references.
#include <fmt/xchar.h>

#include <algorithm>
#include <utility>

#include "base/letter_case.h"
#include "vbscript/constants.h"
#include "vbscript/emitter.h"

namespace zelto::vbscript {
namespace {

const Expression& without_parentheses(const Expression& e) {
  return e.kind == Expression::parenthesized ? without_parentheses(*e.parts[0]) : e;
}
bool is_literal(const Expression& e) { return without_parentheses(e).kind == Expression::number; }
bool is_positive_literal(const Expression& e) { return is_literal(e) && without_parentheses(e).value > 0; }

// What is finite whenever it is a number.
bool is_operand(const Expression& e) {
  const Expression& bare = without_parentheses(e);
  if (bare.kind != Expression::call) return bare.kind == Expression::number || bare.kind == Expression::name;
  const auto is_bare = [](const ExpressionPtr& part) { return part && is_operand(*part); };
  return std::ranges::all_of(bare.parts, is_bare);
}

// The function of plain numbers that one of the language stands for; empty for none. NaN and Infinity lead to such.
std::wstring_view plain_function(std::wstring_view folded) {
  static constexpr std::pair<std::wstring_view, std::wstring_view> kFunctions[] = {
      {L"cos", L"cos"}, {L"log", L"log"}, {L"sin", L"sin"}, {L"sqr", L"sqrt"}, {L"tan", L"tan"},
  };
  const auto* const found =
      std::ranges::find(kFunctions, folded, &std::pair<std::wstring_view, std::wstring_view>::first);
  return found == std::end(kFunctions) ? std::wstring_view() : found->second;
}

std::wstring_view symbol_of(Operator op) {
  switch (op) {
    case Operator::add:
      return L" + ";
    case Operator::sub:
      return L" - ";
    case Operator::mul:
      return L" * ";
    case Operator::div:
      return L" / ";
    default:
      return L" ** ";
  }
}

bool is_own(const ProcedureInfo& in, const std::wstring& folded) {
  const auto found = in.names.find(folded);
  if (found == in.names.end()) return false;
  const Symbol& symbol = found->second;
  return symbol.kind == Symbol::variable && !symbol.is_reference && !symbol.is_outer;
}

// Of the names of the top level, those that the procedure has.
void add_outer_names(const ProcedureInfo& from, std::set<std::wstring>* folded) {
  for (const Expression* one : from.uses.names) {
    std::wstring name = base::folded(one->text);
    if (!from.names.contains(name)) folded->insert(std::move(name));
  }
}

// Of one that may be a Double.
bool takes_element(const Expression& e) {
  return e.kind == Expression::call ||
         (e.kind != Expression::name &&
          std::ranges::any_of(e.parts, [](const auto& part) { return takes_element(*part); }));
}

}  // namespace

Real Emitter::real_of(Expression& e) {
  if (e.real == Real::unknown) e.real = find_real(e);
  return e.real;
}

Real Emitter::find_real(Expression& e) {
  switch (e.kind) {
    case Expression::number:
      if (e.number_kind == NumberKind::double_) return Real::surely;
      return type_of(e) == Type::plain ? Real::no : Real::maybe;
    case Expression::name:
      return real_of_name(e);
    case Expression::call:
      return real_of_call(e);
    case Expression::operation:
      return real_of_operation(e);
    case Expression::parenthesized:
      return real_of(*e.parts[0]);
    default:
      return Real::no;
  }
}

Real Emitter::real_of_name(const Expression& e) {
  const std::wstring folded = base::folded(e.text);
  if (const Symbol* symbol = find(folded); symbol && symbol->kind == Symbol::constant && !symbol->is_outer) {
    return real_of(const_cast<Expression&>(*symbol->value));
  }
  if (!plain_variable(e).empty()) return Real::maybe;
  const auto constant = is_own_name(folded) ? std::nullopt : constant_of(folded);
  return constant && std::holds_alternative<int>(*constant) ? Real::maybe : Real::no;
}

Real Emitter::real_of_call(const Expression& e) {
  const Expression& callee = *e.parts[0];
  if (callee.kind != Expression::name || count_of_plain(e).empty()) return Real::no;
  const bool are_plain = std::ranges::all_of(e.parts.begin() + 1, e.parts.end(),
                                             [&](const ExpressionPtr& part) { return real_of(*part) != Real::no; });
  if (!are_plain) return Real::no;
  const std::wstring folded = base::folded(callee.text);
  if (!is_own_name(folded)) {
    const bool is_real = folded == L"cdbl" || !plain_function(folded).empty();
    return is_real && e.parts.size() == 2 ? Real::surely : Real::no;
  }
  return plain_variable(callee).empty() ? Real::no : Real::maybe;
}

Real Emitter::real_of_operation(Expression& e) {
  const Real a = real_of(*e.parts[0]);
  const Real b = e.parts.size() > 1 ? real_of(*e.parts[1]) : a;
  if (a == Real::no || b == Real::no) return Real::no;
  switch (e.op) {
    case Operator::negate:
    case Operator::plus:
    case Operator::add:
    case Operator::sub:
    case Operator::mul:
      return std::max(a, b);
    case Operator::div:
      return is_operand(*e.parts[1]) ? Real::surely : Real::no;
    case Operator::pow:
      return is_positive_literal(*e.parts[1]) || (is_operand(*e.parts[0]) && is_operand(*e.parts[1])) ? Real::surely
                                                                                                      : Real::no;
    case Operator::idiv:
    case Operator::mod:
      // Of a Double a Long, whose kind a mark does not tell.
      return is_positive_literal(*e.parts[1]) && type_of(*e.parts[1]) == Type::integer ? Real::mixed : Real::no;
    default:
      return Real::no;
  }
}

// As a plain number, NaN where there is none.
void Emitter::plain_number(Expression& e) {
  switch (e.kind) {
    case Expression::number:
      return out_.put_number(e.value);
    case Expression::parenthesized:
      return plain_number(*e.parts[0]);
    case Expression::name:
      return plain_name(e);
    case Expression::call:
      return plain_call(e);
    default:
      break;
  }
  if (e.op == Operator::plus) return plain_number(*e.parts[0]);
  if (e.op == Operator::idiv || e.op == Operator::mod) {
    put(library(e.op == Operator::mod ? L"real_mod" : L"real_idiv") + L"(");
    plain_number(*e.parts[0]);
    put(L", ");
    plain_number(*e.parts[1]);
    return put(L")");
  }
  const bool is_sign = e.op == Operator::negate;
  put(is_sign ? L"(0 - " : L"(");
  plain_number(*e.parts[0]);
  if (!is_sign) {
    put(symbol_of(e.op));
    plain_number(*e.parts[1]);
  }
  put(L")");
}

void Emitter::plain_name(Expression& e) {
  const std::wstring text = plain_variable(e);
  if (!text.empty() && type_of(e) != Type::integer) {
    return put(fmt::format(L"(typeof {0} === \"number\" ? {0} : {1}({0}))", text, library(L"real")));
  }
  const Symbol* const symbol = find(base::folded(e.text));
  if (symbol && symbol->kind == Symbol::constant) return plain_number(const_cast<Expression&>(*symbol->value));
  name(e);
}

void Emitter::plain_call(Expression& e) {
  const Expression& callee = *e.parts[0];
  const std::wstring folded = base::folded(callee.text);
  const bool is_function = !is_own_name(folded);
  if (is_function && plain_function(folded).empty()) return plain_number(*e.parts[1]);  // CDbl
  if (!is_function) library(L"VbArray");
  const std::wstring element = is_function || !elements_ ? std::wstring() : temporary();
  auto* const outer = std::exchange(elements_, nullptr);  // an index tells nothing of the kind
  if (!element.empty()) put(L"(typeof (" + element + L" = ");
  const std::wstring finding = (element.empty() ? L"real" : L"at") + count_of_plain(e);
  put(library(is_function ? std::wstring(plain_function(folded)) : finding) + L"(");
  if (!is_function) put(plain_variable(callee) + L", ");
  for (std::size_t i = 1; i < e.parts.size(); ++i) {
    if (i > 1) put(L", ");
    plain_number(*e.parts[i]);
  }
  put(L")");
  elements_ = outer;
  if (element.empty()) return;
  put(fmt::format(L") === \"number\" ? {0} : {1}({0}))", element, library(L"real")));
  elements_->push_back(element);
}

// Which of its operands may tell that the result is a Double. Elements do so themselves, and no index does.
void Emitter::find_operands(const Expression& e, std::set<std::wstring>* folded) const {
  if (e.kind == Expression::call) return;
  if (e.kind == Expression::name && !plain_variable(e).empty()) folded->insert(base::folded(e.text));
  for (const ExpressionPtr& part : e.parts) find_operands(*part, folded);
}

// A whole number is a Double where an operand is one.
std::wstring Emitter::mark_of_result(Expression& e, const std::vector<std::wstring>& elements) {
  if (real_of(e) == Real::surely) return L"true";
  std::set<std::wstring> operands;
  find_operands(e, &operands);
  std::wstring text;
  for (const std::wstring& one : operands) {
    if (std::ranges::find(counters_, one) != counters_.end()) continue;
    const std::wstring& name = find(one)->text;
    if (!text.empty()) text += L" || ";
    if (doubles_.contains(one)) text += mark_of(name) + L" || ";
    text += fmt::format(L"({0} | 0) !== {0}", name);
  }
  for (const std::wstring& one : elements) {
    if (!text.empty()) text += L" || ";
    text += fmt::format(L"typeof {0} !== \"number\" || ({0} | 0) !== {0}", one);
  }
  return text.empty() ? L"false" : text;
}

// Variables that others see than what is written in the procedure, or at the top level, or that something else than Let
// assigns to; folded.
std::set<std::wstring> Emitter::names_seen_elsewhere() {
  const ProcedureInfo& in = *procedure_;
  std::set<std::wstring> seen = in.uses.replaced;
  for (const Uses::Passed& one : in.uses.passed) {
    const bool is_lent =
        takes_reference(names_, in, one) || (one.callee->kind == Expression::member && !is_of_library(*one.callee));
    if (is_lent) seen.insert(one.name);
  }
  if (in.tree) return seen;
  for (const ProcedureInfo& one : names_.procedures) add_outer_names(one, &seen);
  for (const ClassInfo& one : names_.classes) {
    for (const ProcedureInfo& member : one.procedures) add_outer_names(member, &seen);
  }
  return seen;
}

// Variables that loops assign Doubles to: results that surely are such, are made of such a variable, or sum up elements
// of an array.
std::set<std::wstring> Emitter::find_doubles() {
  constexpr int kMostRounds = 8;  // a longer chain of variables has objects at its end
  const ProcedureInfo& in = *procedure_;
  const auto names_me = [](const ProcedureInfo& one) { return one.uses.names_me; };
  const bool is_seen =
      !in.tree && (!is_alone_ || names_me(in) || std::ranges::any_of(names_.procedures, names_me));  // by components
  if (counts_ || is_fragment_ || names_.makes_code || is_seen) return {};
  const std::set<std::wstring> elsewhere = names_seen_elsewhere();
  std::set<std::wstring> found;
  bool has_changed = true;
  for (int round = 0; round < kMostRounds && std::exchange(has_changed, false); ++round) {
    for (const Uses::Let& let : in.uses.lets) {
      if (!let.is_in_loop || found.contains(let.name) || elsewhere.contains(let.name) || !is_own(in, let.name))
        continue;
      auto& value = const_cast<Expression&>(*let.value);
      std::set<std::wstring> operands;
      if (real_of(value) == Real::maybe) find_operands(value, &operands);
      const bool takes_one =
          std::ranges::any_of(operands, [&](const std::wstring& name) { return found.contains(name); });
      const bool sums_up = real_of(value) == Real::maybe && value.kind == Expression::operation && takes_element(value);
      if (real_of(value) != Real::surely && !takes_one && !sums_up) continue;
      found.insert(let.name);
      has_changed = true;
    }
  }
  return found;
}

void Emitter::begin_doubles() {
  doubles_ = {};
  doubles_ = find_doubles();
  for (const std::wstring& one : doubles_) temporaries_.push_back(mark_of(find(one)->text));
}

bool Emitter::is_double(const Expression& e) const {
  return e.kind == Expression::name && !doubles_.empty() && doubles_.contains(base::folded(e.text));
}

// variable = value
void Emitter::let_double(const Expression& target, Expression& e) {
  const std::wstring text = find(base::folded(target.text))->text;
  const std::wstring mark = mark_of(text);
  const Real real = real_of(e);
  if (is_literal(e) && real != Real::no) {
    put(text + L" = ");
    plain_number(e);
    return put(fmt::format(L", {} = {}", mark, real == Real::surely));
  }
  const bool is_plain = real == Real::surely || real == Real::maybe;
  if (is_plain) {
    const std::wstring result = temporary();
    std::vector<std::wstring> elements;
    auto* const outer = std::exchange(elements_, real == Real::maybe ? &elements : nullptr);
    put(L"(" + result + L" = ");
    plain_number(e);
    elements_ = outer;
    put(fmt::format(L") - {0} === 0 ? ({1} = {2}, {3} = {0}) : (", result, mark, mark_of_result(e, elements), text));
  }
  const bool was_stepwise = std::exchange(is_stepwise_, is_plain || is_stepwise_);
  put(text + L" = ");
  let_value(e);
  put(L", " + mark + L" = false");
  is_stepwise_ = was_stepwise;
  if (is_plain) put(L")");
}

// The value of one with several steps, or of one with such a variable; false for any other.
bool Emitter::real_value(Expression& e, const Emit& stepwise) {
  if (is_stepwise_ || is_fragment_ || real_of(e) != Real::surely) return false;
  const bool is_worth_it = std::ranges::any_of(e.parts, [&](const ExpressionPtr& part) {
    const Expression& bare = without_parentheses(*part);
    return bare.kind == Expression::operation || bare.kind == Expression::call || is_double(bare);
  });
  if (!is_worth_it) return false;
  const std::wstring result = temporary();
  put(L"((" + result + L" = ");
  plain_number(e);
  put(fmt::format(L") - {0} === 0 ? {1}({0}) : ", result, library(L"real_value")));
  is_stepwise_ = true;
  stepwise();
  is_stepwise_ = false;
  put(L")");
  return true;
}

}  // namespace zelto::vbscript
