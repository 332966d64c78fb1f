#include "app/log_sink.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

#include "text/characters.h"

namespace zelto {

namespace {

constexpr mode_t kMode = 0640;  // a line may hold what others must not read
constexpr std::size_t kMostWaiting = std::size_t{1} << 20;
constexpr std::chrono::milliseconds kLook(100);  // whether what has taken nothing does so now, or was given up
constexpr std::chrono::milliseconds kLastPatience(1000);

}  // namespace

LogSink::LogSink(WhenFull when_full) : outlet_(std::make_shared<Outlet>(Outlet::of_standard(STDERR_FILENO))) {
  set_when_full(when_full);
}

LogSink::~LogSink() {
  writer_ = {};
  const std::scoped_lock guard(mutex_);
  if (lines_.empty()) return;
  outlet_->wait(kLastPatience);
  write();
}

void LogSink::set_when_full(WhenFull when_full) {
  {
    const std::scoped_lock guard(mutex_);
    when_full_ = when_full;
  }
  writer_ = {};
  if (when_full == WhenFull::keep) writer_ = std::jthread([this](const std::stop_token& stop) { write_later(stop); });
}

void LogSink::open(const std::string& file) {
  // Not to wait, should it be a pipe.
  constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  base::FileDescriptor opened(file.empty() ? -1 : ::open(file.c_str(), kFlags, kMode));
  if (!opened && !file.empty()) throw std::system_error(errno, std::generic_category(), "opening the log " + file);
  const auto outlet = std::make_shared<Outlet>(opened ? Outlet(std::move(opened)) : Outlet::of_standard(STDERR_FILENO));
  const std::scoped_lock guard(mutex_);
  write();
  outlet_ = outlet;
  begun_ = 0;
  is_torn_ = false;
}

void LogSink::sink_it_(const spdlog::details::log_msg& message) {
  std::string line = plain_line({message.payload.data(), message.payload.size()});
  line += '\n';
  take(std::move(line), 1);
}

void LogSink::write_lines(std::string_view lines, std::size_t count) {
  const std::scoped_lock guard(mutex_);
  take(std::string(lines), count);
}

void LogSink::take(std::string text, std::uint64_t lines) {
  tell_lost();
  add(std::move(text), lines);
  write();
  if (!lines_.empty()) added_.notify_all();
}

void LogSink::add(std::string text, std::uint64_t lost) {
  if (!lines_.empty() && bytes_ + text.size() > kMostWaiting) {
    lost_ += lost;
    why_lost_ = EAGAIN;
    return;
  }
  bytes_ += text.size();
  lines_.push_back({std::move(text), lost});
}

void LogSink::tell_lost() {
  if (lost_ == 0) return;
  const std::uint64_t lost = std::exchange(lost_, 0);
  const std::string why = why_lost_ == EAGAIN ? "nobody read them" : std::generic_category().message(why_lost_);
  add(fmt::format("zelto: {} {} of the log lost: {}\n", lost, lost == 1 ? "line" : "lines", why), lost);
}

// As many as are taken.
void LogSink::write() {
  while (!lines_.empty()) {
    const int error = write_first();
    if (error == EAGAIN && when_full_ == WhenFull::wait) {
      outlet_->wait(kLook);
    } else if (error == EAGAIN) {
      if (when_full_ == WhenFull::lose) lose_all(error);
      return;
    } else if (error != 0) {
      lose_all(error);
      return;
    }
  }
}

int LogSink::write_first() {
  std::size_t written = 0;
  if (is_torn_) {
    if (const int error = outlet_->write("\n", written)) return error;
    is_torn_ = false;
  }
  const std::string& text = lines_.front().text;
  const int error = outlet_->write(std::string_view(text).substr(begun_), written);
  begun_ += written;
  if (error != 0) return error;
  bytes_ -= text.size();
  begun_ = 0;
  lines_.pop_front();
  return 0;
}

void LogSink::lose_all(int error) {
  for (const Line& line : lines_) lost_ += line.lost;
  why_lost_ = error;
  is_torn_ |= begun_ > 0;
  begun_ = 0;
  bytes_ = 0;
  lines_.clear();
}

void LogSink::write_later(const std::stop_token& stop) {
  std::unique_lock lock(mutex_);
  while (added_.wait(lock, stop, [this] { return !lines_.empty(); }) && !stop.stop_requested()) {
    const auto outlet = outlet_;
    lock.unlock();
    outlet->wait(kLook);
    lock.lock();
    write();
    if (!lines_.empty() || lost_ == 0) continue;
    tell_lost();
    write();
  }
}

}  // namespace zelto
