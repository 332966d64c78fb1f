// What tells, without reading it, whether a file is still as it was.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

namespace base {

// Everything that changes when a file is edited or replaced. Two equal stamps are the same contents, unless both were
// taken within a tick of the file system's clock.
struct FileStamp {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  long long modified = 0;  // nanoseconds
  long long changed = 0;   // likewise, of the entry itself: an edit that restores the time shows here

  static FileStamp of(const struct stat& status);
  // False while the last change is so recent that another one might leave the stamp as it is. What is read once this
  // is true shows by its stamp when it is out of date.
  bool is_settled() const;

  friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

}  // namespace base
