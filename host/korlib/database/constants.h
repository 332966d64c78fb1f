// The numbers by which scripts know cursors, locks, states and types. Properties take and give the numbers; everything
// inside uses the names.
#pragma once

#include <type_traits>

#include <korlib/types.h>

#include "odbc/value.h"

namespace korlib {

// State of a connection or a recordset. A command runs only during Execute, so it is never seen open.
enum class ObjectState : LONG { kClosed = 0, kOpen = 1 };

// What CommandText is; kUnknown is taken as a text, and -1 means kUnknown.
enum class CommandType : LONG { kText = 1, kTable = 2, kStoredProcedure = 4, kUnknown = 8, kTableDirect = 0x200 };

// The last three read all rows at once and move freely.
enum class CursorType : LONG { kForwardOnly = 0, kKeyset = 1, kDynamic = 2, kStatic = 3 };

// A client cursor reads all rows at once, whatever its type.
enum class CursorLocation : LONG { kServer = 2, kClient = 3 };

// Records are read-only whatever is chosen.
enum class LockType : LONG { kReadOnly = 1, kPessimistic = 2, kOptimistic = 3, kBatchOptimistic = 4 };

// Where Recordset.Move starts.
enum class Bookmark : LONG { kCurrent = 0, kFirst = 1, kLast = 2 };

// What AbsolutePage and AbsolutePosition give where there is no current record.
enum class Position : LONG { kBeforeFirst = -2, kAfterLast = -3 };

// Its numbers are those of scripts.
using ParameterDirection = odbc::Direction;

// Data types of fields and parameters. kEmpty and kVariant leave a parameter the type of its value.
enum class DataType : LONG {
  kEmpty = 0,
  kSmallInt = 2,
  kInteger = 3,
  kSingle = 4,
  kDouble = 5,
  kCurrency = 6,
  kDate = 7,
  kBStr = 8,
  kBoolean = 11,
  kVariant = 12,
  kDecimal = 14,
  kTinyInt = 16,
  kUnsignedTinyInt = 17,
  kUnsignedSmallInt = 18,
  kUnsignedInt = 19,
  kBigInt = 20,
  kUnsignedBigInt = 21,
  kGuid = 72,
  kBinary = 128,
  kChar = 129,
  kWChar = 130,
  kNumeric = 131,
  kDbDate = 133,
  kDbTime = 134,
  kDbTimeStamp = 135,
  kVarChar = 200,
  kLongVarChar = 201,
  kVarWChar = 202,
  kLongVarWChar = 203,
  kVarBinary = 204,
  kLongVarBinary = 205,
};

template <class Enum>
requires std::is_enum_v<Enum>
constexpr LONG number_of(Enum value) { return static_cast<LONG>(value); }

}  // namespace korlib
