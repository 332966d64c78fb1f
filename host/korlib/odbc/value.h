// Values as they travel between a database and this host, and the parameters that carry them.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace korlib::odbc {

// A date and a time of day, without a time zone. A time alone lies on day zero of dates, 1899-12-30. The
// shape is that of SQL_TIMESTAMP_STRUCT, so drivers read and write it in place.
struct Moment {
  std::int16_t year = 1899;
  std::uint16_t month = 12;
  std::uint16_t day = 30;
  std::uint16_t hour = 0;
  std::uint16_t minute = 0;
  std::uint16_t second = 0;
  std::uint32_t nanosecond = 0;
};
struct Bytes {
  std::string data;
};
struct Decimal {
  std::wstring digits;  // "-123.45"
};

// std::monostate is NULL; a text is std::wstring.
using Value = std::variant<std::monostate, bool, std::int64_t, double, Decimal, Moment, std::wstring, Bytes>;
using Row = std::vector<Value>;

// What a column or a parameter holds, whatever its database calls the type. moment has a date and a time.
enum class Kind {
  boolean,
  integer,
  big_integer,
  real,
  decimal,
  date,
  time,
  moment,
  text,
  long_text,
  binary,
  long_binary
};

// Which way a parameter's value goes. The numbers are those that scripts use.
enum class Direction : std::int32_t { in = 1, out = 2, in_out = 3, return_value = 4 };

struct Parameter {
  Kind kind = Kind::text;
  Direction direction = Direction::in;
  std::size_t size = 0;  // room for a result of variable length
  Value value;
};

}  // namespace korlib::odbc
