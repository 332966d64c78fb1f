// What the server's process shows its supervisor, in memory that both share: it can be read when the process has died.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zelto {

class Vitals {
 public:
  // Throws std::system_error when there is no memory.
  explicit Vitals(unsigned workers);

  // The server's process.
  void beat() noexcept { life_->beats.fetch_add(1, std::memory_order_relaxed); }
  // True when none was ready before it, since this was made.
  bool become_ready() noexcept;
  // By the worker of that number, from 0 on, before and after each page.
  void begin_page(unsigned worker, std::string_view method, std::string_view path) noexcept;
  void end_page(unsigned worker) noexcept { notes_[worker].length.store(0, std::memory_order_release); }
  // By when that worker's page must have ended: nanoseconds of the steady clock, which all processes share; 0 for
  // never.
  std::atomic<std::int64_t>& deadline(unsigned worker) noexcept { return notes_[worker].deadline; }

  // The supervisor.
  std::uint32_t beats() const noexcept { return life_->beats; }
  bool is_ready() const noexcept { return life_->is_ready; }
  // "GET /default.asp", of each worker that runs a page.
  std::vector<std::string> pages() const;
  // The first of all pages'; the greatest time point when there is none.
  std::chrono::steady_clock::time_point first_deadline() const noexcept;
  // Before another process starts.
  void clear() noexcept;

 private:
  struct Life {
    std::atomic<std::uint32_t> beats;
    std::atomic<bool> is_ready;
    std::atomic<bool> is_known;  // that one was ready
  };
  struct Note {
    std::atomic<std::uint32_t> length;  // 0 while no page runs; else the text is there, as far as it fits
    char text[244];
    std::atomic<std::int64_t> deadline;
  };
  static_assert(std::atomic<std::uint32_t>::is_always_lock_free && std::atomic<bool>::is_always_lock_free &&
                    std::atomic<std::int64_t>::is_always_lock_free,
                "a lock that died with its holder would be held for ever");
  static_assert(sizeof(Life) % alignof(Note) == 0, "the notes follow it");
  struct Unmap {
    std::size_t bytes;
    void operator()(void* memory) const noexcept;
  };

  const std::unique_ptr<void, Unmap> memory_;
  Life* const life_;
  const std::span<Note> notes_;
};

}  // namespace zelto
