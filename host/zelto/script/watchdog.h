// What a page may not use up, and ending it from inside one of its calls.
//
// Response.End, Response.Redirect, a time-out and a heap that is too large leave the script from the middle of a call,
// through whatever component frames lie between. The engine remembers that it is unwinding; until the outermost
// Realm::run() returns, every call between script and objects, in either direction, is refused with
// kPageStopped. A component that replaces the code by one of its own therefore cannot bring the page back.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

#include <korlib/activation.h>
#include <korlib/hresult.h>

#include "script/jsc.h"
#include "script/outcome.h"
#include "script/page_memory.h"
#include "script/template_places.h"

namespace zelto::script {

// Private to this host; no component gives it a meaning.
inline constexpr HRESULT kPageStopped = korlib::hresult(0x8004E0F1);

// For a member that ends the page: `return script::stop_page();`. In the page the call throws; page code
// that catches this gets the same again at its next call of any object, and code that calls none is
// terminated shortly after. Does nothing but answer the code when no script runs on this thread.
HRESULT stop_page() noexcept;

// True from stop_page(), a time-out or a heap that is too large until the outermost run has returned.
bool is_unwinding() noexcept;

// True when another level of calls may not fit on the thread's stack: a page may recurse through native frames (script
// calls component calls script, or a template that includes itself) where no engine counts. Whoever begins another
// level asks first and refuses with kOutOfStack, so that the page fails and the process lives.
using korlib::kOutOfStack;
bool stack_is_low() noexcept;
// S_OK, or kOutOfStack with the thread's error object saying so.
HRESULT check_stack() noexcept;

// The limits of one virtual machine, and how its page is being left. For the engine's thread only.
class Watchdog {
 public:
  // `idle` is a context of the group in which no page runs.
  Watchdog(JSContextGroupRef group, JSContextRef idle);
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

  // Zero or less: no limit. One that is set while a script runs counts from the same start.
  void set_time_limit(std::chrono::milliseconds limit);
  std::chrono::milliseconds time_limit() const noexcept { return time_limit_; }
  // Zero: no limit. For the page that begins next.
  void set_memory_limits(std::size_t bytes, std::size_t all) {
    memory_limit_ = bytes;
    memory_.set_limits(bytes, all);
  }

  // Keeps there by when the script must have ended: nanoseconds of the steady clock, 0 while none runs or for never.
  void show_deadline(std::atomic<std::int64_t>& place) { shown_ = &place; }

  // Around each level of running script. The outermost starts the clock and forgets how the last page ended.
  void enter();
  // True for the outermost.
  bool leave();
  bool is_running() const noexcept { return depth_ > 0; }

  // While one lives, nothing is ended: what the engine runs then is the host's own, and short.
  class Quiet {
   public:
    explicit Quiet(Watchdog& watchdog) : watchdog_(watchdog) { ++watchdog_.quiet_; }
    ~Quiet() { --watchdog_.quiet_; }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

   private:
    Watchdog& watchdog_;
  };

  // How the page is being left; `completed` while it is not. What the last page ended by, when none runs.
  Outcome::Kind ending() const noexcept { return ending_; }
  // Where the script was when it came to its limit.
  const ScriptError& ended_at() const noexcept { return ended_at_; }
  void set_ended_at(ScriptError place) noexcept { ended_at_ = std::move(place); }
  // Templates that were being drawn then, which the page leaves on its way out: around those that it has left before.
  // `count_calls` says how many functions are still running around them.
  void add_left(TemplatePlaces left, const std::function<std::size_t()>& count_calls);
  bool is_unwinding() const noexcept { return ending_ != Outcome::completed; }
  // Looks at the clock as well, and at what objects have taken: both count where no script runs.
  bool must_unwind();
  void stop() noexcept;
  // Has the virtual machine end the script soon, whatever it catches.
  void terminate_soon();
  // After the last realm of a page that took too much memory: the next page shall not be blamed for its garbage.
  void free_garbage();
  void collect();

 private:
  void start();
  void update_shown() noexcept;
  void settle();
  void arm(double seconds);
  void free_unheld();
  bool uses_too_much(JSContextRef ctx);
  bool is_over(std::chrono::nanoseconds now) const noexcept {
    return time_limit_.count() > 0 && now - start_.time_since_epoch() >= time_limit_;
  }
  bool is_late() const noexcept;
  void end_by(Outcome::Kind kind) noexcept;
  static bool on_time(JSContextRef ctx, void* watchdog);

  JSContextGroupRef group_;
  JSContextRef idle_;
  std::chrono::milliseconds time_limit_{0};
  std::size_t memory_limit_ = 0;
  PageMemory memory_;
  std::chrono::steady_clock::time_point start_;
  int depth_ = 0;
  Outcome::Kind ending_ = Outcome::completed;
  ScriptError ended_at_;
  std::atomic<std::int64_t>* shown_ = nullptr;
  int quiet_ = 0;
  bool is_terminating_ = false;  // the engine has been asked for the end of a script that goes on
};

}  // namespace zelto::script
