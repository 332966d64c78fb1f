// What a worker does once for several jobs instead of after each one.
#pragma once

#include <chrono>
#include <cstddef>
#include <vector>

#include "http/letter.h"

namespace zelto {

// Belongs to one thread. Nothing is lost: what is left is done when the list goes.
class PutOff {
 public:
  using Clock = std::chrono::steady_clock;

  PutOff() { letters_.reserve(kMost); }
  ~PutOff() { do_all(); }
  PutOff(const PutOff&) = delete;
  PutOff& operator=(const PutOff&) = delete;

  bool is_empty() const { return letters_.empty(); }
  // Whether one more may be added: there are few, and the first is not old.
  bool takes_more(Clock::time_point now) const {
    return letters_.size() < kMost && (letters_.empty() || now - first_ < kLongest);
  }
  // Of a list that takes more. Needs no memory.
  void add(Letter letter, Clock::time_point now) noexcept {
    if (letters_.empty()) first_ = now;
    letters_.push_back(std::move(letter));
  }
  void do_all() noexcept {
    for (const Letter& letter : letters_) letter.open(letter.owner.get());
    letters_.clear();
  }

 private:
  static constexpr std::size_t kMost = 8;
  static constexpr std::chrono::microseconds kLongest{500};

  std::vector<Letter> letters_;
  Clock::time_point first_;
};

}  // namespace zelto
