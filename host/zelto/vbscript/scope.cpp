#include "vbscript/scope.h"

#include <algorithm>
#include <utility>

#include "base/letter_case.h"
#include "vbscript/compile_error.h"
#include "vbscript/constants.h"
#include "vbscript/functions.h"
#include "vbscript/names.h"

namespace zelto::vbscript {
namespace {

[[noreturn]] void fail(Fault fault, Place at) { throw CompileError{fault, at.line, at.column}; }

// At the later of the two, in whichever order they are looked at.
[[noreturn]] void fail_redefined(Place one, Place other) {
  const bool is_later = std::pair(one.line, one.column) > std::pair(other.line, other.column);
  fail(Fault::name_redefined, is_later ? one : other);
}

bool is_language_name(const std::wstring& folded) {
  return constant_of(folded) || function_of(folded) || !host_name(folded).empty() || folded == L"err" ||
         folded == L"regexp" || folded == L"execute" || folded == L"executeglobal";
}

class Finder {
 public:
  Finder(const Script& script, const std::vector<std::wstring>& others, const Names& outer, bool is_fragment)
      : script_(script) {
    names_->top.names = outer;
    names_->makes_code = is_fragment;
    names_->is_explicit = script.is_explicit;
    for (const std::wstring& other : others) {
      names_->top.names[base::folded(other)] = {.kind = Symbol::script, .text = other};
    }
  }

  std::unique_ptr<ScriptNames> run() {
    names_->top.uses = uses_of(script_.body);
    declare_all(names_->top);
    for (const Class& one : script_.classes) declare_class(one);
    for (const Procedure& one : script_.procedures) declare_procedure(one);
    note_uses(names_->top.uses);
    for (ProcedureInfo* one : all_) note_uses(one->uses);
    add_implicit(names_->top);
    for (ProcedureInfo* one : all_) add_implicit(*one);
    find_references();
    for (ProcedureInfo* one : all_) note_assigned(*one);
    return std::move(names_);
  }

 private:
  bool is_top(const ProcedureInfo& of) const { return &of == &names_->top; }

  // What Dim, Const and ReDim declare.
  void declare_all(ProcedureInfo& in) {
    for (const Declared* one : in.uses.variables) {
      declare(in, *one, {.kind = Symbol::variable, .text = script_name(one->name, is_top(in))});
    }
    for (const Declared* one : in.uses.constants) {
      declare(in, *one,
              {.kind = Symbol::constant, .text = script_name(one->name, is_top(in)), .value = one->value.get()});
    }
  }
  static void declare(ProcedureInfo& in, const Declared& one, Symbol symbol) {
    Symbol& known = in.names[base::folded(one.name)];
    const bool is_free = known.kind == Symbol::unknown || known.kind == Symbol::script || known.is_outer;
    if (!is_free) fail_redefined(known.place, one.place);
    symbol.place = one.place;
    if (known.kind == Symbol::external) symbol.text = known.text;
    known = std::move(symbol);
  }

  // The last of several procedures of a name is the one.
  void declare_procedure(const Procedure& tree) {
    const std::wstring folded = base::folded(tree.name);
    Symbol& known = names_->top.names[folded];
    const bool is_free = known.kind == Symbol::unknown || known.kind == Symbol::script ||
                         known.kind == Symbol::procedure || known.is_outer;
    if (!is_free) fail_redefined(known.place, tree.place);
    // The functions of the language that both are in would be one; the first is never called.
    if (numbers_.contains(folded)) names_->procedures[numbers_[folded]].text += L"$old";
    numbers_[folded] = names_->procedures.size();
    ProcedureInfo& info = names_->procedures.emplace_back();
    // In the letters that the script around it has.
    info.text = known.kind == Symbol::external ? known.text : script_name(tree.name, true);
    known = {.kind = Symbol::procedure, .text = info.text, .called = &info, .place = tree.place};
    fill(info, tree, nullptr);
  }

  void fill(ProcedureInfo& info, const Procedure& tree, const ClassInfo* in) {
    info.tree = &tree;
    info.in = in;
    info.references.assign(tree.parameters.size(), false);
    info.uses = uses_of(tree.body);
    for (const Parameter& one : tree.parameters) {
      info.names[base::folded(one.name)] = {.kind = Symbol::variable, .text = script_name(one.name, false)};
    }
    if (tree.kind == Procedure::function || tree.kind == Procedure::get) {
      Symbol& result = info.names[base::folded(tree.name)];
      if (result.kind != Symbol::unknown) fail(Fault::name_redefined, tree.place);
      result = {.kind = Symbol::result, .text = L"$r", .called = &info};
    }
    declare_all(info);
    all_.push_back(&info);
  }

