// Dimensions of a safe array, numbered from 1 in declaration order; they are stored last first.
#pragma once

#include <korlib/hresult.h>
#include <korlib/safearray.h>

namespace korlib::arrays {

inline const SAFEARRAYBOUND* bound_of(const SAFEARRAY* array, UINT dim) {
  return array && dim >= 1 && dim <= array->cDims ? &array->rgsabound[array->cDims - dim] : nullptr;
}

inline std::size_t element_count(const SAFEARRAY& array) {
  std::size_t count = 1;
  for (USHORT d = 0; d < array.cDims; ++d) count *= array.rgsabound[d].cElements;
  return count;
}

}  // namespace korlib::arrays
