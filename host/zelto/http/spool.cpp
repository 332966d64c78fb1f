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

std::string spool_folder(const SpoolLimits& limits) {
  if (!limits.folder.empty()) return limits.folder;
  const char* given = std::getenv("TMPDIR");
  return given && *given ? given : "/var/tmp";
}

base::FileDescriptor open_nameless(const std::string& folder) {
  constexpr mode_t kMode = 0600;
  base::FileDescriptor file(::open(folder.c_str(), O_TMPFILE | O_RDWR | O_APPEND | O_CLOEXEC, kMode));
  if (file || (errno != EOPNOTSUPP && errno != EISDIR && errno != ENOENT)) return file;
  // A file system that makes no file without a name: one with a name, which is taken away at once.
  std::string name = folder + "/zelto-XXXXXX";
  file = base::FileDescriptor(::mkostemp(name.data(), O_APPEND | O_CLOEXEC));
  if (file) ::unlink(name.c_str());
  return file;
}

// One answer cannot take all room from the others.
constexpr std::uint64_t kAnswers = 16;

}  // namespace

Spool::Spool(const SpoolLimits& limits, std::function<void(std::string_view)> report)
    : folder(spool_folder(limits)),
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
  const bool has_share = share_.resize(size_ + bytes.size());
  error_ = has_share ? base::write_all(file_.get(), bytes) : 0;
  if (has_share && error_ == 0) {
    size_ += bytes.size();
    return true;
  }
  shrink(size_);
  return false;
}

std::system_error SpoolFile::failure(const std::string& task) const {
  if (error_ == 0) return {EDQUOT, std::generic_category(), task + ": no room is left of spool_limit"};
  return {error_, std::generic_category(), task};
}

void SpoolFile::shrink(std::uint64_t size) {
  // A disk that is full must not keep what did not fit. It can always give space back.
  while (::ftruncate(file_.get(), static_cast<off_t>(size)) != 0 && errno == EINTR) continue;
  size_ = size;
  share_.resize(size_);
}

void SpoolFile::read(char* buffer, std::size_t size) const {
  ::lseek(file_.get(), 0, SEEK_SET);
  std::size_t got = 0;
  int error = base::read_all(file_.get(), {buffer, size}, got);
  if (error == 0 && got < size) error = EIO;
  if (error != 0) throw std::system_error(error, std::generic_category(), "reading a spool file");
}

}  // namespace zelto
