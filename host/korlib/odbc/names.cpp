#include "odbc/names.h"

#include <unicode/uchar.h>

#include <algorithm>

namespace korlib {

bool same_name(std::wstring_view a, std::wstring_view b) {
  const auto fold = [](wchar_t c) { return u_foldCase(static_cast<UChar32>(c), U_FOLD_CASE_DEFAULT); };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](wchar_t x, wchar_t y) { return fold(x) == fold(y); });
}

}  // namespace korlib
