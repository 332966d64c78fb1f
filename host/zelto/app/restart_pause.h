// How long to wait before what has died is started again.
#pragma once

#include <algorithm>
#include <chrono>

namespace zelto {

// Not at all at first, then ever longer, up to half a minute: what dies as soon as it starts must not take the whole
// machine. A minute of life makes up for all deaths before it.
class RestartPause {
 public:
  std::chrono::seconds after(std::chrono::steady_clock::duration life) {
    if (life >= std::chrono::minutes(1)) next_ = std::chrono::seconds(0);
    const std::chrono::seconds pause = next_;
    next_ = std::clamp(next_ * 2, std::chrono::seconds(1), std::chrono::seconds(30));
    return pause;
  }

 private:
  std::chrono::seconds next_{0};
};

}  // namespace zelto
