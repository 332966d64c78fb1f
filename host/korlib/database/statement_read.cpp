// The columns of the current row, in pieces where they are long.
#include <sql.h>
#include <sqlext.h>

#include <new>

#include "classes/unicode.h"
#include "database/moment.h"
#include "database/statement.h"

namespace korlib::db {
namespace {

constexpr std::size_t kMostBytes = 0x7FFFFF00;

}  // namespace

template <class Raw>
bool Statement::read_fixed(unsigned short number, short c_type, Raw& raw) {
  SQLLEN indicator = 0;
  check(SQLGetData(handle_, number, c_type, &raw, static_cast<SQLLEN>(sizeof raw), &indicator));
  return indicator != SQL_NULL_DATA;
}

Value Statement::read_text(unsigned short number) {
  std::u16string units;
  SQLWCHAR piece[2048];
  constexpr std::size_t kRoom = std::size(piece) - 1;  // a NUL follows
  for (;;) {
    SQLLEN indicator = 0;
    const SQLRETURN result =
        SQLGetData(handle_, number, SQL_C_WCHAR, piece, static_cast<SQLLEN>(sizeof piece), &indicator);
    if (result == SQL_NO_DATA) break;
    check(result);
    if (indicator == SQL_NULL_DATA) return {};
    const bool is_cut = indicator == SQL_NO_TOTAL || static_cast<std::size_t>(indicator) / sizeof(SQLWCHAR) > kRoom;
    const std::size_t count = is_cut ? kRoom : static_cast<std::size_t>(indicator) / sizeof(SQLWCHAR);
    if (units.size() + count > kMostBytes / sizeof(wchar_t)) throw std::bad_alloc();
    units.append(reinterpret_cast<const char16_t*>(piece), count);
    if (result == SQL_SUCCESS) break;
  }
  std::wstring text;
  append_utf16(text, units);
  return text;
}

Value Statement::read_bytes(unsigned short number) {
  Bytes bytes;
  char piece[8192];
  for (;;) {
    SQLLEN indicator = 0;
    const SQLRETURN result = SQLGetData(handle_, number, SQL_C_BINARY, piece, SQLLEN{sizeof piece}, &indicator);
    if (result == SQL_NO_DATA) break;
    check(result);
    if (indicator == SQL_NULL_DATA) return {};
    const bool is_cut = indicator == SQL_NO_TOTAL || static_cast<std::size_t>(indicator) > sizeof piece;
    const std::size_t count = is_cut ? sizeof piece : static_cast<std::size_t>(indicator);
    if (bytes.data.size() + count > kMostBytes) throw std::bad_alloc();
    bytes.data.append(piece, count);
    if (result == SQL_SUCCESS) break;
  }
  return bytes;
}

Value Statement::read_moment(unsigned short number, Kind kind) {
  SQL_TIMESTAMP_STRUCT stamp{};
  if (!read_fixed(number, SQL_C_TYPE_TIMESTAMP, stamp)) return {};
  Moment moment = to_moment(stamp);
  if (kind == Kind::kTime) {  // a time alone lies on day zero, whatever date the driver adds
    moment.year = 1899;
    moment.month = 12;
    moment.day = 30;
  }
  return moment;
}

Value Statement::read(unsigned short number, const Column& column) {
  switch (column.kind) {
    case Kind::kBool: {
      unsigned char bit = 0;
      return read_fixed(number, SQL_C_BIT, bit) ? Value(bit != 0) : Value();
    }
    case Kind::kInteger:
    case Kind::kBigInteger: {
      SQLBIGINT integer = 0;
      return read_fixed(number, SQL_C_SBIGINT, integer) ? Value(std::int64_t{integer}) : Value();
    }
    case Kind::kReal: {
      double real = 0;
      return read_fixed(number, SQL_C_DOUBLE, real) ? Value(real) : Value();
    }
    case Kind::kDecimal: {
      Value text = read_text(number);
      if (auto* digits = std::get_if<std::wstring>(&text)) return Decimal{std::move(*digits)};
      return text;
    }
    case Kind::kDate:
    case Kind::kTime:
    case Kind::kMoment:
      return read_moment(number, column.kind);
    case Kind::kBinary:
    case Kind::kLongBinary:
      return read_bytes(number);
    case Kind::kText:
    case Kind::kLongText:
      break;
  }
  return read_text(number);
}

}  // namespace korlib::db
