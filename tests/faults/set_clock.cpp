// The clock of one program, set from outside: loaded before its libraries (LD_PRELOAD), with CLOCK_FILE naming a file
// of two 64-bit numbers that both share: the seconds by which the clock is to be wrong, and how often the program has
// begun to wait until a moment of that clock. The script engine's own threads do so, which end when they are idle or
// give memory back: these waits are not counted.
//
// A wait of that kind follows the clock as the system's own does: until the program's clock shows the moment.
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string_view>

namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kLook = 10'000'000;  // between two looks at the clock, in ns
// What counts from the machine's start is less than this for fifteen years.
constexpr std::time_t kOfTheClock = 500'000'000;

struct Shared {
  std::atomic<std::int64_t> offset;
  std::atomic<std::int64_t> waits;
};

Shared& shared() {
  static Shared none{};
  static Shared* const found = [] {
    const char* name = std::getenv("CLOCK_FILE");
    const int file = name ? ::open(name, O_RDWR | O_CLOEXEC) : -1;
    if (file < 0) return &none;
    void* memory = ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ::close(file);
    return memory == MAP_FAILED ? &none : static_cast<Shared*>(memory);
  }();
  return *found;
}

// The function that would have been called.
template <class Function>
Function next(const char* name) {
  return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

int system_clock_gettime(clockid_t clock, timespec* time) {
  static const auto function = next<int (*)(clockid_t, timespec*)>("clock_gettime");
  return function(clock, time);
}

timespec now() {
  timespec time{};
  system_clock_gettime(CLOCK_REALTIME, &time);
  time.tv_sec += shared().offset;
  return time;
}

std::int64_t nanoseconds(const timespec& time) { return time.tv_sec * kSecond + time.tv_nsec; }

// From the start of the machine; no later than the next look.
timespec next_look(std::int64_t left) {
  timespec time{};
  system_clock_gettime(CLOCK_MONOTONIC, &time);
  const std::int64_t then = nanoseconds(time) + std::clamp<std::int64_t>(left, 0, kLook);
  return {then / kSecond, then % kSecond};
}

void count_wait(const void* caller) {
  Dl_info about{};
  const bool is_known = ::dladdr(caller, &about) != 0 && about.dli_fname;
  if (!is_known || std::string_view(about.dli_fname).find("javascriptcore") == std::string_view::npos) ++shared().waits;
}

// Waits with `wait`, which answers ETIMEDOUT at the moment that it is given, until the program's clock shows `end`.
template <class Wait>
int wait_until(const timespec& end, const void* caller, Wait wait) {
  count_wait(caller);
  for (;;) {
    const std::int64_t left = nanoseconds(end) - nanoseconds(now());
    const timespec look = next_look(left);
    const int result = wait(&look);
    if (result != ETIMEDOUT || left <= 0) return result;
  }
}

}  // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept {
  if (clock != CLOCK_REALTIME && clock != CLOCK_REALTIME_COARSE) return system_clock_gettime(clock, time);
  *time = now();
  return 0;
}

int gettimeofday(timeval* time, void* /*zone*/) noexcept {
  const timespec is = now();
  *time = {is.tv_sec, is.tv_nsec / 1000};
  return 0;
}

std::time_t time(std::time_t* time) noexcept {
  const std::time_t is = now().tv_sec;
  if (time) *time = is;
  return is;
}

int timespec_get(timespec* time, int base) noexcept {
  if (base != TIME_UTC) return 0;
  *time = now();
  return base;
}

// A condition is told at its making which clock it waits by; the moment itself shows it as well.
int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* end) {
  static const auto function =
      next<int (*)(pthread_cond_t*, pthread_mutex_t*, const timespec*)>("pthread_cond_timedwait");
  if (end->tv_sec < kOfTheClock) return function(condition, mutex, end);
  return wait_until(*end, __builtin_return_address(0), [&](const timespec* look) {
    return ::pthread_cond_clockwait(condition, mutex, CLOCK_MONOTONIC, look);
  });
}

int pthread_mutex_timedlock(pthread_mutex_t* mutex, const timespec* end) noexcept {
  return wait_until(*end, __builtin_return_address(0),
                    [&](const timespec* look) { return ::pthread_mutex_clocklock(mutex, CLOCK_MONOTONIC, look); });
}

int sem_timedwait(sem_t* semaphore, const timespec* end) {
  return wait_until(*end, __builtin_return_address(0),
                    [&](const timespec* look) {
                      return ::sem_clockwait(semaphore, CLOCK_MONOTONIC, look) == 0 ? 0 : errno;
                    }) == 0
             ? 0
             : -1;
}

int clock_nanosleep(clockid_t clock, int flags, const timespec* end, timespec* left) {
  static const auto function = next<int (*)(clockid_t, int, const timespec*, timespec*)>("clock_nanosleep");
  if (clock != CLOCK_REALTIME || (flags & TIMER_ABSTIME) == 0) return function(clock, flags, end, left);
  return wait_until(*end, __builtin_return_address(0), [&](const timespec* look) {
    const int result = function(CLOCK_MONOTONIC, TIMER_ABSTIME, look, nullptr);
    return result == 0 ? (nanoseconds(now()) < nanoseconds(*end) ? ETIMEDOUT : 0) : result;
  });
}

// Counted only: a timer that shows the moment by a descriptor follows the system's own clock.
int timerfd_settime(int timer, int flags, const itimerspec* end, itimerspec* before) noexcept {
  static const auto function = next<int (*)(int, int, const itimerspec*, itimerspec*)>("timerfd_settime");
  if ((flags & TFD_TIMER_ABSTIME) != 0 && end->it_value.tv_sec >= kOfTheClock) count_wait(__builtin_return_address(0));
  return function(timer, flags, end, before);
}

}  // extern "C"
