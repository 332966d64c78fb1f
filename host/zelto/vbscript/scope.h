// Which name means what.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "vbscript/tree.h"
#include "vbscript/uses.h"

namespace zelto::vbscript {

struct ProcedureInfo;
struct ClassInfo;

struct Symbol {
  enum Kind : unsigned char {
    unknown,
    variable,
    constant,
    result,  // of the function whose name it is
    procedure,
    class_,
    script,    // a name of the page's script in the other language
    external,  // nobody's, which code that is made while the script runs may declare
    member,    // of the class around
  };
  Kind kind = unknown;
  std::wstring text;  // as it is written
  Type type = Type::any;
  bool is_implicit = false;   // nobody has declared it
  bool is_outer = false;      // of the script around this one
  bool is_reference = false;  // a parameter whose value is in its `v`
  const ProcedureInfo* called = nullptr;
  const ClassInfo* made = nullptr;
  const Expression* value = nullptr;  // of a constant
  Place place{};                      // of its declaration
};

using Names = std::map<std::wstring, Symbol, std::less<>>;  // by their folded form

struct ProcedureInfo {
  const Procedure* tree = nullptr;  // null: the top level
  const ClassInfo* in = nullptr;
  std::wstring text;  // of its function
  Names names;
  std::vector<bool> references;  // of its parameters
  Uses uses;
};

struct ClassInfo {
  struct Member {
    std::wstring key;  // of a field or method
    const Declared* field = nullptr;
    ProcedureInfo* method = nullptr;
    ProcedureInfo* get = nullptr;
    ProcedureInfo* let = nullptr;
    ProcedureInfo* set = nullptr;
    bool is_private = false;
  };
  const Class* tree = nullptr;
  std::wstring text;  // of the function that makes it
  std::map<std::wstring, Member, std::less<>> members;
  std::deque<ProcedureInfo> procedures;
};

struct ScriptNames {
  ProcedureInfo top;
  std::deque<ProcedureInfo> procedures;
  std::deque<ClassInfo> classes;
  bool is_explicit = false;
  bool makes_code = false;          // or is made itself while a script runs
  std::set<std::wstring> assigned;  // by anybody, or handed to somebody
  // Variables of the top level that procedures assign to.
  std::set<std::wstring> assigned_from_within;
  bool has_endings() const;                                                  // whether a class has a Class_Terminate
  std::map<std::wstring, std::vector<bool>, std::less<>> method_references;  // by the method's folded name
};

// The function that makes a class: in small letters, as code that is made while the script runs may name it.
std::wstring class_text(std::wstring_view name);

// Whether the members of that name, of objects of the host or a component, assign to that argument.
bool gives_answer(std::wstring_view member, std::size_t position);

// Whether what is called there may assign to the variable that it is given, as far as that is known: objects of
// components that nothing is known of may do so too.
bool takes_reference(const ScriptNames& names, const ProcedureInfo& in, const Uses::Passed& one);

// Throws CompileError for a name that is declared twice. `others`: names that the page's script in the other language
// declares at top level.
std::unique_ptr<ScriptNames> find_names(const Script& script, const std::vector<std::wstring>& others,
                                        const Names& outer = {}, bool is_fragment = false);

}  // namespace zelto::vbscript
