// Conversion of plain values: how the value of each type is read, and how it is written.
#pragma once

#include <cstddef>

#include <korlib/variant.h>

#include "variant/scalar.h"

namespace korlib::variants {

struct TypeRow {
  Scalar (*load)(const VARIANT&) = nullptr;             // null: has no plain value
  HRESULT (*store)(const Scalar&, VARIANT*) = nullptr;  // null: no plain value becomes it
  std::size_t integer_size = 0;                         // in bytes; 0 for what is not an integer
};

// The row of a type without VT_ARRAY and VT_BYREF; an empty one for what is not a plain type. `store` writes the value
// only: the type is for the caller to set, once it has succeeded.
const TypeRow& row_of(VARTYPE vt);

}  // namespace korlib::variants
