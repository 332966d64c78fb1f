// Text comparison, copying and formatting, and the mapping of text by locale.
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <cwctype>

#include <korlib/winapi.h>

#include "compat/weak.h"

namespace {

std::wint_t lower(wchar_t c) { return std::towlower(static_cast<std::wint_t>(c)); }
bool is_slash(wchar_t c) { return c == L'/' || c == L'\\'; }

}  // namespace

// A host may replace it; the bytes decide.
MIRT_WEAK BOOL IsEqualGUID(REFGUID a, REFGUID b) { return std::memcmp(&a, &b, sizeof(GUID)) == 0 ? TRUE : FALSE; }

// Letter case counts, whatever the name says. A host that folds case here changes what compares
// equal in this component.
MIRT_WEAK int _wcsicmp(const wchar_t* a, const wchar_t* b) { return std::wcscmp(a, b); }

// Compares paths: letter case does not count, nor which way a slash leans. A host that replaces it
// decides which template folders are the same; one that finds more equal opens more files.
MIRT_WEAK int _wcsnicmp(const wchar_t* a, const wchar_t* b, std::size_t count) {
  if (!a || !b) return a == b ? 0 : (a ? 1 : -1);
  for (std::size_t i = 0; i < count; ++i) {
    if (!a[i] || !b[i]) return a[i] == b[i] ? 0 : (a[i] > b[i] ? 1 : -1);
    if (a[i] == b[i]) continue;
    const std::wint_t left = lower(a[i]);
    const std::wint_t right = lower(b[i]);
    if (left == right || (is_slash(a[i]) && is_slash(b[i]))) continue;
    return left > right ? 1 : -1;
  }
  return 0;
}

// For text known to be ASCII: each character loses all but its low seven bits. `target` has room for
// `count` bytes with the NUL; with a count of 0 nothing is written. A replacement owes the NUL.
MIRT_WEAK int wcstombs_s(std::size_t* converted, char* target, const wchar_t* source, std::size_t count) {
  if (!target || !source) return 1;
  std::size_t length = 0;
  while (length + 1 < count && source[length]) {
    target[length] = static_cast<char>(source[length] & 127);
    ++length;
  }
  if (count) target[length] = '\0';
  if (converted) *converted = length + 1;
  return 0;
}

// Trusts `count`: the caller has compared it with the target's size. A replacement may refuse instead.
MIRT_WEAK int memcpy_s(void* target, std::size_t, const void* source, std::size_t count) {
  if (count) std::memcpy(target, source, count);
  return 0;
}

// 0, or 1 when the text does not fit; never the number of characters. A replacement owes the same two.
MIRT_WEAK int swprintf_s(wchar_t* buffer, std::size_t count, const wchar_t* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the analyser misses va_start in some runs
  const int written = std::vswprintf(buffer, count, format, arguments);
  va_end(arguments);
  return written < 0 ? 1 : 0;
}

// A replacement owes the number of conversions done. This one takes no sizes after %s and %c.
MIRT_WEAK int sscanf_s(const char* text, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the analyser misses va_start in some runs
  const int conversions = std::vsscanf(text, format, arguments);
  va_end(arguments);
  return conversions;
}

// Maps nothing: copies. Its size query counts the NUL and its result does not, so a caller that asks for
// the size and then insists on it is refused; a host that wants width conversions supplies a mapping whose
// two answers are both the exact length.
MIRT_WEAK int LCMapStringW(unsigned int, unsigned int, const wchar_t* source, int source_length, wchar_t* target,
                           int target_length) {
  if (!source) return 0;
  if (!target || target_length < 1) return static_cast<int>(static_cast<unsigned int>(source_length) + 1u);
  int copied = 0;
  while (copied < target_length - 1 && (source_length < 0 ? source[copied] != 0 : copied < source_length)) {
    target[copied] = source[copied];
    ++copied;
  }
  target[copied] = 0;
  return copied;
}

// Knows no message. A host that does writes it with its NUL into `buffer` and answers its length.
MIRT_WEAK DWORD FormatMessageW(DWORD, const void*, DWORD, DWORD, wchar_t*, DWORD, void*) { return 0; }
