#include <fmt/xchar.h>

#include "base/letter_case.h"
#include "vbscript/emitter.h"
#include "vbscript/functions.h"

namespace zelto::vbscript {

// What can be assigned to in the language: a variable, a field of the class around, the result.
std::wstring Emitter::variable_text(std::wstring_view name) {
  const std::wstring folded = base::folded(name);
  if (const auto* member = find_member(folded)) {
    return member->field ? fmt::format(L"this[\"{}\"]", member->key) : std::wstring();
  }
  const Symbol* const symbol = find(folded);
  if (!symbol) return {};
  const bool is_variable = symbol->kind == Symbol::variable || symbol->kind == Symbol::result ||
                           symbol->kind == Symbol::script || symbol->kind == Symbol::external;
  if (!is_variable) return {};
  return symbol->is_reference ? symbol->text + L".v" : symbol->text;
}

// `value` writes what is assigned, for Let or Set.
void Emitter::assign(Expression& target, bool is_set, const Emit& value) {
  out_.at(target.place);
  switch (target.kind) {
    case Expression::name:
      return assign_name(target, is_set, value);
    case Expression::call:
      return assign_call(target, is_set, value);
    case Expression::member:
      return assign_member(target, is_set, value);
    default:
      return put(library(L"raise") + L"(501)");
  }
}

void Emitter::assign_member(Expression& target, bool is_set, const Emit& value) {
  const std::wstring quick = is_set ? std::wstring() : quick_let(target);
  put((quick.empty() ? library(is_set ? L"set" : L"let") : quick) + L"(");
  member_object(target, false);
  put(L", ");
  if (quick.empty()) {
    out_.put_string(target.text);
    put(L", ");
  }
  value();
  put(L")");
}

void Emitter::assign_name(Expression& target, bool is_set, const Emit& value) {
  const std::wstring folded = base::folded(target.text);
  if (assign_own_member(find_member(folded), nullptr, is_set, value)) return;
  if (const std::wstring text = variable_text(target.text); !text.empty()) {
    const Symbol* const symbol = find(folded);
    if (names_.is_explicit && symbol && symbol->kind == Symbol::external) {
      raise_unknown(target.text);
      put(L", ");
    }
    return store(text, value);
  }
  // A constant, a procedure, or a name that nobody has declared.
  const bool is_known = is_own_name(folded) || function_of(folded) || !names_.is_explicit;
  raise_of(is_known ? 501 : 500, target.text);
}

// A property procedure of the class around.
bool Emitter::assign_own_member(const ClassInfo::Member* member, Expression* call, bool is_set, const Emit& value) {
  if (!member || member->field) return false;
  const ProcedureInfo* const put_procedure = is_set ? member->set : member->let;
  const std::size_t count = call ? call->parts.size() - 1 : 0;
  if (!put_procedure || put_procedure->references.size() != count + 1) {
    put(library(L"raise") + L"(450)");
    return true;
  }
  put(fmt::format(L"this[\"{}\"](", put_procedure->text));
  if (count > 0) {
    arguments(*call, [&](std::size_t i) { return put_procedure->references[i]; });
    put(L", ");
  }
  value();
  put(L")");
  return true;
}

// what(…) = value
void Emitter::assign_call(Expression& target, bool is_set, const Emit& value) {
  Expression& callee = *target.parts[0];
  if (callee.kind == Expression::name) {
    if (assign_own_member(find_member(base::folded(callee.text)), &target, is_set, value)) return;
  }
  if (callee.kind == Expression::member) {
    put(library(is_set ? L"set" : L"let") + L"(");
    member_object(callee, false);
    put(L", ");
    out_.put_string(callee.text);
    put(L", ");
  } else {
    const std::wstring count = count_of_plain(target);
    put(library(is_set ? L"setix" : count.empty() ? L"putix" : L"put" + count) + L"(");
    const std::wstring text = callee.kind == Expression::name ? variable_text(callee.text) : std::wstring();
    if (text.empty()) {
      this->value(callee);
    } else {
      put(text);
    }
    put(L", ");
  }
  value();
  if (target.parts.size() > 1) {
    put(L", ");
    arguments(target, [](std::size_t) { return false; });
  }
  put(L")");
}

}  // namespace zelto::vbscript
