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

// What a character becomes in HTML; empty when it stays.
std::wstring_view reference_for(wchar_t c) {
  switch (c) {
    case L'<':
      return L"&lt;";
    case L'>':
      return L"&gt;";
    case L'"':
      return L"&quot;";
    case L'&':
      return L"&amp;";
    default:
      return {};
  }
}

// How many characters longer the HTML form is. Written so that the compiler makes vectors of it.
std::size_t html_growth(std::wstring_view text) {
  std::size_t growth = 0;
  for (const wchar_t c : text) {
    growth += (c == L'<' || c == L'>') ? 3u : 0u;
    growth += c == L'"' ? 5u : 0u;
    growth += c == L'&' ? 4u : 0u;
  }
  return growth;
}

// Whether reference_for has an answer: a bit for each character below 64.
bool is_special(wchar_t c) {
  constexpr std::uint64_t kSpecial =
      std::uint64_t{1} << L'<' | std::uint64_t{1} << L'>' | std::uint64_t{1} << L'"' | std::uint64_t{1} << L'&';
  return c >= 0 && c < 64 && (kSpecial >> c & 1) != 0;
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
  if (!encoded) return E_POINTER;
  const std::wstring_view plain = korlib::view_of(text);
  RETURN_IF_FAILED(new_text(plain.size() + html_growth(plain), encoded));
  wchar_t* out = *encoded;
  const wchar_t* run = plain.data();
  const wchar_t* const end = run + plain.size();
  while (run != end) {
    const wchar_t* special = run;
    while (special != end && !is_special(*special)) ++special;
    out = std::copy(run, special, out);
    run = special;
    if (run != end) {
      const std::wstring_view reference = reference_for(*run++);
      out = std::copy(reference.begin(), reference.end(), out);
    }
  }
  return S_OK;
}

HRESULT trim(BSTR text, BSTR* trimmed) noexcept {
  if (!trimmed) return E_POINTER;
  *trimmed = nullptr;
  const std::wstring_view whole = korlib::view_of(text);
  const std::size_t first = whole.find_first_not_of(kTrimmed);
  if (first == std::wstring_view::npos) return S_OK;  // nothing remains: a null string
  const std::size_t last = whole.find_last_not_of(kTrimmed);
  *trimmed = korlib::new_bstr(whole.substr(first, last - first + 1));
  return *trimmed ? S_OK : E_OUTOFMEMORY;
}

HRESULT submit_decode(BSTR text, BSTR* decoded) noexcept try {
  if (!decoded) return E_POINTER;
  const std::wstring_view characters = korlib::view_of(text);
  std::wstring built;
  std::wstring_view result = characters;
  if (characters.find(L"&#") != std::wstring_view::npos) result = built = with_references_decoded(characters);
  // Ends at the first character 0, which a reference may have made.
  *decoded = korlib::new_bstr(result.substr(0, result.find(L'\0')));
  return *decoded ? S_OK : E_OUTOFMEMORY;
} catch (...) {
  *decoded = nullptr;
  return hresult_from_exception();
}

}  // namespace mirt::utility
