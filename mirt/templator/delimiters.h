// The delimiters of one scan, measured once.
#pragma once

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
