#include "base/thread.h"

#include <pthread.h>

#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <utility>

namespace base {

struct Thread::State {
  std::function<void()> body;
  pthread_t thread{};

  static void* run(void* state) {
    static_cast<State*>(state)->body();
    return nullptr;
  }
};

Thread::Thread(std::size_t stack_bytes, std::function<void()> body)
    : state_(std::make_unique<State>(State{std::move(body)})) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  int error = pthread_attr_setstacksize(&attributes, stack_bytes);
  if (error == 0) error = pthread_create(&state_->thread, &attributes, &State::run, state_.get());
  pthread_attr_destroy(&attributes);
  if (error != 0) throw std::system_error(error, std::generic_category(), "starting a thread");
}

Thread::~Thread() {
  if (state_) pthread_join(state_->thread, nullptr);
}

Thread::Thread(Thread&&) noexcept = default;

void run_on_thread(std::size_t stack_bytes, const std::function<void()>& body) {
  std::exception_ptr thrown;
  {
    const Thread thread(stack_bytes, [&] {
      try {
        body();
      } catch (...) {
        thrown = std::current_exception();
      }
    });
  }
  if (thrown) std::rethrow_exception(thrown);
}

bool wait_unless_stopped(const std::stop_token& stop, std::chrono::milliseconds time) {
  std::mutex mutex;
  std::condition_variable_any never;
  std::unique_lock lock(mutex);
  return !never.wait_for(lock, stop, time, [&] { return stop.stop_requested(); });
}

}  // namespace base
