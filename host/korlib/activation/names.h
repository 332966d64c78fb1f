// Keys of the look-up tables: identifiers, and names that match in any letter case.
#pragma once

#include <cstring>
#include <cwctype>
#include <functional>
#include <string>
#include <string_view>

#include <korlib/guid.h>

namespace korlib::activation {

// Identifiers are random enough that any eight bytes of them spread well.
struct GuidHash {
  std::size_t operator()(const GUID& guid) const noexcept {
    std::size_t halves[2];
    std::memcpy(halves, &guid, sizeof halves);
    return halves[0] ^ halves[1];
  }
};

// The form in which names are compared. Names of classes and keys are ASCII but for the exception, and
// must compare alike in every locale.
inline std::wstring folded(std::wstring_view name) {
  std::wstring lower(name);
  for (wchar_t& c : lower) {
    if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c | 0x20);
  }
  return lower;
}

}  // namespace korlib::activation
