// The engine's watchdog looks at a script when a timer is up, which it sets when a script is entered and none runs. It
// cannot take one back, and aborts the process now and then when two are up at about the same time. It offers no way to
// say when it is to look, but it asks two clocks before it sets a timer, and one before it takes a timer for its own.
//
// A look that is due while nothing runs is made when the next script has been entered, which has set a timer of its
// own. The watchdog knows that the look is an old one by what time it is: nothing more happens.
//
// Jobs of promises are each entered anew when the script has ended, in a fraction of a microsecond, and a chain of jobs
// that make jobs would go on for ever. First, the watchdog asks whether the script has also had as much time of the
// processor since it was entered, which no job has: there a second passes from one reading to the next, more than it
// ever waits. Second, between a timer's end and its look such a job would set another timer, and have the look be an
// old one: until the look has been made, time stands still for what sets timers.
#include "script/engine_clock.h"

#include <dlfcn.h>

#include <atomic>
#include <ctime>
#include <utility>

#include "script/jsc.h"

namespace {

using std::chrono::nanoseconds;

constexpr nanoseconds kNever = nanoseconds::max();
// The engine cuts off what is less than a microsecond.
constexpr nanoseconds kRounding = std::chrono::milliseconds(1);

// What the watchdog knows of its timer.
class EngineTimer {
 public:
  void set_length(nanoseconds length) noexcept { length_ = length; }
  void begin_run() noexcept { is_first_ = true; }
  // Its end is forgotten with the look.
  void end_reading() noexcept {
    is_asked_ = false;
    end_ = kNever;
  }

  void ask() noexcept { is_asked_ = true; }
  bool is_asked() const noexcept { return is_asked_; }
  // What it is told when it asks for the time before it sets a timer.
  nanoseconds tell(nanoseconds now) noexcept {
    is_asked_ = false;
    const bool waits_for_look = !std::exchange(is_first_, false) && end_ - kRounding <= now;
    if (waits_for_look) return end_ - kRounding;
    const bool runs = now < end_ && end_ <= now + length_;
    if (!runs) end_ = now + length_;
    return now;
  }

 private:
  nanoseconds length_{0};
  nanoseconds end_ = kNever;
  bool is_first_ = false;
  bool is_asked_ = false;
};

thread_local EngineTimer t_timer;

// Whether that code is the engine's, which asks in one place.
bool is_engines(const void* code) noexcept {
  static std::atomic<const void*> known = nullptr;
  if (code == known.load(std::memory_order_relaxed)) return true;
  Dl_info asking{};
  Dl_info engine{};
  if (!dladdr(code, &asking) || !dladdr(reinterpret_cast<const void*>(&JSContextGroupCreate), &engine)) return false;
  if (asking.dli_fbase != engine.dli_fbase) return false;
  known = code;
  return true;
}

}  // namespace

void zelto::script::set_engine_timer(nanoseconds length) noexcept { t_timer.set_length(length); }

void zelto::script::begin_engine_run() noexcept { t_timer.begin_run(); }

void zelto::script::end_engine_reading() noexcept { t_timer.end_reading(); }

// Found in the program before the C library's, where other clocks are read as ever.
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec* time) noexcept {
  using Function = int(clockid_t, timespec*);
  static auto* const real = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, "clock_gettime"));
  if (clock == CLOCK_THREAD_CPUTIME_ID && is_engines(__builtin_return_address(0))) {
    static std::atomic<time_t> seconds = 0;
    *time = {.tv_sec = seconds.fetch_add(1, std::memory_order_relaxed), .tv_nsec = 0};
    t_timer.ask();
    return 0;
  }
  const int result = real(clock, time);
  if (clock != CLOCK_MONOTONIC || !t_timer.is_asked()) return result;
  const nanoseconds told = t_timer.tell(std::chrono::seconds(time->tv_sec) + nanoseconds(time->tv_nsec));
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(told);
  *time = {.tv_sec = seconds.count(), .tv_nsec = (told - seconds).count()};
  return result;
}
