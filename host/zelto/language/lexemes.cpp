#include "language/lexemes.h"

#include <algorithm>
#include <array>

#include "base/ascii.h"

namespace zelto::language {
namespace {

constexpr auto kKeywords = std::to_array<std::wstring_view>(
    {L"await",    L"break",  L"case",   L"catch", L"class",      L"const",   L"continue", L"debugger",
     L"default",  L"delete", L"do",     L"else",  L"export",     L"extends", L"finally",  L"for",
     L"function", L"if",     L"import", L"in",    L"instanceof", L"new",     L"return",   L"switch",
     L"throw",    L"try",    L"typeof", L"var",   L"void",       L"while",   L"with",     L"yield"});
constexpr auto kOperandWords = std::to_array<std::wstring_view>({L"this", L"null", L"true", L"false", L"super"});
constexpr auto kControlWords =
    std::to_array<std::wstring_view>({L"if", L"while", L"for", L"with", L"switch", L"catch"});
// Longest first.
constexpr auto kPunctuators = std::to_array<std::wstring_view>(
    {L">>>=", L"...", L"===", L"!==", L"**=", L"<<=", L">>=", L">>>", L"&&=", L"||=", L"?\?=",
     L"=>",   L"==",  L"!=",  L"<=",  L">=",  L"&&",  L"||",  L"??",  L"?.",  L"++",  L"--",
     L"+=",   L"-=",  L"*=",  L"/=",  L"%=",  L"&=",  L"|=",  L"^=",  L"<<",  L">>",  L"**"});

template <class List>
bool contains(const List& list, std::wstring_view word) {
  return std::ranges::find(list, word) != list.end();
}

wchar_t char_at(std::wstring_view text, std::size_t at) { return at < text.size() ? text[at] : L'\0'; }
bool is_exponent(wchar_t c) { return base::ascii_lower(c) == L'e'; }

// Digits, letters and, where the number may have one, an exponent with its sign.
std::size_t past_digits(std::wstring_view text, std::size_t at, bool has_exponent) {
  while (is_word(char_at(text, at))) {
    ++at;
    const wchar_t sign = char_at(text, at);
    if (has_exponent && is_exponent(text[at - 1]) && (sign == L'+' || sign == L'-')) ++at;
  }
  return at;
}

}  // namespace

bool is_blank(wchar_t c) {
  return c == L' ' || c == L'\t' || c == 0x0B || c == 0x0C || c == 0xA0 || c == 0xFEFF || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200A) || c == 0x202F || c == 0x205F || c == 0x3000;
}

bool is_word(wchar_t c) {
  return base::is_alphanumeric(c) || c == L'_' || c == L'$' || c == L'\\' ||
         (c >= 0x80 && !is_blank(c) && !is_line_end(c));
}

bool is_keyword(std::wstring_view word) { return contains(kKeywords, word); }
bool is_operand_word(std::wstring_view word) { return contains(kOperandWords, word); }
bool is_control_word(std::wstring_view word) { return contains(kControlWords, word); }

bool is_plain_name(std::wstring_view text) {
  const auto may_stand_in_name = [](wchar_t c) {
    return base::is_alphanumeric(c) || c == L'_' || c == L'$' || (c >= 0xAA && c < 0x2000);
  };
  if (text.empty() || base::is_digit(text.front()) || text.starts_with(L"$zelto")) return false;
  if (!std::ranges::all_of(text, may_stand_in_name)) return false;
  return !is_keyword(text) && !is_operand_word(text) && text != L"enum";
}

std::size_t past_string(std::wstring_view text, std::size_t at) {
  const wchar_t quote = text[at];
  for (++at; at < text.size() && text[at] != quote; ++at) {
    if (text[at] == L'\n' || text[at] == L'\r') return kOpen;
    if (text[at] != L'\\' || at + 1 >= text.size()) continue;
    ++at;
    if (text[at] == L'\r' && char_at(text, at + 1) == L'\n') ++at;
  }
  return at < text.size() ? at + 1 : kOpen;
}

std::size_t past_number(std::wstring_view text, std::size_t at) {
  const wchar_t second = char_at(text, at + 1);
  const bool prefixed = text[at] == L'0' && is_word(second) && !base::is_digit(second) && !is_exponent(second);
  const bool octal = text[at] == L'0' && base::is_digit(second);
  const bool decimal = !prefixed && !octal;
  const std::size_t end = past_digits(text, at, decimal);
  const bool whole = text.substr(at, end - at).find_first_of(L"eEn") == std::wstring_view::npos;
  return decimal && whole && char_at(text, end) == L'.' ? past_digits(text, end + 1, true) : end;
}

std::size_t past_regular_expression(std::wstring_view text, std::size_t at) {
  bool in_class = false;
  for (++at; at < text.size() && (in_class || text[at] != L'/'); ++at) {
    if (is_line_end(text[at])) return kOpen;
    if (text[at] == L'\\')
      ++at;
    else if (text[at] == L'[')
      in_class = true;
    else if (text[at] == L']')
      in_class = false;
  }
  if (at >= text.size()) return kOpen;
  return past_digits(text, at + 1, false);
}

std::size_t past_word(std::wstring_view text, std::size_t at) {
  const std::size_t begin = at;
  for (; at < text.size() && (at == begin || is_word(text[at])); ++at) {
    if (text[at] != L'\\' || char_at(text, at + 2) != L'{') continue;
    at = text.find(L'}', at);
    if (at == kOpen) return kOpen;
  }
  return at;
}

std::size_t past_template_part(std::wstring_view text, std::size_t from) {
  for (std::size_t at = from; at < text.size(); ++at) {
    if (text[at] == L'\\') {
      ++at;
    } else if (text[at] == L'`') {
      return at + 1;
    } else if (text[at] == L'$' && char_at(text, at + 1) == L'{') {
      return at + 2;
    }
  }
  return kOpen;
}

std::size_t past_line(std::wstring_view text, std::size_t at) {
  while (at < text.size() && !is_line_end(text[at])) ++at;
  return at;
}

std::wstring_view punctuator_at(std::wstring_view text, std::size_t at) {
  for (const std::wstring_view known : kPunctuators) {
    if (!text.substr(at).starts_with(known)) continue;
    if (known == L"?." && base::is_digit(char_at(text, at + 2))) continue;  // a ? .5 : 1
    return known;
  }
  return text.substr(at, 1);
}

}  // namespace zelto::language
