#include "http/answer_queue.h"

#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <system_error>
#include <utility>

namespace zelto {

namespace {

// What send() sends before other connections get their turn.
constexpr std::uint64_t kPass = std::uint64_t{1} << 20;
// What is kept in memory whatever others have taken.
constexpr std::size_t kAlwaysKept = std::size_t{16} * 1024;

bool takes_no_more(int error) { return error == EAGAIN || error == EWOULDBLOCK; }

}  // namespace

void AnswerQueue::begin(int socket, std::chrono::milliseconds patience) {
  const Lock lock(lock_);
  fail_locked();
  failed_ = false;
  socket_ = socket;
  patience_ = patience;
  may_wait_ = patience.count() > 0;
}

// What goes on after bytes that could not be kept would be another answer.
void AnswerQueue::write(std::string_view first, std::string_view second, bool file_follows) {
  try {
    write_or_keep(first, second, file_follows ? MSG_MORE : 0);
  } catch (...) {
    fail();
    throw;
  }
}

void AnswerQueue::write_last(std::string bytes) {
  if (!bytes.empty() && may_hold_ && may_hold_()) {
    const Lock lock(lock_);
    if (failed_) return;
    if (is_empty()) {
      memory_ = std::move(bytes);
      held_ = true;
      return;
    }
  }
  write(bytes);
}

bool AnswerQueue::is_held() const {
  const Lock lock(lock_);
  return held_;
}

void AnswerQueue::release() {
  {
    const Lock lock(lock_);
    if (!std::exchange(held_, false)) return;
    send_memory();
    if (failed_ || is_empty() || std::exchange(sending_, true)) return;
  }
  on_kept_();
}

void AnswerQueue::write_or_keep(std::string_view first, std::string_view second, int flags) {
  {
    Lock lock(lock_);
    if (!failed_ && is_empty()) send_now(first, second, flags);
    if (failed_ || (first.empty() && second.empty())) return;
    while (!keep(first, second)) {
      if (is_empty()) keep_part(first, second);
      wait_until_empty(lock);
      if (!failed_) send_now(first, second);
      if (failed_ || (first.empty() && second.empty())) return;
    }
    if (std::exchange(sending_, true)) return;
  }
  on_kept_();
}

// So that there is something to send, and to wait for.
void AnswerQueue::keep_part(std::string_view& first, std::string_view& second) {
  for (std::string_view* bytes : {&first, &second}) {
    const std::size_t count = std::min(bytes->size(), kAlwaysKept - memory_.size());
    memory_ += bytes->substr(0, count);
    bytes->remove_prefix(count);
  }
}

void AnswerQueue::wait_until_empty(Lock& lock) {
  if (!std::exchange(sending_, true)) {
    lock.unlock();
    on_kept_();
    lock.lock();
  }
  const auto began = std::chrono::steady_clock::now();
  if (!room_.wait_for(lock, patience_, [this] { return failed_ || is_empty(); })) fail_locked();
  patience_ -= std::min(patience_, std::chrono::steady_clock::now() - began);
}

void AnswerQueue::write_file(SharedFile file, std::uint64_t offset, std::uint64_t length) {
  {
    const Lock lock(lock_);
    if (failed_ || file_ || length == 0) return;
    file_ = std::move(file);
    file_offset_ = offset;
    file_end_ = offset + length;
    if (std::exchange(sending_, true)) return;
  }
  try {
    on_kept_();
  } catch (...) {
    fail();
    throw;
  }
}

// Until the socket takes no more.
void AnswerQueue::send_now(std::string_view& first, std::string_view& second, int flags) {
  while (!first.empty() || !second.empty()) {
    // sendmsg does not write through these.
    std::array<iovec, 2> parts = {iovec{const_cast<char*>(first.data()), first.size()},
                                  iovec{const_cast<char*>(second.data()), second.size()}};
    msghdr message{};
    message.msg_iov = parts.data();
    message.msg_iovlen = parts.size();
    const ssize_t sent = ::sendmsg(socket_, &message, MSG_NOSIGNAL | MSG_DONTWAIT | flags);
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0 && takes_no_more(errno)) return;
    if (sent < 0) return fail_locked();
    const auto of_first = std::min(static_cast<std::size_t>(sent), first.size());
    first.remove_prefix(of_first);
    second.remove_prefix(static_cast<std::size_t>(sent) - of_first);
    taken_ += static_cast<std::uint64_t>(sent);
  }
}

