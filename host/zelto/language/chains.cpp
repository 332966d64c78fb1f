#include "language/chains.h"

#include <algorithm>
#include <array>

namespace zelto::language {
namespace {

constexpr auto kAssignments =
    std::to_array<std::wstring_view>({L"=", L"+=", L"-=", L"*=", L"/=", L"%=", L"**=", L"<<=", L">>=", L">>>=", L"&=",
                                      L"|=", L"^=", L"&&=", L"||=", L"?\?="});

}  // namespace

std::size_t Chains::end_of(std::size_t first) const {
  if (first >= tokens_.size()) return first;
  std::size_t& known = ends_[first];
  if (known == Token::kNone) known = find_end(first);
  return known;
}

std::size_t Chains::find_end(std::size_t first) const {
  const Token& token = tokens_[first];
  const bool starts =
      token.kind == Token::name || is(first, L"this") || (is(first, L"(") && !token.control && !token.function_part);
  if (!starts) return first;
  std::size_t i = (token.kind == Token::open ? token.partner : first) + 1;
  while (i < tokens_.size()) {
    if (is(i, L".") && i + 1 < tokens_.size() && tokens_[i + 1].kind == Token::name) {
      i += 2;
    } else if (is(i, L"(", L"[") && tokens_[i].kind == Token::open && !tokens_[i].statement_start) {
      i = tokens_[i].partner + 1;
    } else {
      break;
    }
  }
  return i;
}

std::size_t Chains::find_start(std::size_t last) const {
  std::size_t i = last;
  for (;;) {
    if (starts_[i] != Token::kNone) return starts_[i];
    if (tokens_[i].kind == Token::close) {
      i = tokens_[i].partner;
      const bool indexes = is(i, L"(", L"[") || text_[tokens_[i].begin] == L'`';
      if (!indexes || i == 0 || !tokens_[i - 1].ends_operand || tokens_[i].statement_start) return i;
      --i;
    } else if (i >= 2 && is(i - 1, L".", L"?.") && tokens_[i - 2].ends_operand) {
      i -= 2;
    } else if (tokens_[i].kind == Token::literal && text_[tokens_[i].begin] == L'`' && i > 0 &&
               tokens_[i - 1].ends_operand) {
      --i;
    } else {
      return i;
    }
  }
}

bool Chains::is_operand(std::size_t start) const {
  const Token::Kind kind = tokens_[start].kind;
  return kind != Token::keyword && kind != Token::punctuator && !is(start - 1, L".", L"?.");
}

bool Chains::is_call(std::size_t open) const {
  if (open == Token::kNone) return false;
  const Token& token = tokens_[open];
  return is(open, L"(") && open > 0 && !token.control && !token.function_part && tokens_[open - 1].ends_operand &&
         !is(open - 1, L"super");
}

bool Chains::is_assignment(std::size_t i) const {
  return std::ranges::find(kAssignments, word(i)) != kAssignments.end();
}

bool Chains::expression_ends(std::size_t i) const {
  if (i >= tokens_.size() || tokens_[i].statement_start) return true;
  const Token& next = tokens_[i];
  return is(i, L";") || (next.kind == Token::close && next.end > next.begin) ||
         (next.newline_before && next.kind == Token::open && is(i, L"{"));
}

}  // namespace zelto::language
