#include "http/answer_queue.h"

#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace zelto {

namespace {

// What send() sends before other connections get their turn.
constexpr std::uint64_t kPass = std::uint64_t{1} << 20;
// What is kept whatever others have taken: an answer of the host's own is written where nothing may wait.
constexpr std::size_t kAlwaysKept = std::size_t{16} * 1024;

bool takes_no_more(int error) { return error == EAGAIN || error == EWOULDBLOCK; }

}  // namespace

void AnswerQueue::begin(int socket) {
  const Lock lock(lock_);
  fail_locked();
  failed_ = false;
  socket_ = socket;
  taken_ = 0;
}

void AnswerQueue::write(std::string_view first, std::string_view second) {
  {
    Lock lock(lock_);
    if (!failed_ && is_empty()) send_now(first, second);
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
  room_.wait(lock, [this] { return failed_ || is_empty(); });
}

void AnswerQueue::write_file(base::FileDescriptor file, std::uint64_t offset, std::uint64_t length) {
  {
    const Lock lock(lock_);
    if (failed_ || file_ || length == 0) return;
    file_ = std::move(file);
    file_offset_ = offset;
    file_end_ = offset + length;
    if (std::exchange(sending_, true)) return;
  }
  on_kept_();
}

// Until the socket takes no more.
void AnswerQueue::send_now(std::string_view& first, std::string_view& second) {
  while (!first.empty() || !second.empty()) {
    // sendmsg does not write through these.
    std::array<iovec, 2> parts = {iovec{const_cast<char*>(first.data()), first.size()},
                                  iovec{const_cast<char*>(second.data()), second.size()}};
    msghdr message{};
    message.msg_iov = parts.data();
    message.msg_iovlen = parts.size();
    const ssize_t sent = ::sendmsg(socket_, &message, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0 && takes_no_more(errno)) return;
    if (sent < 0) return fail_locked();
    const auto of_first = std::min(static_cast<std::size_t>(sent), first.size());
    first.remove_prefix(of_first);
    second.remove_prefix(static_cast<std::size_t>(sent) - of_first);
    taken_ += static_cast<std::uint64_t>(sent);
  }
}

bool AnswerQueue::keep(std::string_view first, std::string_view second) {
  if (!spooled_ && keep_in_memory(first, second)) return true;
  return keep_in_file(first, second);
}

bool AnswerQueue::keep_in_memory(std::string_view first, std::string_view second) {
  const std::size_t waiting = memory_.size() - memory_sent_ + first.size() + second.size();
  if (waiting > std::max(memory_limit_, kAlwaysKept)) return false;
  if (!share_.resize(waiting) && waiting > kAlwaysKept) return false;
  memory_.erase(0, std::exchange(memory_sent_, 0));
  memory_.append(first).append(second);
  return true;
}

bool AnswerQueue::keep_in_file(std::string_view first, std::string_view second) {
  try {
    const bool is_new = !spooled_;
    if (is_new) spooled_.emplace(spool_);
    if (is_new) spooled_sent_ = 0;
    const std::uint64_t before = spooled_->size();
    if (spooled_->append(first) && spooled_->append(second)) return true;
    spooled_->shrink(before);
    if (is_new) spooled_.reset();
  } catch (const std::system_error&) {
    // No file can be made: the writer waits for its client.
  }
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
      if (spooled_ && spooled_sent_ == spooled_->size()) spooled_.reset();
    } else {
      takes = send_from(file_.get(), file_offset_, file_end_);
      if (file_offset_ == file_end_) file_.close();
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

std::uint64_t AnswerQueue::delivered() const {
  const Lock lock(lock_);
  int waiting = 0;
  if (::ioctl(socket_, SIOCOUTQ, &waiting) != 0 || waiting < 0) waiting = 0;
  return taken_ - std::min(taken_, static_cast<std::uint64_t>(waiting));
}

void AnswerQueue::fail_locked() {
  failed_ = true;
  std::string().swap(memory_);
  memory_sent_ = 0;
  share_.resize(0);
  spooled_.reset();
  file_.close();
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
