#include "script/engine.h"

#include <jsc/jsc.h>
#include <unistd.h>

#include <boost/range/adaptor/reversed.hpp>
#include <csignal>
#include <mutex>
#include <utility>

#include "script/realm.h"
#include "script/vbscript/library.h"
#include "script/world/prelude.h"

namespace zelto::script {
namespace {

thread_local Engine* t_current = nullptr;

// To look at the stacks of the program's threads, the engine sends them a signal. Its handler takes any that comes for
// one of these, and would end the program over one from elsewhere.
// The engine's own choice, SIGUSR1, is what others send to have a program do something; nothing sends this one. A
// real-time signal would not do: sending it fails where the limit of those that wait is low.
constexpr int kEngineSignal = SIGSTKFLT;

struct sigaction engine_action {};  // what the engine has installed; written before on_signal is

// The kernel hands what is sent to the process to its first thread, which runs no scripts: one that the engine has
// stopped, and that any handler would wake, does not get it.
void on_signal(int number, siginfo_t* info, void* context) {
  const bool is_engines = info->si_code == SI_TKILL && info->si_pid == ::getpid();
  if (is_engines) engine_action.sa_sigaction(number, info, context);
}

// From here on the engine's handler gets none from elsewhere. Called once there is an engine.
void guard_engine_signal() {
  if (::sigaction(kEngineSignal, nullptr, &engine_action) != 0 || (engine_action.sa_flags & SA_SIGINFO) == 0) return;
  struct sigaction guarded = engine_action;
  guarded.sa_sigaction = on_signal;
  ::sigaction(kEngineSignal, &guarded, nullptr);
}

// What the engine takes the machine's memory for, unless JSC_forceRAMSize says otherwise. From 16 GiB on it lets what
// nobody holds any more grow to many times what is held, which pages that keep next to nothing do not gain by: a
// worker takes up to 10 MiB more then.
constexpr gsize kMachineMemory = gsize{4} << 30;

// The time limit ends a script where it looks for it itself, not by a signal to its thread: a signal would
// also interrupt what an object is waiting for.
JSContextGroupRef create_group() {
  static std::once_flag once;
  std::call_once(once, [] {
    JSConfigureSignalForGC(kEngineSignal);
    jsc_options_set_boolean("usePollingTraps", TRUE);
    gsize memory = 0;
    if (jsc_options_get_size("forceRAMSize", &memory) && memory == 0) {
      jsc_options_set_size("forceRAMSize", kMachineMemory);
    }
    // Nothing ends a loop in such code. Versions of the engine differ in the option's name.
    for (const char* name : {"useWasm", "useWebAssembly"}) jsc_options_set_boolean(name, FALSE);
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

Engine::Engine()
    : group_(create_group()),
      previous_(t_current),
      idle_context_(JSGlobalContextCreateInGroup(group_, nullptr)),
      idle_function_(JSObjectMakeFunctionWithCallback(idle_context_, nullptr, do_nothing)),
      watchdog_(group_, idle_context_),
      scripts_(group_),
      texts_(idle_context_) {
  JSValueProtect(idle_context_, idle_function_);
  prelude_ = std::make_unique<ParsedScript>(group_, Prelude::source(), "zelto");
  t_current = this;
}

Engine::~Engine() {
  departed_.forget();
  worlds_.clear();
  scripts_.clear();
  texts_.clear();
  vbscript_.reset();
  built_ins_.reset();
  prelude_.reset();
  JSValueUnprotect(idle_context_, idle_function_);
  JSGlobalContextRelease(idle_context_);
  JSContextGroupRelease(group_);
  release_buried();
  t_current = previous_;
}

Engine* Engine::current() noexcept { return t_current; }

JSScriptRef Engine::built_ins() {
  if (!std::exchange(has_looked_at_built_ins_, true)) {
    const World model(*this);
    const std::u16string source = BuiltIns::source(model.context());
    if (BuiltIns::can_tell(model.context())) built_ins_ = std::make_unique<ParsedScript>(group_, source, "zelto");
  }
  return built_ins_ ? built_ins_->get() : nullptr;
}

JSScriptRef Engine::vbscript() {
  if (!vbscript_) vbscript_ = std::make_unique<ParsedScript>(group_, vbscript::library_source(), "zelto");
  return vbscript_->get();
}

Realm* Engine::realm_of(JSContextRef ctx) {
  if (!t_current) return nullptr;
  JSGlobalContextRef global = JSContextGetGlobalContext(ctx);
  for (Realm* realm : t_current->realms_ | boost::adaptors::reversed) {
    if (realm->context() == global) return realm;
  }
  return nullptr;
}

ScriptError Engine::reached() const {
  ScriptError reached;
  if (!realms_.empty()) realms_.back()->reports().add_calls(&reached);
  if (!reached.calls.empty()) static_cast<language::SourcePlace&>(reached) = reached.calls.front();
  return reached;
}

void Engine::bury(HostObject* object) noexcept {
  const std::lock_guard lock(buried_lock_);
  object->next_buried_ = std::exchange(buried_, object);
  has_buried_ = true;
}

void Engine::release_all_buried() {
  HostObject* object = nullptr;
  {
    const std::lock_guard lock(buried_lock_);
    object = std::exchange(buried_, nullptr);
    has_buried_ = false;
  }
  while (object) delete std::exchange(object, object->next_buried_);
}

}  // namespace zelto::script
