// Writes a script as JavaScript.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "vbscript/scope.h"
#include "vbscript/script_writer.h"
#include "vbscript/tree.h"

namespace zelto::vbscript {

// What is generated has names with a dollar in front, which no name of a script has: $add and the like are those of the
// library (script/vbscript/library.h), $f_left its functions, $m1 what calls a member, $t1 values between statements,
// $L1 labels, $r the result of a function, $d_x whether the number in x is a Double, $resume whether the next statement
// follows a failing one.
class Emitter {
 public:
  // `is_alone`: nothing but this script knows its variables.
  Emitter(const ScriptNames& names, bool is_alone) : names_(names), procedure_(&names.top), is_alone_(is_alone) {}

  void emit(Script& script);
  // Of Eval.
  void emit_value(Expression& expression) { value(expression); }

  // What stands in front of all: the parts of the library that are used, and the variables of the top level.
  std::wstring head();
  // Of ExecuteGlobal: what tells the library of the names that are declared.
  std::wstring declaration();
  // What is written stands in code that is made while a script runs.
  void set_fragment() { is_fragment_ = true; }
  // References to instances are counted.
  void set_counting() { counts_ = true; }
  // Whether the global object goes anywhere but to an object that is told so.
  bool leaks_global() const { return leaks_global_; }
  ScriptWriter& writer() { return out_; }

 private:
  using Emit = std::function<void()>;

  // --- expressions: emit_expression.cpp
  Type type_of(Expression& e);
  Type find_type(Expression& e);
  Type type_of_name(std::wstring_view name);
  Type type_of_operation(Expression& e);
  Type type_of_call(const Expression& e);
  void value(Expression& e);      // as it is: an object, an array of somebody's
  void let_value(Expression& e);  // what Let assigns
  void set_value(Expression& e);  // what Set does
  void condition(Expression& e);
  void truth(Expression& e);
  void literal(const Expression& e);
  void number(const Expression& e);
  void operation(Expression& e);
  void comparison(Expression& e);
  void infix(std::wstring_view symbol, Expression& e, std::wstring_view tail = L"");
  void call_operation(Expression& e);
  bool is_numeric(Expression& e);
  static int written_as(const Expression& a, const Expression& b);

  // --- the same in place: emit_inline.cpp
  std::wstring plain_variable(const Expression& e) const;
  std::wstring question(Expression& e, bool of_integers);
  bool is_inline(Expression& e);
  bool put_in_place(const std::wstring& asked, std::wstring_view symbol, Expression& e, std::wstring_view behind);
  bool inline_operation(Expression& e, std::wstring_view symbol);
  bool inline_comparison(Expression& e, std::wstring_view symbol);

  // --- with plain numbers for Doubles: emit_real.cpp
  Real real_of(Expression& e);
  Real find_real(Expression& e);
  Real real_of_name(const Expression& e);
  Real real_of_call(const Expression& e);
  Real real_of_operation(Expression& e);
  void plain_number(Expression& e);
  void plain_name(Expression& e);
  void plain_call(Expression& e);
  void find_operands(const Expression& e, std::set<std::wstring>* folded) const;
  static std::wstring mark_of(std::wstring_view text) { return L"$d_" + std::wstring(text); }
  std::wstring mark_of_result(Expression& e, const std::vector<std::wstring>& elements);
  std::set<std::wstring> find_doubles();
  std::set<std::wstring> names_seen_elsewhere();
  void begin_doubles();
  bool is_double(const Expression& e) const;
  void let_double(const Expression& target, Expression& e);
  bool real_value(Expression& e, const Emit& stepwise);

  // --- names and calls: emit_call.cpp
  const Symbol* find(std::wstring_view folded) const;
  const ClassInfo::Member* find_member(std::wstring_view folded) const;
  bool is_own_name(std::wstring_view folded) const;  // not of the language or the host
  void name(Expression& e);
  void language_name(Expression& e, std::wstring_view folded);
  void call(Expression& e, bool is_statement);
  void call_name(Expression& e, Expression& callee);
  void call_language(Expression& e, std::wstring_view folded);
  void call_procedure(const ProcedureInfo& procedure, std::wstring_view callee, Expression& e);
  void call_member(Expression& e, Expression& member, bool is_statement);
  bool call_known_member(Expression& e, Expression& member, bool is_statement);
  void member_object(Expression& member, bool is_at_once);
  bool is_of_library(const Expression& member);
  std::wstring asked_variable(const Expression* argument);
  static bool hands_reference(const Expression& e, const std::function<bool(std::size_t)>& is_reference);
  unsigned asked_places(const Expression& e, const std::function<bool(std::size_t)>& is_reference);
  void take_answers(const Expression& e, unsigned places);
  void index(const Emit& what, Expression& e);
  std::wstring count_of_plain(const Expression& e) const;
  void arguments(Expression& e, const std::function<bool(std::size_t)>& is_reference);
  void argument(Expression* e, bool is_reference, const Expression* taker);
  void reference(Expression& e);
  void me(const Expression* taker);
  void instance(const Expression& e);
  void raise_of(int number, std::wstring_view name);
  void raise_unknown(std::wstring_view name);
  void get_reference(Expression& e);
  void own_member(const ClassInfo::Member& member, Expression& e, bool has_arguments);

