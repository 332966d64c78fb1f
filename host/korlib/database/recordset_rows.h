// Many rows of a result at once. Each function walks forward from the current row, over as many rows as are asked for
// and left; a negative number means all. Throws odbc::Failure.
#pragma once

#include <string>
#include <vector>

#include <korlib/comvariant.h>

#include "odbc/result_set.h"

namespace korlib {

// An array of two dimensions, columns and rows, counted from 0, of the chosen columns in that order.
HRESULT rows_as_array(odbc::ResultSet& result, LONG rows, const std::vector<std::size_t>& columns, VARIANT* array);

// What stands between the columns, behind each row, and for NULL.
struct TextMarks {
  std::wstring between = L"\t";
  std::wstring behind = L"\r";
  std::wstring null;
};
HRESULT rows_as_text(odbc::ResultSet& result, LONG rows, const TextMarks& marks, BSTR* text);

}  // namespace korlib
