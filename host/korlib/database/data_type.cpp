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
    {DataType::kBoolean, Kind::kBool},
    {DataType::kInteger, Kind::kInteger},
    {DataType::kBigInt, Kind::kBigInteger},
    {DataType::kDouble, Kind::kReal},
    {DataType::kNumeric, Kind::kDecimal},
    {DataType::kDbDate, Kind::kDate},
    {DataType::kDbTime, Kind::kTime},
    {DataType::kDbTimeStamp, Kind::kMoment},
    {DataType::kVarWChar, Kind::kText},
    {DataType::kLongVarWChar, Kind::kLongText},
    {DataType::kVarBinary, Kind::kBinary},
    {DataType::kLongVarBinary, Kind::kLongBinary},
    {DataType::kSmallInt, Kind::kInteger},
    {DataType::kTinyInt, Kind::kInteger},
    {DataType::kUnsignedTinyInt, Kind::kInteger},
    {DataType::kUnsignedSmallInt, Kind::kInteger},
    {DataType::kUnsignedInt, Kind::kBigInteger},
    {DataType::kUnsignedBigInt, Kind::kBigInteger},
    {DataType::kSingle, Kind::kReal},
    {DataType::kCurrency, Kind::kDecimal},
    {DataType::kDecimal, Kind::kDecimal},
    {DataType::kDate, Kind::kMoment},
    {DataType::kBStr, Kind::kText},
    {DataType::kGuid, Kind::kText},
    {DataType::kChar, Kind::kText},
    {DataType::kWChar, Kind::kText},
    {DataType::kVarChar, Kind::kText},
    {DataType::kLongVarChar, Kind::kLongText},
    {DataType::kBinary, Kind::kBinary},
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
      return Kind::kBool;
    case VT_I1:
    case VT_UI1:
    case VT_I2:
    case VT_UI2:
    case VT_I4:
    case VT_INT:
      return Kind::kInteger;
    case VT_UI4:
    case VT_UINT:
    case VT_I8:
    case VT_UI8:
      return Kind::kBigInteger;
    case VT_R4:
    case VT_R8:
      return Kind::kReal;
    case VT_CY:
      return Kind::kDecimal;
    case VT_DATE:
      return Kind::kMoment;
    case VT_ARRAY | VT_UI1:
      return Kind::kBinary;
    default:
      return Kind::kText;
  }
}

}  // namespace korlib
