#include "pages/tag_attributes.h"

#include <algorithm>

#include "base/ascii.h"
#include "base/letter_case.h"

namespace zelto::pages {

namespace {

bool is_blank(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n' || c == L'\f'; }
bool is_name(wchar_t c) { return !is_blank(c) && c != L'=' && c != L'>' && c != L'"' && c != L'\'' && c != L'/'; }

// Reads one attribute; `at` moves past it. False when there is none.
bool read_one(std::wstring_view text, std::size_t& at, Attribute& attribute) {
  const std::size_t begin = at;
  while (at < text.size() && is_name(text[at])) ++at;
  if (at == begin) return false;
  attribute.name = text.substr(begin, at - begin);
  attribute.value = {};
  if (const std::size_t equals = skip_blanks(text, at); equals < text.size() && text[equals] == L'=') {
    const std::optional<AttributeValue> value = read_attribute_value(text, at);
    if (!value) return false;
    attribute.value = value->text;
    at = value->end;
  }
  return true;
}

}  // namespace

bool TagAttributes::has(std::wstring_view name) const {
  return std::ranges::any_of(all, [&](const Attribute& attribute) { return base::equal_ascii(attribute.name, name); });
}

std::wstring_view TagAttributes::value_of(std::wstring_view name) const {
  const auto found =
      std::ranges::find_if(all, [&](const Attribute& attribute) { return base::equal_ascii(attribute.name, name); });
  return found == all.end() ? std::wstring_view() : found->value;
}

std::size_t skip_blanks(std::wstring_view text, std::size_t at) {
  while (at < text.size() && is_blank(text[at])) ++at;
  return at;
}

bool has_word(std::wstring_view text, std::size_t at, std::wstring_view word) {
  if (at > text.size() || !base::equal_ascii(text.substr(at, word.size()), word)) return false;
  const std::size_t end = at + word.size();
  if (end >= text.size()) return true;
  return !base::is_alphanumeric(text[end]) && text[end] != L'-' && text[end] != L'_';
}

std::string ascii(std::wstring_view text) {
  std::string out;
  for (const wchar_t c : text) out += c >= L' ' && c < 127 ? static_cast<char>(c) : '?';
  return out;
}

std::optional<Language> language_of(std::wstring_view name) {
  if (base::equal_ascii(name, L"vbscript")) return Language::vbscript;
  const bool is_javascript = std::ranges::any_of(
      std::initializer_list<std::wstring_view>{L"javascript", L"jscript", L"ecmascript", L"livescript"},
      [&](std::wstring_view known) { return base::equal_ascii(name, known); });
  return is_javascript ? std::optional(Language::javascript) : std::nullopt;
}

std::optional<AttributeValue> read_attribute_value(std::wstring_view text, std::size_t at) {
  at = skip_blanks(text, at);
  if (at >= text.size() || text[at] != L'=') return std::nullopt;
  at = skip_blanks(text, at + 1);
  if (at < text.size() && (text[at] == L'"' || text[at] == L'\'')) {
    const std::size_t close = text.find(text[at], at + 1);
    if (close == std::wstring_view::npos) return std::nullopt;
    return AttributeValue{text.substr(at + 1, close - at - 1), close + 1};
  }
  const std::size_t begin = at;
  while (at < text.size() && !is_blank(text[at]) && text[at] != L'>') ++at;
  std::wstring_view value = text.substr(begin, at - begin);
  // An include without quotes may run into the end of its comment.
  if (value.ends_with(L"--")) {
    value.remove_suffix(2);
    at -= 2;
  }
  return AttributeValue{value, at};
}

std::optional<TagAttributes> read_tag(std::wstring_view text, std::size_t at) {
  TagAttributes tag{{}, 0};
  while (true) {
    at = skip_blanks(text, at);
    if (at >= text.size()) return std::nullopt;
    if (text[at] == L'>') break;
    Attribute attribute;
    if (read_one(text, at, attribute)) {
      tag.all.push_back(attribute);
    } else {
      ++at;  // a stray character, as browsers skip it
    }
  }
  tag.end = at + 1;
  return tag;
}

std::optional<TagAttributes> ServerTags::read(std::size_t at) {
  known_.resize(text_.size() + 1);
  const std::size_t begin = at;
  std::vector<std::size_t> places;
  bool is_for_server = false;
  const auto remember = [&](Known known) {
    for (const std::size_t place : places) known_[place] = known;
    return std::nullopt;
  };
  while (true) {
    at = skip_blanks(text_, at);
    if (at >= text_.size() || known_[at] == endless) return remember(endless);
    if (!is_for_server && known_[at] == of_others) return remember(of_others);
    places.push_back(at);
    if (text_[at] == L'>') break;
    Attribute attribute;
    if (!read_one(text_, at, attribute)) {
      ++at;
    } else if (!is_for_server && base::equal_ascii(attribute.name, L"runat")) {
      is_for_server = base::equal_ascii(attribute.value, L"server");
      if (!is_for_server) return remember(of_others);
    }
  }
  return is_for_server ? read_tag(text_, begin) : remember(of_others);
}

std::optional<std::vector<Attribute>> read_attributes(std::wstring_view text) {
  std::vector<Attribute> all;
  for (std::size_t at = skip_blanks(text, 0); at < text.size(); at = skip_blanks(text, at)) {
    Attribute attribute;
    if (!read_one(text, at, attribute)) return std::nullopt;
    all.push_back(attribute);
  }
  return all;
}

}  // namespace zelto::pages
