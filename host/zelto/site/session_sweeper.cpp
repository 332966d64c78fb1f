#include "site/session_sweeper.h"

#include <fmt/format.h>

#include <utility>

namespace zelto {

SessionSweeper::SessionSweeper(SessionStore& store, std::chrono::milliseconds pause, Log log)
    : store_(store), pause_(pause), log_(std::move(log)), thread_([this] { run(); }) {}

SessionSweeper::~SessionSweeper() {
  {
    const std::scoped_lock guard(mutex_);
    stops_ = true;
  }
  stop_asked_.notify_all();
  thread_.join();
}

void SessionSweeper::run() {
  std::unique_lock guard(mutex_);
  while (!stop_asked_.wait_for(guard, pause_, [this] { return stops_; })) {
    guard.unlock();
    store_.sweep(SessionStore::Clock::now());
    report();
    guard.lock();
  }
}

void SessionSweeper::report() const {
  const std::size_t evicted = store_.take_evicted();
  if (evicted == 0) return;
  log_(fmt::format("zelto: session_limit ({}) reached: ended {} whose clients had not come back", store_.limit(),
                   evicted));
}

}  // namespace zelto
