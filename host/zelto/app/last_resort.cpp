#include "app/last_resort.h"

#include <utility>

namespace zelto {

LastResort::LastResort(std::chrono::milliseconds patience, std::function<void()> act)
    : act_(std::move(act)), thread_([this, patience] { wait(patience); }) {}

LastResort::~LastResort() {
  {
    const std::scoped_lock guard(mutex_);
    needless_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void LastResort::wait(std::chrono::milliseconds patience) {
  std::unique_lock guard(mutex_);
  if (!changed_.wait_for(guard, patience, [this] { return needless_; })) act_();
}

}  // namespace zelto
