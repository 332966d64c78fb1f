#include "script/engine_state.h"

#include <jsc/jsc.h>

#include <algorithm>
#include <mutex>
#include <utility>

#include "script/engine.h"
#include "script/engine_signal.h"
#include "script/heap.h"
#include "script/held.h"
#include "script/prelude.h"
#include "script/realm_state.h"
#include "script/script_classes.h"

namespace zelto::script {
namespace {

thread_local EngineState* t_current = nullptr;

// A watchdog that was not running when the script was entered cannot be started later, so there is
// always one; this is "no limit".
constexpr double kUnlimitedSeconds = 1e7;

// How often a script that has limits is looked at. In seconds of its own: the engine counts the time that the
// processor gives it, while the limit of time is one of the clock on the wall.
constexpr double kLookEvery = 0.25;

constexpr std::size_t kCachedScripts = 256;

// How long a script that ought to end may go on without calling an object. Not nothing: the engine aborts
// when its watchdog fires in the moment in which the machine is destroyed, and a page that ends itself is
// often the last thing that a process does.
constexpr auto kGrace = std::chrono::milliseconds(200);

// The time limit ends a script where it looks for it itself, not by a signal to its thread: a signal would
// also interrupt what an object is waiting for.
JSContextGroupRef create_group() {
  static std::once_flag once;
  std::call_once(once, [] {
    choose_engine_signal();
    jsc_options_set_boolean("usePollingTraps", TRUE);
  });
  JSContextGroupRef group = JSContextGroupCreate();
  static std::once_flag guarded;
  std::call_once(guarded, guard_engine_signal);
  return group;
}

JSValueRef do_nothing(JSContextRef ctx, JSObjectRef, JSObjectRef, std::size_t, const JSValueRef*, JSValueRef*) {
  return JSValueMakeUndefined(ctx);
}

}  // namespace

ParsedScript::ParsedScript(JSContextGroupRef group, std::u16string_view text, const std::string& url) {
  const JsString source(text);
  const JsString name(url.c_str());
  JSStringRef error = nullptr;
  script_ = JSScriptCreateFromString(group, name.get(), 1, source.get(), &error, &line_);
  if (!error) return;
  const JsString owned(error);
  message_ = to_wide(owned.view());
}

EngineState::EngineState()
    : group_(create_group()),
      previous_(t_current),
      classes_(make_classes()),
      idle_context_(JSGlobalContextCreateInGroup(group_, nullptr)),
      idle_function_(JSObjectMakeFunctionWithCallback(idle_context_, nullptr, do_nothing)) {
  JSValueProtect(idle_context_, idle_function_);
  prelude_ = std::make_unique<ParsedScript>(group_, kPrelude, "zelto");
  JSContextGroupSetExecutionTimeLimit(group_, kUnlimitedSeconds, &EngineState::on_time_limit, this);
  t_current = this;
}

EngineState::~EngineState() {
  forget_exception();
  scripts_.clear();
  prelude_.reset();
  JSValueUnprotect(idle_context_, idle_function_);
  JSGlobalContextRelease(idle_context_);
  JSContextGroupRelease(group_);
  release_buried();
  for (JSClassRef jsclass : {classes_.object, classes_.member, classes_.reference, classes_.opaque, classes_.helper}) {
    JSClassRelease(jsclass);
  }
  t_current = previous_;
}

EngineState* EngineState::current() noexcept { return t_current; }

EngineState::Run::Run(EngineState& engine) : engine_(engine) {
  if (engine_.depth_++ > 0) return;
  engine_.stopped_ = engine_.timed_out_ = engine_.is_exhausted_ = false;
  engine_.start_ = std::chrono::steady_clock::now();
  engine_.is_terminating_ = false;
  engine_.start_watchdog();
}

EngineState::Run::~Run() {
  if (--engine_.depth_ > 0) return;
  engine_.forget_exception();
  if (engine_.is_unwinding()) engine_.settle();
}

// A termination that was asked for just before the script ended by itself would hit the next one: let it
// hit an empty one instead.
void EngineState::settle() {
  constexpr int kEnough = 4;
  JSContextGroupSetExecutionTimeLimit(group_, kUnlimitedSeconds, &EngineState::on_time_limit, this);
  const JsString nothing("0");
  for (int i = 0; i < kEnough && !realms_.empty(); ++i) {
    JSValueRef exception = nullptr;
    JSEvaluateScript(realms_.back()->context(), nothing.get(), nullptr, nullptr, 1, &exception);
    if (!exception) return;
  }
}

void EngineState::set_time_limit(std::chrono::milliseconds limit) {
  limit_ = limit;
  if (depth_ > 0 && !is_unwinding()) start_watchdog();
}

void EngineState::start_watchdog() {
  double seconds = kUnlimitedSeconds;
  if (limit_.count() > 0) {
    const auto left = limit_ - (std::chrono::steady_clock::now() - start_);
    seconds = std::clamp(std::chrono::duration<double>(left).count(), 0.0, kLookEvery);
  } else if (memory_limit_ > 0) {
    seconds = kLookEvery;
  }
  JSContextGroupSetExecutionTimeLimit(group_, seconds, &EngineState::on_time_limit, this);
}

bool EngineState::on_time_limit(JSContextRef ctx, void* engine) {
  auto& self = *static_cast<EngineState*>(engine);
  if (!self.is_running()) return false;
  if (self.must_unwind()) {
    self.is_terminating_ = false;
    return true;
  }
  self.is_exhausted_ = self.memory_limit_ > 0 && heap_exceeds(ctx, self.memory_limit_);
  if (!self.is_exhausted_) self.start_watchdog();  // each is good for one look
  return self.is_exhausted_;
}

bool EngineState::must_unwind() {
  if (!is_unwinding() && is_late()) timed_out_ = true;
  return is_unwinding();
}

void EngineState::stop() noexcept {
  if (depth_ == 0 || is_unwinding()) return;
  stopped_ = true;
  terminate_soon();
}

void EngineState::terminate_soon() {
  if (std::exchange(is_terminating_, true)) return;  // asking again would put it off
  JSContextGroupSetExecutionTimeLimit(group_, std::chrono::duration<double>(kGrace).count(),
                                      &EngineState::on_time_limit, this);
}

RealmState* EngineState::realm_of(JSContextRef ctx) const {
  JSGlobalContextRef global = JSContextGetGlobalContext(ctx);
  for (auto realm = realms_.rbegin(); realm != realms_.rend(); ++realm) {
    if ((*realm)->context() == global) return *realm;
  }
  return nullptr;
}

void EngineState::add_realm(RealmState* realm) { realms_.push_back(realm); }

void EngineState::remove_realm(RealmState* realm) { std::erase(realms_, realm); }

void EngineState::realm_has_ended() {
  if (is_exhausted_ && realms_.empty()) collect_garbage(idle_context_);
}

const ParsedScript& EngineState::parsed(const std::shared_ptr<const language::Program>& program) {
  if (scripts_.size() >= kCachedScripts) {
    std::erase_if(scripts_, [](const auto& entry) { return entry.second.program.expired(); });
  }
  CachedScript& cached = scripts_[program.get()];
  if (cached.program.lock() != program) {
    // The engine takes a program of nothing but `a.b = literal` for data and runs it without a frame, so
    // that its errors would have no place. The last line makes it code.
    cached.parsed = std::make_unique<ParsedScript>(group_, program->text + u"\n0", program->url);
    cached.program = program;
  }
  return *cached.parsed;
}

void EngineState::bury(Held* held) noexcept {
  const std::lock_guard lock(buried_lock_);
  buried_.push_back(held);
  has_buried_ = true;
}

void EngineState::release_buried() {
  if (!has_buried_) return;
  std::vector<Held*> taken;
  {
    const std::lock_guard lock(buried_lock_);
    taken.swap(buried_);
    has_buried_ = false;
  }
  for (Held* held : taken) delete held;
}

void EngineState::remember_exception(Departed departed) {
  JSValueProtect(departed.context, departed.exception);  // it may be the one that is forgotten
  forget_exception();
  departed_ = std::move(departed);
}

void EngineState::forget_exception() {
  if (departed_.exception) JSValueUnprotect(departed_.context, departed_.exception);
  departed_ = {};
}

HRESULT stop_page() noexcept {
  if (EngineState* engine = EngineState::current()) engine->stop();
  return kPageStopped;
}

bool is_unwinding() noexcept {
  EngineState* engine = EngineState::current();
  return engine && engine->is_running() && engine->is_unwinding();
}

}  // namespace zelto::script
