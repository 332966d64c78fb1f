// Threads: one with a stack of a given size, which those of the standard library cannot have, pauses that end early,
// how the calling one is woken, and how deep it may still go.
#pragma once

#include <pthread.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <stop_token>

namespace base {

// Joins when it goes. Its stack is of that size and not larger, so that a recursion goes equally deep on each thread of
// a size: the C library would hand on the stack of a thread that has ended, up to four times as large.
class Thread {
 public:
  // Throws std::system_error when the system has no thread or no memory for the stack. `body` must not throw.
  Thread(std::size_t stack_bytes, std::function<void()> body);
  ~Thread();
  Thread(Thread&&) noexcept;
  Thread& operator=(Thread&&) = delete;

 private:
  struct Running;
  std::unique_ptr<Running> running_;  // null once it was moved from
};

// Runs `body` on a thread of its own with that much stack, and waits for it. What it throws is thrown here.
void run_on_thread(std::size_t stack_bytes, const std::function<void()>& body);

// From now on the calling thread does not interrupt another one when it is woken, nor do those that it starts: it has
// its turn once a processor is free, or at the end of the other's. Where threads hand much to each other on one
// processor, each then finds more to do at once, and the processor changes between them less often. A system that
// refuses leaves the thread as it is.
void wake_without_interrupting() noexcept;

// Waits. True once the time is over, false as soon as the thread is asked to stop.
bool wait_unless_stopped(const std::stop_token& stop, std::chrono::milliseconds time);

// Bytes between the caller's frame and the end of its thread's stack that can be used; all of the address space where
// the system does not tell.
std::size_t stack_room() noexcept;

}  // namespace base
