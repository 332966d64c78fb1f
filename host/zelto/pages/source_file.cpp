#include "pages/source_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <ctime>

#include "base/file_descriptor.h"
#include "text/charset.h"

namespace zelto::pages {

namespace {

constexpr LONG kUtf16LittleEndian = 1200;
constexpr LONG kUtf16BigEndian = 1201;

// File systems take their times from a clock that ticks some hundred times a second.
constexpr long long kTick = 100'000'000;
// A time further ahead comes from a wrong clock, and would never settle.
constexpr long long kAhead = 2'000'000'000;

long long nanoseconds(const timespec& time) { return time.tv_sec * 1'000'000'000LL + time.tv_nsec; }

std::optional<FileStamp> regular_file_stamp(const struct stat& status) {
  if (!S_ISREG(status.st_mode)) return std::nullopt;
  return FileStamp{status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim),
                   nanoseconds(status.st_ctim)};
}

bool is_settled(const FileStamp& stamp) {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  const long long age = nanoseconds(now) - stamp.changed;
  return age > kTick || age < -kAhead;
}

}  // namespace

std::optional<FileStamp> stamp_of(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return regular_file_stamp(status);
}

std::optional<SourceBytes> read_source(const std::string& path) {
  // Without O_NONBLOCK a named pipe would hold the page up until someone writes into it.
  const base::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0) return std::nullopt;
  const std::optional<FileStamp> stamp = regular_file_stamp(status);
  if (!stamp || stamp->size > kMaxSource) return std::nullopt;
  SourceBytes source{std::string(static_cast<std::size_t>(stamp->size), '\0'), *stamp, is_settled(*stamp)};
  std::size_t got = 0;  // less where it became shorter; its stamp has changed then as well
  if (base::read_all(file.get(), source.bytes, got) != 0) return std::nullopt;
  source.bytes.resize(got);
  return source;
}

std::wstring decode_source(std::string_view bytes, LONG code_page) {
  if (bytes.starts_with("\xEF\xBB\xBF")) return to_wide(bytes.substr(3));
  if (bytes.starts_with("\xFF\xFE")) return decode(kUtf16LittleEndian, bytes.substr(2));
  if (bytes.starts_with("\xFE\xFF")) return decode(kUtf16BigEndian, bytes.substr(2));
  return decode(code_page, bytes);
}

}  // namespace zelto::pages
