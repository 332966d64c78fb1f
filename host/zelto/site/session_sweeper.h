// Ends the sessions that nobody uses any more, and what else is to end so, on a thread of its own.
#pragma once

#include <chrono>
#include <functional>
#include <string_view>
#include <thread>

#include "site/session_store.h"

namespace zelto {

class SessionSweeper {
 public:
  // Both are called on that thread: `log` with a line without its end, `also` in every sweep.
  using Log = std::function<void(std::string_view)>;
  SessionSweeper(SessionStore& store, std::chrono::milliseconds pause, Log log, std::function<void()> also = {});
  SessionSweeper(const SessionSweeper&) = delete;
  SessionSweeper& operator=(const SessionSweeper&) = delete;

 private:
  void report() const;

  SessionStore& store_;
  const Log log_;
  const std::function<void()> also_;
  std::jthread thread_;
};

}  // namespace zelto
