// FindString.
#include <korlib/comvariant.h>

#include "frame/error.h"
#include "frame/values.h"
#include "utility/members.h"

namespace mirt::utility {

namespace {

// The values of an argument: the elements of the array that it holds, or the one value that it is.
// An array stays where it is, locked: a conversion may call a default member that would resize it.
class Values {
 public:
  HRESULT attach(const VARIANT* argument) {
    if (!argument) return E_POINTER;
    if (argument->vt & VT_ARRAY) return attach_array(*argument);
    RETURN_IF_FAILED(VariantCopy(&single_, argument));
    elements_ = &single_;
    count_ = 1;
    return S_OK;
  }

  const VARIANT* begin() const { return elements_; }
  const VARIANT* end() const { return elements_ + count_; }

 private:
  HRESULT attach_array(const VARIANT& argument) {
    SAFEARRAY* array = argument.parray;
    if (argument.vt & VT_BYREF) array = argument.pparray ? *argument.pparray : nullptr;
    if (!array || array->vtElement != VT_VARIANT) return E_INVALIDARG;
    lock_.lock(array);
    elements_ = static_cast<const VARIANT*>(array->pvData);
    count_ = element_count(*array);
    return S_OK;
  }

  CComVariant single_;
  ArrayLock lock_;
  const VARIANT* elements_ = nullptr;
  std::size_t count_ = 0;
};

// A value as a string: itself when it is one.
class AsText {
 public:
  HRESULT take(const VARIANT& value) {
    text_ = &value;
    if (value.vt == VT_BSTR) return S_OK;
    text_ = &converted_;
    return VariantChangeType(&converted_, &value, 0, VT_BSTR);
  }
  const VARIANT* get() const { return text_; }

 private:
  CComVariant converted_;
  const VARIANT* text_ = nullptr;
};

// Whether the text is among the values; the conversion of a value may fail before it is met.
HRESULT is_among(const VARIANT* text, const Values& values, bool* found) {
  for (const VARIANT& value : values) {
    AsText candidate;
    RETURN_IF_FAILED(candidate.take(value));
    if (VarCmp(text, candidate.get(), 0, 0) == VARCMP_EQ) {
      *found = true;
      return S_OK;
    }
  }
  return S_OK;
}

}  // namespace

HRESULT find_string(const VARIANT* list, const VARIANT* wanted, VARIANT_BOOL* found) noexcept {
  return guarded([&] {
    if (!found) return E_POINTER;
    Values candidates;
    RETURN_IF_FAILED(candidates.attach(list));
    Values searched;
    RETURN_IF_FAILED(searched.attach(wanted));
    *found = VARIANT_FALSE;
    // Goes on after a hit: a value after it that has no text form is still an error.
    for (const VARIANT& value : searched) {
      AsText text;
      RETURN_IF_FAILED(text.take(value));
      bool is_hit = false;
      RETURN_IF_FAILED(is_among(text.get(), candidates, &is_hit));
      if (is_hit) *found = VARIANT_TRUE;
    }
    return S_OK;
  });
}

}  // namespace mirt::utility
