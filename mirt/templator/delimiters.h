// The delimiters of one scan, measured once.
#pragma once

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <bit>
#include <cstddef>
#include <string_view>

#include "frame/error.h"

struct Delimiters {
  std::wstring_view escape;
  std::wstring_view mark_open;
  std::wstring_view mark_close;
  std::wstring_view name_separator;
  std::wstring_view param_separator;

  // The next position at which a delimiter can begin, or the end. Most of a template is stepped over here.
  std::size_t next_start(std::wstring_view text, std::size_t pos) const {
    const wchar_t a = escape[0];
    const wchar_t b = mark_open[0];
    const wchar_t c = mark_close[0];
    const wchar_t d = name_separator[0];
    const wchar_t e = param_separator[0];
#ifdef __SSE2__
    // Four characters at a time; every processor of this kind can.
    const auto is_any = [=](__m128i four) {
      const auto is = [&](wchar_t start) { return _mm_cmpeq_epi32(four, _mm_set1_epi32(start)); };
      return _mm_or_si128(_mm_or_si128(_mm_or_si128(is(a), is(b)), _mm_or_si128(is(c), is(d))), is(e));
    };
    for (; text.size() - pos >= 4; pos += 4) {
      const auto* const at = reinterpret_cast<const __m128i*>(text.data() + pos);
      const int found = _mm_movemask_ps(_mm_castsi128_ps(is_any(_mm_loadu_si128(at))));
      if (found) return pos + static_cast<std::size_t>(std::countr_zero(static_cast<unsigned int>(found)));
    }
#endif
    while (pos < text.size()) {
      const wchar_t at = text[pos];
      if (at == a || at == b || at == c || at == d || at == e) break;
      ++pos;
    }
    return pos;
  }
};

// Whether the delimiter stands at `pos`. Delimiters are short: a library call would cost more than the loop.
inline bool stands_at(std::wstring_view text, std::size_t pos, std::wstring_view delimiter) {
  if (text.size() - pos < delimiter.size()) return false;
  for (std::size_t i = 0; i < delimiter.size(); ++i) {
    if (text[pos + i] != delimiter[i]) return false;
  }
  return true;
}

// Raises the only error that a template can contain.
inline HRESULT invalid_mark_order() { return RaiseError(E_FAIL, L"Templator", L"Invalid mark order."); }
