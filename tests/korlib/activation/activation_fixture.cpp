#include "korlib/activation/activation_fixture.h"

#include <mutex>
#include <utility>

namespace {

std::mutex lock;
sample::Steps steps;
std::function<void(const std::string&)> on_each_step;

}  // namespace

namespace sample {

Steps take_steps() {
  const std::lock_guard guard(lock);
  return std::exchange(steps, {});
}

void on_step(std::function<void(const std::string& step)> call) {
  const std::lock_guard guard(lock);
  on_each_step = std::move(call);
}

}  // namespace sample

void sample_step(const char* step) {
  std::function<void(const std::string&)> call;
  {
    const std::lock_guard guard(lock);
    steps.emplace_back(step);
    call = on_each_step;
  }
  if (call) call(step);
}
