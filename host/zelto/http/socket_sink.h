// The response sink of a connection: frames the body and sends it from the worker's thread.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "http/message.h"

namespace zelto {

// What the I/O thread sends when the worker has finished: a slow client keeps no worker waiting for the
// end of an answer that is complete.
struct Unsent {
  std::string bytes;
  base::FileDescriptor file;
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
};

class SocketSink final : public ResponseSink {
 public:
  using Duration = std::chrono::milliseconds;

  struct Terms {
    bool head_only = false;
    int minor_version = 1;
    bool keep_alive = true;
    const std::atomic<bool>* stopping = nullptr;  // asked when the head is written; keeps nothing alive
    Duration send_timeout{};
  };
  // Begins a new response on the socket.
  void reset(int socket, const Terms& terms);
  // Ends a response that cannot be completed, and drops what of it is not sent.
  void abandon() { fail(); }

  void start(ResponseHead head, std::uint64_t length) override;
  void write(std::string_view bytes) override;
  void write_file(base::FileDescriptor file, std::uint64_t offset, std::uint64_t length) override;
  void finish() override;
  void break_off() override;
  bool connected() const override;
  void append_to_log(std::string_view text) override { note_ += text; }

  bool started() const { return started_; }
  bool finished() const { return finished_; }
  // The response must be the connection's last: it was cut short, or only its end tells its length.
  bool must_close() const { return failed_ || !terms_.keep_alive; }
  bool failed() const { return failed_; }
  // The client must not take what it got for the whole: a connection that ends in good order would tell it so.
  bool must_reset() const { return failed_ || (broken_off_ && until_close_); }
  int status() const { return status_; }
  std::uint64_t body_bytes() const { return body_bytes_; }
  const std::string& note() const { return note_; }
  Unsent& unsent() { return unsent_; }

 private:
  void send_pending();
  void send(std::string_view extra);
  bool send_some(std::string_view& first, std::string_view& second);
  void wait_writable();
  void fail();

  int socket_ = -1;
  Terms terms_;

  bool started_ = false;
  bool finished_ = false;
  bool failed_ = false;
  bool broken_off_ = false;
  bool chunked_ = false;
  bool until_close_ = false;
  bool has_body_ = true;
  std::uint64_t remaining_ = 0;  // of a body of known length
  int status_ = 0;
  std::uint64_t body_bytes_ = 0;
  std::string note_;
  Unsent unsent_;
};

}  // namespace zelto
