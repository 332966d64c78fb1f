#include "base/thread.h"

#include <condition_variable>
#include <cstdint>
#include <exception>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>

namespace base {

namespace {

// The lowest address above the guard pages; 0 when the system does not tell.
std::uintptr_t lowest_address() noexcept {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return 0;
  void* start = nullptr;
  std::size_t size = 0;
  std::size_t guard = 0;
  const bool is_known = pthread_attr_getstack(&attributes, &start, &size) == 0;
  pthread_attr_getguardsize(&attributes, &guard);
  pthread_attr_destroy(&attributes);
  return is_known ? reinterpret_cast<std::uintptr_t>(start) + guard : 0;
}

}  // namespace

Thread::Thread(std::size_t stack_bytes, std::function<void()> body)
    : body_(std::make_unique<std::function<void()>>(std::move(body))) {
  const auto run = [](void* of_thread) -> void* {
    (*static_cast<std::function<void()>*>(of_thread))();
    return nullptr;
  };
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  int error = pthread_attr_setstacksize(&attributes, stack_bytes);
  if (error == 0) error = pthread_create(&thread_, &attributes, run, body_.get());
  pthread_attr_destroy(&attributes);
  if (error == 0) return;
  throw std::system_error(error, std::generic_category(),
                          "starting a thread with a stack of " + std::to_string(stack_bytes >> 10) + " KiB");
}

Thread::~Thread() {
  if (body_) pthread_join(thread_, nullptr);
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

std::size_t stack_room() noexcept {
  thread_local const std::uintptr_t lowest = lowest_address();
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  return here > lowest ? here - lowest : 0;
}

}  // namespace base
