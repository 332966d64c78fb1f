#include "text/html.h"

#include <korlib/combstr.h>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <algorithm>
#include <array>
#include <bit>
#include <string>

#include "text/characters.h"
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

// A number of characters at the start that are ASCII and stand for themselves: behind them is one that does not, or
// fewer than four. With SSE2, which all of x86-64 have; elsewhere none, and the caller looks at each character.
std::size_t plain_run([[maybe_unused]] std::wstring_view text) {
  std::size_t done = 0;
#ifdef __SSE2__
  // The characters that have names are two pairs, each of which differs in one bit.
  const auto is_other = [](__m128i four) {
    const auto without = [&](int bits) { return _mm_andnot_si128(_mm_set1_epi32(bits), four); };
    const auto is = [](__m128i all, int code) { return _mm_cmpeq_epi32(all, _mm_set1_epi32(code)); };
    const __m128i is_named = _mm_or_si128(is(without(2), '<'), is(without(4), '"'));
    return _mm_or_si128(is_named, is(is(without(0x7F), 0), 0));
  };
  for (; text.size() - done >= 4; done += 4) {
    const auto* const at = reinterpret_cast<const __m128i*>(text.data() + done);
    const int found = _mm_movemask_ps(_mm_castsi128_ps(is_other(_mm_loadu_si128(at))));
    if (found) return done + static_cast<std::size_t>(std::countr_zero(static_cast<unsigned int>(found)));
  }
#endif
  return done;
}

std::size_t find_special(std::wstring_view text, std::size_t from, LONG code_page) {
  const auto is_beyond_ascii = [&] { return static_cast<char32_t>(text[from]) >= kEntities.size(); };
  while (from < text.size()) {
    from += plain_run(text.substr(from));
    if (from == text.size()) break;
    // In most languages that have such a character the next one is of its kind.
    do {
      if (!stands_for_itself(text[from], code_page)) return from;
      ++from;
    } while (from < text.size() && is_beyond_ascii());
  }
  return from;
}

// Hands over the encoded text in pieces. `special` is where the first character lies that is not written as it is.
template <class Take>
void encode(std::wstring_view text, std::size_t special, LONG code_page, Take take) {
  for (std::size_t at = 0;;) {
    take(text.substr(at, special - at));
    if (special == text.size()) return;
    const auto code = static_cast<char32_t>(text[special]);
    if (code < kEntities.size()) {
      take(kEntities[code]);
    } else {
      take(L"&#" + std::to_wstring(code) + L";");
    }
    at = special + 1;
    special = find_special(text, at, code_page);
  }
}

}  // namespace

BSTR html_encoded(std::wstring_view text, LONG code_page) {
  const std::size_t special = find_special(text, 0, code_page);
  if (special == text.size()) return korlib::new_bstr(text);
  // Whether a code page has a character takes longer to tell than a copy of it.
  if (code_page != kUtf8CodePage) return korlib::new_bstr(html_encode(text, code_page));
  std::size_t length = 0;
  encode(text, special, code_page, [&](std::wstring_view part) { length += part.size(); });
  if (length >= kMaxBstrBytes / sizeof(wchar_t)) return nullptr;
  BSTR encoded = SysAllocStringLen(nullptr, static_cast<UINT>(length));
  if (!encoded) return nullptr;
  encode(text, special, code_page,
         [at = encoded](std::wstring_view part) mutable { at = std::ranges::copy(part, at).out; });
  return encoded;
}

std::wstring html_encode(std::wstring_view text, LONG code_page) {
  std::wstring encoded;
  encode(text, find_special(text, 0, code_page), code_page, [&](std::wstring_view part) { encoded += part; });
  return encoded;
}

std::string html_bytes(std::string_view html, LONG code_page) {
  if (code_page == kUtf8CodePage) return std::string(html);
  std::wstring text;
  for (const wchar_t c : to_wide(html)) {
    if (encodes(code_page, c))
      text += c;
    else
      text += L"&#" + std::to_wstring(static_cast<char32_t>(c)) + L";";
  }
  return encode(code_page, text);
}

std::string shown_as_html(std::wstring_view text) {
  const std::string html = to_utf8(html_encode(text, kUtf8CodePage));
  std::string shown;
  for (std::size_t at = 0; at < html.size();) {
    const std::string_view rest = std::string_view(html).substr(at);
    const std::string_view escape = direction_escape(rest);
    shown += escape.empty() ? rest.substr(0, 1) : escape;
    at += escape.empty() ? 1 : rest.front() == '\xD8' ? 2 : 3;
  }
  return shown;
}

}  // namespace zelto
