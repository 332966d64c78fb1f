// What makes two dictionary keys equal.
#pragma once

#include <string_view>

#include <korlib/comvariant.h>

namespace korlib {

// A key as it is compared: numbers by value whatever their type, objects by identity, text by its
// characters. Refers to the text of the VARIANT it was made from.
struct KeyView {
  enum class Kind : BYTE { kEmpty, kNull, kText, kInteger, kReal, kObject };

  Kind kind = Kind::kEmpty;
  std::uint64_t bits = 0;
  std::wstring_view text;
  std::size_t hash = 0;
};

// Everything but the hash. Asks an object for its identity, so no lock may be held. DISP_E_TYPEMISMATCH
// for arrays, error values and what else cannot be a key.
HRESULT view_key(const VARIANT& key, KeyView& view);
std::size_t hash_key(const KeyView& view, bool ignore_case);
// Both with their hashes.
bool same_key(const KeyView& a, const KeyView& b, bool ignore_case);

}  // namespace korlib
