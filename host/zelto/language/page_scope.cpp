#include "language/page_scope.h"

#include <korlib_host/unicode.h>

#include <algorithm>
#include <array>

namespace zelto::language {
namespace {

// Names that make code of text, or have something happen after the page.
constexpr auto kUnsafe = std::to_array<std::wstring_view>(
    {L"Atomics", L"FinalizationRegistry", L"Function", L"SharedArrayBuffer", L"WeakRef", L"eval", L"import"});

constexpr auto kHiding = std::to_array<std::wstring_view>(
    {L"Symbol", L"__defineGetter__", L"__defineSetter__", L"defineProperties", L"defineProperty"});

bool is_among(const auto& words, std::wstring_view text) { return std::ranges::find(words, text) != words.end(); }

class ScopeReader {
 public:
  ScopeReader(std::wstring_view text, const std::vector<Token>& tokens) : text_(text), tokens_(tokens) {}

  PageScope read() {
    PageScope scope;
    scope.can_be_function = true;
    for (std::size_t i = 0; i < tokens_.size(); ++i) {
      if (is_unsafe(i)) scope.can_be_function = false;
      if (is_among(kHiding, tokens_[i].kind == Token::literal ? inside_of(word(i)) : word(i)))
        scope.may_hide_names = true;
      if (declares_lexically(i)) add_candidates(i, &scope.lexical_candidates);
    }
    read_directive(&scope);
    return scope;
  }

 private:
  std::wstring_view word(std::size_t i) const {
    return i < tokens_.size() ? text_.substr(tokens_[i].begin, tokens_[i].end - tokens_[i].begin) : std::wstring_view();
  }

  bool is_unsafe(std::size_t i) const {
    const std::wstring_view found = word(i);
    if (tokens_[i].kind == Token::literal) return is_unsafe_text(found);
    if (tokens_[i].kind != Token::name && tokens_[i].kind != Token::keyword) return false;
    if (found.find(L'\\') != std::wstring_view::npos) return true;  // any name may be written so
    if (found == L"Function") return !is_harmless_function(i);
    // (function () {}).constructor("…")
    if (found == L"constructor") return word(i - 1) == L"." && (word(i + 1) == L"(" || word(i + 1) == L".");
    return is_among(kUnsafe, found);
  }

  // globalThis["eval"]
  static bool is_unsafe_text(std::wstring_view literal) {
    const std::wstring_view inside = inside_of(literal);
    return inside == L"constructor" || is_among(kUnsafe, inside);
  }

  // Of a string; empty for any other literal.
  static std::wstring_view inside_of(std::wstring_view literal) {
    const bool is_string =
        literal.size() >= 2 && std::wstring_view(L"\"'`").find(literal.front()) != std::wstring::npos;
    return is_string ? literal.substr(1, literal.size() - 2) : std::wstring_view();
  }

  // `x instanceof Function`, Function.prototype.
  bool is_harmless_function(std::size_t i) const {
    if (i > 0 && word(i - 1) == L"instanceof") return true;
    return word(i + 1) == L"." && word(i + 2) == L"prototype" && word(i + 3) != L".constructor";
  }

  bool declares_lexically(std::size_t i) const {
    const std::wstring_view found = word(i);
    return tokens_[i].depth == 0 && tokens_[i].statement_start &&
           (found == L"let" || found == L"const" || found == L"class");
  }

  // Names that are none of the declaration's are found out by whoever asks for them.
  void add_candidates(std::size_t declaration, std::vector<std::u16string>* names) const {
    for (std::size_t i = declaration + 1; i < tokens_.size(); ++i) {
      const Token& token = tokens_[i];
      if (token.depth == 0 && token.statement_start) return;
      if (token.kind == Token::name && word(i - 1) != L".") names->push_back(korlib::to_utf16(word(i)));
      if (word(declaration) == L"class" && token.kind == Token::name) return;
    }
  }

  void read_directive(PageScope* scope) const {
    if (tokens_.empty() || tokens_[0].kind != Token::literal) return;
    const std::wstring_view first = word(0);
    if (first.front() != L'"' && first.front() != L'\'') return;
    scope->is_strict = first.substr(1, first.size() - 2) == L"use strict" && ends_statement(1);
    // A directive that is not known may have another one behind it.
    if (!scope->is_strict && ends_statement(1)) scope->can_be_function = false;
  }

  bool ends_statement(std::size_t i) const {
    return i >= tokens_.size() || tokens_[i].statement_start || word(i) == L";";
  }

  std::wstring_view text_;
  const std::vector<Token>& tokens_;
};

}  // namespace

PageScope page_scope(std::wstring_view text, const std::vector<Token>& tokens) {
  return ScopeReader(text, tokens).read();
}

}  // namespace zelto::language
