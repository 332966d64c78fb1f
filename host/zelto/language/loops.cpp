#include "language/loops.h"

#include <algorithm>

namespace zelto::language {

Loops::Loops(std::wstring_view text, const std::vector<Token>& tokens)
    : TokenText(text, tokens), ends_do_(tokens.size()), is_known_(tokens.size()) {
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    if (!is_statement(i, L"do") || is_known_[i]) continue;
    if (!find_whiles(i)) has_unknown_do_ = true;
  }
}

bool Loops::is_statement(std::size_t i, const wchar_t* keyword) const {
  return i < tokens_.size() && tokens_[i].kind == Token::keyword && tokens_[i].statement_start && is(i, keyword);
}

bool Loops::begins(std::size_t i) const {
  if (is_statement(i, L"for")) return !goes_through(i);
  if (is_statement(i, L"while")) return !has_unknown_do_ && !ends_do_[i];
  return is_statement(i, L"do");
}

bool Loops::goes_through(std::size_t loop) const {
  const std::size_t open = is(loop + 1, L"(") ? loop + 1 : loop + 2;
  if (!is(open, L"(") || tokens_[open].partner == Token::kNone) return false;
  for (std::size_t i = open + 2; i < tokens_[open].partner; ++i) {
    if (is(i, L"of") && tokens_[i].depth == tokens_[open].depth + 1 && tokens_[i].kind == Token::name) return true;
    if (is(i, L";")) return false;
  }
  return false;
}

// Behind the bracket that opens there; the end of the text when none does.
std::size_t Loops::past_bracket(std::size_t open) const {
  const bool is_one = open < tokens_.size() && tokens_[open].kind == Token::open;
  return is_one && tokens_[open].partner != Token::kNone ? tokens_[open].partner + 1 : tokens_.size();
}

// Behind a statement that has no other one for its end.
std::size_t Loops::past_plain(std::size_t first) const {
  if (is_statement(first, L"try")) {
    std::size_t i = past_bracket(first + 1);
    if (is(i, L"catch")) i = is(i + 1, L"(") ? past_bracket(past_bracket(i + 1)) : past_bracket(i + 1);
    return is(i, L"finally") ? past_bracket(i + 1) : i;
  }
  if (is_statement(first, L"switch")) return past_bracket(past_bracket(first + 1));
  if (is(first, L"{")) return past_bracket(first);
  for (std::size_t i = first; i < tokens_.size();) {
    if (is(i, L";")) return i + 1;
    if ((i > first && tokens_[i].statement_start) || tokens_[i].kind == Token::close) return i;
    i = tokens_[i].kind == Token::open ? past_bracket(i) : i + 1;
  }
  return tokens_.size();
}

// Finds the `while` of a `do`, and of those in its body that are in no block. False where there is none in its place.
//
// A statement that ends may be the end of those that it is the last part of: they wait in a list, for that alone or for
// an `else` or a `while`.
bool Loops::find_whiles(std::size_t first) {
  enum Part : unsigned char { last, before_else, before_while };
  std::vector<Part> around;
  std::size_t i = first;
  do {
    if (is_statement(i, L"do")) {
      is_known_[i++] = true;
      around.push_back(before_while);
      continue;
    }
    if (is_statement(i, L"if") || is_statement(i, L"for") || is_statement(i, L"while") || is_statement(i, L"with")) {
      around.push_back(is(i, L"if") ? before_else : last);
      i = past_bracket(is(i + 1, L"await") ? i + 2 : i + 1);
      continue;
    }
    if (is(i + 1, L":") && tokens_[i].kind == Token::name) {
      i += 2;
      continue;
    }
    i = past_plain(i);
    for (bool has_ended = true; has_ended && !around.empty();) {
      const Part part = around.back();
      around.pop_back();
      if (part == before_else && is(i, L"else")) {
        around.push_back(last);
        ++i;
        has_ended = false;
      } else if (part == before_while) {
        if (i >= tokens_.size() || !is(i, L"while")) return false;
        ends_do_[i] = true;
        i = past_bracket(i + 1);
        if (is(i, L";")) ++i;
      }
    }
  } while (!around.empty() && i < tokens_.size());
  return around.empty();
}

}  // namespace zelto::language
