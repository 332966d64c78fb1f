// What other threads hand to a loop.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/basic_stream_descriptor.hpp>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace zelto {

// In place of posting: that wakes the loop while it holds the loop's lock, so that where both threads share a processor
// the loop waits for the very thread that woke it, once for each answer. Here it is woken without a lock, and once for
// all letters that come until it looks.
class Mailbox {
 public:
  // Opened on the loop, which keeps `owner` until then. It must not throw.
  struct Letter {
    std::shared_ptr<void> owner;
    void (*open)(void* owner) noexcept;
  };

  explicit Mailbox(boost::asio::io_context& io);
  Mailbox(const Mailbox&) = delete;
  Mailbox& operator=(const Mailbox&) = delete;

  // From any thread. Those of one thread are opened in their order. Throws std::bad_alloc.
  void send(Letter letter);

  // On the loop, or before it runs: letters are opened from now on. Called again after it, or a handler, has failed.
  void watch();

 private:
  void open_all();

  using Bell = boost::asio::posix::basic_stream_descriptor<boost::asio::io_context::executor_type>;

  Bell bell_;  // an eventfd, which rings when there are letters
  std::uint64_t rung_ = 0;
  bool is_watched_ = false;
  std::vector<Letter> opened_;

  std::mutex lock_;  // guards what follows
  std::vector<Letter> letters_;
  bool is_ringing_ = false;
};

}  // namespace zelto
