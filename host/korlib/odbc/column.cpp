#include "odbc/column.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <new>

#include <korlib_host/unicode.h>

#include "base/letter_case.h"

namespace korlib::odbc {
namespace {

// What the drivers' types hold; any other holds text.
constexpr struct {
  Kind kind;
  std::initializer_list<SQLSMALLINT> types;
} kKinds[] = {
    {Kind::boolean, {SQL_BIT}},
    {Kind::integer, {SQL_TINYINT, SQL_SMALLINT, SQL_INTEGER}},
    {Kind::big_integer, {SQL_BIGINT}},
    {Kind::real, {SQL_REAL, SQL_FLOAT, SQL_DOUBLE}},
    {Kind::decimal, {SQL_DECIMAL, SQL_NUMERIC}},
    {Kind::date, {SQL_TYPE_DATE, SQL_DATE}},
    {Kind::time, {SQL_TYPE_TIME, SQL_TIME}},
    {Kind::moment, {SQL_TYPE_TIMESTAMP, SQL_TIMESTAMP}},
    {Kind::binary, {SQL_BINARY, SQL_VARBINARY}},
    {Kind::long_binary, {SQL_LONGVARBINARY}},
    {Kind::long_text, {SQL_LONGVARCHAR, SQL_WLONGVARCHAR}},
};

// Some drivers report booleans and decimals as text or doubles; the type's own name tells.
Kind kind_of_column(SQLSMALLINT sql_type, const std::wstring& type_name, bool is_loose) {
  const auto is_named = [&](std::wstring_view name) { return base::equal_folded(type_name, name); };
  if (is_named(L"bool") || is_named(L"boolean")) return Kind::boolean;
  if (is_loose && (is_named(L"decimal") || is_named(L"numeric") || is_named(L"money"))) return Kind::decimal;
  for (const auto& row : kKinds) {
    if (std::ranges::find(row.types, sql_type) != row.types.end()) return row.kind;
  }
  return Kind::text;
}

std::wstring type_name(const Handle& statement, DriverText way, SQLUSMALLINT number) {
  const bool is_wide = way == DriverText::wide;
  TextOut name(way);
  SQLSMALLINT bytes = 0;
  const SQLRETURN result =
      is_wide
          ? SQLColAttributeW(statement.get(), number, SQL_DESC_TYPE_NAME, name.wide(), TextOut::kRoom, &bytes, nullptr)
          : SQLColAttribute(statement.get(), number, SQL_DESC_TYPE_NAME, name.bytes(), TextOut::kRoom, &bytes, nullptr);
  if (!SQL_SUCCEEDED(result)) return {};
  return name.text(is_wide ? static_cast<SQLSMALLINT>(bytes / 2) : bytes);
}

Column describe_column(const Handle& statement, DriverText way, SQLUSMALLINT number, bool has_loose_types) {
  TextOut name(way);
  SQLSMALLINT length = 0;
  SQLSMALLINT type = 0;
  SQLSMALLINT scale = 0;
  SQLULEN size = 0;
  statement.check(way == DriverText::wide ? SQLDescribeColW(statement.get(), number, name.wide(), TextOut::kRoom,
                                                            &length, &type, &size, &scale, nullptr)
                                          : SQLDescribeCol(statement.get(), number, name.bytes(), TextOut::kRoom,
                                                           &length, &type, &size, &scale, nullptr));
  return {name.text(length), kind_of_column(type, type_name(statement, way, number), has_loose_types), size, scale};
}

// A number that takes up the whole text.
template <class Number>
bool read_whole(const std::string& text, Number& number) {
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  return read.ec == std::errc() && read.ptr == end;
}

// A value of fixed length, which the driver gives as a Raw and which is held as a Held.
template <class Held, class Raw = Held>
Value read_fixed(const Handle& statement, SQLUSMALLINT number, SQLSMALLINT c_type) {
  Raw raw{};
  SQLLEN indicator = 0;
  statement.check(SQLGetData(statement.get(), number, c_type, &raw, static_cast<SQLLEN>(sizeof raw), &indicator));
  return indicator == SQL_NULL_DATA ? Value() : Value(static_cast<Held>(raw));
}

// In pieces, each larger than the last: some drivers convert the whole value anew for every piece. False for NULL.
template <class Unit>
bool read_long(const Handle& statement, SQLUSMALLINT number, SQLSMALLINT c_type, std::basic_string<Unit>& value) {
  constexpr std::size_t kMostBytes = 0x7FFFFF00;  // of a string or an array
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
        SQLGetData(statement.get(), number, c_type, piece, static_cast<SQLLEN>(room * sizeof(Unit)), &indicator);
    if (result == SQL_NO_DATA) return true;
    statement.check(result);
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

Value read_text(const Handle& statement, SQLUSMALLINT number) {
  std::u16string units;
  if (!read_long(statement, number, SQL_C_WCHAR, units)) return {};
  std::wstring text;
  append_utf16(text, units);
  return text;
}

Value read_bytes(const Handle& statement, SQLUSMALLINT number) {
  Bytes bytes;
  if (!read_long(statement, number, SQL_C_BINARY, bytes.data)) return {};
  return bytes;
}

Value read_decimal(const Handle& statement, SQLUSMALLINT number) {
  Value text = read_text(statement, number);
  if (auto* digits = std::get_if<std::wstring>(&text)) return Decimal{std::move(*digits)};
  return text;
}

Value read_moment(const Handle& statement, SQLUSMALLINT number, Kind kind, bool has_loose_types) {
  Value value = read_fixed<Moment>(statement, number, SQL_C_TYPE_TIMESTAMP);
  auto* moment = std::get_if<Moment>(&value);
  // To SQLite's driver a text that is not a date is NULL as well.
  if (!moment && has_loose_types) return read_text(statement, number);
  // A time lies on day zero, whatever date the driver adds.
  if (moment && kind == Kind::time) {
    const Moment day_zero;
    moment->year = day_zero.year;
    moment->month = day_zero.month;
    moment->day = day_zero.day;
  }
  return value;
}

// The value may be of another type than its column: a text among numbers, a number among dates, a fraction
// after the whole number that an expression's type was guessed from. The driver would make 0, a part, or
// NULL of it.
Value read_loose(const Handle& statement, SQLUSMALLINT number, Kind kind) {
  std::string text;
  if (!read_long(statement, number, SQL_C_CHAR, text)) return {};
  const bool is_integer = kind == Kind::integer || kind == Kind::big_integer;
  std::int64_t integer = 0;
  if (is_integer && read_whole(text, integer)) return integer;
  double real = 0;
  if (!read_whole(text, real)) return to_wide(text);
  return kind == Kind::decimal ? Value(Decimal{to_wide(text)}) : Value(real);
}

}  // namespace

Columns describe_columns(const Handle& statement, DriverText way, bool has_loose_types) {
  SQLSMALLINT count = 0;
  statement.check(SQLNumResultCols(statement.get(), &count));
  std::vector<Column> columns;
  for (SQLSMALLINT number = 1; number <= count; ++number) {
    columns.push_back(describe_column(statement, way, static_cast<SQLUSMALLINT>(number), has_loose_types));
  }
  return std::make_shared<const std::vector<Column>>(std::move(columns));
}

Value read_value(const Handle& statement, unsigned short number, const Column& column, bool has_loose_types) {
  switch (column.kind) {
    case Kind::boolean:
      return read_fixed<bool, unsigned char>(statement, number, SQL_C_BIT);
    case Kind::integer:
    case Kind::big_integer:
      if (has_loose_types) return read_loose(statement, number, column.kind);
      return read_fixed<std::int64_t, SQLBIGINT>(statement, number, SQL_C_SBIGINT);
    case Kind::real:
      if (has_loose_types) return read_loose(statement, number, column.kind);
      return read_fixed<double>(statement, number, SQL_C_DOUBLE);
    case Kind::decimal:
      return has_loose_types ? read_loose(statement, number, column.kind) : read_decimal(statement, number);
    case Kind::date:
    case Kind::time:
    case Kind::moment:
      return read_moment(statement, number, column.kind, has_loose_types);
    case Kind::binary:
    case Kind::long_binary:
      return read_bytes(statement, number);
    case Kind::text:
    case Kind::long_text:
      break;
  }
  return read_text(statement, number);
}

}  // namespace korlib::odbc