  void declare_class(const Class& tree) {
    const std::wstring folded = base::folded(tree.name);
    const auto known = names_->top.names.find(folded);
    if (known != names_->top.names.end() && !known->second.is_outer) {
      fail_redefined(known->second.place, tree.place);
    }
    ClassInfo& info = names_->classes.emplace_back();
    info.tree = &tree;
    info.text = class_text(tree.name);
    names_->top.names[folded] = {.kind = Symbol::class_, .text = info.text, .made = &info, .place = tree.place};
    for (const Declared& field : tree.fields) {
      ClassInfo::Member& member = info.members[base::folded(field.name)];
      if (member.field) fail_redefined(member.field->place, field.place);
      member.field = &field;
      member.is_private = field.is_private;
      member.key = (field.is_private ? L"- " : L"") + base::folded(field.name);
    }
    bool has_default = false;
    for (const Procedure& procedure : tree.members) {
      if (procedure.is_default && std::exchange(has_default, true)) fail(Fault::multiple_defaults, procedure.place);
      declare_member(info, procedure);
    }
    check_accessors(info);
  }

  void declare_member(ClassInfo& in, const Procedure& tree) {
    const std::wstring folded = base::folded(tree.name);
    const bool is_event = folded == L"class_initialize" || folded == L"class_terminate";
    if (is_event && !tree.parameters.empty()) fail(Fault::initialize_has_arguments, tree.place);
    ClassInfo::Member& member = in.members[folded];
    ProcedureInfo*& place = tree.kind == Procedure::get   ? member.get
                            : tree.kind == Procedure::let ? member.let
                            : tree.kind == Procedure::set ? member.set
                                                          : member.method;
    const bool is_accessor = &place != &member.method;
    const bool has_other = is_accessor ? member.method != nullptr : member.get || member.let || member.set;
    if (member.field) fail_redefined(member.field->place, tree.place);
    if (place || has_other) fail(Fault::name_redefined, tree.place);
    ProcedureInfo& info = in.procedures.emplace_back();
    place = &info;
    member.is_private = tree.is_private;
    static constexpr std::wstring_view kPrefixes[] = {L"", L"", L"get ", L"let ", L"set "};
    info.text = (tree.is_private && !is_event ? L"- " : L"") + std::wstring(kPrefixes[tree.kind]) + folded;
    if (!is_accessor) member.key = info.text;
    fill(info, tree, &in);
  }

  // Let and Set have one argument more than Get: the value.
  static void check_accessors(const ClassInfo& in) {
    for (const auto& [name, member] : in.members) {
      for (const ProcedureInfo* put : {member.let, member.set}) {
        if (!put) continue;
        const ProcedureInfo* const other = member.get ? member.get : member.let;
        const std::size_t extra = member.get ? 1 : 0;
        if (other && put->tree->parameters.size() != other->tree->parameters.size() + extra) {
          fail(Fault::inconsistent_arguments, put->tree->place);
        }
      }
    }
  }

  // Names that nobody has declared. ReDim declares one also where all must be.
  void add_implicit(ProcedureInfo& in) {
    for (const Declared* one : in.uses.redimmed) add_variable(in, one->name, false);
    if (names_->is_explicit && !names_->makes_code) return;
    for (const Expression* one : in.uses.names) {
      if (!is_language_name(base::folded(one->text))) add_variable(in, one->text, names_->is_explicit);
    }
  }
  void add_variable(ProcedureInfo& in, const std::wstring& name, bool must_be_declared) {
    const std::wstring folded = base::folded(name);
    if (in.names.contains(folded) || names_->top.names.contains(folded)) return;
    if (in.in && in.in->members.contains(folded)) return;
    if (names_->makes_code && (must_be_declared || !targets_.contains(folded))) {
      names_->top.names[folded] = {.kind = Symbol::external, .text = script_name(name, true)};
    } else {
      in.names[folded] = {.kind = Symbol::variable, .text = script_name(name, is_top(in)), .is_implicit = true};
    }
  }

  void note_uses(const Uses& uses) {
    names_->makes_code |= uses.makes_code;
    names_->assigned.insert(uses.assigned.begin(), uses.assigned.end());
    targets_.insert(uses.assigned.begin(), uses.assigned.end());
    for (const Uses::Passed& one : uses.passed) {
      names_->assigned.insert(one.name);
      if (is_of_script(*one.callee)) targets_.insert(one.name);
    }
  }

  // Whether a procedure or method of the script may be meant, which may assign to its parameters.
  bool is_of_script(const Expression& callee) const {
    const std::wstring folded = base::folded(callee.text);
    if (callee.kind == Expression::name) return !is_language_name(folded);
    return std::ranges::any_of(names_->classes, [&](const ClassInfo& one) { return one.members.contains(folded); });
  }

