// Procedures, classes and what stands in front of all.
#include <fmt/xchar.h>

#include <algorithm>
#include <utility>

#include "base/letter_case.h"
#include "vbscript/emitter.h"
#include "vbscript/operators.h"

namespace zelto::vbscript {
namespace {

std::wstring joined(const std::vector<std::wstring>& parts) {
  std::wstring all;
  for (const std::wstring& part : parts) all += (all.empty() ? L"" : L", ") + part;
  return all;
}

bool is_before(Place a, Place b) { return a.line != b.line ? a.line < b.line : a.column < b.column; }

bool has_result(const Procedure& tree) { return tree.kind == Procedure::function || tree.kind == Procedure::get; }

std::wstring places_of(const std::vector<bool>& references) {
  std::vector<std::wstring> places;
  for (std::size_t i = 0; i < references.size(); ++i) {
    if (references[i]) places.push_back(std::to_wstring(i));
  }
  return L"[" + joined(places) + L"]";
}
bool has_reference(const ProcedureInfo& info) {
  return std::ranges::find(info.references, true) != info.references.end();
}

}  // namespace

// In the order of the text, in which the lines stay.
void Emitter::emit(Script& script) {
  begin_doubles();
  auto statements = script.body.begin();
  auto classes = script.classes.begin();
  auto class_infos = names_.classes.begin();
  auto procedures = script.procedures.begin();
  auto infos = names_.procedures.begin();
  const auto write_before = [&](Place place) {
    for (; statements != script.body.end() && is_before((*statements)->place, place); ++statements) {
      statement(**statements);
    }
  };
  while (classes != script.classes.end() || procedures != script.procedures.end()) {
    const bool is_class = procedures == script.procedures.end() ||
                          (classes != script.classes.end() && is_before(classes->place, procedures->place));
    write_before(is_class ? classes->place : procedures->place);
    if (is_class) {
      class_(*class_infos++, *classes++);
    } else {
      procedure(*infos++, *procedures++);
    }
  }
  for (; statements != script.body.end(); ++statements) statement(**statements);
  // Code that is made while the script runs may have such a class.
  if ((names_.has_endings() || names_.makes_code) && !is_fragment_) put(library(L"terminate") + L"(); ");
}

void Emitter::procedure(const ProcedureInfo& info, Procedure& tree) {
  out_.at(tree.place);
  put(L"function " + info.text);
  procedure_body(info, tree);
  if (has_reference(info)) {
    top_references_.push_back(library(L"byref") + L"(" + info.text + L", " + places_of(info.references) + L")");
  }
}

// From the parameters on.
void Emitter::procedure_body(const ProcedureInfo& info, Procedure& tree) {
  const ProcedureInfo* const outer = std::exchange(procedure_, &info);
  auto outer_temporaries = std::exchange(temporaries_, {});
  auto outer_loops = std::exchange(loops_, {});
  auto outer_withs = std::exchange(withs_, {});
  auto outer_holders = std::exchange(all_holders_, {});
  std::vector<std::wstring> parameters;
  for (const Parameter& one : tree.parameters) parameters.push_back(info.names.at(base::folded(one.name)).text);
  put(L"(" + joined(parameters) + L") { ");
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (info.references[i]) put(parameters[i] + L" = " + library(L"arg") + L"(" + parameters[i] + L"); ");
    if (tree.parameters[i].by_value) put(parameters[i] + L" = " + library(L"own") + L"(" + parameters[i] + L"); ");
  }
  if (counts_) begin_counting(info);
  std::vector<std::wstring> locals = declare_locals(info);
  const auto outer_doubles = doubles_;
  begin_doubles();
  if (counts_) put(L"try { ");
  block(tree.body);
  out_.at(tree.end);
  if (has_result(tree)) put(L"return $r; ");
  if (counts_) end_counting(info, std::move(locals));
  if (!temporaries_.empty()) put(L"var " + joined(temporaries_) + L"; ");
  put(L"} ");
  procedure_ = outer;
  temporaries_ = std::move(outer_temporaries);
  loops_ = std::move(outer_loops);
  withs_ = std::move(outer_withs);
  doubles_ = outer_doubles;
  all_holders_ = std::move(outer_holders);
}

