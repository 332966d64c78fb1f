#include "language/spreads.h"

namespace zelto::language {

Spreads::Spreads(std::wstring_view text, const std::vector<Token>& tokens)
    : TokenText(text, tokens), values_(tokens.size()) {
  struct Bracket {
    std::size_t open;
    bool takes;
  };
  std::vector<Bracket> around;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    if (tokens[i].kind == Token::open) {
      around.push_back({i, takes(i, !around.empty() && around.back().takes)});
    } else if (tokens[i].kind == Token::close) {
      if (!around.empty()) around.pop_back();
    } else if (is(i, L"...") && !around.empty()) {
      values_[i] = !around.back().takes && is(around.back().open, L"[", L"(") && i + 1 < tokens.size();
    }
  }
}

// Whether what stands in the bracket may get a value.
bool Spreads::takes(std::size_t open, bool does_outside) const {
  const Token& token = tokens_[open];
  const std::size_t behind = token.partner + 1;
  if (is(open, L"(")) {
    if (token.control) return is(open - 1, L"catch");
    return token.function_part || is(behind, L"=>", L"{");  // the latter of a method
  }
  return !token.function_part && (does_outside || is(behind, L"=", L"of", L"in"));
}

}  // namespace zelto::language
