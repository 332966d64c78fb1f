// Moments as the driver manager writes them. For the source files that know its types.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include "odbc/value.h"

namespace korlib::odbc {

inline SQL_TIMESTAMP_STRUCT to_stamp(const Moment& moment) {
  SQL_TIMESTAMP_STRUCT stamp{};
  stamp.year = static_cast<SQLSMALLINT>(moment.year);
  stamp.month = static_cast<SQLUSMALLINT>(moment.month);
  stamp.day = static_cast<SQLUSMALLINT>(moment.day);
  stamp.hour = static_cast<SQLUSMALLINT>(moment.hour);
  stamp.minute = static_cast<SQLUSMALLINT>(moment.minute);
  stamp.second = static_cast<SQLUSMALLINT>(moment.second);
  stamp.fraction = moment.nanosecond / 1000 * 1000;  // microseconds, as the bound precision says
  return stamp;
}

inline Moment to_moment(const SQL_TIMESTAMP_STRUCT& stamp) {
  return {stamp.year, stamp.month, stamp.day, stamp.hour, stamp.minute, stamp.second, stamp.fraction};
}

}  // namespace korlib::odbc
