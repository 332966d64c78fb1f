// Ends the program when it does not end by itself.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace zelto {

// A page may loop, or wait for a database, long after its client has been told goodbye; a thread cannot be
// stopped from outside, but the program can.
class LastResort {
 public:
  // Calls `act`, on a thread of its own, unless this is destroyed within `patience`.
  LastResort(std::chrono::milliseconds patience, std::function<void()> act);
  ~LastResort();
  LastResort(const LastResort&) = delete;
  LastResort& operator=(const LastResort&) = delete;

 private:
  void wait(std::chrono::milliseconds patience);

  const std::function<void()> act_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool needless_ = false;
  std::thread thread_;
};

}  // namespace zelto
