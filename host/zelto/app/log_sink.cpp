#include "app/log_sink.h"

#include <fcntl.h>
#include <spdlog/pattern_formatter.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

namespace zelto {

namespace {

constexpr mode_t kMode = 0640;  // a line may hold what others must not read

}  // namespace

LogSink::LogSink() : base_sink(std::make_unique<spdlog::pattern_formatter>("%v")) {}

void LogSink::open(const std::string& file) {
  base::FileDescriptor opened(file.empty() ? -1
                                           : ::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, kMode));
  if (!opened && !file.empty()) throw std::system_error(errno, std::generic_category(), "opening the log " + file);
  const std::scoped_lock guard(mutex_);
  file_ = std::move(opened);
}

void LogSink::sink_it_(const spdlog::details::log_msg& message) {
  spdlog::memory_buf_t line;
  formatter_->format(message, line);
  // A failure cannot be reported anywhere.
  base::write_all(file_ ? file_.get() : STDERR_FILENO, {line.data(), line.size()});
}

}  // namespace zelto
