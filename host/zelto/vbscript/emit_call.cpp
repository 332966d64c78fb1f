#include <fmt/xchar.h>

#include <algorithm>

#include "base/letter_case.h"
#include "vbscript/constants.h"
#include "vbscript/emitter.h"
#include "vbscript/functions.h"
#include "vbscript/names.h"

namespace zelto::vbscript {

const Symbol* Emitter::find(std::wstring_view folded) const {
  const auto own = procedure_->names.find(folded);
  if (own != procedure_->names.end()) return &own->second;
  if (find_member(folded)) return nullptr;
  const auto top = names_.top.names.find(folded);
  return top == names_.top.names.end() ? nullptr : &top->second;
}

// Of the class around, unless the procedure has that name itself.
const ClassInfo::Member* Emitter::find_member(std::wstring_view folded) const {
  if (!procedure_->in || procedure_->names.contains(folded)) return nullptr;
  const auto found = procedure_->in->members.find(folded);
  return found == procedure_->in->members.end() ? nullptr : &found->second;
}

bool Emitter::is_own_name(std::wstring_view folded) const { return find(folded) || find_member(folded); }

void Emitter::name(Expression& e) {
  const std::wstring folded = base::folded(e.text);
  if (const auto* member = find_member(folded)) return own_member(*member, e, false);
  const Symbol* const symbol = find(folded);
  if (!symbol) return language_name(e, folded);
  switch (symbol->kind) {
    case Symbol::constant:
      return value(const_cast<Expression&>(*symbol->value));
    case Symbol::procedure:
      return call_procedure(*symbol->called, symbol->text, e);
    case Symbol::script:
      return put(fmt::format(L"(typeof {0} === \"function\" ? {0}() : {0})", symbol->text));
    case Symbol::external:
      put(fmt::format(L"(typeof {0} === \"undefined\" ? ", symbol->text));
      if (names_.is_explicit) {
        raise_unknown(e.text);
      } else {
        put(L"undefined");
      }
      put(L" : ");
      kept([&] { put(symbol->text); });
      return put(L")");
    case Symbol::class_:
      return raise_of(13, e.text);
    default: {
      if (is_double(e)) {
        return put(fmt::format(L"({} ? {}({}) : {})", mark_of(symbol->text), library(L"real_value"), symbol->text,
                               symbol->text));
      }
      const bool is_counting = std::ranges::find(counters_, folded) != counters_.end();
      const Emit variable = [&] { put(symbol->is_reference ? symbol->text + L".v" : symbol->text); };
      return is_counting ? variable() : kept(variable);
    }
  }
}

// What nobody has declared: of the language, of the host, or unknown.
void Emitter::language_name(Expression& e, std::wstring_view folded) {
  if (const auto constant = constant_of(folded)) {
    if (const int* number = std::get_if<int>(&*constant)) return put(std::to_wstring(*number));
    return out_.put_string(std::get<std::wstring_view>(*constant));
  }
  if (folded == L"err") return put(library(L"err"));
  if (function_of(folded)) return call_language(e, folded);
  if (const std::wstring_view host = host_name(folded); !host.empty()) return put(host);
  raise_of(500, e.text);
}

void Emitter::raise_of(int number, std::wstring_view name) {
  put(fmt::format(L"{}({}, ", library(L"raise"), number));
  out_.put_string(name);
  put(L")");
}

// What a page that declares its names asks of one that nothing declares.
void Emitter::raise_unknown(std::wstring_view name) {
  put(library(L"unknown") + L"(");
  out_.put_string(name);
  put(L")");
}

void Emitter::me(const Expression* taker) {
  if (procedure_->in || is_fragment_) return put(L"this");
  uses_me_ = true;
  if (!taker || taker->kind != Expression::name || variable_text(taker->text).empty()) {
    leaks_global_ = true;
    return put(L"$me");
  }
  put(L"$zelto_given($me, " + variable_text(taker->text) + L")");
}

void Emitter::instance(const Expression& e) {
  const std::wstring folded = base::folded(e.text);
  const auto top = names_.top.names.find(folded);
  if (top != names_.top.names.end() && top->second.kind == Symbol::class_) {
    return put(library(L"make") + L"(" + top->second.text + L"())");
  }
  if (folded != L"regexp" && (names_.makes_code || is_fragment_)) {
    put(fmt::format(L"{0}((typeof {1} === \"undefined\" ? () => ", library(L"make"), class_text(e.text)));
    raise_of(506, e.text);
    return put(fmt::format(L" : {})())", class_text(e.text)));
  }
  if (folded == L"regexp") return put(library(L"regexp") + L"()");
  raise_of(506, e.text);
}

void Emitter::call(Expression& e, bool is_statement) {
  Expression& callee = *e.parts[0];
  out_.at(e.place);
  if (callee.kind == Expression::name) return call_name(e, callee);
  if (callee.kind == Expression::member) return call_member(e, callee, is_statement);
  index([&] { value(callee); }, e);
}

void Emitter::call_name(Expression& e, Expression& callee) {
  const std::wstring folded = base::folded(callee.text);
  if (const auto* member = find_member(folded)) return own_member(*member, e, true);
  const Symbol* const symbol = find(folded);
  if (!symbol) return call_language(e, folded);
  if ((symbol->kind == Symbol::procedure || symbol->kind == Symbol::result) && symbol->called) {
    const ProcedureInfo& called = *symbol->called;
    if (!called.in) return call_procedure(called, called.text, e);
    return call_procedure(called, fmt::format(L"this[\"{}\"]", called.text), e);
  }
  if (symbol->kind == Symbol::class_) return name(callee);
  if (symbol->is_implicit && !names_.assigned.contains(folded)) return raise_of(13, callee.text);
  if (symbol->kind == Symbol::external) return index([&] { name(callee); }, e);
  const Emit variable = [&] { put(symbol->is_reference ? symbol->text + L".v" : symbol->text); };
  index([&] { are_still(e) ? variable() : kept(variable); }, e);
}

// "1" or "2" of so many arguments, for which there is a quicker way.
std::wstring Emitter::count_of_plain(const Expression& e) const {
  const std::size_t count = e.parts.size() - 1;
  const bool is_quick = (count == 1 || (count == 2 && !is_fragment_ && !counts_)) &&
                        std::ranges::all_of(e.parts, [](const ExpressionPtr& part) { return part != nullptr; });
  return is_quick ? std::to_wstring(count) : std::wstring();
}

// what(…) where it is a value: an element, the default member, a function of somebody's.
void Emitter::index(const Emit& what, Expression& e) {
  kept([&] {
    put(library(L"ix" + count_of_plain(e)) + L"(");
    what();
    for (std::size_t i = 1; i < e.parts.size(); ++i) {
      put(L", ");
      argument(e.parts[i].get(), false, nullptr);
    }
    put(L")");
  });
}

void Emitter::call_language(Expression& e, std::wstring_view folded) {
  Expression& named = e.kind == Expression::call ? *e.parts[0] : e;
  const Function* const known = function_of(folded);
  if (!known) {
    if (e.kind != Expression::call) return language_name(named, folded);
    return index([&] { language_name(named, folded); }, e);
  }
  const std::size_t count = e.kind == Expression::call ? e.parts.size() - 1 : 0;
  if (count < known->fewest || count > known->most) {
    return raise_of(450, named.text);
  }
  if (folded == L"getref") return get_reference(e);
  if (folded == L"eval") {
    put(L"eval(" + library(L"compile") + L"(");
    value(*e.parts[1]);
    put(L", 0, ");
    put_names();
    return put(L"))");
  }
  if (real_value(e, [&] { call_language(e, folded); })) return;
  put(folded == L"createobject" ? library(L"create") : function(folded));
  put(L"(");
  if (e.kind == Expression::call) arguments(e, [](std::size_t) { return false; });
  put(L")");
}

void Emitter::get_reference(Expression& e) {
  Expression& wanted = *e.parts[1];
  put(library(L"getref") + L"(");
  names_procedures_ = true;
  put(L"$named(");
  value(wanted);
  put(L"))");
}

void Emitter::call_procedure(const ProcedureInfo& procedure, std::wstring_view callee, Expression& e) {
  const std::size_t count = e.kind == Expression::call ? e.parts.size() - 1 : 0;
  if (count != procedure.references.size()) {
    return raise_of(450, e.kind == Expression::call ? e.parts[0]->text : e.text);
  }
  pools_ = true;
  put(callee);
  put(L"(");
  if (e.kind == Expression::call) arguments(e, [&](std::size_t i) { return procedure.references[i]; });
  put(L")");
}

void Emitter::arguments(Expression& e, const std::function<bool(std::size_t)>& is_reference) {
  const Expression* taker = nullptr;
  const Expression& callee = *e.parts[0];
  if (callee.kind == Expression::member && !callee.parts.empty()) taker = callee.parts[0].get();
  for (std::size_t i = 1; i < e.parts.size(); ++i) {
    if (i > 1) put(L", ");
    argument(e.parts[i].get(), is_reference(i - 1), taker);
  }
}

void Emitter::argument(Expression* e, bool is_reference, const Expression* taker) {
  if (is_reference && e) return reference(*e);
  if (is_reference) return put(library(L"temp") + L"(" + library(L"missing") + L")");
  if (!e) return put(library(L"missing"));
  if (e->kind == Expression::me && taker) return me(taker);
  value(*e);
}

// A variable, a parameter that is one already, an element of an array; of anything else its value.
void Emitter::reference(Expression& e) {
  if (e.kind == Expression::name) {
    const Symbol* const symbol = find(base::folded(e.text));
    if (symbol && symbol->is_reference) return put(symbol->text);
    if (const std::wstring text = variable_text(e.text); !text.empty()) {
      return put(reference_to(text));
    }
  }
  const bool is_element = e.kind == Expression::call && e.parts.size() > 1 && e.parts[0]->kind == Expression::name &&
                          !variable_text(e.parts[0]->text).empty();
  if (is_element) {
    put(library(L"refix") + L"(");
    kept([&] { put(variable_text(e.parts[0]->text)); });
    put(L", ");
    arguments(e, [](std::size_t) { return false; });
    return put(L")");
  }
  put(library(L"temp") + L"(");
  value(e);
  put(L")");
}

void Emitter::member_object(Expression& member, bool is_at_once) {
  if (!member.parts.empty()) return is_at_once ? value_at_once(*member.parts[0]) : value(*member.parts[0]);
  if (!withs_.empty()) return put(withs_.back());
  put(library(L"raise") + L"(505)");
}

// Of the host's objects that nearly every page has.
bool Emitter::call_known_member(Expression& e, Expression& member, bool is_statement) {
  if (member.parts.empty() || member.parts[0]->kind != Expression::name) return false;
  const std::wstring folded = base::folded(member.parts[0]->text);
  if (is_own_name(folded) || e.kind != Expression::call || e.parts.size() != 2 || !e.parts[1]) return false;
  if (is_statement && folded == L"response" && base::equal_ascii(member.text, L"write")) {
    put(library(L"write") + L"(");
    value(*e.parts[1]);
    put(L")");
    return true;
  }
  const bool is_html = base::equal_ascii(member.text, L"htmlencode");
  if (folded != L"server" || (!is_html && !base::equal_ascii(member.text, L"urlencode"))) return false;
  const bool is_text = type_of(*e.parts[1]) == Type::text;
  put(is_html ? L"$zelto_html_encode(Server, " : L"$zelto_url_encode(Server, ");
  if (!is_text) put(library(L"text") + L"(");
  value(*e.parts[1]);
  put(is_text ? L")" : L"))");
  return true;
}

// object.Name, object.Name(…)
void Emitter::call_member(Expression& e, Expression& member, bool is_statement) {
  out_.at(member.place);
  if (call_known_member(e, member, is_statement)) return;
  const std::wstring folded = base::folded(member.text);
  const auto known = names_.method_references.find(folded);
  const auto is_reference = [&](std::size_t i) {
    const Expression* const argument = e.parts[i + 1].get();
    if (!argument || argument->kind == Expression::parenthesized) return false;
    if (argument->kind == Expression::call && gives_answer(folded, i)) return true;  // an element
    return known != names_.method_references.end() && i < known->second.size() && known->second[i];
  };
  const bool is_known = is_of_library(member);
  const unsigned places = is_known ? 0 : asked_places(e, is_reference);
  const bool asks = places != 0 || (!is_known && hands_reference(e, is_reference));
  const std::wstring result = places != 0 && !is_statement ? temporary() : std::wstring();
  if (places != 0) put(L"(");
  if (!result.empty()) put(result + L" = ");
  if (counts_ && !is_statement) put(library(L"keep") + L"(");
  const bool may_be_own = !is_known || member.parts[0]->kind == Expression::me;
  const std::wstring quick =
      may_be_own && !hands_reference(e, is_reference) ? quick_call(e, member, places) : std::wstring();
  put((!quick.empty() ? quick : library(asks ? L"ask" : is_statement ? L"call" : L"get")) + L"(");
  member_object(member, e.kind != Expression::call || are_still(e));
  if (quick.empty()) {
    put(L", ");
    out_.put_string(member.text);
    if (asks) put(fmt::format(L", {}", places));
  }
  if (e.kind == Expression::call && e.parts.size() > 1) {
    put(L", ");
    arguments(e, is_reference);
  }
  put(counts_ && !is_statement ? L"))" : L")");
  if (places == 0) return;
  take_answers(e, places);
  put(result.empty() ? L")" : L", " + result + L")");
}

void Emitter::own_member(const ClassInfo::Member& member, Expression& e, bool has_arguments) {
  if (member.field) {
    const Emit field = [&] { kept([&] { put(fmt::format(L"this[\"{}\"]", member.key)); }); };
    return has_arguments ? index(field, e) : field();
  }
  const ProcedureInfo* const called = member.method ? member.method : member.get;
  if (!called) {
    return raise_of(450, e.kind == Expression::call ? e.parts[0]->text : e.text);
  }
  const std::wstring callee = fmt::format(L"this[\"{}\"]", called->text);
  // A property without parameters gives what is indexed then.
  if (has_arguments && called->references.empty() && e.parts.size() > 1) {
    return index([&] { put(callee + L"()"); }, e);
  }
  call_procedure(*called, callee, e);
}

}  // namespace zelto::vbscript
