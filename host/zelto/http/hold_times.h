// How long the jobs of each kind hold a worker: whether one more of a kind is a long one.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace zelto {

// Without a lock of its own. Jobs without a kind, an empty one, are never long.
class HoldTimes {
 public:
  using Clock = std::chrono::steady_clock;

  explicit HoldTimes(unsigned workers) : running_(workers) {}

  // The worker begins a job, or ends the one that it has begun. Where memory has run out, nothing is learnt.
  void begin(unsigned worker, const std::string& kind, bool is_long, Clock::time_point now) noexcept;
  void end(unsigned worker, Clock::time_point now) noexcept;

  // What mostly held a worker for long, or does so now; also what has never ended yet.
  bool is_long(const std::string& kind, Clock::time_point now) const;
  // What mostly takes so little time that somebody may wait for its end.
  bool is_quick(const std::string& kind) const;
  // Whether one more may hold its worker for as long as its client likes, or nearly: one of its kind does so now or did
  // so last, or is the first that runs at all.
  bool may_hold(const std::string& kind, Clock::time_point now) const;
  // Workers that run what was long when it began, or has become so.
  std::size_t long_running(Clock::time_point now) const;

 private:
  struct Running {
    std::string kind;
    bool is_long = false;
    bool is_busy = false;
    Clock::time_point began;
  };

  struct Known {
    Clock::duration average;  // of the last few
    bool has_held;            // the last one, for long
  };

  void learn(const std::string& kind, Clock::duration taken);
  bool runs(const std::string& kind, Clock::time_point since) const;

  std::unordered_map<std::string, Known> known_;
  std::vector<Running> running_;
};

}  // namespace zelto
