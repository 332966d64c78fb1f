// The file that a database lives in.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace korlib::odbc {

// Tells whether the file at a path is still the one that was there: a connection to a file that was removed
// or replaced reads and writes what nobody else can see.
class DatabaseFile {
 public:
  DatabaseFile() = default;  // of a database without a file, which is never replaced
  explicit DatabaseFile(std::string path) : path_(std::move(path)) { is_replaced(); }

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
