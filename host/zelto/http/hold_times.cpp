#include "http/hold_times.h"

#include <algorithm>
#include <new>
#include <utility>

namespace zelto {

namespace {

// From here on it matters to those behind that a page holds its worker.
constexpr std::chrono::milliseconds kLong(20);
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
  if (const auto known = averages_.find(kind); known != averages_.end()) {
    known->second += (std::min(taken, kMostCounted) - known->second) / kWeight;
    return;
  }
  if (averages_.size() >= kMostKinds) averages_.clear();
  // The first one has been compiled, and may be long for that alone: the next one tells.
  averages_.emplace(kind, std::min<Clock::duration>(taken, kLong));
}

bool HoldTimes::is_long(const std::string& kind, Clock::time_point now) const {
  if (kind.empty()) return false;
  const auto known = averages_.find(kind);
  if (known == averages_.end() || known->second >= kLong) return true;
  return std::ranges::any_of(running_, [&](const Running& running) {
    return running.is_busy && now - running.began >= kOverdue && running.kind == kind;
  });
}

std::size_t HoldTimes::long_running(Clock::time_point now) const {
  return static_cast<std::size_t>(std::ranges::count_if(running_, [&](const Running& running) {
    return running.is_busy && (running.is_long || now - running.began >= kOverdue);
  }));
}

}  // namespace zelto
