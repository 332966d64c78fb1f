// The contents of small files that were read last.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "base/file_stamp.h"

namespace korlib {

// A page reads its templates with each request. One look at the path tells whether what was read is still what is
// there; opening, reading and closing it are three calls of the system more. Any thread may call any method.
class RecentFiles {
 public:
  static RecentFiles& instance();

  using Contents = std::shared_ptr<const std::string>;
  // Null when the file has to be read.
  Contents find(const std::string& path);
  // The stamp as it was before the bytes were read.
  void keep(const std::string& path, const base::FileStamp& stamp, std::string_view bytes);

 private:
  struct File {
    base::FileStamp stamp;
    Contents contents;
  };

  std::mutex lock_;  // guards what follows
  std::unordered_map<std::string, File> files_;
};

}  // namespace korlib
