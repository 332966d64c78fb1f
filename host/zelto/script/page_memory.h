// What a page takes in memory outside of the script engine, against its limit.
#pragma once

#include <korlib_host/memory_limit.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "script/thread_memory.h"

namespace zelto::script {

// One engine's; for its thread but where it says otherwise. What a page frees of what was there before it began counts
// for it, so that it may have taken less than nothing.
//
// Wrappers that no script holds any more keep their objects until the engine collects garbage, and the engine does not
// know how large these are. So long before a page has all that it may take, and again whenever it has taken a part
// more, its garbage is freed; only what is left then is held against it. While a statement of a database runs or gives
// rows nothing can be freed, and all counts.
class PageMemory final : public korlib_host::MemoryLimit {
 public:
  PageMemory() = default;
  PageMemory(const PageMemory&) = delete;
  PageMemory& operator=(const PageMemory&) = delete;

  // What a page may take, and how much the whole program may have for a page to keep more in it. Zero: no limit.
  void set_limits(std::size_t bytes, std::size_t all) noexcept;
  // Around a page.
  void begin() noexcept;
  void end() noexcept;

  std::int64_t taken() const noexcept { return thread_.taken() - at_start_; }
  // Whether it is time to free the page's garbage, and to call look() then.
  bool wants_look() const noexcept { return taken() > next_look_ || is_refused_.load(std::memory_order_relaxed); }
  // Whether the page must end.
  bool look() noexcept;

  bool allows(std::size_t bytes) noexcept override;
  // Up to twice the limit: garbage may be among what it has.
  bool bears(std::size_t bytes) noexcept override;
  bool may_keep() noexcept override;
  bool is_exceeded() noexcept override;

 private:
  ThreadMemory& thread_ = ThreadMemory::of_this_thread();
  korlib_host::MemoryLimit* outer_ = nullptr;
  std::int64_t limit_ = kNone;
  std::int64_t all_ = kNone;
  std::int64_t at_start_ = 0;
  std::int64_t next_look_ = kNone;
  std::int64_t refused_ = 0;              // bytes of the largest block that the page did not get
  std::atomic<bool> is_refused_ = false;  // something that the page wanted
  std::atomic<bool> is_over_ = false;     // a statement has been cancelled, or a block not given, for that

  static constexpr std::int64_t kNone = INT64_MAX;
};

}  // namespace zelto::script
