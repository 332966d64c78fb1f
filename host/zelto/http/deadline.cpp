#include "http/deadline.h"

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
  timer_at_ = at_;
  timer_.expires_at(timer_at_);
  timer_.async_wait([this, owner = std::move(owner)](const boost::system::error_code& error) mutable {
    if (error || stopped_) return;
    timer_at_ = Clock::time_point::max();
    if (at_ == Clock::time_point::max()) return;
    if (at_ > Clock::now()) return watch(std::move(owner));
    at_ = Clock::time_point::max();
    on_missed_();
  });
}

}  // namespace zelto
