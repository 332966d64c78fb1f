#include "odbc/column.h"

#include <sql.h>
#include <sqlext.h>

#include "base/letter_case.h"

namespace korlib::odbc {
namespace {

Kind kind_of(SQLSMALLINT sql_type) {
  switch (sql_type) {
    case SQL_BIT:
      return Kind::boolean;
    case SQL_TINYINT:
    case SQL_SMALLINT:
    case SQL_INTEGER:
      return Kind::integer;
    case SQL_BIGINT:
      return Kind::big_integer;
    case SQL_REAL:
    case SQL_FLOAT:
    case SQL_DOUBLE:
      return Kind::real;
    case SQL_DECIMAL:
    case SQL_NUMERIC:
      return Kind::decimal;
    case SQL_TYPE_DATE:
    case SQL_DATE:
      return Kind::date;
    case SQL_TYPE_TIME:
    case SQL_TIME:
      return Kind::time;
    case SQL_TYPE_TIMESTAMP:
    case SQL_TIMESTAMP:
      return Kind::moment;
    case SQL_BINARY:
    case SQL_VARBINARY:
      return Kind::binary;
    case SQL_LONGVARBINARY:
      return Kind::long_binary;
    case SQL_LONGVARCHAR:
    case SQL_WLONGVARCHAR:
      return Kind::long_text;
    default:
      return Kind::text;
  }
}

// Some drivers report booleans and decimals as text or doubles; the type's own name tells.
Kind kind_of_column(SQLSMALLINT sql_type, const std::wstring& type_name, bool is_loose) {
  const auto is_named = [&](std::wstring_view name) { return base::equal_folded(type_name, name); };
  if (is_named(L"bool") || is_named(L"boolean")) return Kind::boolean;
  if (is_loose && (is_named(L"decimal") || is_named(L"numeric") || is_named(L"money"))) return Kind::decimal;
  return kind_of(sql_type);
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

}  // namespace

std::vector<Column> describe_columns(const Handle& statement, DriverText way, bool has_loose_types) {
  SQLSMALLINT count = 0;
  statement.check(SQLNumResultCols(statement.get(), &count));
  std::vector<Column> columns;
  for (SQLSMALLINT number = 1; number <= count; ++number) {
    columns.push_back(describe_column(statement, way, static_cast<SQLUSMALLINT>(number), has_loose_types));
  }
  return columns;
}

}  // namespace korlib::odbc
