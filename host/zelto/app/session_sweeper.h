// Ends the sessions that nobody uses any more, on a thread of its own.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "app/session_store.h"

namespace zelto {

class SessionSweeper {
 public:
  SessionSweeper(SessionStore& store, std::chrono::milliseconds pause);
  ~SessionSweeper();
  SessionSweeper(const SessionSweeper&) = delete;
  SessionSweeper& operator=(const SessionSweeper&) = delete;

 private:
  void run();

  SessionStore& store_;
  const std::chrono::milliseconds pause_;
  std::mutex mutex_;
  std::condition_variable stop_asked_;
  bool stops_ = false;
  std::thread thread_;
};

}  // namespace zelto
