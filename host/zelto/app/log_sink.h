// Where the lines that the host writes about what it does go.
#pragma once

#include <spdlog/sinks/base_sink.h>

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "app/outlet.h"

namespace zelto {

// Standard error, or the end of a file. A line is the message, without what would steer a terminal or begin another
// line, and nothing else; it is written at once and whole, because other programs may write there too. What cannot be
// written is lost; the next line is tried again, and once one is written, the log says how many were lost before it.
// Any thread may call any method. The library's own file sinks write through a buffer, make files that everybody may
// read, and wait.
class LogSink final : public spdlog::sinks::base_sink<std::mutex> {
 public:
  // What becomes of a line that a pipe, socket or terminal has no room for: whoever logs it waits; it is lost; or it is
  // kept in memory, a few thousand of them, for a thread that writes them.
  enum class WhenFull { wait, lose, keep };

  explicit LogSink(WhenFull when_full = WhenFull::wait);
  // Lines that are kept have a second to be written.
  ~LogSink() override;
  LogSink(const LogSink&) = delete;
  LogSink& operator=(const LogSink&) = delete;

  // Starts the thread for `keep`: not before a process of which copies are made makes the last one.
  void set_when_full(WhenFull when_full);

  // From the next line on writes to the file, which is made when there is none; to standard error when the name is
  // empty. Opens anew the file that it writes to already: it may have been renamed, to be kept. Throws
  // std::system_error, and goes on as before, when it cannot be opened.
  void open(const std::string& file);

  // So many lines, each with its end and nothing in it that a line must not have, in one piece.
  void write_lines(std::string_view lines, std::size_t count);

 private:
  struct Line {
    std::string text;
    std::uint64_t lost;  // lines of the log, if this one is
  };

  void sink_it_(const spdlog::details::log_msg& message) override;
  void flush_() override {}

  // Called with the mutex locked.
  void take(std::string text, std::uint64_t lines);
  void add(std::string text, std::uint64_t lost);
  void tell_lost();
  void write();
  int write_first();
  void lose_all(int error);

  void write_later(const std::stop_token& stop);

  std::shared_ptr<const Outlet> outlet_;
  WhenFull when_full_;
  std::deque<Line> lines_;  // not yet written, all but `begun_` bytes of the first
  std::size_t bytes_ = 0;   // in them
  std::size_t begun_ = 0;
  bool is_torn_ = false;    // the last line that was written has no end
  std::uint64_t lost_ = 0;  // lines, since the log last told
  int why_lost_ = 0;        // an errno
  std::condition_variable_any added_;
  std::jthread writer_;  // ends before the rest goes, which it uses
};

}  // namespace zelto
