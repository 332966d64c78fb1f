// Values as they travel between a database and this host, and what a column is.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace korlib::odbc {

struct Moment {
  int year = 1899;
  int month = 12;
  int day = 30;
  int hour = 0;
  int minute = 0;
  int second = 0;
  std::uint32_t nanosecond = 0;
};
struct Bytes {
  std::string data;
};
struct Decimal {
  std::wstring digits;  // "-123.45"
};

using Value = std::variant<std::monostate, bool, std::int64_t, double, Decimal, Moment, std::wstring, Bytes>;
using Row = std::vector<Value>;

enum class Kind {
  kBool,
  kInteger,
  kBigInteger,
  kReal,
  kDecimal,
  kDate,
  kTime,
  kMoment,
  kText,
  kLongText,
  kBinary,
  kLongBinary
};

struct Column {
  std::wstring name;
  Kind kind = Kind::kText;
  std::size_t size = 0;
  int scale = 0;
  bool is_nullable = true;
};

enum class Direction { kIn = 1, kOut = 2, kInOut = 3, kReturn = 4 };

struct Parameter {
  Kind kind = Kind::kText;
  Direction direction = Direction::kIn;
  std::size_t size = 0;  // room for a result of variable length
  int scale = 0;
  Value value;
};

}  // namespace korlib::odbc
