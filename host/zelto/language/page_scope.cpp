#include "language/page_scope.h"

#include <korlib_host/unicode.h>

#include <algorithm>
#include <array>

namespace zelto::language {
namespace {

// Names that make code of text, have something happen after the page, or lead to who called it.
constexpr auto kUnsafe =
    std::to_array<std::wstring_view>({L"Atomics", L"FinalizationRegistry", L"Function", L"SharedArrayBuffer",
                                      L"WeakRef", L"caller", L"eval", L"import"});
// Names that look behind properties: where the global object is handed around, it is seen what is behind them.
constexpr auto kRevealing = std::to_array<std::wstring_view>(
    {L"__defineGetter__", L"__defineSetter__", L"__lookupGetter__", L"__lookupSetter__", L"defineProperties",
     L"defineProperty", L"getOwnPropertyDescriptor", L"getOwnPropertyDescriptors"});
// Names by which a page may change what is not looked at after each page.
constexpr auto kHiding =
    std::to_array<std::wstring_view>({L"Reflect", L"Symbol", L"__proto__", L"constructor", L"getOwnPropertySymbols"});
// Names that lead to the global object: also what a method's super stands for, where that is called as a function, and
// what an object's valueOf answers then.
constexpr auto kLeadingToGlobal = std::to_array<std::wstring_view>({L"globalThis", L"super", L"this", L"valueOf"});
// Names of the function that the page becomes.
constexpr auto kOfFunction = std::to_array<std::wstring_view>({L"$zelto_i", L"$zelto_page", L"$zelto_v", L"$zelto_w"});
// Names of values that a variable of theirs would hide.
constexpr auto kConstants = std::to_array<std::wstring_view>({L"Infinity", L"NaN", L"undefined"});

bool is_among(const auto& words, std::wstring_view text) { return std::ranges::find(words, text) != words.end(); }

class ScopeReader : private TokenText {
 public:
  using TokenText::TokenText;

  PageScope read() {
    PageScope scope;
    scope.declares_lexical_names = false;
    bool is_unsafe_page = false;
    bool reveals = false;
    bool hands_global_around = false;
    bool makes_code = false;
    bool leads_to_global = false;
    for (std::size_t i = 0; i < tokens_.size(); ++i) {
      const std::wstring_view named =
          tokens_[i].kind == Token::literal && !is_constant(i) ? inside_of(word(i)) : word(i);
      is_unsafe_page |= is_unsafe(i, named);
      reveals |= is_among(kRevealing, named);
      hands_global_around |= is_whole_global(i);
      leads_to_global |= is_among(kLeadingToGlobal, named) ||
                         (is_among(kLeadingToGlobal, word(i)) && taker_of_this(*this, i) == Token::kNone);
      // Code that is made of text sees what the global object has, which lexical names are not among.
      makes_code |= (named == L"constructor" && !is_constructor_member(i)) || (is_whole_global(i) && is(i + 1, L"["));
      scope.may_hide |=
          is_among(kHiding, named) || (named == L"Object" && !is(i + 1, L".")) || is(i, L"super") || is_made_name(i);
      if (!declares_lexically(i)) continue;
      scope.declares_lexical_names = true;
      add_candidates(i, &scope.lexical_candidates);
    }
    scope.may_hide |= reveals || makes_code;
    scope.can_be_function =
        !is_unsafe_page && !(reveals && hands_global_around) && !(makes_code && !scope.lexical_candidates.empty());
    read_directive(&scope);
    scope.may_share_world = scope.can_be_function && !scope.may_hide && !leads_to_global;
    return scope;
  }

 private:
  bool is_unsafe(std::size_t i, std::wstring_view named) const {
    if (is_among(kUnsafe, named)) {
      return named != L"Function" || tokens_[i].kind == Token::literal || !is_harmless_function(i);
    }
    // (function () {}).constructor("…")
    if (named == L"constructor" && tokens_[i].kind == Token::literal) return true;
    if (named == L"constructor" && !is_constructor_member(i)) return is(i + 1, L"(", L".");
    if (is_constant(i)) {
      return is(i - 1, L"var") || is(i + 1, L"=") || (is(i - 1, L",") && is(i + 1, L","));
    }
    if (tokens_[i].kind != Token::name && tokens_[i].kind != Token::keyword) return false;
    // Any name may be written with a backslash.
    return named.find(L'\\') != std::wstring_view::npos || is_among(kOfFunction, named);
  }
  bool is_constant(std::size_t i) const { return is_among(kConstants, word(i)); }

