#include "http/deadline.h"

#include <new>
#include <utility>

namespace zelto {

void Deadline::arm(std::chrono::milliseconds duration, std::shared_ptr<void> owner) {
  at_ = duration.count() > 0 ? Clock::now() + duration : Clock::time_point::max();
  if (at_ < timer_at_ && !stopped_) watch(std::move(owner));
}

void Deadline::stop() {
  stopped_ = true;
  timer_.cancel();
}

void Deadline::watch(std::shared_ptr<void> owner) {
  timer_at_ = Clock::time_point::max();  // none runs when the next one cannot be started
  timer_.expires_at(at_);
  timer_.async_wait([this, owner = std::move(owner)](const boost::system::error_code& error) mutable {
    if (error || stopped_) return;
    timer_at_ = Clock::time_point::max();
    if (at_ == Clock::time_point::max()) return;
    if (at_ > Clock::now() && goes_on(std::move(owner))) return;
    at_ = Clock::time_point::max();
    on_missed_();
  });
  timer_at_ = timer_.expiry();
}

// Without memory for it, the client has been waited for long enough.
bool Deadline::goes_on(std::shared_ptr<void> owner) {
  try {
    watch(std::move(owner));
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void ReadRate::begin(Clock::time_point now) {
  began_ = now;
  bytes_ = 0;
}

bool ReadRate::is_too_slow(std::uint64_t bytes, Clock::time_point now) {
  bytes_ += bytes;
  if (span_.count() == 0 || now - began_ < span_) return false;
  const double seconds = std::chrono::duration<double>(now - began_).count();
  if (static_cast<double>(bytes_) < static_cast<double>(least_) * seconds) return true;
  begin(now);
  return false;
}

}  // namespace zelto
