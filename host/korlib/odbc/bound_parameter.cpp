#include "odbc/bound_parameter.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>

#include <korlib_host/unicode.h>

namespace korlib::odbc {
namespace {

static_assert(sizeof(Moment) == sizeof(SQL_TIMESTAMP_STRUCT) &&
                  offsetof(Moment, nanosecond) == offsetof(SQL_TIMESTAMP_STRUCT, fraction),
              "the driver manager reads and writes a Moment as it is");

constexpr std::size_t kMostResultBytes = 16'777'216;

struct Wire {
  SQLULEN size;  // 0: as long as the value
  SQLSMALLINT c_type;
  SQLSMALLINT sql_type;
  SQLSMALLINT digits;
};

// In the order of Kind.
constexpr Wire kWires[] = {
    {1, SQL_C_BIT, SQL_BIT, 0},                         // boolean
    {10, SQL_C_SBIGINT, SQL_INTEGER, 0},                // integer
    {19, SQL_C_SBIGINT, SQL_BIGINT, 0},                 // big_integer
    {15, SQL_C_DOUBLE, SQL_DOUBLE, 0},                  // real
    {38, SQL_C_WCHAR, SQL_DECIMAL, 0},                  // decimal
    {26, SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, 6},  // date
    {26, SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, 6},  // time
    {26, SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, 6},  // moment
    {0, SQL_C_WCHAR, SQL_WVARCHAR, 0},                  // text
    {0, SQL_C_WCHAR, SQL_WLONGVARCHAR, 0},              // long_text
    {0, SQL_C_BINARY, SQL_VARBINARY, 0},                // binary
    {0, SQL_C_BINARY, SQL_LONGVARBINARY, 0},            // long_binary
};
static_assert(std::size(kWires) == static_cast<std::size_t>(Kind::long_binary) + 1);

const Wire& wire_of(Kind kind) { return kWires[static_cast<std::size_t>(kind)]; }

SQLSMALLINT io_type(Direction direction) {
  if (direction == Direction::in) return SQL_PARAM_INPUT;
  return direction == Direction::in_out ? SQL_PARAM_INPUT_OUTPUT : SQL_PARAM_OUTPUT;
}

SQLSMALLINT scale_of(const std::wstring& digits) {
  const std::size_t point = digits.find(L'.');
  return point == std::wstring::npos ? SQLSMALLINT{0} : static_cast<SQLSMALLINT>(digits.size() - point - 1);
}

}  // namespace

void BoundParameter::keep(const Value& value) {
  const auto keep_text = [this](const std::wstring& text) {
    const std::u16string units = to_utf16(text);
    buffer_.assign(reinterpret_cast<const char*>(units.data()), units.size() * sizeof(char16_t));
  };
  if (const auto* truth = std::get_if<bool>(&value)) bit_ = *truth ? 1 : 0;
  if (const auto* integer = std::get_if<std::int64_t>(&value)) integer_ = *integer;
  if (const auto* real = std::get_if<double>(&value)) real_ = *real;
  if (const auto* decimal = std::get_if<Decimal>(&value)) keep_text(decimal->digits);
  if (const auto* moment = std::get_if<Moment>(&value)) moment_ = *moment;
  if (const auto* text = std::get_if<std::wstring>(&value)) keep_text(*text);
  if (const auto* bytes = std::get_if<Bytes>(&value)) buffer_ = bytes->data;
}

short BoundParameter::bind(void* statement, unsigned short number, const Parameter& parameter) {
  Wire wire = wire_of(parameter.kind);
  keep(parameter.value);
  if (const auto* decimal = std::get_if<Decimal>(&parameter.value)) wire.digits = scale_of(decimal->digits);
  const bool is_null = std::holds_alternative<std::monostate>(parameter.value);
  indicator_ = is_null ? SQL_NULL_DATA : static_cast<SQLLEN>(buffer_.size());
  if (wire.c_type == SQL_C_WCHAR || wire.c_type == SQL_C_BINARY) {
    const std::size_t unit = wire.c_type == SQL_C_BINARY ? 1 : sizeof(char16_t);
    if (wire.size == 0) wire.size = std::max<std::size_t>(buffer_.size() / unit, 1);
    if (parameter.direction != Direction::in) {
      const std::size_t wanted = (parameter.size > 0 ? parameter.size : 4000) * unit;
      buffer_.resize(std::max(buffer_.size(), std::min(wanted, kMostResultBytes) + unit));
    }
  }
  SQLPOINTER at = buffer_.data();
  if (wire.c_type == SQL_C_BIT) at = &bit_;
  if (wire.c_type == SQL_C_SBIGINT) at = &integer_;
  if (wire.c_type == SQL_C_DOUBLE) at = &real_;
  if (wire.c_type == SQL_C_TYPE_TIMESTAMP) at = &moment_;
  return SQLBindParameter(statement, number, io_type(parameter.direction), wire.c_type, wire.sql_type, wire.size,
                          wire.digits, at, static_cast<SQLLEN>(buffer_.size()), &indicator_);
}

Value BoundParameter::result(Kind kind) const {
  if (indicator_ == SQL_NULL_DATA) return {};
  const SQLSMALLINT c_type = wire_of(kind).c_type;
  if (c_type == SQL_C_BIT) return bit_ != 0;
  if (c_type == SQL_C_SBIGINT) return integer_;
  if (c_type == SQL_C_DOUBLE) return real_;
  if (c_type == SQL_C_TYPE_TIMESTAMP) return moment_;
  const std::size_t written = std::min(static_cast<std::size_t>(std::max<SQLLEN>(indicator_, 0)), buffer_.size());
  if (c_type == SQL_C_BINARY) return Bytes{buffer_.substr(0, written)};
  std::u16string units(written / sizeof(char16_t), u'\0');
  std::memcpy(units.data(), buffer_.data(), units.size() * sizeof(char16_t));
  std::wstring text;
  append_utf16(text, units);
  if (kind == Kind::decimal) return Decimal{text};
  return text;
}

}  // namespace korlib::odbc
