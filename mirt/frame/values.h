// Values, arrays and text, handled here without the runtime's help: a host need not export a function for it.
#pragma once

#include <string_view>

#include <korlib/variant.h>

namespace mirt {

// A deep copy of the value, or of what it refers to. A reference to nothing, and one to a reference to a
// variant, are E_INVALIDARG; `target` holds a value that goes.
HRESULT copy_followed(VARIANT* target, const VARIANT& source);

// Whether two texts are the same when letter case does not count. Looks at the whole texts, NULs too.
bool equal_ignoring_case(std::wstring_view a, std::wstring_view b);

// Elements in all dimensions.
std::size_t element_count(const SAFEARRAY& array);

// Keeps an array from being resized or destroyed, by a default member that a conversion calls, say.
class ArrayLock {
 public:
  ArrayLock() = default;
  explicit ArrayLock(SAFEARRAY* array) { lock(array); }
  ~ArrayLock() {
    if (array_) --array_->cLocks;
  }
  ArrayLock(const ArrayLock&) = delete;
  ArrayLock& operator=(const ArrayLock&) = delete;

  // Once.
  void lock(SAFEARRAY* array) {
    array_ = array;
    ++array_->cLocks;
  }

 private:
  SAFEARRAY* array_ = nullptr;
};

}  // namespace mirt
