// Where the lines that the host writes about what it does go.
#pragma once

#include <spdlog/sinks/base_sink.h>

#include <mutex>
#include <string>

#include "base/file_descriptor.h"

namespace zelto {

// Standard error, or the end of a file. A line is the message and nothing else; it is written at once and whole,
// because other programs may write there too. Any thread may call any method. The library's own file sinks write
// through a buffer, and make files that everybody may read.
class LogSink final : public spdlog::sinks::base_sink<std::mutex> {
 public:
  LogSink();

  // From the next line on writes to the file, which is made when there is none; to standard error when the name is
  // empty. Opens anew the file that it writes to already: it may have been renamed, to be kept. Throws
  // std::system_error, and goes on as before, when it cannot be opened.
  void open(const std::string& file);

 private:
  void sink_it_(const spdlog::details::log_msg& message) override;
  void flush_() override {}

  base::FileDescriptor file_;  // none for standard error
};

}  // namespace zelto
