// The bytes of an answer on their way: what the client has not taken yet waits here and keeps no worker.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "http/message.h"
#include "http/spool.h"

namespace zelto {

// One thread writes, another one sends; any thread may ask. What is written goes to the socket at once while nothing
// waits; the rest waits in memory, and beyond that in a spool file.
class AnswerQueue {
 public:
  // `on_kept` is called by the writer's thread when bytes wait and nobody sends: send() must then be called until it
  // has sent everything.
  // `may_hold` is asked, by the writer's thread, whether somebody will call release() soon.
  AnswerQueue(Spool& spool, std::size_t memory_bytes, std::function<void()> on_kept,
              std::function<bool()> may_hold = nullptr)
      : spool_(spool),
        memory_limit_(memory_bytes),
        on_kept_(std::move(on_kept)),
        may_hold_(std::move(may_hold)),
        share_(spool.memory) {}

  // Begins a new answer; forgets what is left of the one before. Its writer waits for `patience` in all; one with none,
  // on a thread that must not wait, has all kept in memory.
  void begin(int socket, std::chrono::milliseconds patience);

  // --- the writer

  // Waits only when neither memory nor file can keep the bytes. A client that does not take them in that time fails.
  // With `file_follows`, what write_file() is given next travels in the same packets.
  void write(std::string_view first, std::string_view second = {}, bool file_follows = false);
  // The answer's end, which is held until release() where that may be: to send several answers one after the other
  // wakes their clients' side once. Nothing is held behind bytes that wait.
  void write_last(std::string bytes);
  bool is_held() const;
  // The answer's end: `length` bytes of the file from `offset`.
  void write_file(SharedFile file, std::uint64_t offset, std::uint64_t length);

  // --- of any thread

  // Sends what is held. What the socket does not take waits as what was written does.
  void release();

  // --- the sender

  enum class Progress { sent, waits, failed };
  // Sends what the socket takes, up to an amount after which others should have their turn.
  Progress send();
  // What the client's side has acknowledged of all that was written.
  std::uint64_t delivered() const;

  // Nothing is sent any more, and nothing kept.
  void fail();
  bool failed() const;
  // Bytes wait, and whoever sends them has been called.
  bool is_sending() const;

 private:
  using Lock = std::unique_lock<std::mutex>;

  bool is_empty() const { return memory_sent_ == memory_.size() && !spooled_ && !file_; }
  void write_or_keep(std::string_view first, std::string_view second, int flags);
  void send_now(std::string_view& first, std::string_view& second, int flags = 0);
  bool keep(std::string_view first, std::string_view second);
  void keep_part(std::string_view& first, std::string_view& second);
  void wait_until_empty(Lock& lock);
  bool keep_in_memory(std::string_view first, std::string_view second, std::size_t limit);
  bool keep_in_file(std::string_view first, std::string_view second);
  bool send_memory();
  bool send_from(int file, std::uint64_t& offset, std::uint64_t end);
  void drop_file();
  void fail_locked();

  Spool& spool_;
  const std::size_t memory_limit_;
  const std::function<void()> on_kept_;
  const std::function<bool()> may_hold_;

  mutable std::mutex lock_;  // guards what follows
  std::condition_variable room_;
  int socket_ = -1;
  bool failed_ = false;
  bool sending_ = false;
  bool held_ = false;        // in memory_, which holds nothing else
  std::uint64_t taken_ = 0;  // by the socket, of all answers: what it still holds may be another one's
  std::chrono::steady_clock::duration patience_{};  // that is left
  bool may_wait_ = false;

  // Sent in this order.
  std::string memory_;
  std::size_t memory_sent_ = 0;
  Share share_;
  std::optional<SpoolFile> spooled_;
  std::uint64_t spooled_sent_ = 0;
  SharedFile file_;
  std::uint64_t file_offset_ = 0;
  std::uint64_t file_end_ = 0;
};

}  // namespace zelto
