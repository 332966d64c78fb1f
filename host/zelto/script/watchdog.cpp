#include "script/watchdog.h"

#include <korlib_host/errors.h>
#include <mirt/template_places.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <utility>

#include "base/thread.h"
#include "script/engine.h"
#include "script/engine_clock.h"
#include "script/text.h"

namespace zelto::script {
namespace {

// The engine's own watchdog cannot be started later when it was not running as the script was entered, so there is
// always one; this is "no limit".
constexpr double kUnlimitedSeconds = 1e7;

// How often a script that has limits is looked at, and how long one that ought to end may go on without calling an
// object. One time for everything: a shorter one would start a second timer beside the one that the engine has running
// (engine_clock.cpp). Nor may it be nothing: the engine aborts when its watchdog fires while the machine is destroyed,
// and a page that ends itself is often the last thing that a process does.
constexpr double kLookEvery = 0.25;

// Of the stack, enough for a few levels of component and engine frames; sanitizers make frames several times larger.
#ifdef KOR_SANITIZED
constexpr std::size_t kStackReserve = 2u << 20;
#else
constexpr std::size_t kStackReserve = 512u << 10;
#endif

// Of the whole process; 0 when it is unknown.
std::size_t resident_bytes() {
  std::FILE* file = std::fopen("/proc/self/statm", "re");
  if (!file) return 0;
  unsigned long pages = 0;
  const bool is_read = std::fscanf(file, "%*s %lu", &pages) == 1;
  std::fclose(file);
  return is_read ? pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) : 0;
}

// What the engine has taken for objects and their contents, garbage among them.
double heap_bytes(JSContextRef ctx) {
  JSObjectRef statistics = JSGetMemoryUsageStatistics(ctx);
  const auto number = [&](const char* name) { return JSValueToNumber(ctx, property(ctx, statistics, name), nullptr); };
  return number("heapCapacity") + number("extraMemorySize");
}

}  // namespace

Watchdog::Watchdog(JSContextGroupRef group, JSContextRef idle) : group_(group), idle_(idle) {
  end_engine_reading();  // of an engine before
  arm(kUnlimitedSeconds);
}

void Watchdog::arm(double seconds) {
  set_engine_timer(std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds)));
  JSContextGroupSetExecutionTimeLimit(group_, seconds, &Watchdog::on_time, this);
}

void Watchdog::enter() {
  if (depth_++ > 0) return;
  ending_ = Outcome::completed;
  ended_at_ = {};
  start_ = std::chrono::steady_clock::now();
  is_terminating_ = false;
  memory_.begin();
  begin_engine_run();
  start();
  update_shown();
}

bool Watchdog::leave() {
  if (--depth_ > 0) return false;
  update_shown();
  memory_.end();
  if (is_unwinding()) settle();
  return true;
}

// A termination that was asked for just before the script ended by itself would hit the next one: let it
// hit an empty one instead.
void Watchdog::settle() {
  constexpr int kEnough = 4;
  arm(kUnlimitedSeconds);
  const JsString nothing("0");
  for (int i = 0; i < kEnough; ++i) {
    JSValueRef exception = nullptr;
    JSEvaluateScript(idle_, nothing.get(), nullptr, nullptr, 1, &exception);
    if (!exception) return;
  }
}

void Watchdog::set_time_limit(std::chrono::milliseconds limit) {
  time_limit_ = limit;
  if (is_running() && !is_unwinding()) start();
  update_shown();
}

void Watchdog::update_shown() noexcept {
  if (!shown_) return;
  using std::chrono::nanoseconds;
  const auto deadline = std::chrono::duration_cast<nanoseconds>((start_ + time_limit_).time_since_epoch());
  shown_->store(is_running() && time_limit_.count() > 0 ? deadline.count() : 0, std::memory_order_relaxed);
}

void Watchdog::start() { arm(memory_limit_ > 0 || time_limit_.count() > 0 ? kLookEvery : kUnlimitedSeconds); }

