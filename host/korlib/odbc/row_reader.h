// Reads the values of a statement's current row.
#pragma once

#include "odbc/column.h"

namespace korlib::odbc {

// Every value can be read once, in the order of the columns. Throws Failure, and std::bad_alloc for a value that no
// string or array could hold.
class RowReader {
 public:
  RowReader(const Handle& statement, bool has_loose_types) : statement_(statement), has_loose_types_(has_loose_types) {}

  // Of the column with that number, counted from 1.
  Value read(unsigned short number, const Column& column) const;

 private:
  Value read_loose(unsigned short number, const Column& column) const;
  Value read_text(unsigned short number) const;
  Value read_bytes(unsigned short number) const;
  Value read_moment(unsigned short number, Kind kind) const;
  // False for NULL.
  template <class Unit>
  bool read_long(unsigned short number, short c_type, std::basic_string<Unit>& value) const;
  template <class Raw>
  bool read_fixed(unsigned short number, short c_type, Raw& raw) const;

  const Handle& statement_;
  const bool has_loose_types_;
};

}  // namespace korlib::odbc
