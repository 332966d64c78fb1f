// The response sink of a connection: frames the body, and hands it to the queue from which it is sent.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "http/answer_queue.h"
#include "http/message.h"

namespace zelto {

class SocketSink final : public ResponseSink {
 public:
  struct Terms {
    bool head_only = false;
    int minor_version = 1;
    bool keep_alive = true;
    std::chrono::milliseconds patience{};         // that a write has for its client; none where nothing may wait
    const std::atomic<bool>* stopping = nullptr;  // asked when the head is written; keeps nothing alive
  };
  explicit SocketSink(AnswerQueue& queue) : queue_(queue) {}

  // Begins a new response on the socket.
  void reset(int socket, const Terms& terms);
  // Ends a response that cannot be completed, and drops what of it is not sent.
  void abandon() { queue_.fail(); }

  void start(ResponseHead head, std::uint64_t length) override;
  void write(std::string_view bytes) override;
  void write_file(SharedFile file, std::uint64_t offset, std::uint64_t length) override;
  void finish() override;
  void break_off() override;
  bool connected() const override;
  void append_to_log(std::string_view text) override { note_ += text; }

  bool started() const { return started_; }
  bool finished() const { return finished_; }
  // The response must be the connection's last: it was cut short, or only its end tells its length.
  bool must_close() const { return failed() || !terms_.keep_alive; }
  bool failed() const override { return queue_.failed(); }
  // The client must not take what it got for the whole: a connection that ends in good order would tell it so.
  bool must_reset() const { return failed() || (broken_off_ && until_close_); }
  int status() const { return status_; }
  std::uint64_t body_bytes() const { return body_bytes_; }
  const std::string& note() const { return note_; }

 private:
  void write_body(std::string_view bytes);
  void send(std::string_view bytes, bool file_follows = false);

  AnswerQueue& queue_;
  int socket_ = -1;
  Terms terms_;

  bool started_ = false;
  bool finished_ = false;
  bool broken_off_ = false;
  bool chunked_ = false;
  bool until_close_ = false;
  bool has_body_ = true;
  std::uint64_t remaining_ = 0;  // of a body of known length
  int status_ = 0;
  std::uint64_t body_bytes_ = 0;
  std::string note_;
  std::string gathered_;  // to be sent with what comes next
};

}  // namespace zelto