  // --- members of the script's own classes: emit_members.cpp
  std::wstring member_function(const std::wstring& text);
  std::wstring quick_call(const Expression& e, const Expression& member, unsigned places);
  std::wstring quick_let(const Expression& member);
  void quick_members(const ClassInfo& info);

  // --- assignments: emit_assignment.cpp
  void assign(Expression& target, bool is_set, const Emit& value);
  void assign_member(Expression& target, bool is_set, const Emit& value);
  void assign_name(Expression& target, bool is_set, const Emit& value);
  void assign_call(Expression& target, bool is_set, const Emit& value);
  bool assign_own_member(const ClassInfo::Member* member, Expression* arguments, bool is_set, const Emit& value);
  std::wstring variable_text(std::wstring_view name);  // empty where it is none

  // --- references to instances: emit_references.cpp
  void note_pooled(std::wstring_view name);
  void kept(const Emit& what);
  void value_at_once(Expression& e);
  std::wstring old_value(const std::wstring& variable) const;
  void store(const std::wstring& variable, const Emit& value);
  std::wstring reference_to(const std::wstring& variable);
  void empty_counter(const std::wstring& variable);
  void drain();
  void drained(bool is_quiet, const Emit& what);
  bool is_quiet(Expression& e);
  bool are_still(const Expression& call);
  std::wstring holder();
  void release_holders(std::size_t from);
  void end_holder();
  void begin_counting(const ProcedureInfo& info);
  static std::vector<std::wstring> counted_parameters(const ProcedureInfo& info);
  void end_counting(const ProcedureInfo& info, std::vector<std::wstring> locals);

  // --- statements: emit_statement.cpp, emit_block.cpp
  void block(Block& statements);
  void statement(Statement& s);
  void simple(Statement& s);
  void redim(Statement& s);
  void erase(Statement& s);
  void exit(const Statement& s);
  void execute(Statement& s);
  void if_(Statement& s);
  void if_resuming(Statement& s);
  void select(Statement& s);
  void test_case(Branch& branch, const std::wstring& subject);
  void for_(Statement& s);
  void count(Statement& s, const std::wstring& text, bool is_counting);
  void loop(Statement& s, const Emit& begin, const std::wstring& test, const std::wstring& next,
            const std::wstring& limit);
  void for_resuming(Statement& s, const Emit& begin, const std::wstring& test, const std::wstring& step,
                    const std::wstring& limit);
  bool is_counter(const Statement& s) const;
  void for_each(Statement& s);
  void do_(Statement& s);
  void with(Statement& s);
  void guarded(const Emit& what, std::wstring_view otherwise = L"");
  void loop_label(bool is_for);

  // --- names for code that is made while the script runs: emit_names.cpp
  void put_names();
  std::wstring names_of_top();
  std::wstring entry_of(std::wstring_view folded, const Symbol& symbol);

  // --- procedures and classes: emit_procedure.cpp
  void procedure(const ProcedureInfo& info, Procedure& tree);
  void procedure_body(const ProcedureInfo& info, Procedure& tree);
  // Their names, that of the result first.
  std::vector<std::wstring> declare_locals(const ProcedureInfo& info);
  std::wstring initial_of(const Declared& declared, bool is_variable);
  void class_(const ClassInfo& info, Class& tree);
  void constructor(const ClassInfo& info);
  void declare_top(std::wstring& text);
  std::wstring named_procedures();

  bool is_resuming() const { return procedure_->uses.has_resume; }
  std::wstring temporary();
  std::wstring label() { return L"$L" + std::to_wstring(++labels_); }
  // A name of the library, which is made to be known.
  std::wstring library(std::wstring_view name);
  std::wstring function(std::wstring_view name);
  std::wstring boxed(std::wstring_view kind, double value);
  void put(std::wstring_view text) { out_.put(text); }

  const ScriptNames& names_;
  const ProcedureInfo* procedure_;
  const bool is_alone_;
  ScriptWriter out_;
  std::set<std::wstring> library_;
  std::set<std::wstring> operations_;
  std::set<std::wstring> functions_;
  std::vector<std::wstring> boxes_;  // how they are made
  std::vector<std::wstring> member_functions_;
  std::vector<std::wstring> temporaries_;     // of the procedure
  std::vector<std::wstring> top_variables_;   // those of Dim with what they begin as
  std::vector<std::wstring> top_references_;  // calls that tell which parameters are references
  std::vector<std::wstring> withs_;
  std::vector<std::wstring> holders_;              // what holds an object for the statements around
  std::vector<std::wstring> all_holders_;          // of the procedure
  std::vector<std::wstring> steady_;               // folded names that nothing but a loop around changes
  std::set<std::wstring> doubles_;                 // folded names of variables that have marks
  std::vector<std::wstring> counters_;             // folded names that are known to be integers here
  std::vector<std::wstring>* elements_ = nullptr;  // where what tells their kind goes: elements as they are stored
  struct Loop {
    bool is_for;
    std::wstring label;
    std::size_t holders;  // that are there around it, or are its own
  };
  std::vector<Loop> loops_;
  unsigned labels_ = 0;
  unsigned temporary_count_ = 0;
  bool leaks_global_ = false;
  bool uses_me_ = false;
  bool names_procedures_ = false;
  bool names_top_ = false;
  bool is_fragment_ = false;
  bool is_stepwise_ = false;  // what is written must do one operation after the other
  bool counts_ = false;
  bool pools_ = false;  // the statement may have something that goes with it
};

}  // namespace zelto::vbscript
