#include "odbc/database_file.h"

#include <sys/stat.h>

namespace korlib::odbc {

bool DatabaseFile::is_replaced() {
  if (path_.empty()) return false;
  struct stat found = {};
  std::optional<Identity> present;
  if (stat(path_.c_str(), &found) == 0) present = Identity{found.st_dev, found.st_ino};
  if (!first_seen_) first_seen_ = present;
  return first_seen_ != present;
}

}  // namespace korlib::odbc
