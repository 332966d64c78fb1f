// The table of types: how the value of each is read, and how it is written.
#pragma once

#include <cstddef>

#include <korlib/variant.h>

#include "variant/scalar.h"

namespace korlib::variants {

struct TypeRow {
  bool exists;
  Scalar (*load)(const VARIANT&);             // null: has no plain value
  HRESULT (*store)(const Scalar&, VARIANT*);  // null: no plain value becomes it
  std::size_t integer_size = 0;               // in bytes; 0 for what is not an integer
};

// The row of a type without VT_ARRAY and VT_BYREF; one that does not exist has a row saying so.
const TypeRow& row_of(VARTYPE vt);

}  // namespace korlib::variants