// In memory as far as one answer may, then in its file, and without one in memory as far as all may. What of the file
// is sent stays there until all is: the system sends the file's own pages, so that they must not change under it.
bool AnswerQueue::keep(std::string_view first, std::string_view second) {
  constexpr auto kAll = std::numeric_limits<std::size_t>::max();
  if (!spooled_ && keep_in_memory(first, second, memory_limit_)) return true;
  return keep_in_file(first, second) || (!spooled_ && keep_in_memory(first, second, kAll));
}

bool AnswerQueue::keep_in_memory(std::string_view first, std::string_view second, std::size_t limit) {
  const std::size_t waiting = memory_.size() - memory_sent_ + first.size() + second.size();
  const bool is_due = !may_wait_ || waiting <= kAlwaysKept;
  if (!is_due && (waiting > limit || !share_.resize(waiting))) return false;
  memory_.erase(0, std::exchange(memory_sent_, 0));
  memory_.append(first).append(second);
  return true;
}

bool AnswerQueue::keep_in_file(std::string_view first, std::string_view second) {
  const std::uint64_t before = spooled_ ? spooled_->size() : 0;
  if (before + first.size() + second.size() > spool_.answer_bytes) return false;
  try {
    if (!spooled_) spooled_.emplace(spool_);
    if (spooled_->append(first) && spooled_->append(second)) {
      spool_.forget_problem();
      return true;
    }
    spool_.tell(spooled_->failure("keeping an answer in " + spool_.folder).what());
  } catch (const std::system_error& error) {  // there can be no file
    spool_.tell(error.what());
  }
  if (spooled_) spooled_->shrink(before);
  if (before == 0) spooled_.reset();
  return false;
}

AnswerQueue::Progress AnswerQueue::send() {
  const Lock lock(lock_);
  const std::uint64_t until = taken_ + kPass;
  bool takes = true;
  while (takes && !failed_ && !is_empty() && taken_ < until) {
    if (memory_sent_ < memory_.size()) {
      takes = send_memory();
    } else if (spooled_) {
      takes = send_from(spooled_->descriptor(), spooled_sent_, spooled_->size());
      if (spooled_ && spooled_sent_ == spooled_->size()) drop_file();
    } else {
      takes = send_from(file_->get(), file_offset_, file_end_);
      if (file_offset_ == file_end_) file_.reset();
    }
  }
  room_.notify_all();
  if (!failed_ && !is_empty()) return Progress::waits;
  sending_ = false;
  return failed_ ? Progress::failed : Progress::sent;
}

bool AnswerQueue::send_memory() {
  std::string_view left = std::string_view(memory_).substr(memory_sent_);
  std::string_view nothing;
  const std::size_t before = left.size();
  send_now(left, nothing);
  if (failed_) return false;
  memory_sent_ += before - left.size();
  if (!left.empty()) return false;
  std::string().swap(memory_);
  memory_sent_ = 0;
  share_.resize(0);
  return true;
}

// One step; false when the socket takes no more.
bool AnswerQueue::send_from(int file, std::uint64_t& offset, std::uint64_t end) {
  auto at = static_cast<off_t>(offset);
  const ssize_t sent = ::sendfile(socket_, file, &at, static_cast<std::size_t>(std::min(end - offset, kPass)));
  if (sent < 0 && errno == EINTR) return true;
  if (sent < 0 && takes_no_more(errno)) return false;
  if (sent <= 0) {  // the client has gone, or the file has become shorter
    fail_locked();
    return false;
  }
  offset += static_cast<std::uint64_t>(sent);
  taken_ += static_cast<std::uint64_t>(sent);
  return true;
}

void AnswerQueue::drop_file() {
  spooled_.reset();
  spooled_sent_ = 0;
}

std::uint64_t AnswerQueue::delivered() const {
  const Lock lock(lock_);
  int waiting = 0;
  if (::ioctl(socket_, SIOCOUTQ, &waiting) != 0 || waiting < 0) waiting = 0;
  return taken_ - std::min(taken_, static_cast<std::uint64_t>(waiting));
}

void AnswerQueue::fail_locked() {
  failed_ = true;
  held_ = false;
  std::string().swap(memory_);
  memory_sent_ = 0;
  share_.resize(0);
  drop_file();
  file_.reset();
  room_.notify_all();
}

void AnswerQueue::fail() {
  const Lock lock(lock_);
  fail_locked();
}

bool AnswerQueue::failed() const {
  const Lock lock(lock_);
  return failed_;
}

bool AnswerQueue::is_sending() const {
  const Lock lock(lock_);
  return sending_;
}

}  // namespace zelto
