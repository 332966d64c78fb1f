#include "http/socket_sink.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <utility>

#include "http/response_head.h"
#include "http/status.h"

namespace zelto {

namespace {

// Bytes that a response of known length collects before it is sent in part, and that may be unsent before the worker
// waits for the client.
constexpr std::size_t kGather = std::size_t{64} * 1024;
constexpr std::size_t kBehind = std::size_t{256} * 1024;

std::string chunk_header(std::size_t size) {
  std::array<char, 20> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), size, 16).ptr;
  return std::string(digits.data(), end) + "\r\n";
}

}  // namespace

void SocketSink::reset(int socket, const Terms& terms) {
  socket_ = socket;
  terms_ = terms;
  started_ = finished_ = failed_ = broken_off_ = chunked_ = until_close_ = false;
  has_body_ = true;
  remaining_ = body_bytes_ = 0;
  status_ = 0;
  note_.clear();
  unsent_ = Unsent();
}

void SocketSink::start(ResponseHead head, std::uint64_t length) {
  if (started_) return;
  started_ = true;
  status_ = head.status;
  has_body_ = !terms_.head_only && !is_bodiless(head.status);
  if (terms_.stopping && *terms_.stopping) terms_.keep_alive = false;
  Framing framing = Framing::length;
  if (is_bodiless(head.status)) {
    framing = Framing::none;
  } else if (length == kUnknownLength) {
    framing = terms_.minor_version > 0 ? Framing::chunked : Framing::until_close;
    if (framing == Framing::until_close) terms_.keep_alive = false;
  }
  chunked_ = framing == Framing::chunked;
  until_close_ = framing == Framing::until_close && has_body_;
  remaining_ = length;
  unsent_.bytes = write_response_head(head, framing, length, terms_.keep_alive);
}

void SocketSink::write(std::string_view bytes) {
  if (!started_ || finished_ || failed_ || !has_body_ || bytes.empty()) return;
  if (chunked_) {
    unsent_.bytes += chunk_header(bytes.size());
  } else if (remaining_ != kUnknownLength) {
    bytes = bytes.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), remaining_)));
    remaining_ -= bytes.size();
  }
  body_bytes_ += bytes.size();
  const bool gathers = !chunked_ && remaining_ != kUnknownLength && unsent_.bytes.size() + bytes.size() < kGather;
  if (gathers) {
    unsent_.bytes += bytes;
    return;
  }
  send(bytes);
  if (chunked_) unsent_.bytes += "\r\n";
}

void SocketSink::write_file(base::FileDescriptor file, std::uint64_t offset, std::uint64_t length) {
  if (!started_ || finished_ || failed_ || !has_body_ || chunked_ || length > remaining_ || unsent_.file) return;
  unsent_.file = std::move(file);
  unsent_.offset = offset;
  unsent_.length = length;
  if (remaining_ != kUnknownLength) remaining_ -= length;
  body_bytes_ += length;
}

void SocketSink::finish() {
  if (!started_ || finished_) return;
  finished_ = true;
  if (failed_) return;
  if (has_body_ && chunked_) unsent_.bytes += "0\r\n\r\n";
  if (has_body_ && !chunked_ && remaining_ != 0 && remaining_ != kUnknownLength) {
    fail();
    return;
  }
  send_pending();
}

void SocketSink::break_off() {
  if (!started_ || finished_) return;
  finished_ = broken_off_ = true;
  terms_.keep_alive = false;
  if (!failed_) send_pending();
}

void SocketSink::send_pending() {
  std::string_view pending = unsent_.bytes;
  std::string_view nothing;
  if (send_some(pending, nothing)) unsent_.bytes.erase(0, unsent_.bytes.size() - pending.size());
}

// Sends what is pending, then `extra`; keeps what the socket does not take.
void SocketSink::send(std::string_view extra) {
  std::string_view pending = unsent_.bytes;
  while (!failed_) {
    if (!send_some(pending, extra)) return;
    // A body that is complete waits for its client in memory.
    if (remaining_ == 0 || pending.size() + extra.size() <= kBehind) break;
    wait_writable();
  }
  if (failed_) return;
  std::string kept(pending);
  kept += extra;
  unsent_.bytes.swap(kept);
}

// One pass without waiting, until the socket takes no more; false when the client is gone.
bool SocketSink::send_some(std::string_view& first, std::string_view& second) {
  while (!first.empty() || !second.empty()) {
    // sendmsg does not write through these.
    std::array<iovec, 2> parts = {iovec{const_cast<char*>(first.data()), first.size()},
                                  iovec{const_cast<char*>(second.data()), second.size()}};
    msghdr message{};
    message.msg_iov = parts.data();
    message.msg_iovlen = parts.size();
    const ssize_t sent = ::sendmsg(socket_, &message, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return true;
    if (sent < 0) {
      fail();
      return false;
    }
    const auto of_first = std::min(static_cast<std::size_t>(sent), first.size());
    first.remove_prefix(of_first);
    second.remove_prefix(static_cast<std::size_t>(sent) - of_first);
  }
  return true;
}

void SocketSink::wait_writable() {
  pollfd waiting{socket_, POLLOUT, 0};
  const int timeout = terms_.send_timeout.count() == 0 ? -1 : static_cast<int>(terms_.send_timeout.count());
  int ready = 0;
  do ready = ::poll(&waiting, 1, timeout);
  while (ready < 0 && errno == EINTR);
  if (ready <= 0 || (waiting.revents & (POLLERR | POLLNVAL)) != 0) fail();
}

void SocketSink::fail() {
  failed_ = true;
  unsent_ = Unsent();
}

bool SocketSink::connected() const {
  if (failed_) return false;
  pollfd state{socket_, POLLRDHUP, 0};
  return ::poll(&state, 1, 0) == 0;
}

}  // namespace zelto
