#include "base/thread.h"

#include <sched.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
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

[[noreturn]] void throw_not_started(int error, std::size_t stack_bytes) {
  throw std::system_error(error, std::generic_category(),
                          "starting a thread with a stack of " + std::to_string(stack_bytes >> 10) + " KiB");
}

// With a page below it that nobody may touch.
class Stack {
 public:
  explicit Stack(std::size_t bytes)
      : size_(bytes),
        guard_(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))),
        mapped_(::mmap(nullptr, guard_ + size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1,
                       0)) {
    if (mapped_ == MAP_FAILED) throw_not_started(errno, bytes);
    if (::mprotect(lowest(), size_, PROT_READ | PROT_WRITE) == 0) return;
    const int error = errno;
    ::munmap(mapped_, guard_ + size_);
    throw_not_started(error, bytes);
  }
  ~Stack() { ::munmap(mapped_, guard_ + size_); }
  Stack(const Stack&) = delete;
  Stack& operator=(const Stack&) = delete;

  void* lowest() const noexcept { return static_cast<char*>(mapped_) + guard_; }
  std::size_t size() const noexcept { return size_; }

 private:
  std::size_t size_;   // bytes, without the guard
  std::size_t guard_;  // bytes
  void* mapped_;
};

}  // namespace

struct Thread::Running {
  Running(std::size_t stack_bytes, std::function<void()> run) : body(std::move(run)), stack(stack_bytes) {}

  std::function<void()> body;
  Stack stack;
  pthread_t thread{};
};

Thread::Thread(std::size_t stack_bytes, std::function<void()> body)
    : running_(std::make_unique<Running>(stack_bytes, std::move(body))) {
  const auto run = [](void* running) -> void* {
    static_cast<Running*>(running)->body();
    return nullptr;
  };
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  int error = pthread_attr_setstack(&attributes, running_->stack.lowest(), running_->stack.size());
  if (error == 0) error = pthread_create(&running_->thread, &attributes, run, running_.get());
  pthread_attr_destroy(&attributes);
  if (error != 0) throw_not_started(error, stack_bytes);
}

Thread::~Thread() {
  if (running_) pthread_join(running_->thread, nullptr);
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

void wake_without_interrupting() noexcept {
  const sched_param unused{};
  ::sched_setscheduler(0, SCHED_BATCH, &unused);
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
