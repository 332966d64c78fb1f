// The file that an embedded database lives in.
#pragma once

#include <sys/stat.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "base/file_stamp.h"
#include "odbc/handle.h"

namespace korlib::odbc {

// Tells whether the file at a path is still the one that was there: a connection to a file that was removed
// or replaced reads and writes what nobody else can see.
class DatabaseFile {
 public:
  DatabaseFile() = default;  // of a database without a file, which is never replaced
  // Of SQLite's database on `connection`. Throws Failure.
  DatabaseFile(const Handle& connection, DriverText way);

  // Looks at the file, and at what was written.
  bool is_replaced();
  // Looks no further than whether it is there.
  bool is_there();
  // Whether the last look is so new that another one would be for nothing: no thread of this process has since then run
  // a statement that may have written, and what other processes write in a millisecond they may as well write after the
  // next look.
  bool was_just_looked_at() const;
  // A statement that may write is run, or a transaction ends, on any connection.
  static void note_write() noexcept;
  // Whether there is one: a database in memory is the connection's own.
  bool exists() const { return !path_.empty(); }
  // Whether nothing was written between the last look and the one before it. A write may leave no trace when it comes
  // soon after another one, so that for a while after one the answer is no.
  bool is_unchanged() const { return path_.empty() || is_unchanged_; }

 private:
  struct Identity {
    dev_t device;
    ino_t number;
    bool operator==(const Identity&) const = default;
  };

  std::optional<Identity> look(struct stat* found);

  std::string path_;
  std::string log_path_;                // of the file beside it that new pages may be written to first
  std::optional<Identity> first_seen_;  // a new database's file may be made late
  base::FileStamp stamp_;
  base::FileStamp log_stamp_;
  bool was_settled_ = false;  // both, at the last look
  bool is_unchanged_ = false;
  std::chrono::steady_clock::time_point looked_at_;
  std::uint64_t writes_seen_ = 0;
};

}  // namespace korlib::odbc
