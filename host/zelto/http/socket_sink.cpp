#include "http/socket_sink.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "http/response_head.h"
#include "http/status.h"

namespace zelto {

namespace {

// Bytes that a response of known length collects before it is sent in part.
constexpr std::size_t kGather = std::size_t{64} * 1024;

std::string chunk_header(std::size_t size) {
  std::array<char, 20> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), size, 16).ptr;
  return std::string(digits.data(), end) + "\r\n";
}

}  // namespace

void SocketSink::reset(int socket, const Terms& terms) {
  socket_ = socket;
  terms_ = terms;
  started_ = finished_ = broken_off_ = chunked_ = until_close_ = false;
  has_body_ = true;
  remaining_ = body_bytes_ = 0;
  status_ = 0;
  note_.clear();
  gathered_.clear();
  queue_.begin(socket, terms.patience);
}

void SocketSink::start(ResponseHead head, std::uint64_t length) {
  if (started_) return;
  has_body_ = !terms_.head_only && !is_bodiless(head.status);
  if (terms_.stopping && *terms_.stopping) terms_.keep_alive = false;
  Framing framing = Framing::length;
  if (head.status == status::kResetContent) {
    length = 0;  // of the answers without a body the one whose end must be told
  } else if (is_bodiless(head.status)) {
    framing = Framing::none;
  } else if (length == kUnknownLength) {
    framing = terms_.minor_version > 0 ? Framing::chunked : Framing::until_close;
    if (framing == Framing::until_close) terms_.keep_alive = false;
  }
  chunked_ = framing == Framing::chunked;
  until_close_ = framing == Framing::until_close && has_body_;
  remaining_ = length;
  gathered_ = write_response_head(head, framing, length, terms_.keep_alive);
  status_ = head.status;
  started_ = true;
}

// An answer that lacks bytes fails: others after it would be taken for them.
void SocketSink::write(std::string_view bytes) {
  if (!started_ || finished_ || !has_body_ || bytes.empty()) return;
  try {
    write_body(bytes);
  } catch (...) {
    queue_.fail();
    throw;
  }
}

void SocketSink::write_body(std::string_view bytes) {
  if (chunked_) {
    gathered_ += chunk_header(bytes.size());
  } else if (remaining_ != kUnknownLength) {
    bytes = bytes.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), remaining_)));
    remaining_ -= bytes.size();
  }
  body_bytes_ += bytes.size();
  const bool gathers = !chunked_ && remaining_ != kUnknownLength && gathered_.size() + bytes.size() < kGather;
  if (gathers) {
    gathered_ += bytes;
    return;
  }
  send(bytes);
  if (chunked_) gathered_ += "\r\n";
}

void SocketSink::send(std::string_view bytes, bool file_follows) {
  queue_.write(gathered_, bytes, file_follows);
  gathered_.clear();
}

void SocketSink::write_file(SharedFile file, std::uint64_t offset, std::uint64_t length) {
  if (!started_ || finished_ || !has_body_ || chunked_ || length > remaining_) return;
  send({}, length > 0);
  queue_.write_file(std::move(file), offset, length);
  if (remaining_ != kUnknownLength) remaining_ -= length;
  body_bytes_ += length;
}

void SocketSink::finish() {
  if (!started_ || finished_) return;
  finished_ = true;
  if (has_body_ && chunked_) gathered_ += "0\r\n\r\n";
  if (has_body_ && !chunked_ && remaining_ != 0 && remaining_ != kUnknownLength) return queue_.fail();
  if (!terms_.keep_alive) return send({});
  queue_.write_last(std::move(gathered_));
  gathered_.clear();
}

void SocketSink::break_off() {
  if (!started_ || finished_) return;
  finished_ = broken_off_ = true;
  terms_.keep_alive = false;
  send({});
}

bool SocketSink::connected() const {
  if (failed()) return false;
  pollfd state{socket_, POLLRDHUP, 0};
  return ::poll(&state, 1, 0) == 0;
}

}  // namespace zelto
