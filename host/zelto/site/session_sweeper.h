// Ends the sessions that nobody uses any more, on a thread of its own.
#pragma once

#include <chrono>
#include <functional>
#include <string_view>
#include <thread>

#include "site/session_store.h"

namespace zelto {

class SessionSweeper {
 public:
  // `log` is called on that thread, with a line without its end.
  using Log = std::function<void(std::string_view)>;
  SessionSweeper(SessionStore& store, std::chrono::milliseconds pause, Log log);
  SessionSweeper(const SessionSweeper&) = delete;
  SessionSweeper& operator=(const SessionSweeper&) = delete;

 private:
  void report() const;

  SessionStore& store_;
  const Log log_;
  std::jthread thread_;
};

}  // namespace zelto
