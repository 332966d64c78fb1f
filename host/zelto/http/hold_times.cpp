#include "http/hold_times.h"

#include <algorithm>
#include <new>
#include <utility>

namespace zelto {

namespace {

// From here on it matters to those behind that a page holds its worker.
constexpr std::chrono::milliseconds kLong(20);
constexpr std::chrono::milliseconds kQuick(1);
// One that has not ended by then is long, whatever those before took.
constexpr std::chrono::milliseconds kOverdue(200);
// Weighs the last one against all before, and no single one counts for more than this: on a busy machine any page may
// once wait for its processor, or for its compiler.
constexpr int kWeight = 8;
constexpr HoldTimes::Clock::duration kMostCounted = 2 * kLong;
// A site has fewer pages; those that were there once need not be known for ever.
constexpr std::size_t kMostKinds = 4096;

}  // namespace

void HoldTimes::begin(unsigned worker, const std::string& kind, bool is_long, Clock::time_point now) noexcept {
  Running& running = running_[worker];
  try {
    running.kind = kind;
  } catch (const std::bad_alloc&) {
    running.kind.clear();
  }
  running.is_long = is_long;
  running.is_busy = true;
  running.began = now;
}

void HoldTimes::end(unsigned worker, Clock::time_point now) noexcept {
  Running& running = running_[worker];
  if (!std::exchange(running.is_busy, false) || running.kind.empty()) return;
  try {
    learn(running.kind, now - running.began);
  } catch (const std::bad_alloc&) {
    return;
  }
}

void HoldTimes::learn(const std::string& kind, Clock::duration taken) {
  const bool has_held = taken >= kOverdue;
  if (const auto known = known_.find(kind); known != known_.end()) {
    known->second.average += (std::min(taken, kMostCounted) - known->second.average) / kWeight;
    known->second.has_held = has_held;
    return;
  }
  if (known_.size() >= kMostKinds) known_.clear();
  // The first one has been compiled, and may be long for that alone: the next one tells.
  known_.emplace(kind, Known{std::min<Clock::duration>(taken, kLong), has_held});
}

// One of the kind that began then, or before.
bool HoldTimes::runs(const std::string& kind, Clock::time_point since) const {
  return std::ranges::any_of(running_, [&](const Running& running) {
    return running.is_busy && running.began <= since && running.kind == kind;
  });
}

bool HoldTimes::is_long(const std::string& kind, Clock::time_point now) const {
  if (kind.empty()) return false;
  const auto known = known_.find(kind);
  return known == known_.end() || known->second.average >= kLong || runs(kind, now - kOverdue);
}

bool HoldTimes::is_quick(const std::string& kind) const {
  const auto known = known_.find(kind);
  return known != known_.end() && known->second.average < kQuick && !known->second.has_held;
}

bool HoldTimes::may_hold(const std::string& kind, Clock::time_point now) const {
  if (kind.empty()) return false;
  const auto known = known_.find(kind);
  if (known == known_.end()) return runs(kind, now);
  return known->second.has_held || runs(kind, now - kOverdue);
}

std::size_t HoldTimes::long_running(Clock::time_point now) const {
  return static_cast<std::size_t>(std::ranges::count_if(running_, [&](const Running& running) {
    return running.is_busy && (running.is_long || now - running.began >= kOverdue);
  }));
}

}  // namespace zelto
