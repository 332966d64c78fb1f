// The numbers by which scripts know cursors, locks, states and types. Properties take and give the numbers; everything
// inside uses the names.
#pragma once

#include <korlib/types.h>

namespace korlib {

// State of a connection or a recordset. A command runs only during Execute, so it is never seen open.
enum class ObjectState : LONG { closed = 0, open = 1 };

// What CommandText is; unknown is taken as a text, and -1 means unknown.
enum class CommandType : LONG { text = 1, table = 2, stored_procedure = 4, unknown = 8, table_direct = 0x200 };

// The last three read all rows at once and move freely.
enum class CursorType : LONG { forward_only = 0, keyset = 1, dynamic = 2, snapshot = 3 };

// A client cursor reads all rows at once, whatever its type.
enum class CursorLocation : LONG { server = 2, client = 3 };

// Records are read-only whatever is chosen.
enum class LockType : LONG { read_only = 1, pessimistic = 2, optimistic = 3, batch_optimistic = 4 };

// Where Recordset.Move starts.
enum class Bookmark : LONG { current = 0, first = 1, last = 2 };

// What AbsolutePage and AbsolutePosition give where there is no current record.
enum class Position : LONG { before_first = -2, after_last = -3 };

// Data types of fields and parameters. empty and variant leave a parameter the type of its value.
enum class DataType : LONG {
  empty = 0,
  small_int = 2,
  integer = 3,
  single = 4,
  double_precision = 5,
  currency = 6,
  date = 7,
  bstr = 8,
  boolean = 11,
  variant = 12,
  decimal = 14,
  tiny_int = 16,
  unsigned_tiny_int = 17,
  unsigned_small_int = 18,
  unsigned_int = 19,
  big_int = 20,
  unsigned_big_int = 21,
  guid = 72,
  binary = 128,
  chars = 129,
  wide_chars = 130,
  numeric = 131,
  db_date = 133,
  db_time = 134,
  db_time_stamp = 135,
  var_chars = 200,
  long_var_chars = 201,
  var_wide_chars = 202,
  long_var_wide_chars = 203,
  var_binary = 204,
  long_var_binary = 205,
};

}  // namespace korlib
