#include "app/open_file_limit.h"

#include <sys/resource.h>

#include <algorithm>

namespace zelto {

namespace {

constexpr std::size_t kForPages = 1024;  // and for files that are kept open, an eighth of it
constexpr std::size_t kFilesEach = 2;    // the connection, and the file that it is sent

}  // namespace

std::size_t connections_that_fit(std::size_t files, std::size_t wanted) {
  const std::size_t for_pages = std::min(kForPages, files / 2);
  return std::min(wanted, std::max<std::size_t>((files - for_pages) / kFilesEach, 1));
}

std::size_t raise_open_file_limit(std::size_t wanted) {
  rlimit files{};
  if (getrlimit(RLIMIT_NOFILE, &files) != 0) return wanted;
  const rlim_t needed = wanted * kFilesEach + kForPages;
  if (files.rlim_cur < needed) {
    rlimit raised = files;
    raised.rlim_cur = std::min(files.rlim_max, needed);
    if (setrlimit(RLIMIT_NOFILE, &raised) == 0) files = raised;
  }
  return connections_that_fit(files.rlim_cur, wanted);
}

}  // namespace zelto
