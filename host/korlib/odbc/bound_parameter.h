// A parameter in the shape in which a driver reads and writes it.
#pragma once

#include "odbc/value.h"

namespace korlib::odbc {

// The driver keeps its address until the statement has run, so it is neither copied nor moved.
class BoundParameter {
 public:
  BoundParameter() = default;
  BoundParameter(const BoundParameter&) = delete;
  BoundParameter& operator=(const BoundParameter&) = delete;

  // Binds `parameter` as number `number` of the statement, counted from 1; the ODBC result code.
  short bind(void* statement, unsigned short number, const Parameter& parameter);
  // What the driver has put there.
  Value result(Kind kind) const;

 private:
  void keep(const Value& value);

  std::int64_t integer_ = 0;
  double real_ = 0;
  unsigned char bit_ = 0;
  Moment moment_;
  std::string buffer_;  // text as UTF-16, or bytes
  long indicator_ = 0;
};

}  // namespace korlib::odbc
