// The keys of a dictionary, and what makes two of them equal.
#pragma once

#include <string_view>

#include <korlib/comvariant.h>

namespace korlib {

// The form in which keys are compared: numbers by value whatever their type, objects by identity, text by its
// characters. Text is referred to where it lies.
class KeyForm {
 public:
  // Chooses how text is compared, and with it the hash: for the first time only. To be called before the key is looked
  // up by its hash, or stored.
  void prepare(bool ignore_case);

  std::size_t hash() const { return hash_; }
  // Both prepared for the same comparison.
  bool operator==(const KeyForm& other) const { return hash_ == other.hash_ && is_same(other, ignores_case_); }
  // Without a hash: for a few keys, which it takes less time to look through.
  bool is_same(const KeyForm& other, bool ignore_case) const {
    return kind_ == other.kind_ && bits_ == other.bits_ && text_.size() == other.text_.size() &&
           (kind_ != Kind::text || has_text_of(other, ignore_case));
  }

 protected:
  KeyForm() = default;
  KeyForm(const KeyForm&) = default;
  KeyForm& operator=(const KeyForm&) = default;
  ~KeyForm() = default;

  // Asks an object for its identity, so no lock may be held. DISP_E_TYPEMISMATCH for arrays, error values and what else
  // cannot be a key.
  HRESULT look(const VARIANT& value);
  void set_text(std::wstring_view text) { text_ = text; }

 private:
  enum class Kind : BYTE { empty, null, text, integer, real, object };

  bool has_text_of(const KeyForm& other, bool ignore_case) const;
  HRESULT take(Kind kind, std::uint64_t bits);
  HRESULT take_real(double number);
  HRESULT take_integer(const VARIANT& value);
  HRESULT take_object(IUnknown* object);

  std::wstring_view text_;
  std::uint64_t bits_ = 0;
  std::size_t hash_ = 0;
  Kind kind_ = Kind::empty;
  bool ignores_case_ = false;
  bool is_prepared_ = false;
};

// A key to be looked up. It refers to the caller's value: most keys are only read, and are then not copied.
class WantedKey : public KeyForm {
 public:
  WantedKey() = default;
  WantedKey(const WantedKey&) = delete;
  WantedKey& operator=(const WantedKey&) = delete;

  // `value` outlives this, references followed. Fails as look() does.
  HRESULT load(const VARIANT& value);
  const VARIANT& value() const { return *value_; }

 private:
  CComVariant held_;  // what a reference led to
  const VARIANT* value_ = &held_;
};

// A key that a dictionary keeps.
class DictionaryKey : public KeyForm {
 public:
  // A copy of the value, prepared as the wanted key is.
  HRESULT copy(const WantedKey& wanted);
  const VARIANT& value() const { return value_; }

 private:
  CComVariant value_;
};

}  // namespace korlib
