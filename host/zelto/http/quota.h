// Amounts that many connections share, up to a limit for all of them.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <utility>

namespace zelto {

// Any thread may call any method.
class Quota {
 public:
  explicit Quota(std::uint64_t limit) : limit_(limit) {}
  Quota(const Quota&) = delete;
  Quota& operator=(const Quota&) = delete;

  // All of the amount, or nothing and false.
  bool take(std::uint64_t amount) noexcept {
    std::uint64_t taken = taken_.load(std::memory_order_relaxed);
    do {
      if (amount > limit_ - std::min(taken, limit_)) return false;
    } while (!taken_.compare_exchange_weak(taken, taken + amount, std::memory_order_relaxed));
    return true;
  }
  void give_back(std::uint64_t amount) noexcept { taken_.fetch_sub(amount, std::memory_order_relaxed); }
  std::uint64_t taken() const noexcept { return taken_.load(std::memory_order_relaxed); }

 private:
  const std::uint64_t limit_;
  std::atomic<std::uint64_t> taken_ = 0;
};

// What one holder has of a quota; it goes back with the holder.
class Share {
 public:
  Share() = default;
  explicit Share(Quota& quota) : quota_(&quota) {}
  Share(Share&& other) noexcept { swap(other); }
  Share& operator=(Share&& other) noexcept {
    Share(std::move(other)).swap(*this);
    return *this;
  }
  ~Share() { resize(0); }

  // Takes more or gives some back. False, and unchanged, when there is not as much; without a quota there always is.
  bool resize(std::uint64_t amount) noexcept {
    if (quota_ && amount > amount_ && !quota_->take(amount - amount_)) return false;
    if (quota_ && amount < amount_) quota_->give_back(amount_ - amount);
    amount_ = amount;
    return true;
  }

 private:
  void swap(Share& other) noexcept {
    std::swap(quota_, other.quota_);
    std::swap(amount_, other.amount_);
  }

  Quota* quota_ = nullptr;
  std::uint64_t amount_ = 0;
};

}  // namespace zelto
