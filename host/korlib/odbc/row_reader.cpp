#include "odbc/row_reader.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <memory>
#include <new>

#include <korlib_host/unicode.h>

namespace korlib::odbc {
namespace {

constexpr std::size_t kMostBytes = 0x7FFFFF00;  // of a string or an array

// A number that takes up the whole text.
template <class Number>
bool read_whole(const std::string& text, Number& number) {
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  return read.ec == std::errc() && read.ptr == end;
}

}  // namespace

template <class Raw>
bool RowReader::read_fixed(unsigned short number, short c_type, Raw& raw) const {
  SQLLEN indicator = 0;
  statement_.check(SQLGetData(statement_.get(), number, c_type, &raw, static_cast<SQLLEN>(sizeof raw), &indicator));
  return indicator != SQL_NULL_DATA;
}

// In pieces, each larger than the last: some drivers convert the whole value anew for every piece.
template <class Unit>
bool RowReader::read_long(unsigned short number, short c_type, std::basic_string<Unit>& value) const {
  constexpr std::size_t kLargest = 16'777'216 / sizeof(Unit);
  constexpr std::size_t kMost = sizeof(Unit) == 1 ? kMostBytes : kMostBytes / sizeof(wchar_t);
  const std::size_t behind = c_type == SQL_C_BINARY ? 0 : 1;  // a NUL follows text
  Unit first[4096 / sizeof(Unit)];
  std::unique_ptr<Unit[]> larger;
  Unit* piece = first;
  std::size_t room = std::size(first);
  for (;;) {
    SQLLEN indicator = 0;
    const SQLRETURN result =
        SQLGetData(statement_.get(), number, c_type, piece, static_cast<SQLLEN>(room * sizeof(Unit)), &indicator);
    if (result == SQL_NO_DATA) return true;
    statement_.check(result);
    if (indicator == SQL_NULL_DATA) return false;
    const bool is_cut = indicator == SQL_NO_TOTAL || static_cast<std::size_t>(indicator) / sizeof(Unit) > room - behind;
    const std::size_t count = is_cut ? room - behind : static_cast<std::size_t>(indicator) / sizeof(Unit);
    if (count > kMost - value.size()) throw std::bad_alloc();
    value.append(piece, count);
    if (result == SQL_SUCCESS) return true;
    room = std::min(room * 4, kLargest);
    larger = std::make_unique_for_overwrite<Unit[]>(room);
    piece = larger.get();
  }
}

Value RowReader::read_text(unsigned short number) const {
  std::u16string units;
  if (!read_long(number, SQL_C_WCHAR, units)) return {};
  std::wstring text;
  append_utf16(text, units);
  return text;
}

Value RowReader::read_bytes(unsigned short number) const {
  Bytes bytes;
  if (!read_long(number, SQL_C_BINARY, bytes.data)) return {};
  return bytes;
}

Value RowReader::read_moment(unsigned short number, Kind kind) const {
  Moment moment;
  if (!read_fixed(number, SQL_C_TYPE_TIMESTAMP, moment)) {
    // To SQLite's driver a text that is no date is NULL as well.
    return has_loose_types_ ? read_text(number) : Value();
  }
  if (kind != Kind::time) return moment;
  Moment time;  // on day zero, whatever date the driver adds
  time.hour = moment.hour;
  time.minute = moment.minute;
  time.second = moment.second;
  time.nanosecond = moment.nanosecond;
  return time;
}

// The value may be of another type than its column: a text among numbers, a number among dates, a fraction
// after the whole number that an expression's type was guessed from. The driver would make 0, a part, or
// NULL of it.
Value RowReader::read_loose(unsigned short number, const Column& column) const {
  std::string text;
  if (!read_long(number, SQL_C_CHAR, text)) return {};
  const bool is_integer = column.kind == Kind::integer || column.kind == Kind::big_integer;
  std::int64_t integer = 0;
  if (is_integer && read_whole(text, integer)) return integer;
  double real = 0;
  if (!read_whole(text, real)) return to_wide(text);
  return column.kind == Kind::decimal ? Value(Decimal{to_wide(text)}) : Value(real);
}

Value RowReader::read(unsigned short number, const Column& column) const {
  const bool is_number = column.kind == Kind::integer || column.kind == Kind::big_integer ||
                         column.kind == Kind::real || column.kind == Kind::decimal;
  if (is_number && has_loose_types_) return read_loose(number, column);
  switch (column.kind) {
    case Kind::boolean: {
      unsigned char bit = 0;
      return read_fixed(number, SQL_C_BIT, bit) ? Value(bit != 0) : Value();
    }
    case Kind::integer:
    case Kind::big_integer: {
      SQLBIGINT integer = 0;
      return read_fixed(number, SQL_C_SBIGINT, integer) ? Value(std::int64_t{integer}) : Value();
    }
    case Kind::real: {
      double real = 0;
      return read_fixed(number, SQL_C_DOUBLE, real) ? Value(real) : Value();
    }
    case Kind::decimal: {
      Value text = read_text(number);
      if (auto* digits = std::get_if<std::wstring>(&text)) return Decimal{std::move(*digits)};
      return text;
    }
    case Kind::date:
    case Kind::time:
    case Kind::moment:
      return read_moment(number, column.kind);
    case Kind::binary:
    case Kind::long_binary:
      return read_bytes(number);
    case Kind::text:
    case Kind::long_text:
      break;
  }
  return read_text(number);
}

}  // namespace korlib::odbc
