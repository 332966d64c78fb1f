// Texts that a script passes to objects again and again, as names and templates in a loop are, converted once.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include <korlib/combstr.h>
#include <korlib/comvariant.h>

#include "script/jsc.h"

namespace zelto::script {

// Those of one virtual machine. A string of the script is known by its place in the engine's heap: while it is
// protected, no other value takes that place. It may be a part of a larger text, which the engine then keeps whole: so
// they are cleared when the page ends, and when its memory runs short.
class RepeatedTexts {
 public:
  // `idle` is a context of the group that outlives this.
  explicit RepeatedTexts(JSContextRef idle) : idle_(idle) {}
  ~RepeatedTexts() { clear(); }
  RepeatedTexts(const RepeatedTexts&) = delete;
  RepeatedTexts& operator=(const RepeatedTexts&) = delete;

  // The text of a string that has been noted often enough; null for any other value. For the caller to copy.
  BSTR find(JSValueRef value) const noexcept {
    const Entry& entry = entries_[place_of(value)];
    return entry.value == value ? entry.text.get() : nullptr;
  }
  // What find() gives, as an argument that is not the caller's own: it stays here until it is taken back.
  class Loan;
  // A string that has just been converted.
  void note(JSValueRef string, BSTR text);
  void clear() noexcept;

 private:
  struct Entry {
    JSValueRef value = nullptr;  // protected
    CComBSTR text;
    unsigned loans = 0;
    JSValueRef candidate = nullptr;  // the one that was noted last; only its address, which may be another's by now
  };

  static constexpr std::size_t kEntries = 64;
  static constexpr std::size_t kLongest = 2000;  // characters

  static std::size_t place_of(JSValueRef value) noexcept {
    const auto word = reinterpret_cast<std::uintptr_t>(value) >> 4;
    return (word ^ (word >> 6)) % kEntries;
  }

  JSContextRef idle_;
  std::array<Entry, kEntries> entries_;
};

// The texts that are lent for the time of one call.
class RepeatedTexts::Loan {
 public:
  explicit Loan(RepeatedTexts& owner) noexcept : owner_(owner) {}
  // The arguments are empty then: they must not free what they do not own.
  ~Loan() {
    while (count_ > 0) {
      auto& [argument, entry] = lent_[--count_];
      argument->vt = VT_EMPTY;
      --entry->loans;
    }
  }
  Loan(const Loan&) = delete;
  Loan& operator=(const Loan&) = delete;

  // Into an argument that is empty and stays where it is. False for a value that is not repeated, and beyond a few.
  bool lend(JSValueRef value, VARIANT* argument) noexcept {
    Entry& entry = owner_.entries_[place_of(value)];
    if (entry.value != value || count_ == lent_.size()) return false;
    argument->vt = VT_BSTR;
    argument->bstrVal = entry.text.get();
    ++entry.loans;
    lent_[count_++] = {argument, &entry};
    return true;
  }

 private:
  struct Lent {
    VARIANT* argument;
    Entry* entry;
  };

  RepeatedTexts& owner_;
  std::array<Lent, 4> lent_;
  std::size_t count_ = 0;
};

}  // namespace zelto::script
