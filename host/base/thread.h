// Threads: one with a stack of a given size, which those of the standard library cannot have, and pauses that end
// early.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <stop_token>

namespace base {

// Joins when it goes.
class Thread {
 public:
  // Throws std::system_error when the system has no thread or no memory for the stack. `body` must not throw.
  Thread(std::size_t stack_bytes, std::function<void()> body);
  ~Thread();
  Thread(Thread&&) noexcept;
  Thread& operator=(Thread&&) = delete;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// Runs `body` on a thread of its own with that much stack, and waits for it. What it throws is thrown here.
void run_on_thread(std::size_t stack_bytes, const std::function<void()>& body);

// Waits. True once the time is over, false as soon as the thread is asked to stop.
bool wait_unless_stopped(const std::stop_token& stop, std::chrono::milliseconds time);

}  // namespace base