  void note_assigned(const ProcedureInfo& in) {
    for (const std::wstring& name : in.uses.assigned) {
      if (!in.names.contains(name)) names_->assigned_from_within.insert(name);
    }
    for (const Uses::Passed& one : in.uses.passed) {
      const bool is_assigned = one.callee->kind == Expression::member || takes_reference(*names_, in, one);
      if (is_assigned && !in.names.contains(one.name)) names_->assigned_from_within.insert(one.name);
    }
  }

  // Which parameters are references: those that are assigned to, or handed on to one that is.
  void find_references() {
    for (ProcedureInfo* one : all_) {
      for (std::size_t i = 0; i < one->references.size(); ++i) {
        const Parameter& parameter = one->tree->parameters[i];
        if (parameter.by_value) continue;
        if (one->uses.makes_code || one->uses.assigned.contains(base::folded(parameter.name))) mark(*one, i);
      }
    }
    while (std::exchange(has_changed_, false)) {
      for (ProcedureInfo* one : all_) hand_on(*one);
    }
    for (ProcedureInfo* one : all_) {
      for (std::size_t i = 0; i < one->references.size(); ++i) {
        if (one->references[i]) one->names[base::folded(one->tree->parameters[i].name)].is_reference = true;
      }
    }
  }

  void mark(ProcedureInfo& in, std::size_t parameter) {
    const bool is_accessor = in.tree->kind == Procedure::let || in.tree->kind == Procedure::set;
    // The value that a property is given is nobody's variable.
    if (is_accessor && parameter + 1 == in.references.size()) return;
    if (in.references[parameter]) return;
    in.references[parameter] = true;
    has_changed_ = true;
    if (!in.in || in.tree->is_private) return;
    auto& known = names_->method_references[base::folded(in.tree->name)];
    if (known.size() <= parameter) known.resize(parameter + 1);
    known[parameter] = true;
  }

  // To an object of the host only where the parameter says ByRef, or the member is known: what is a reference costs its
  // callers a function each time.
  void hand_on(ProcedureInfo& in) {
    for (const Uses::Passed& one : in.uses.passed) {
      if (!takes_reference(*names_, in, one) && one.callee->kind != Expression::member) continue;
      for (std::size_t i = 0; i < in.references.size(); ++i) {
        const Parameter& parameter = in.tree->parameters[i];
        if (base::folded(parameter.name) != one.name || parameter.by_value) continue;
        if (parameter.by_reference || takes_reference(*names_, in, one)) mark(in, i);
      }
    }
  }

  const Script& script_;
  std::unique_ptr<ScriptNames> names_ = std::make_unique<ScriptNames>();
  std::vector<ProcedureInfo*> all_;
  std::map<std::wstring, std::size_t> numbers_;  // of procedures
  std::set<std::wstring> targets_;               // what is assigned to, or may be by a procedure that it is handed to
  bool has_changed_ = true;
};

}  // namespace

std::wstring class_text(std::wstring_view name) { return L"$class_" + script_name(base::folded(name), false); }

bool ScriptNames::has_endings() const {
  return std::ranges::any_of(classes, [](const ClassInfo& one) { return one.members.contains(L"class_terminate"); });
}

bool gives_answer(std::wstring_view member, std::size_t position) {
  const std::wstring folded = base::folded(member);
  if (folded == L"fireevent") return position == 1 || position == 2;
  if (folded == L"execute") return position > 0;  // the first one is a statement, nearly always
  return position == 0 && (folded == L"nextrecordset" || folded == L"binaryread");
}

bool takes_reference(const ScriptNames& names, const ProcedureInfo& in, const Uses::Passed& one) {
  const std::wstring folded = base::folded(one.callee->text);
  if (one.callee->kind == Expression::member) {
    if (gives_answer(folded, one.position)) return true;
    const auto known = names.method_references.find(folded);
    return known != names.method_references.end() && one.position < known->second.size() && known->second[one.position];
  }
  if (one.callee->kind != Expression::name) return false;
  const ProcedureInfo* callee = nullptr;
  if (in.in) {
    const auto member = in.in->members.find(folded);
    if (member != in.in->members.end()) callee = member->second.method ? member->second.method : member->second.get;
  }
  if (!callee) {
    const auto known = names.top.names.find(folded);
    if (known != names.top.names.end()) callee = known->second.called;
  }
  return callee && one.position < callee->references.size() && callee->references[one.position];
}

std::unique_ptr<ScriptNames> find_names(const Script& script, const std::vector<std::wstring>& others,
                                        const Names& outer, bool is_fragment) {
  return Finder(script, others, outer, is_fragment).run();
}

}  // namespace zelto::vbscript