bool Watchdog::on_time(JSContextRef ctx, void* watchdog) {
  end_engine_reading();
  auto& self = *static_cast<Watchdog*>(watchdog);
  if (!self.is_running()) return false;
  if (self.quiet_ > 0) {
    self.start();
    return false;
  }
  // By the exact clock: a look that came just before the end would have to be followed by another one at once.
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  if (self.is_over(now) && !self.is_unwinding()) self.end_by(Outcome::timed_out);
  if (self.must_unwind()) {
    self.is_terminating_ = false;
    return true;
  }
  if (self.memory_limit_ > 0 && self.uses_too_much(ctx)) {
    self.end_by(Outcome::out_of_memory);
  } else {
    self.start();  // each is good for one look
  }
  return self.is_unwinding();
}

bool Watchdog::must_unwind() {
  if (is_unwinding()) return true;
  if (is_late()) {
    end_by(Outcome::timed_out);
  } else if (memory_.wants_look()) {
    free_unheld();
    if (memory_.look()) end_by(Outcome::out_of_memory);
  }
  return is_unwinding();
}

// Without memory for its place, it ends without one. Asking for the place runs script, which the engine may interrupt
// for its own look at the time: then that has ended the page, and knows its place.
void Watchdog::end_by(Outcome::Kind kind) noexcept {
  Engine* const engine = Engine::current();
  ScriptError reached;
  try {
    if (engine) reached = engine->reached();
  } catch (const std::exception&) {
    reached = {};
  }
  if (is_unwinding()) return;
  ended_at_ = std::move(reached);
  ending_ = kind;
}

void Watchdog::add_left(TemplatePlaces left, const std::function<std::size_t()>& count_calls) {
  std::vector<TemplatePlace>& known = ended_at_.templates;
  ended_at_.more_templates += left.more;
  if (known.size() >= mirt::kMostTemplatePlaces) {
    ended_at_.more_templates += left.listed.size();
    return;
  }
  const std::size_t all = ended_at_.calls.size() + ended_at_.more_calls;
  const std::size_t inside = all - std::min(all, count_calls());
  for (TemplatePlace& place : left.listed) {
    if (known.size() == mirt::kMostTemplatePlaces) {
      ++ended_at_.more_templates;
    } else {
      place.calls = inside;
      known.push_back(std::move(place));
    }
  }
}

// Asked at every call of an object: a clock that is a few milliseconds behind is read in a fifth of the time.
bool Watchdog::is_late() const noexcept {
  if (time_limit_.count() <= 0) return false;
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return is_over(std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec));
}

// What the script's objects take and what other objects do; garbage is freed before it counts.
bool Watchdog::uses_too_much(JSContextRef ctx) {
  const auto is_too_much = [&] {
    const auto others = static_cast<double>(std::max<std::int64_t>(memory_.taken(), 0));
    return heap_bytes(ctx) + others > static_cast<double>(memory_limit_);
  };
  // Asking the engine is expensive, so it is asked only when it may matter.
  if (resident_bytes() <= memory_limit_ || !is_too_much()) return false;
  free_unheld();
  return is_too_much();
}

// Objects that only garbage held go with it.
void Watchdog::free_unheld() {
  Engine* const engine = Engine::current();
  if (engine) engine->texts().clear();
  collect();
  if (engine) engine->release_buried();
}

void Watchdog::stop() noexcept {
  if (!is_running() || is_unwinding()) return;
  ending_ = Outcome::stopped;
  terminate_soon();
}

void Watchdog::terminate_soon() {
  if (std::exchange(is_terminating_, true)) return;  // asking again would put it off
  arm(kLookEvery);
}

void Watchdog::free_garbage() {
  if (ending_ == Outcome::out_of_memory) collect();
}

void Watchdog::collect() { JSSynchronousGarbageCollectForDebugging(idle_); }

HRESULT stop_page() noexcept {
  if (Engine* engine = Engine::current()) engine->watchdog().stop();
  return kPageStopped;
}

bool is_unwinding() noexcept {
  const Engine* engine = Engine::current();
  return engine && engine->watchdog().is_running() && engine->watchdog().is_unwinding();
}

bool stack_is_low() noexcept { return base::stack_room() < kStackReserve; }

HRESULT check_stack() noexcept {
  return stack_is_low() ? korlib::raise(kOutOfStack, L"Zelto", L"Out of stack space") : S_OK;
}

}  // namespace zelto::script
