// The loops of a script.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "language/tokens.h"

namespace zelto::language {

class Loops : private TokenText {
 public:
  Loops(std::wstring_view text, const std::vector<Token>& tokens);

  // Whether token `i` begins a loop: `do` and its `while` are one. `for (… of …)` is left out, which asks for the next
  // item in each round.
  bool begins(std::size_t i) const;

 private:
  bool is_statement(std::size_t i, const wchar_t* keyword) const;
  bool goes_through(std::size_t loop) const;
  bool find_whiles(std::size_t first);
  std::size_t past_bracket(std::size_t open) const;
  std::size_t past_plain(std::size_t first) const;

  std::vector<bool> ends_do_;    // whether a `while` is that of a `do`
  std::vector<bool> is_known_;   // whether the `while` of a `do` has been looked for
  bool has_unknown_do_ = false;  // whose `while` stands in no place of its own: then no `while` is taken for a loop
};

}  // namespace zelto::language
