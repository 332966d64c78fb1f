// Where the counts of korlib_host/diagnostics.h are kept.
#pragma once

#include <atomic>
#include <cstdint>

namespace korlib_host {

#if defined(KOR_SANITIZED) || !defined(NDEBUG)
inline constexpr bool kCountsStrings = true;
#else
inline constexpr bool kCountsStrings = false;
#endif

extern std::atomic<std::int64_t> live_string_count;

// Whether a test wants the allocation that is about to be made to fail.
bool shall_string_fail() noexcept;

inline void count_live_string(std::int64_t change) noexcept {
  if constexpr (kCountsStrings) live_string_count.fetch_add(change, std::memory_order_relaxed);
}

}  // namespace korlib_host
