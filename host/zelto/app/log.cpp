#include "app/log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace zelto {

namespace {

constexpr mode_t kMode = 0640;  // a line may say what is nobody else's business

}  // namespace

Log::~Log() {
  if (file_ >= 0) ::close(file_);
}

void Log::open(const std::string& file) {
  const int opened = file.empty() ? -1 : ::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, kMode);
  if (opened < 0 && !file.empty()) throw std::system_error(errno, std::generic_category(), "opening the log " + file);
  const std::scoped_lock guard(mutex_);
  const int before = std::exchange(file_, opened);
  if (before >= 0) ::close(before);
}

void Log::line(std::string_view text) {
  const std::string whole = std::string(text) + '\n';  // written at once: other programs may write there too
  const std::scoped_lock guard(mutex_);
  for (std::string_view rest = whole; !rest.empty();) {
    const ssize_t written = ::write(file_ < 0 ? STDERR_FILENO : file_, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;  // there is nobody to tell
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace zelto
