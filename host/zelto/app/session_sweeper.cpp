#include "app/session_sweeper.h"

namespace zelto {

SessionSweeper::SessionSweeper(SessionStore& store, std::chrono::milliseconds pause)
    : store_(store), pause_(pause), thread_([this] { run(); }) {}

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
    guard.lock();
  }
}

}  // namespace zelto
