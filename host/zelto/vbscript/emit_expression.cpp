#include <fmt/xchar.h>

#include <cmath>
#include <limits>

#include "base/letter_case.h"
#include "vbscript/constants.h"
#include "vbscript/emitter.h"
#include "vbscript/functions.h"

namespace zelto::vbscript {
namespace {

constexpr double kMostLong = std::numeric_limits<std::int32_t>::max();

struct Name {
  Operator op;
  std::wstring_view library;
  std::wstring_view symbol;  // where both sides are numbers, or both texts
};
constexpr Name kNames[] = {
    {Operator::pow, L"pow", {}},   {Operator::negate, L"neg", {}},  {Operator::mul, L"mul", L"*"},
    {Operator::div, L"div", {}},   {Operator::idiv, L"idiv", L"/"}, {Operator::mod, L"mod", L"%"},
    {Operator::add, L"add", L"+"}, {Operator::sub, L"sub", L"-"},   {Operator::cat, L"cat", L"+"},
    {Operator::eq, L"eq", L"==="}, {Operator::ne, L"ne", L"!=="},   {Operator::lt, L"lt", L"<"},
    {Operator::gt, L"gt", L">"},   {Operator::le, L"le", L"<="},    {Operator::ge, L"ge", L">="},
    {Operator::is, L"is", {}},     {Operator::not_, L"not", {}},    {Operator::and_, L"and", L"&"},
    {Operator::or_, L"or", L"|"},  {Operator::xor_, L"xor", L"^"},  {Operator::eqv, L"eqv", {}},
    {Operator::imp, L"imp", {}},
};
const Name& name_of(Operator op) {
  for (const Name& one : kNames) {
    if (one.op == op) return one;
  }
  return kNames[0];
}

bool is_comparison(Operator op) { return op >= Operator::eq && op <= Operator::ge; }
bool is_truth(Type type) { return type == Type::boolean || type == Type::logic; }
bool is_positive_literal(const Expression& e) {
  return e.kind == Expression::number && e.type == Type::integer && e.value > 0;
}
bool is_written_number(const Expression& e) {
  if (e.kind == Expression::operation && e.op == Operator::negate) return is_written_number(*e.parts[0]);
  return e.kind == Expression::number || e.kind == Expression::date;
}

Type type_of_number(const Expression& e) {
  const bool is_whole = std::trunc(e.value) == e.value && std::abs(e.value) <= kMostLong;
  if (e.number_kind == NumberKind::double_) return is_whole ? Type::plain : Type::number;
  const bool is_integer =
      e.value >= std::numeric_limits<std::int16_t>::min() && e.value <= std::numeric_limits<std::int16_t>::max();
  return e.number_kind == NumberKind::long_ && is_integer ? Type::plain : Type::integer;
}

}  // namespace

Type Emitter::type_of(Expression& e) {
  if (!e.has_type) {
    e.type = find_type(e);
    e.has_type = true;
  }
  return e.type;
}

Type Emitter::find_type(Expression& e) {
  switch (e.kind) {
    case Expression::literal_empty:
    case Expression::literal_null:
    case Expression::date:
      return Type::plain;
    case Expression::literal_boolean:
      return Type::boolean;
    case Expression::number:
      return type_of_number(e);
    case Expression::string:
      return Type::text;
    case Expression::name:
      return type_of_name(e.text);
    case Expression::call:
      return type_of_call(e);
    case Expression::operation:
      return type_of_operation(e);
    case Expression::parenthesized:
      return type_of(*e.parts[0]);
    default:
      return Type::any;
  }
}

Type Emitter::type_of_name(std::wstring_view name) {
  const std::wstring folded = base::folded(name);
  if (const Symbol* symbol = find(folded)) {
    if (symbol->kind == Symbol::constant) return type_of(const_cast<Expression&>(*symbol->value));
    const bool is_counting = std::ranges::find(counters_, folded) != counters_.end();
    return symbol->kind == Symbol::variable && is_counting ? Type::integer : Type::any;
  }
  if (find_member(folded)) return Type::any;
  if (const auto constant = constant_of(folded)) {
    return std::holds_alternative<int>(*constant) ? Type::integer : Type::text;
  }
  const Function* known = function_of(folded);
  return known ? known->type : Type::any;
}

Type Emitter::type_of_call(const Expression& e) {
  const Expression& callee = *e.parts[0];
  if (callee.kind != Expression::name) return Type::any;
  const std::wstring folded = base::folded(callee.text);
  if (is_own_name(folded)) return Type::any;
  const Function* known = function_of(folded);
  return known ? known->type : Type::any;
}

Type Emitter::type_of_operation(Expression& e) {
  const Type a = type_of(*e.parts[0]);
  const Type b = e.parts.size() > 1 ? type_of(*e.parts[1]) : Type::any;
  const bool are_integers = a == Type::integer && b == Type::integer;
  switch (e.op) {
    case Operator::add:
      if (a == Type::text && b == Type::text) return Type::text;
      return are_integers ? Type::number : Type::plain;
    case Operator::sub:
      return are_integers ? Type::number : Type::plain;
    case Operator::mul:
      return are_integers && is_positive_literal(*e.parts[1]) ? Type::number : Type::plain;
    case Operator::idiv:
    case Operator::mod:
      return are_integers && is_positive_literal(*e.parts[1]) ? Type::integer : Type::plain;
    case Operator::cat:
      return a == Type::text || b == Type::text ? Type::text : Type::plain;
    case Operator::negate:
      return is_positive_literal(*e.parts[0]) ? Type::integer : Type::plain;
    case Operator::plus:
      return a;
    case Operator::is:
      return Type::boolean;
    case Operator::not_:
      return is_truth(a) || a == Type::integer ? a : Type::plain;
    case Operator::and_:
    case Operator::or_:
    case Operator::xor_:
      if (are_integers) return Type::integer;
      if (a == Type::boolean && b == Type::boolean) return Type::boolean;
      return is_truth(a) && is_truth(b) ? Type::logic : Type::plain;
    default:
      break;
  }
  if (!is_comparison(e.op)) return Type::plain;
  const bool are_alike = (a == Type::text && b == Type::text) || (is_numeric(*e.parts[0]) && is_numeric(*e.parts[1]));
  return are_alike ? Type::boolean : Type::logic;
}

bool Emitter::is_numeric(Expression& e) { return type_of(e) == Type::integer || type_of(e) == Type::number; }

void Emitter::number(const Expression& e) {
  const Type type = type_of_number(e);
  if (type == Type::plain) return put(boxed(e.number_kind == NumberKind::long_ ? L"long" : L"double", e.value));
  out_.put_number(e.value);
}

void Emitter::literal(const Expression& e) {
  switch (e.kind) {
    case Expression::literal_null:
      return put(L"null");
    case Expression::literal_nothing:
      return put(library(L"nothing"));
    case Expression::literal_boolean:
      return put(e.value != 0 ? L"true" : L"false");
    case Expression::number:
      return number(e);
    case Expression::string:
      return out_.put_string(e.text);
    case Expression::date:
      return put(boxed(L"date", e.value));
    default:
      return put(L"undefined");
  }
}

void Emitter::value(Expression& e) {
  switch (e.kind) {
    case Expression::name:
      out_.at(e.place);
      return name(e);
    case Expression::me:
      return me(nullptr);
    case Expression::call:
      return call(e, false);
    case Expression::member:
      return call_member(e, e, false);
    case Expression::instance:
      out_.at(e.place);
      return instance(e);
    case Expression::operation:
      return operation(e);
    case Expression::parenthesized:
      return value(*e.parts[0]);
    default:
      return literal(e);
  }
}

void Emitter::let_value(Expression& e) {
  if (type_of(e) != Type::any) return value(e);
  out_.at(e.place);
  put(library(L"val") + L"(");
  value_at_once(e);
  put(L")");
}

void Emitter::set_value(Expression& e) {
  const bool is_object =
      e.kind == Expression::instance || e.kind == Expression::literal_nothing || e.kind == Expression::me;
  if (is_object) return value(e);
  out_.at(e.place);
  put(library(L"setv") + L"(");
  value_at_once(e);
  put(L")");
}

// Of a condition Null is False.
void Emitter::condition(Expression& e) {
  drained(!counts_ || is_quiet(e), [&] { truth(e); });
}

void Emitter::truth(Expression& e) {
  if (e.kind == Expression::parenthesized) return truth(*e.parts[0]);
  const Type type = type_of(e);
  if (e.kind == Expression::operation && is_truth(type)) {
    if (e.op == Operator::not_) {
      put(type == Type::boolean ? L"!(" : L"(");
      value(*e.parts[0]);
      return put(type == Type::boolean ? L")" : L") === false");
    }
    // Of both sides, whatever the first one is.
    if (e.op == Operator::and_ || e.op == Operator::or_) return infix(name_of(e.op).symbol, e);
  }
  if (is_truth(type) || type == Type::integer) return value(e);
  out_.at(e.place);
  put(library(L"cond") + L"(");
  value_at_once(e);
  put(L")");
}

void Emitter::infix(std::wstring_view symbol, Expression& e, std::wstring_view tail) {
  put(L"(");
  value_at_once(*e.parts[0]);
  put(L" ");
  put(symbol);
  put(L" ");
  value_at_once(*e.parts[1]);
  put(tail);
  put(L")");
}

// 1: one side is a number or date as the author wrote it; 2: a text.
int Emitter::written_as(const Expression& a, const Expression& b) {
  if (is_written_number(a) || is_written_number(b)) return 1;
  return a.kind == Expression::string || b.kind == Expression::string ? 2 : 0;
}

void Emitter::comparison(Expression& e) {
  const Name& known = name_of(e.op);
  if (type_of(e) == Type::boolean) return infix(known.symbol, e);
  if (!inline_comparison(e, known.symbol)) call_operation(e);
}

// By the library.
void Emitter::call_operation(Expression& e) {
  out_.at(e.place);
  put(library(name_of(e.op).library) + L"(");
  value(*e.parts[0]);
  if (e.parts.size() > 1) {
    put(L", ");
    value(*e.parts[1]);
    const int written = is_comparison(e.op) ? written_as(*e.parts[0], *e.parts[1]) : 0;
    if (written != 0) put(fmt::format(L", {}", written));
  }
  put(L")");
}

void Emitter::operation(Expression& e) {
  const Type type = type_of(e);
  const Name& known = name_of(e.op);
  if (is_comparison(e.op)) return comparison(e);
  if (e.op == Operator::plus) return let_value(*e.parts[0]);
  const bool is_whole = type == Type::integer && (e.op == Operator::idiv || e.op == Operator::mod);
  if (is_whole) return infix(known.symbol, e, L" | 0");
  const bool is_sum = type == Type::number && e.parts.size() > 1;
  const bool is_text = type == Type::text &&
                       (type_of(*e.parts[0]) == Type::text || type_of(*e.parts[0]) == Type::integer) &&
                       (type_of(*e.parts[1]) == Type::text || type_of(*e.parts[1]) == Type::integer);
  const bool is_bits = type == Type::integer && e.parts.size() > 1;
  if (is_sum || is_text || is_bits) return infix(known.symbol, e);
  if (e.op == Operator::negate && type == Type::integer) {
    put(L"(-");
    value(*e.parts[0]);
    return put(L")");
  }
  if (real_value(e, [&] { call_operation(e); })) return;
  if (!inline_operation(e, known.symbol)) call_operation(e);
}

}  // namespace zelto::vbscript
