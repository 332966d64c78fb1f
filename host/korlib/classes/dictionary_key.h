// The keys of a dictionary, and what makes two of them equal.
#pragma once

#include <string_view>

#include <korlib/comvariant.h>

namespace korlib {

// A value that can be a key, and the form in which it is compared: numbers by value whatever their type, objects by
// identity, text by its characters.
class DictionaryKey {
 public:
  // Copies the value, references followed, and looks at it. Asks an object for its identity, so no lock may be held.
  // DISP_E_TYPEMISMATCH for arrays, error values and what else cannot be a key.
  HRESULT load(const VARIANT& value);
  // Chooses how text is compared, and with it the hash; to be called before the key is looked up or stored.
  void prepare(bool ignore_case);

  const CComVariant& value() const { return value_; }
  std::size_t hash() const { return hash_; }
  // Both prepared for the same comparison.
  bool operator==(const DictionaryKey& other) const;

 private:
  enum class Kind : BYTE { empty, null, text, integer, real, object };

  HRESULT look();
  HRESULT take(Kind kind, std::uint64_t bits);
  HRESULT take_real(double number);
  HRESULT take_integer();
  HRESULT take_object();

  CComVariant value_;
  std::wstring_view text_;  // of value_
  std::uint64_t bits_ = 0;
  std::size_t hash_ = 0;
  Kind kind_ = Kind::empty;
  bool ignores_case_ = false;
};

}  // namespace korlib
