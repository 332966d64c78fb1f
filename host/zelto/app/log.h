// The lines that the host writes about what it does.
#pragma once

#include <mutex>
#include <string>
#include <string_view>

namespace zelto {

// To standard error, or to the end of a file. Any thread may call any method.
class Log {
 public:
  Log() = default;
  ~Log();
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  // From the next line on writes to the file, which is made when there is none; to standard error when the name is
  // empty. Opens anew the file that it writes to already: it may have been renamed, to be kept. Throws
  // std::system_error, and goes on as before, when it cannot be opened.
  void open(const std::string& file);

  // `text` is without its end. Lines are whole, whoever else writes.
  void line(std::string_view text);

 private:
  std::mutex mutex_;  // guards what follows
  int file_ = -1;     // standard error
};

}  // namespace zelto
