// A scalar as each kind of value: the rules of conversion, which the table of types combines.
#pragma once

#include <korlib/hresult.h>

#include "variant/scalar.h"

namespace korlib::variants {

// Halves are rounded to the even neighbour. Beyond what a Wide can safely hold is DISP_E_OVERFLOW; the
// caller checks the range of its own type.
HRESULT to_integer(const Scalar& value, Wide* integer);
HRESULT to_real(const Scalar& value, double* real);
HRESULT to_currency(const Scalar& value, LONGLONG* ten_thousandths);
HRESULT to_date(const Scalar& value, DATE* date);
// Text is "True" or "False" in any case, "#TRUE#" or "#FALSE#" as files of data have them, or a number. A
// number is true unless it is 0, NaN included.
HRESULT to_boolean(const Scalar& value, bool* boolean);
// A new string for the caller to free.
HRESULT to_text(const Scalar& value, BSTR* text);

}  // namespace korlib::variants
