// Ends the sessions that nobody uses any more, on a thread of its own.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string_view>
#include <thread>

#include "site/session_store.h"

namespace zelto {

class SessionSweeper {
 public:
  // `log` is called on that thread, with a line without its end.
  using Log = std::function<void(std::string_view)>;
  SessionSweeper(SessionStore& store, std::chrono::milliseconds pause, Log log);
  ~SessionSweeper();
  SessionSweeper(const SessionSweeper&) = delete;
  SessionSweeper& operator=(const SessionSweeper&) = delete;

 private:
  void run();
  void report() const;

  SessionStore& store_;
  const std::chrono::milliseconds pause_;
  const Log log_;
  std::mutex mutex_;
  std::condition_variable stop_asked_;
  bool stops_ = false;
  std::thread thread_;
};

}  // namespace zelto
