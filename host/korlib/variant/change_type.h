// Conversion between any two types of VARIANT.
#pragma once

#include <korlib/comvariant.h>

namespace korlib::variants {

// A plain value for the time of a call: borrowed where the source has it, else what an object's default
// member answered, and that one's default member in turn.
class PlainValue {
 public:
  // Null, omitted arguments and arrays are plain values in this sense. A chain of objects that does not
  // end is DISP_E_TYPEMISMATCH.
  HRESULT load(const VARIANT& source);
  const VARIANT& get() const { return value_; }

 private:
  VARIANT value_{};
  CComVariant answered_;  // owns what value_ refers to when that is not the source's
};

}  // namespace korlib::variants
