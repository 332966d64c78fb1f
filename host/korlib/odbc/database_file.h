// The file that an embedded database lives in.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "odbc/handle.h"

namespace korlib::odbc {

// Tells whether the file at a path is still the one that was there: a connection to a file that was removed
// or replaced reads and writes what nobody else can see.
class DatabaseFile {
 public:
  DatabaseFile() = default;  // of a database without a file, which is never replaced
  // Of SQLite's database on `connection`. Throws Failure.
  DatabaseFile(const Handle& connection, DriverText way);

  bool is_replaced();

 private:
  struct Identity {
    dev_t device;
    ino_t number;
    bool operator==(const Identity&) const = default;
  };

  std::string path_;
  std::optional<Identity> first_seen_;  // a new database's file may be made late
};

}  // namespace korlib::odbc
