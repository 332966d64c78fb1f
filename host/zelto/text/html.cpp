#include "text/html.h"

#include <array>

#include "text/charset.h"

namespace zelto {

namespace {

// What stands for each character of ASCII; empty for those that stand for themselves.
constexpr auto kEntities = [] {
  std::array<std::wstring_view, 128> entities{};
  entities['<'] = L"&lt;";
  entities['>'] = L"&gt;";
  entities['&'] = L"&amp;";
  entities['"'] = L"&quot;";
  return entities;
}();

bool stands_for_itself(wchar_t c, LONG code_page) {
  const auto code = static_cast<char32_t>(c);
  return code < kEntities.size() ? kEntities[code].empty() : encodes(code_page, c);
}

std::size_t find_special(std::wstring_view text, std::size_t from, LONG code_page) {
  while (from < text.size() && stands_for_itself(text[from], code_page)) ++from;
  return from;
}

}  // namespace

std::wstring html_encode(std::wstring_view text, LONG code_page) {
  std::wstring out;
  out.reserve(text.size());
  std::size_t at = 0;
  while (true) {
    const std::size_t special = find_special(text, at, code_page);
    out.append(text, at, special - at);
    if (special == text.size()) return out;
    const auto code = static_cast<char32_t>(text[special]);
    if (code < kEntities.size()) {
      out += kEntities[code];
    } else {
      out += L"&#" + std::to_wstring(code) + L";";
    }
    at = special + 1;
  }
}

bool is_plain_html(std::wstring_view text, LONG code_page) { return find_special(text, 0, code_page) == text.size(); }

}  // namespace zelto
