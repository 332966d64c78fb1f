// Chains of names, calls and indices among the tokens of a script: `a.b(c)[d].e`.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "language/tokens.h"

namespace zelto::language {

// Answers for token `i` of a text that may be no script at all: a dot may stand after nothing.
class Chains : public TokenText {
 public:
  Chains(std::wstring_view text, const std::vector<Token>& tokens)
      : TokenText(text, tokens), starts_(tokens.size(), Token::kNone), ends_(tokens.size(), Token::kNone) {}

  // One past the chain that begins at `first`; `first` when there is none.
  std::size_t end_of(std::size_t first) const;
  // The first token of the chain that `last` ends.
  std::size_t start_of(std::size_t last) const { return starts_[last] = find_start(last); }

  // Whether a chain starts there with a value, and with one that can be handed to a function.
  bool is_operand(std::size_t start) const;
  bool starts_with_value(std::size_t start) const { return is_operand(start) && !is(start, L"{", L"super"); }

  // The `(` of an argument list: what stands before it is a value, and no header or parameter list.
  bool is_call(std::size_t open) const;
  // `=`, `+=` and the like.
  bool is_assignment(std::size_t i) const;
  // `++` or `--` after its operand.
  bool is_postfix(std::size_t i) const { return is(i, L"++", L"--") && tokens_[i].ends_operand; }
  // Whether an expression that ends before token `i` is complete there.
  bool expression_ends(std::size_t i) const;

 private:
  std::size_t find_end(std::size_t first) const;
  std::size_t find_start(std::size_t last) const;

  // What was found out, so that long chains and those inside each other are walked once.
  mutable std::vector<std::size_t> starts_;  // kNone where it was not asked for
  mutable std::vector<std::size_t> ends_;    // likewise
};

}  // namespace zelto::language
