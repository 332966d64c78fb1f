// The variables of a script: where each is declared, and what it is given.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "language/chains.h"

namespace zelto::check {

// Functions have variables of their own, blocks do not: what is declared in one counts as the function's.
class Variables : public language::Chains {
 public:
  struct Variable {
    std::vector<std::size_t> values;  // the tokens with which they begin; they end with their expression
    bool has_others = false;          // it is a parameter, a function, part of a pattern and the like
  };

  // Both outlive it.
  Variables(std::wstring_view text, const std::vector<language::Token>& tokens);

  // Of a name that is no member's; null where nothing is assigned to it.
  const Variable* find(std::size_t name) const;
  // Whether the script gives names a value in ways that its words do not tell.
  bool are_uncertain() const { return are_uncertain_; }

 private:
  struct Function {
    std::size_t outer;
    std::set<std::wstring_view> declared;
  };
  using Key = std::pair<std::size_t, std::wstring_view>;  // the function's number, and the name

  bool is_variable(std::size_t i) const;
  bool is_parameters(std::size_t open) const;
  bool is_pattern(std::size_t open) const;
  std::size_t body_of(std::size_t parameters) const;
  void find_functions();
  void find_declarations();
  bool declares(std::size_t i) const;
  void declare_list(std::size_t keyword);
  void declare_names(std::size_t begin, std::size_t end, std::size_t function);
  void find_values();
  void read_name(std::size_t i, bool is_in_pattern);
  void read_whole_script(std::size_t i);
  Key key_of(std::size_t name) const;

  std::vector<Function> functions_;       // the script itself first
  std::vector<std::size_t> function_of_;  // of each token
  std::map<Key, Variable> variables_;
  bool are_uncertain_ = false;
};

}  // namespace zelto::check
