// Values, types and rows of a database as scripts hold them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <korlib/comvariant.h>

#include "database/constants.h"
#include "odbc/result_set.h"

namespace korlib {

// What a column of that kind reports.
DataType type_of(odbc::Kind kind);
// None for a number that is not a type, and for empty and variant, which leave the kind to the value.
std::optional<odbc::Kind> kind_of(DataType type);
// For a parameter that declares no type.
odbc::Kind kind_of_value(const VARIANT& value);

// Empty, null, or an argument that was left out.
inline bool is_nothing(const VARIANT& value) {
  return value.vt == VT_EMPTY || value.vt == VT_NULL || is_omitted(value);
}

// The elements of an array of values; a single value stands for itself, nothing for none. DISP_E_TYPEMISMATCH for an
// array of several dimensions.
HRESULT elements_of(const VARIANT& given, std::vector<CComVariant>& elements);

// Integers become VT_I4, beyond its range VT_I8; decimals of up to 15 digits VT_R8, longer ones their
// text; NULL becomes VT_NULL.
HRESULT to_variant(const odbc::Value& value, VARIANT* variant);
// As a value of that kind, nothing being NULL; DISP_E_TYPEMISMATCH or DISP_E_OVERFLOW when it has no such form.
HRESULT from_variant(const VARIANT& variant, odbc::Kind kind, odbc::Value& value);

// Many rows of a result at once: both functions walk forward from the current row, over as many rows as are asked for
// and left; a negative number means all. Throws odbc::Failure.

// An array of two dimensions, columns and rows, counted from 0, of the chosen columns in that order.
HRESULT rows_as_array(odbc::ResultSet& result, LONG rows, const std::vector<std::size_t>& columns, VARIANT* array);
// What stands between the columns, after each row, and for NULL.
struct TextMarks {
  std::wstring between;
  std::wstring after;
  std::wstring null;
};
HRESULT rows_as_text(odbc::ResultSet& result, LONG rows, const TextMarks& marks, BSTR* text);

}  // namespace korlib
