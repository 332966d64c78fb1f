// The columns of a result.
#pragma once

#include <string>
#include <vector>

#include "odbc/handle.h"
#include "odbc/value.h"

namespace korlib::odbc {

struct Column {
  std::wstring name;
  Kind kind = Kind::kText;
  std::size_t size = 0;  // as declared: characters, bytes or digits
  int scale = 0;         // digits behind the decimal point
};

// The columns of the result that a statement stands at; none when it gives no rows. Throws Failure. With
// `has_loose_types` a column named as a decimal is one, whatever the driver says.
std::vector<Column> describe_columns(const Handle& statement, DriverText way, bool has_loose_types);

}  // namespace korlib::odbc
