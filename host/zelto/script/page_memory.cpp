#include "script/page_memory.h"

#include <utility>

namespace zelto::script {
namespace {

constexpr int kFirstLook = 2;  // of the limit's parts, a half
constexpr int kNextLook = 8;   // an eighth, so much may a page have beyond its limit

}  // namespace

void PageMemory::set_limits(std::size_t bytes, std::size_t all) noexcept {
  limit_ = bytes > 0 ? static_cast<std::int64_t>(bytes) : kNone;
  all_ = all > 0 ? static_cast<std::int64_t>(all) : kNone;
}

void PageMemory::begin() noexcept {
  outer_ = korlib_host::memory_limit();
  if (limit_ == kNone) return;
  at_start_ = thread_.taken();
  next_look_ = limit_ / kFirstLook;
  refused_ = 0;
  is_refused_ = false;
  is_over_ = false;
  korlib_host::set_memory_limit(this);
}

void PageMemory::end() noexcept {
  next_look_ = kNone;
  is_refused_ = false;
  korlib_host::set_memory_limit(outer_);
}

bool PageMemory::look() noexcept {
  const std::int64_t has = taken();
  const std::int64_t wanted = has + std::exchange(refused_, 0);
  is_refused_ = false;
  next_look_ = std::max(limit_ / kFirstLook, has + limit_ / kNextLook);
  return is_over_ || wanted > limit_;
}

// What is garbage by now may be what is too much: the page ends only when it would be too much without it.
bool PageMemory::allows(std::size_t bytes) noexcept {
  const std::int64_t most = limit_ - std::max<std::int64_t>(taken(), 0);
  if (most > 0 && bytes <= static_cast<std::size_t>(most)) return true;
  refused_ = std::max(refused_, static_cast<std::int64_t>(bytes));
  is_refused_ = true;
  return false;
}

bool PageMemory::bears(std::size_t bytes) noexcept {
  const std::int64_t most = 2 * limit_ - std::max<std::int64_t>(taken(), 0);
  if (most > 0 && bytes <= static_cast<std::size_t>(most)) return true;
  is_over_ = true;
  is_refused_ = true;
  return false;
}

bool PageMemory::may_keep() noexcept { return ThreadMemory::of_all_threads() <= all_; }

bool PageMemory::is_exceeded() noexcept {
  if (taken() <= limit_ && !is_over_) return false;
  is_over_ = true;
  is_refused_ = true;
  return true;
}

}  // namespace zelto::script
