// How much memory each thread has taken from the allocator.
//
// The program's malloc and free are the C library's with a count around them. So whatever anybody takes for a page, the
// component, a database driver or the host itself, is counted where it is taken, and nothing that grows needs to report
// it. Counting costs one or two nanoseconds a block. What the script engine takes for its objects is not among it: that
// comes from the system, and the engine tells how much it is. A large block that the page on the thread may not take
// (korlib_host/memory_limit.h) is refused as if there were no more memory, to the engine as well.
#pragma once

#include <korlib_host/memory_limit.h>

#include <atomic>
#include <cstdint>

namespace zelto {

class ThreadMemory {
 public:
  static ThreadMemory& of_this_thread() noexcept;
  // What all threads have taken, each to within 64 KiB.
  static std::int64_t of_all_threads() noexcept;

  constexpr ThreadMemory() = default;
  ThreadMemory(const ThreadMemory&) = delete;
  ThreadMemory& operator=(const ThreadMemory&) = delete;

  // Bytes taken and not given back: less than nothing for a thread that frees what others took. Any thread may ask.
  std::int64_t taken() const noexcept { return taken_.load(std::memory_order_relaxed); }

  // For the thread itself.
  void count(std::int64_t bytes) noexcept {
    set_taken(taken() + bytes);
    unreported_ += bytes;
    if (unreported_ >= kStep || unreported_ <= -kStep) report();
  }
  void set_taken(std::int64_t bytes) noexcept { taken_.store(bytes, std::memory_order_relaxed); }

 private:
  static constexpr std::int64_t kStep = 64 << 10;

  void report() noexcept;

  std::atomic<std::int64_t> taken_{0};
  std::int64_t unreported_ = 0;  // to the sum of all threads
};

// What the thread takes while it lives is for others, who will free it, and does not count as its own.
class TakenForOthers {
 public:
  TakenForOthers() noexcept
      : memory_(ThreadMemory::of_this_thread()), before_(memory_.taken()), limit_(korlib_host::memory_limit()) {
    korlib_host::set_memory_limit(nullptr);
  }
  ~TakenForOthers() {
    korlib_host::set_memory_limit(limit_);
    memory_.set_taken(before_);
  }
  TakenForOthers(const TakenForOthers&) = delete;
  TakenForOthers& operator=(const TakenForOthers&) = delete;

 private:
  ThreadMemory& memory_;
  const std::int64_t before_;
  korlib_host::MemoryLimit* const limit_;
};

}  // namespace zelto
