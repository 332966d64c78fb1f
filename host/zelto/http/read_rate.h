// Whether a client sends fast enough to be waited for.
#pragma once

#include <chrono>
#include <cstdint>

namespace zelto {

// Judges one span of time after the other, each by itself: what a client sent quickly at first buys it no
// patience later on.
class ReadRate {
 public:
  using Clock = std::chrono::steady_clock;

  // `least` bytes a second in every `span`. A span of zero asks for nothing.
  ReadRate(std::chrono::milliseconds span, std::uint64_t least) : span_(span), least_(least) {}

  void begin(Clock::time_point now);
  // Counts what was read. True when that ends a span in which it was too little.
  bool is_too_slow(std::uint64_t bytes, Clock::time_point now);

 private:
  std::chrono::milliseconds span_;
  std::uint64_t least_;
  Clock::time_point began_;
  std::uint64_t bytes_ = 0;
};

}  // namespace zelto
