#include "http/spool.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace zelto {

namespace {

std::string folder_of(const SpoolLimits& limits) {
  if (!limits.folder.empty()) return limits.folder;
  const char* given = std::getenv("TMPDIR");
  return given && *given ? given : "/var/tmp";
}

base::FileDescriptor open_nameless(const std::string& folder) {
  constexpr mode_t kMode = 0600;
  base::FileDescriptor file(::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kMode));
  if (file || (errno != EOPNOTSUPP && errno != EISDIR && errno != ENOENT)) return file;
  // A file system that makes no file without a name: one with a name, which is taken away at once.
  std::string name = folder + "/zelto-XXXXXX";
  file = base::FileDescriptor(::mkostemp(name.data(), O_CLOEXEC));
  if (file) ::unlink(name.c_str());
  return file;
}

// One answer cannot take all room from the others.
constexpr std::uint64_t kAnswers = 16;

}  // namespace

Spool::Spool(const SpoolLimits& limits, std::function<void(std::string_view)> report)
    : folder(folder_of(limits)),
      answer_bytes(limits.file_bytes / kAnswers),
      memory(limits.memory_bytes),
      files(limits.file_bytes),
      report_(std::move(report)) {}

void Spool::tell(std::string_view problem) {
  if (report_ && !told_.exchange(true)) report_(problem);
}

SpoolFile::SpoolFile(Spool& spool) : file_(open_nameless(spool.folder)), share_(spool.files) {
  if (!file_) throw std::system_error(errno, std::generic_category(), "making a file in " + spool.folder);
}

bool SpoolFile::append(std::string_view bytes) {
  if (!share_.resize(size_ + bytes.size())) {
    errno = EDQUOT;
    return false;
  }
  std::string_view left = bytes;
  while (!left.empty()) {
    const ssize_t written =
        ::pwrite(file_.get(), left.data(), left.size(), static_cast<off_t>(size_ + bytes.size() - left.size()));
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) {
      const int error = written < 0 ? errno : ENOSPC;
      shrink(size_);
      errno = error;
      return false;
    }
    left.remove_prefix(static_cast<std::size_t>(written));
  }
  size_ += bytes.size();
  return true;
}

void SpoolFile::shrink(std::uint64_t size) {
  // A disk that is full must not keep what did not fit. It can always give space back.
  while (::ftruncate(file_.get(), static_cast<off_t>(size)) != 0 && errno == EINTR) continue;
  size_ = size;
  share_.resize(size_);
}

void SpoolFile::read(char* buffer, std::size_t size) const {
  for (std::size_t read = 0; read < size;) {
    const ssize_t count = ::pread(file_.get(), buffer + read, size - read, static_cast<off_t>(read));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) throw std::system_error(count < 0 ? errno : EIO, std::generic_category(), "reading a spool file");
    read += static_cast<std::size_t>(count);
  }
}

}  // namespace zelto