std::wstring Emitter::initial_of(const Declared& declared, bool is_variable) {
  if (!declared.is_array) return {};
  const bool holds = counts_ && is_variable;  // an instance holds its fields itself
  std::wstring text = library(L"dim") + (declared.bounds.empty() ? L"(false" : L"(true");
  for (const ExpressionPtr& bound : declared.bounds) text += fmt::format(L", {}", static_cast<long long>(bound->value));
  return L" = " + (holds ? library(L"hold") + L"(" + text + L"))" : text + L")");
}

std::vector<std::wstring> Emitter::declare_locals(const ProcedureInfo& info) {
  std::vector<std::wstring> all;
  std::vector<std::wstring> locals;
  const auto declare = [&](const std::wstring& name, const std::wstring& initial) {
    locals.push_back(name);
    all.push_back(name + initial);
  };
  if (has_result(*info.tree)) declare(L"$r", {});
  if (info.uses.has_resume) all.push_back(L"$resume = false");
  std::set<std::wstring> known;
  for (const Parameter& one : info.tree->parameters) known.insert(base::folded(one.name));
  for (const Declared* one : info.uses.variables) {
    known.insert(base::folded(one->name));
    declare(info.names.at(base::folded(one->name)).text, initial_of(*one, true));
  }
  for (const auto& [folded, symbol] : info.names) {
    if (symbol.kind == Symbol::variable && !known.contains(folded)) declare(symbol.text, {});
  }
  if (!all.empty()) put(L"var " + joined(all) + L"; ");
  return locals;
}

// Made when it is first used: a class of the language is not there before its text is.
void Emitter::class_(const ClassInfo& info, Class& tree) {
  out_.at(tree.place);
  const std::wstring made = L"$made" + info.text;
  top_variables_.push_back(made);
  put(fmt::format(L"function {0}() {{ return {1} === undefined ? {1} = class extends {2} {{ ", info.text, made,
                  library(L"Instance")));
  constructor(info);
  put(L"get [\" name\"]() { return ");
  out_.put_string(tree.name);
  put(L"; } ");
  auto infos = info.procedures.begin();
  std::vector<std::wstring> references;
  for (Procedure& one : tree.members) {
    const ProcedureInfo& member = *infos++;
    out_.at(one.place);
    if (one.is_default) put(fmt::format(L"get [\" default\"]() {{ return \"{}\"; }} ", base::folded(one.name)));
    put(fmt::format(L"[\"{}\"]", member.text));
    procedure_body(member, one);
    if (!has_reference(member)) continue;
    references.push_back(
        fmt::format(L"{}(this.prototype[\"{}\"], {}); ", library(L"byref"), member.text, places_of(member.references)));
  }
  out_.at(tree.end);
  quick_members(info);
  if (!references.empty()) {
    put(L"static { ");
    for (const std::wstring& one : references) put(one);
    put(L"} ");
  }
  put(L"} : " + made + L"; } ");
}

void Emitter::constructor(const ClassInfo& info) {
  put(L"constructor() { super(); ");
  for (const Declared& field : info.tree->fields) {
    const std::wstring initial = initial_of(field, false);
    const std::wstring& key = info.members.at(base::folded(field.name)).key;
    put(fmt::format(L"this[\"{}\"]{}; ", key, initial.empty() ? L" = undefined" : initial));
  }
  put(L"} ");
}

std::wstring Emitter::library(std::wstring_view name) {
  if (counts_) note_pooled(name);
  // Assigning to elements counts.
  const bool is_counted = counts_ && (name.starts_with(L"put") || name == L"val");
  const Operation* const own = is_fragment_ || is_counted ? nullptr : operation_of(name);
  (own ? operations_ : library_).emplace(name);
  if (own && !own->needs.empty()) library(own->needs);
  return L"$" + std::wstring(name);
}

std::wstring Emitter::function(std::wstring_view name) {
  pools_ = true;
  functions_.emplace(name);
  return L"$f_" + std::wstring(name);
}

