#include "site/session_sweeper.h"

#include <fmt/format.h>

#include <new>
#include <utility>

#include "base/thread.h"

namespace zelto {

SessionSweeper::SessionSweeper(SessionStore& store, std::chrono::milliseconds pause, Log log,
                               std::function<void()> also)
    : store_(store), log_(std::move(log)), also_(std::move(also)), thread_([this, pause](const std::stop_token& stop) {
        while (base::wait_unless_stopped(stop, pause)) {
          try {
            store_.sweep(SessionStore::Clock::now());
            report();
            if (also_) also_();
          } catch (const std::bad_alloc&) {
            continue;  // there may be memory the next time
          }
        }
      }) {}

void SessionSweeper::report() const {
  const std::size_t evicted = store_.take_evicted();
  if (evicted == 0) return;
  log_(fmt::format("zelto: session_limit ({}) reached: ended {} of the addresses with the most sessions",
                   store_.limit(), evicted));
}

}  // namespace zelto
