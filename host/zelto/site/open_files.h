// The files of a site that were asked for last, kept open.
#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "site/file_answer.h"

namespace zelto {

// By the path that each was asked for. Whether a path still leads to the file that is open is the caller's to find out:
// the cache knows nothing of it. Any thread may call any method.
class OpenFiles {
 public:
  using File = std::shared_ptr<const OpenFile>;

  // Keeps so many; beyond that, the one goes that has not been asked for for longest. None keeps nothing.
  explicit OpenFiles(std::size_t most) : most_(most) {}

  // Null when there is none.
  File find(std::string_view path);
  // In place of what is kept under that path.
  void keep(std::string_view path, File file);
  void forget(std::string_view path);
  // Those that were not asked for since the last call: a file that was deleted takes up room while it is open, and a
  // disk cannot be taken out.
  void close_unused();
  void close_all();

 private:
  struct Entry {
    std::string path;
    File file;
    bool is_used = true;  // since the last close_unused()
  };
  using Entries = std::list<Entry>;  // the one asked for last is the first
  void forget_locked(std::string_view path, Entries& forgotten);

  const std::size_t most_;
  std::mutex lock_;  // guards what follows; never held while a file is closed
  Entries entries_;
  std::unordered_map<std::string_view, Entries::iterator> places_;  // by the path in the entry
};

}  // namespace zelto
