#include "database/names.h"

#include <algorithm>
#include <cwctype>

namespace korlib {

bool same_name(std::wstring_view a, std::wstring_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](wchar_t x, wchar_t y) {
    return std::towlower(static_cast<wint_t>(x)) == std::towlower(static_cast<wint_t>(y));
  });
}

}  // namespace korlib
