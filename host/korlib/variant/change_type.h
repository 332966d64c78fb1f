// Conversion between any two types of VARIANT.
//
// Two integer types of one size, one signed and one not, are the same bits: 0xFFFFFFFF as VT_UI4 is -1 as
// VT_I4, and back. What such values are in components is a result code, a set of flags, a colour or -1 for
// "all", which one side declares signed and the other not; as a matter of range one half of them could not
// be passed on. Between integers of different sizes, and from every other type, a value has to fit.
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
