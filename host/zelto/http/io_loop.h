// A thread with the sockets and timers that it serves.
#pragma once

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <functional>
#include <string_view>
#include <thread>

#include "http/mailbox.h"

namespace zelto {

// What belongs to one loop runs one after the other, on its thread: it needs neither locks nor strands, and wakes no
// other thread.
class IoLoop {
 public:
  using Executor = boost::asio::io_context::executor_type;

  Executor executor() noexcept { return io_.get_executor(); }
  // For threads that hand over much.
  Mailbox& mailbox() noexcept { return mailbox_; }

  // `on_begin` is called on the thread before anything else, and again after each failure. A handler that throws, for
  // want of memory, is a failure: what it worked for goes with it, and the others go on. `on_failure` is told what went
  // wrong, and may wait. `on_end` is called on the thread once no handler runs any more.
  void start(std::function<void()> on_begin, std::function<void(std::string_view)> on_failure,
             std::function<void()> on_end);
  // Lets the handler that runs end, drops the others, and joins the thread.
  void stop();

 private:
  void run(const std::function<void()>& on_begin, const std::function<void(std::string_view)>& on_failure);

  boost::asio::io_context io_{1};
  boost::asio::executor_work_guard<Executor> work_{io_.get_executor()};
  Mailbox mailbox_{io_};
  std::jthread thread_;
};

}  // namespace zelto