std::wstring Emitter::boxed(std::wstring_view kind, double value) {
  const std::wstring made = fmt::format(L"$zelto_vb.{}({})", kind, value);
  const auto known = std::ranges::find(boxes_, made);
  const auto number = known - boxes_.begin();
  if (known == boxes_.end()) boxes_.push_back(made);
  return L"$n" + std::to_wstring(number);
}

// The variables of the top level, which a component may look up.
void Emitter::declare_top(std::wstring& text) {
  std::vector<std::wstring> variables;
  std::set<std::wstring> known;
  for (const Declared* one : names_.top.uses.variables) {
    const std::wstring folded = base::folded(one->name);
    known.insert(folded);
    variables.push_back(names_.top.names.at(folded).text + initial_of(*one, true));
  }
  for (const auto& [folded, symbol] : names_.top.names) {
    const bool is_own = symbol.kind == Symbol::variable && !symbol.is_outer;
    if (is_own && !known.contains(folded)) variables.push_back(symbol.text);
  }
  // Whoever comes later knows the constants of code that was made while the script runs.
  for (const Declared* one : names_.top.uses.constants) {
    if (!is_fragment_) break;
    const ScriptWriter kept = std::exchange(out_, ScriptWriter());
    value(*one->value);
    const std::wstring written = std::exchange(out_, kept).text();
    variables.push_back(names_.top.names.at(base::folded(one->name)).text + L" = " + written);
  }
  if (!variables.empty()) text += L"var " + joined(variables) + L"; ";
}

// Which function GetRef means.
std::wstring Emitter::named_procedures() {
  std::vector<std::wstring> entries{L"__proto__: null"};
  for (const auto& [folded, symbol] : names_.top.names) {
    if (symbol.kind == Symbol::procedure) {
      entries.push_back(fmt::format(L"[\"{}\"]: {}({})", folded, library(L"exact"), symbol.text));
    }
    if (symbol.kind == Symbol::script) {
      entries.push_back(fmt::format(L"[\"{0}\"]: typeof {1} === \"function\" ? {1} : undefined", folded, symbol.text));
    }
  }
  const std::wstring made = names_.makes_code ? L" ?? $zelto_vb.made($v)" : L"";
  return L", $named = $v => ({" + joined(entries) + L"})[" + function(L"lcase") + L"($v)]" + made;
}

std::wstring Emitter::head() {
  const std::wstring top = names_top_ ? names_of_top() : std::wstring();  // which may need more of the library
  std::wstring declared;
  declare_top(declared);
  const std::wstring named = names_procedures_ ? named_procedures() : std::wstring();
  if (counts_) library_.insert({L"pool", L"drain"});
  std::vector<std::wstring> parts;
  for (const std::wstring& one : library_) parts.push_back(fmt::format(L"{0}: ${0}", one));
  std::wstring text = counts_ && !is_fragment_ ? L"$zelto_vb.count(); " : L"";
  text += L"const {" + joined(parts) + L"} = $zelto_vb";
  if (counts_) text += L", $p = $zelto_vb.pool.length";
  if (!functions_.empty()) {
    parts.clear();
    for (const std::wstring& one : functions_) parts.push_back(fmt::format(L"{0}: $f_{0}", one));
    text += L", {" + joined(parts) + L"} = $zelto_vb.fn";
  }
  for (const std::wstring& one : operations_) text += fmt::format(L", ${} = {}", one, operation_of(one)->text);
  for (std::size_t i = 0; i < boxes_.size(); ++i) text += fmt::format(L", $n{} = {}", i, boxes_[i]);
  for (std::size_t i = 0; i < member_functions_.size(); ++i) {
    text += fmt::format(L", $m{} = {}", i, member_functions_[i]);
  }
  if (names_top_) text += L", $names = " + top;
  if (uses_me_) text += L", $me = this";
  text += named + L"; ";
  std::vector<std::wstring> variables = top_variables_;
  variables.insert(variables.end(), temporaries_.begin(), temporaries_.end());
  if (names_.top.uses.has_resume) variables.emplace_back(L"$resume = false");
  if (counts_) variables.emplace_back(L"$new");
  if (!variables.empty()) text += L"let " + joined(variables) + L"; ";
  text += declared;
  for (const std::wstring& one : top_references_) text += one + L"; ";
  return text;
}

}  // namespace zelto::vbscript
