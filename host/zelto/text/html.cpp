#include "text/html.h"

#include <array>
#include <cstdint>

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

// Text is gone through in blocks of a fixed size, of which the compiler makes vectors.
constexpr std::size_t kBlock = 16;

// Whether all of them are ASCII that stands for itself. The characters that do not are two pairs, each of which differs
// in one bit.
bool is_plain_block(const wchar_t* block) {
  std::uint32_t found = 0;
  for (std::size_t i = 0; i < kBlock; ++i) {
    const auto code = static_cast<char32_t>(block[i]);
    found |= (code & ~char32_t{0x7F}) | static_cast<std::uint32_t>((code & ~2U) == U'<') |
             static_cast<std::uint32_t>((code & ~4U) == U'"');
  }
  return found == 0;
}

std::size_t find_special(std::wstring_view text, std::size_t from, LONG code_page) {
  while (text.size() - from >= kBlock && is_plain_block(text.data() + from)) from += kBlock;
  while (from < text.size() && stands_for_itself(text[from], code_page)) ++from;
  return from;
}

}  // namespace

bool html_encode(std::wstring_view text, LONG code_page, std::wstring* out) {
  constexpr std::size_t kRoom = 32;  // for some of the longer forms
  std::size_t special = find_special(text, 0, code_page);
  if (special == text.size()) return false;
  out->reserve(text.size() + kRoom);
  for (std::size_t at = 0;;) {
    out->append(text, at, special - at);
    if (special == text.size()) return true;
    const auto code = static_cast<char32_t>(text[special]);
    if (code < kEntities.size()) {
      *out += kEntities[code];
    } else {
      *out += L"&#" + std::to_wstring(code) + L";";
    }
    at = special + 1;
    special = find_special(text, at, code_page);
  }
}

std::wstring html_encode(std::wstring_view text, LONG code_page) {
  std::wstring encoded;
  if (!html_encode(text, code_page, &encoded)) return std::wstring(text);
  return encoded;
}

}  // namespace zelto
