#include "pages/source_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "base/file_descriptor.h"
#include "text/charset.h"

namespace zelto::pages {

namespace {

constexpr LONG kUtf16LittleEndian = 1200;
constexpr LONG kUtf16BigEndian = 1201;

std::optional<FileStamp> regular_file_stamp(const struct stat& status) {
  if (!S_ISREG(status.st_mode)) return std::nullopt;
  return FileStamp::of(status);
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
  SourceBytes source{std::string(static_cast<std::size_t>(stamp->size), '\0'), *stamp, stamp->is_settled()};
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
