#include "diagnostics/live_counts.h"

#include <korlib_host/diagnostics.h>

namespace korlib_host {

namespace {
std::atomic<std::int64_t> live_object_count{0};

// Allocations until the one that fails; 0 when none shall.
thread_local unsigned allocations_left = 0;
}  // namespace

std::atomic<std::int64_t> live_string_count{0};

std::int64_t live_objects() noexcept { return live_object_count.load(std::memory_order_relaxed); }

std::optional<std::int64_t> live_strings() noexcept {
  if (!kCountsStrings) return std::nullopt;
  return live_string_count.load(std::memory_order_relaxed);
}

bool shall_string_fail() noexcept { return allocations_left && --allocations_left == 0; }

StringFailure::StringFailure(unsigned nth) noexcept { allocations_left = nth; }
StringFailure::~StringFailure() { allocations_left = 0; }
bool StringFailure::has_happened() const noexcept { return allocations_left == 0; }

void count_live_object(std::int64_t change) noexcept { live_object_count.fetch_add(change, std::memory_order_relaxed); }

}  // namespace korlib_host
