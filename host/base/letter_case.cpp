#include "base/letter_case.h"

#include <unicode/uchar.h>

namespace base {

wchar_t fold_beyond_ascii(wchar_t c) {
  return static_cast<wchar_t>(u_foldCase(static_cast<UChar32>(c), U_FOLD_CASE_DEFAULT));
}

std::wstring folded(std::wstring_view text) {
  std::wstring out(text);
  std::ranges::transform(out, out.begin(), fold);
  return out;
}

bool equal_folded(std::wstring_view a, std::wstring_view b) { return std::ranges::equal(a, b, {}, fold, fold); }

std::strong_ordering compare_folded(std::wstring_view a, std::wstring_view b) {
  return std::lexicographical_compare_three_way(a.begin(), a.end(), b.begin(), b.end(),
                                                [](wchar_t x, wchar_t y) { return fold(x) <=> fold(y); });
}

}  // namespace base
