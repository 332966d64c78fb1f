// The columns of a result, and the values in them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "odbc/handle.h"
#include "odbc/value.h"

namespace korlib::odbc {

struct Column {
  std::wstring name;
  Kind kind = Kind::text;
  std::size_t size = 0;  // as declared: characters, bytes or digits
  int scale = 0;         // digits after the decimal point
};

using Columns = std::shared_ptr<const std::vector<Column>>;  // never null

// The columns of a statement's current result; none when it gives no rows. With `has_loose_types` a column whose type
// is named "decimal", "numeric" or "money" holds decimals, whatever the driver says. Throws Failure.
Columns describe_columns(const Handle& statement, DriverText way, bool has_loose_types);

// The value of a statement's current row in the column of that number, counted from 1. Every value can be read once, in
// the order of the columns. Throws Failure, and std::bad_alloc for a value that no string or array could hold.
Value read_value(const Handle& statement, unsigned short number, const Column& column, bool has_loose_types);

}  // namespace korlib::odbc
