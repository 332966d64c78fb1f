#include "database/data_type.h"

#include <algorithm>

namespace korlib {
namespace {

using odbc::Kind;

struct TypeRow {
  DataType type;
  Kind kind;
};
// The first row of a kind is the one that its columns report.
constexpr TypeRow kTypes[] = {
    {DataType::boolean, Kind::boolean},
    {DataType::integer, Kind::integer},
    {DataType::big_int, Kind::big_integer},
    {DataType::double_precision, Kind::real},
    {DataType::numeric, Kind::decimal},
    {DataType::db_date, Kind::date},
    {DataType::db_time, Kind::time},
    {DataType::db_time_stamp, Kind::moment},
    {DataType::var_wide_chars, Kind::text},
    {DataType::long_var_wide_chars, Kind::long_text},
    {DataType::var_binary, Kind::binary},
    {DataType::long_var_binary, Kind::long_binary},
    {DataType::small_int, Kind::integer},
    {DataType::tiny_int, Kind::integer},
    {DataType::unsigned_tiny_int, Kind::integer},
    {DataType::unsigned_small_int, Kind::integer},
    {DataType::unsigned_int, Kind::big_integer},
    {DataType::unsigned_big_int, Kind::big_integer},
    {DataType::single, Kind::real},
    {DataType::currency, Kind::decimal},
    {DataType::decimal, Kind::decimal},
    {DataType::date, Kind::moment},
    {DataType::bstr, Kind::text},
    {DataType::guid, Kind::text},
    {DataType::chars, Kind::text},
    {DataType::wide_chars, Kind::text},
    {DataType::var_chars, Kind::text},
    {DataType::long_var_chars, Kind::long_text},
    {DataType::binary, Kind::binary},
};

}  // namespace

DataType type_of(Kind kind) { return std::ranges::find(kTypes, kind, &TypeRow::kind)->type; }

std::optional<Kind> kind_of(DataType type) {
  const auto* const row = std::ranges::find(kTypes, type, &TypeRow::type);
  return row == std::end(kTypes) ? std::nullopt : std::optional(row->kind);
}

Kind kind_of_value(const VARIANT& value) {
  switch (value.vt) {
    case VT_BOOL:
      return Kind::boolean;
    case VT_I1:
    case VT_UI1:
    case VT_I2:
    case VT_UI2:
    case VT_I4:
    case VT_INT:
      return Kind::integer;
    case VT_UI4:
    case VT_UINT:
    case VT_I8:
    case VT_UI8:
      return Kind::big_integer;
    case VT_R4:
    case VT_R8:
      return Kind::real;
    case VT_CY:
      return Kind::decimal;
    case VT_DATE:
      return Kind::moment;
    case VT_ARRAY | VT_UI1:
      return Kind::binary;
    default:
      return Kind::text;
  }
}

}  // namespace korlib
