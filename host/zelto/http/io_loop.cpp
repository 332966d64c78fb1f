#include "http/io_loop.h"

#include <exception>
#include <utility>

#include "base/thread.h"

namespace zelto {

void IoLoop::start(std::function<void()> on_begin, std::function<void(std::string_view)> on_failure,
                   std::function<void()> on_end) {
  thread_ = std::jthread(
      [this, on_begin = std::move(on_begin), on_failure = std::move(on_failure), on_end = std::move(on_end)] {
        base::wake_without_interrupting();
        run(on_begin, on_failure);
        on_end();
      });
}

void IoLoop::stop() {
  io_.stop();
  if (thread_.joinable()) thread_.join();
}

void IoLoop::run(const std::function<void()>& on_begin, const std::function<void(std::string_view)>& on_failure) {
  for (;;) {
    try {
      mailbox_.watch();
      on_begin();
      io_.run();
      return;
    } catch (const std::exception& problem) {
      on_failure(problem.what());
    }
  }
}

}  // namespace zelto
