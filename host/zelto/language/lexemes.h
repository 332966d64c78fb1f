// The words of the language's surface and where each ends. What a word means where it stands, and whether
// a slash begins one, is the tokenizer's to know.
#pragma once

#include <cstddef>
#include <string_view>

namespace zelto::language {

inline constexpr std::size_t kOpen = std::wstring_view::npos;  // the text ends before the word does

constexpr bool is_line_end(wchar_t c) { return c == L'\n' || c == L'\r' || c == 0x2028 || c == 0x2029; }
// Whether a line ends with the character that stands there: of "\r\n" the second.
template <class Char>
constexpr bool ends_line(std::basic_string_view<Char> text, std::size_t at) {
  return is_line_end(static_cast<wchar_t>(text[at])) &&
         !(text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n');
}
bool is_blank(wchar_t c);  // and no line end
bool is_word(wchar_t c);   // may stand in a name; a backslash begins an escape in one

bool is_keyword(std::wstring_view word);  // reserved, and no operand
bool is_operand_word(std::wstring_view word);
bool is_control_word(std::wstring_view word);  // has parentheses after it, and a statement after those
// Whether it can be put into source text as a name of the page's own. Letters beyond U+1FFF do not count.
bool is_plain_name(std::wstring_view text);

// Each begins at `at` and answers one past the end; kOpen where that is missing.
std::size_t past_string(std::wstring_view text, std::size_t at);
std::size_t past_number(std::wstring_view text, std::size_t at);
std::size_t past_regular_expression(std::wstring_view text, std::size_t at);
std::size_t past_word(std::wstring_view text, std::size_t at);
// From inside of a template to past its end, or past the "${" of its next substitution.
std::size_t past_template_part(std::wstring_view text, std::size_t from);
std::size_t past_line(std::wstring_view text, std::size_t at);

std::wstring_view punctuator_at(std::wstring_view text, std::size_t at);

}  // namespace zelto::language