  // The global object, but for the name of one of its properties.
  bool is_whole_global(std::size_t i) const {
    return is(i, L"this", L"globalThis") && !is(i - 1, L".") && !is(i + 1, L".");
  }

  // Whether a name is put together in brackets, o["define" + what], or looked up in what an expression gives,
  // (function () {})[name]: it may be any.
  bool is_made_name(std::size_t i) const {
    if (!is(i, L"[") || i == 0) return false;
    if (tokens_[i - 1].kind != Token::name && !is(i - 1, L")", L"]", L"}", L"?.")) return false;
    const bool is_single = is(i + 2, L"]");
    if (is_single && tokens_[i + 1].kind == Token::literal) return false;
    if (is(i - 1, L")", L"}")) return true;
    for (std::size_t at = i + 1, open = 1; at < tokens_.size() && !is_single; ++at) {
      open += is(at, L"[");
      open -= is(at, L"]");
      if (open == 0) return false;
      if (std::wstring_view(L"\"'`").find(word(at).front()) != std::wstring_view::npos) return true;
    }
    return false;
  }

  // constructor() { … } of a class.
  bool is_constructor_member(std::size_t i) const {
    return tokens_[i].kind == Token::name && !is(i - 1, L".", L"?.") && is(i + 1, L"(");
  }

  // Of a string; empty for any other literal.
  static std::wstring_view inside_of(std::wstring_view literal) {
    const bool is_string =
        literal.size() >= 2 && std::wstring_view(L"\"'`").find(literal.front()) != std::wstring::npos;
    return is_string ? literal.substr(1, literal.size() - 2) : std::wstring_view();
  }

  // `x instanceof Function`, Function.prototype.
  bool is_harmless_function(std::size_t i) const {
    if (is(i - 1, L"instanceof")) return true;
    return is(i + 1, L".") && is(i + 2, L"prototype");
  }

  bool declares_lexically(std::size_t i) const {
    return tokens_[i].depth == 0 && tokens_[i].statement_start && is(i, L"let", L"const", L"class");
  }

  // Names that are none of the declaration's are found out by whoever asks for them.
  void add_candidates(std::size_t declaration, std::vector<std::u16string>* names) const {
    for (std::size_t i = declaration + 1; i < tokens_.size(); ++i) {
      const Token& token = tokens_[i];
      if (token.depth == 0 && token.statement_start) return;
      if (token.kind == Token::name && !is(i - 1, L".")) names->push_back(korlib::to_utf16(word(i)));
      if (is(declaration, L"class") && token.kind == Token::name) return;
    }
  }

  void read_directive(PageScope* scope) const {
    if (tokens_.empty() || tokens_[0].kind != Token::literal) return;
    const std::wstring_view first = word(0);
    if (first.front() != L'"' && first.front() != L'\'') return;
    scope->is_strict = first.substr(1, first.size() - 2) == L"use strict" && ends_statement(1);
    // A directive that is not known may have another one after it.
    if (!scope->is_strict && ends_statement(1)) scope->can_be_function = false;
  }
};

}  // namespace

std::size_t taker_of_this(const TokenText& text, std::size_t i) {
  if (!text.is(i, L"this")) return Token::kNone;
  const bool is_given = text.is(i - 1, L"(") && text.is(i + 1, L")");
  const bool is_set = text.is(i - 1, L"=") && text.ends_statement(i + 1);
  if (i < 4 || (!is_given && !is_set)) return Token::kNone;
  const std::size_t taker = i - 4;
  const bool is_statement = text.token(taker).statement_start;
  const wchar_t first = text.word(i - 2).front();
  const bool is_member =
      text.is(i - 3, L".") && text.token(i - 2).kind == Token::name && first >= L'A' && first <= L'Z';
  const bool is_object = text.token(taker).kind == Token::name && !text.is(taker - 1, L".", L"?.", L"new");
  return is_member && is_object && (is_given || is_statement) ? taker : Token::kNone;
}

PageScope page_scope(std::wstring_view text, const std::vector<Token>& tokens) {
  return ScopeReader(text, tokens).read();
}

}  // namespace zelto::language
