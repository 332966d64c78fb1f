#include "odbc/bound_parameter.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include <korlib_host/unicode.h>

namespace korlib::odbc {
namespace {

static_assert(sizeof(Moment) == sizeof(SQL_TIMESTAMP_STRUCT) &&
                  offsetof(Moment, nanosecond) == offsetof(SQL_TIMESTAMP_STRUCT, fraction),
              "the driver manager reads and writes a Moment as it is");

constexpr std::size_t kMostResultBytes = 16'777'216;

SQLSMALLINT io_type(Direction direction) {
  switch (direction) {
    case Direction::in:
      return SQL_PARAM_INPUT;
    case Direction::in_out:
      return SQL_PARAM_INPUT_OUTPUT;
    case Direction::out:
    case Direction::return_value:
      break;
  }
  return SQL_PARAM_OUTPUT;
}

struct Wire {
  SQLSMALLINT c_type;
  SQLSMALLINT sql_type;
  SQLULEN size;
  SQLSMALLINT digits;
};

Wire wire_of(Kind kind) {
  switch (kind) {
    case Kind::boolean:
      return {SQL_C_BIT, SQL_BIT, 1, 0};
    case Kind::integer:
      return {SQL_C_SBIGINT, SQL_INTEGER, 10, 0};
    case Kind::big_integer:
      return {SQL_C_SBIGINT, SQL_BIGINT, 19, 0};
    case Kind::real:
      return {SQL_C_DOUBLE, SQL_DOUBLE, 15, 0};
    case Kind::date:
    case Kind::time:
    case Kind::moment:
      return {SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, 26, 6};
    case Kind::decimal:
      return {SQL_C_WCHAR, SQL_DECIMAL, 38, 0};
    case Kind::text:
      return {SQL_C_WCHAR, SQL_WVARCHAR, 0, 0};
    case Kind::long_text:
      return {SQL_C_WCHAR, SQL_WLONGVARCHAR, 0, 0};
    case Kind::binary:
      return {SQL_C_BINARY, SQL_VARBINARY, 0, 0};
    case Kind::long_binary:
      return {SQL_C_BINARY, SQL_LONGVARBINARY, 0, 0};
  }
  return {SQL_C_WCHAR, SQL_WVARCHAR, 0, 0};
}

SQLSMALLINT scale_of(const std::wstring& digits) {
  const std::size_t point = digits.find(L'.');
  return point == std::wstring::npos ? SQLSMALLINT{0} : static_cast<SQLSMALLINT>(digits.size() - point - 1);
}

}  // namespace

void BoundParameter::make_room(const Parameter& parameter, std::size_t unit) {
  if (parameter.direction == Direction::in) return;
  const std::size_t wanted = std::min((parameter.size > 0 ? parameter.size : 4000) * unit, kMostResultBytes) + unit;
  buffer_.resize(std::max(buffer_.size(), wanted));
}

short BoundParameter::bind_text(void* statement, unsigned short number, const Parameter& parameter) {
  Wire wire = wire_of(parameter.kind);
  std::u16string units;
  if (const auto* text = std::get_if<std::wstring>(&parameter.value)) units = to_utf16(*text);
  if (const auto* decimal = std::get_if<Decimal>(&parameter.value)) {
    units = to_utf16(decimal->digits);
    wire.digits = scale_of(decimal->digits);
  }
  wire.size = wire.size != 0 ? wire.size : std::max<std::size_t>(units.size(), 1);
  buffer_.assign(reinterpret_cast<const char*>(units.data()), units.size() * sizeof(char16_t));
  if (indicator_ != SQL_NULL_DATA) indicator_ = static_cast<SQLLEN>(buffer_.size());
  make_room(parameter, sizeof(char16_t));
  return SQLBindParameter(statement, number, io_type(parameter.direction), wire.c_type, wire.sql_type, wire.size,
                          wire.digits, buffer_.data(), static_cast<SQLLEN>(buffer_.size()), &indicator_);
}

short BoundParameter::bind_bytes(void* statement, unsigned short number, const Parameter& parameter) {
  const Wire wire = wire_of(parameter.kind);
  if (const auto* bytes = std::get_if<Bytes>(&parameter.value)) buffer_ = bytes->data;
  if (indicator_ != SQL_NULL_DATA) indicator_ = static_cast<SQLLEN>(buffer_.size());
  const std::size_t size = std::max<std::size_t>(buffer_.size(), 1);
  make_room(parameter, 1);
  return SQLBindParameter(statement, number, io_type(parameter.direction), wire.c_type, wire.sql_type, size, 0,
                          buffer_.data(), static_cast<SQLLEN>(buffer_.size()), &indicator_);
}

short BoundParameter::bind(void* statement, unsigned short number, const Parameter& parameter) {
  const bool is_null = std::holds_alternative<std::monostate>(parameter.value);
  indicator_ = is_null ? SQL_NULL_DATA : 0;
  const Wire wire = wire_of(parameter.kind);
  if (wire.c_type == SQL_C_WCHAR) return bind_text(statement, number, parameter);
  if (wire.c_type == SQL_C_BINARY) return bind_bytes(statement, number, parameter);
  SQLPOINTER at = &integer_;
  if (const auto* integer = std::get_if<std::int64_t>(&parameter.value)) integer_ = *integer;
  if (wire.c_type == SQL_C_DOUBLE) {
    at = &real_;
    if (const auto* real = std::get_if<double>(&parameter.value)) real_ = *real;
  } else if (wire.c_type == SQL_C_BIT) {
    at = &bit_;
    if (const auto* truth = std::get_if<bool>(&parameter.value)) bit_ = *truth ? 1 : 0;
  } else if (wire.c_type == SQL_C_TYPE_TIMESTAMP) {
    at = &moment_;
    if (const auto* moment = std::get_if<Moment>(&parameter.value)) moment_ = *moment;
  }
  return SQLBindParameter(statement, number, io_type(parameter.direction), wire.c_type, wire.sql_type, wire.size,
                          wire.digits, at, 0, &indicator_);
}

Value BoundParameter::result(Kind kind) const {
  if (indicator_ == SQL_NULL_DATA) return {};
  const Wire wire = wire_of(kind);
  switch (wire.c_type) {
    case SQL_C_BIT:
      return bit_ != 0;
    case SQL_C_SBIGINT:
      return integer_;
    case SQL_C_DOUBLE:
      return real_;
    case SQL_C_TYPE_TIMESTAMP:
      return moment_;
    default:
      break;
  }
  const std::size_t written = std::min(static_cast<std::size_t>(std::max<SQLLEN>(indicator_, 0)), buffer_.size());
  if (wire.c_type == SQL_C_BINARY) return Bytes{buffer_.substr(0, written)};
  std::u16string units(written / sizeof(char16_t), u'\0');
  std::memcpy(units.data(), buffer_.data(), units.size() * sizeof(char16_t));
  std::wstring text;
  append_utf16(text, units);
  if (kind == Kind::decimal) return Decimal{text};
  return text;
}

}  // namespace korlib::odbc
