// HTMLEncode, Trim, SubmitDecode.
#include <algorithm>
#include <cstdint>
#include <cwchar>
#include <string>
#include <string_view>

#include <korlib/combstr.h>

#include "frame/error.h"
#include "utility/bytes.h"
#include "utility/members.h"

namespace mirt::utility {

namespace {

using namespace std::string_view_literals;

// Whether HTML has a reference for the character. Each pair of them differs in one bit.
constexpr bool is_angle(wchar_t c) { return (c & ~2) == L'<'; }
constexpr bool is_quote(wchar_t c) { return (c & ~4) == L'"'; }  // or an ampersand
constexpr bool is_special(wchar_t c) { return is_quote(c) || is_angle(c); }
static_assert(is_special(L'<') && is_special(L'>') && is_special(L'"') && is_special(L'&') && !is_special(L'\''));

// The reference of a special character.
constexpr std::wstring_view reference_for(wchar_t c) {
  if (is_angle(c)) return c == L'<' ? L"&lt;"sv : L"&gt;"sv;
  return c == L'&' ? L"&amp;"sv : L"&quot;"sv;
}

// Text is looked at in blocks of a fixed size, of which the compiler makes vectors.
constexpr std::ptrdiff_t kBlock = 16;

// How many characters longer the HTML form is.
std::size_t html_growth(const wchar_t* at, const wchar_t* end) {
  const auto growth_of = [](wchar_t c) {
    return (is_angle(c) ? 3u : 0u) + (c == L'"' ? 5u : 0u) + (c == L'&' ? 4u : 0u);
  };
  std::size_t growth = 0;
  for (; end - at >= kBlock; at += kBlock) {
    unsigned int in_block = 0;
    for (std::ptrdiff_t i = 0; i < kBlock; ++i) in_block += growth_of(at[i]);
    growth += in_block;
  }
  for (; at != end; ++at) growth += growth_of(*at);
  return growth;
}

bool has_special(const wchar_t* block) {
  unsigned int found = 0;
  for (std::ptrdiff_t i = 0; i < kBlock; ++i) found += (is_quote(block[i]) ? 1u : 0u) + (is_angle(block[i]) ? 1u : 0u);
  return found != 0;
}

// Writes the HTML form, for which there must be room.
void put_html(const wchar_t* at, const wchar_t* end, wchar_t* out) {
  while (at != end) {
    if (end - at >= kBlock && !has_special(at)) {
      out = std::copy_n(at, kBlock, out);
      at += kBlock;
      continue;
    }
    const wchar_t* const block_end = at + std::min(kBlock, end - at);
    for (; at != block_end; ++at) {
      if (!is_special(*at)) {
        *out++ = *at;
        continue;
      }
      for (const wchar_t c : reference_for(*at)) *out++ = c;
    }
  }
}

constexpr std::wstring_view kTrimmed = L" \u3000\t\r\n";

// Replaces each "&#number;" of the text by its character. An unterminated one stays as it is.
std::wstring with_references_decoded(std::wstring_view text) {
  std::wstring decoded;
  decoded.reserve(text.size());
  std::size_t at = 0;
  for (;;) {
    const std::size_t start = text.find(L"&#", at);
    if (start == std::wstring_view::npos) break;
    const std::size_t end = text.find(L';', start + 2);
    if (end == std::wstring_view::npos) break;
    decoded.append(text, at, start - at);
    const bool is_hexadecimal = text[start + 2] == L'x';
    // The semicolon ends the number. One that is too large gives the largest, of which the low bits stay.
    const long value = std::wcstol(text.data() + start + (is_hexadecimal ? 3 : 2), nullptr, is_hexadecimal ? 16 : 10);
    decoded.push_back(static_cast<wchar_t>(value));
    at = end + 1;
  }
  decoded.append(text, at);
  return decoded;
}

}  // namespace

HRESULT html_encode(BSTR text, BSTR* encoded) noexcept {
  return guarded(encoded, [&] {
    const std::wstring_view plain = korlib::view_of(text);
    const wchar_t* const end = plain.data() + plain.size();
    RETURN_IF_FAILED(new_text(plain.size() + html_growth(plain.data(), end), encoded));
    put_html(plain.data(), end, *encoded);
    return S_OK;
  });
}

HRESULT trim(BSTR text, BSTR* trimmed) noexcept {
  return guarded(trimmed, [&] {
    const std::wstring_view whole = korlib::view_of(text);
    const std::size_t first = whole.find_first_not_of(kTrimmed);
    if (first == std::wstring_view::npos) return S_OK;  // nothing remains: a null string
    const std::size_t last = whole.find_last_not_of(kTrimmed);
    *trimmed = korlib::new_bstr(whole.substr(first, last - first + 1));
    return *trimmed ? S_OK : E_OUTOFMEMORY;
  });
}

HRESULT submit_decode(BSTR text, BSTR* decoded) noexcept {
  return guarded(decoded, [&] {
    const std::wstring_view characters = korlib::view_of(text);
    std::wstring built;
    std::wstring_view result = characters;
    if (characters.find(L"&#") != std::wstring_view::npos) result = built = with_references_decoded(characters);
    // Ends at the first character 0, which a reference may have made.
    *decoded = korlib::new_bstr(result.substr(0, result.find(L'\0')));
    return *decoded ? S_OK : E_OUTOFMEMORY;
  });
}

}  // namespace mirt::utility
