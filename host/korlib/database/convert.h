// Values of a database as scripts hold them, and the numbers by which scripts know types.
#pragma once

#include <korlib/comvariant.h>

#include "odbc/value.h"

namespace korlib {

// Numbers of data types in scripts.
inline constexpr LONG kTypeEmpty = 0;
inline constexpr LONG kTypeSmallInt = 2;
inline constexpr LONG kTypeInteger = 3;
inline constexpr LONG kTypeSingle = 4;
inline constexpr LONG kTypeDouble = 5;
inline constexpr LONG kTypeCurrency = 6;
inline constexpr LONG kTypeDate = 7;
inline constexpr LONG kTypeBStr = 8;
inline constexpr LONG kTypeBoolean = 11;
inline constexpr LONG kTypeVariant = 12;
inline constexpr LONG kTypeDecimal = 14;
inline constexpr LONG kTypeTinyInt = 16;
inline constexpr LONG kTypeUnsignedTinyInt = 17;
inline constexpr LONG kTypeUnsignedSmallInt = 18;
inline constexpr LONG kTypeUnsignedInt = 19;
inline constexpr LONG kTypeBigInt = 20;
inline constexpr LONG kTypeUnsignedBigInt = 21;
inline constexpr LONG kTypeGuid = 72;
inline constexpr LONG kTypeBinary = 128;
inline constexpr LONG kTypeChar = 129;
inline constexpr LONG kTypeWChar = 130;
inline constexpr LONG kTypeNumeric = 131;
inline constexpr LONG kTypeDbDate = 133;
inline constexpr LONG kTypeDbTime = 134;
inline constexpr LONG kTypeDbTimeStamp = 135;
inline constexpr LONG kTypeVarChar = 200;
inline constexpr LONG kTypeLongVarChar = 201;
inline constexpr LONG kTypeVarWChar = 202;
inline constexpr LONG kTypeLongVarWChar = 203;
inline constexpr LONG kTypeVarBinary = 204;
inline constexpr LONG kTypeLongVarBinary = 205;

LONG type_of(odbc::Kind kind);
// False for a number that is no type.
bool kind_of_type(LONG type, odbc::Kind& kind);
// What a value without a declared type is sent as.
odbc::Kind kind_of_value(const VARIANT& value);

// Integers become VT_I4, beyond its range VT_I8; decimals of up to 15 digits VT_R8, longer ones their
// text; NULL becomes VT_NULL.
HRESULT to_variant(const odbc::Value& value, VARIANT* variant);
// As a value of that kind; DISP_E_TYPEMISMATCH or DISP_E_OVERFLOW when it has no such form.
HRESULT from_variant(const VARIANT& variant, odbc::Kind kind, odbc::Value& value);

}  // namespace korlib
