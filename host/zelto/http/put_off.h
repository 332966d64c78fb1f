// What a worker does once for several jobs instead of after each one.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <utility>

#include "http/letter.h"

namespace zelto {

// Belongs to one thread. Nothing is lost: what is left is done when the list goes.
class PutOff {
 public:
  using Clock = std::chrono::steady_clock;

  PutOff() = default;
  ~PutOff() { do_all(); }
  PutOff(const PutOff&) = delete;
  PutOff& operator=(const PutOff&) = delete;

  bool is_empty() const { return count_ == 0; }
  // Whether one more may be added: there are few, and the first is not old.
  bool takes_more(Clock::time_point now) const { return count_ < kMost && (is_empty() || now - first_ < kLongest); }
  // Of a list that takes more.
  void add(Letter letter, Clock::time_point now) noexcept {
    if (is_empty()) first_ = now;
    letters_[count_++] = std::move(letter);
  }
  void do_all() noexcept {
    for (std::size_t i = 0; i < count_; ++i) {
      const Letter letter = std::exchange(letters_[i], {});
      letter.open(letter.owner.get());
    }
    count_ = 0;
  }

 private:
  static constexpr std::size_t kMost = 8;
  static constexpr std::chrono::microseconds kLongest{500};

  std::array<Letter, kMost> letters_{};
  std::size_t count_ = 0;
  Clock::time_point first_;
};

}  // namespace zelto
