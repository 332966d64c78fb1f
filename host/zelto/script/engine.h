// The script engine's virtual machine: one for each worker thread, a Realm in it for each request (realm.h).
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "script/asked_names.h"
#include "script/departed_exception.h"
#include "script/executed_errors.h"
#include "script/host_object.h"
#include "script/jsc.h"
#include "script/member_names.h"
#include "script/parsed_scripts.h"
#include "script/repeated_texts.h"
#include "script/watchdog.h"
#include "script/world/worlds.h"

namespace zelto::script {

class Realm;

// Made, used and destroyed on one thread, outliving the realms that it runs.
class Engine {
 public:
  Engine();
  ~Engine();
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  // The engine of the calling thread, null when it has none.
  static Engine* current() noexcept;

  // How long the script may take, counted from the start of the outermost run. May be called while a
  // script runs (Server.ScriptTimeout), and then counts from that start too. Zero or less: no limit.
  void set_time_limit(std::chrono::milliseconds limit) { watchdog_.set_time_limit(limit); }
  std::chrono::milliseconds time_limit() const noexcept { return watchdog_.time_limit(); }

  // How much memory, in bytes, scripts may take for their objects and have others take, looked at where script and
  // objects call each other and a few times a second while a script runs; and how much the whole program may have
  // outside of its engines for a script to keep more beyond its page. Zero: no limit.
  void set_memory_limit(std::size_t bytes, std::size_t all = 0) { watchdog_.set_memory_limits(bytes, all); }

  // For whoever watches over the thread from outside: keeps there by when the script that runs must have ended, in
  // nanoseconds of the steady clock, 0 for never or when none runs. The place outlives the engine.
  void show_deadline(std::atomic<std::int64_t>& place) { watchdog_.show_deadline(place); }

  // Frees what no script holds any more. For when no script runs: the engine does not know how much memory its objects
  // keep outside of its heap, and may leave gigabytes of it for a long time.
  void collect_garbage() { watchdog_.collect(); }

  // See Worlds.
  void set_on_undeclared(Worlds::OnUndeclared told) { worlds_.set_on_undeclared(std::move(told)); }

  // The page that has failed so is one that another one executes: the member that does so fails with what this gives.
  HRESULT raise_executed(ScriptError error) { return executed_.raise(std::move(error)); }

  // What follows is for this room.

  // One level of running script.
  class Run {
   public:
    explicit Run(Engine& engine) : engine_(engine) { engine_.watchdog_.enter(); }
    ~Run() {
      if (engine_.watchdog_.leave()) engine_.departed_.forget();
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

   private:
    Engine& engine_;
  };

  JSContextGroupRef group() const noexcept { return group_; }
  // A function that does nothing and belongs to no realm.
  JSObjectRef idle_function() const noexcept { return idle_function_; }
  const HostClasses& classes() const noexcept { return classes_; }
  JSScriptRef prelude() const noexcept { return prelude_->get(); }
  // What BuiltIns needs; null when worlds cannot be kept with this version of the engine.
  JSScriptRef built_ins();
  // The library of VBScript: parsed when it is first asked for.
  JSScriptRef vbscript();
  Worlds& worlds() noexcept { return worlds_; }
  Watchdog& watchdog() noexcept { return watchdog_; }
  const Watchdog& watchdog() const noexcept { return watchdog_; }
  MemberCache& members() noexcept { return members_; }
  AskedNames& asked_names() noexcept { return asked_names_; }
  ParsedScripts& scripts() noexcept { return scripts_; }
  RepeatedTexts& texts() noexcept { return texts_; }
  DepartedException& departed() noexcept { return departed_; }

  // The realm of the calling thread's engine whose code is running; null for one that is gone.
  static Realm* realm_of(JSContextRef ctx);
  void add_realm(Realm* realm) { realms_.push_back(realm); }
  void remove_realm(Realm* realm) { std::erase(realms_, realm); }
  bool has_realms() const noexcept { return !realms_.empty(); }
  const std::vector<Realm*>& realms() const noexcept { return realms_; }  // of the outermost page first
  ExecutedErrors& executed() noexcept { return executed_; }
  // How far the script has come that runs, or has an object called.
  ScriptError reached() const;

  // From finalizers, on any thread: the object is let go at the next opportunity on the engine's thread.
  void bury(HostObject* object) noexcept;
  void release_buried() {
    if (has_buried_) release_all_buried();
  }

 private:
  void release_all_buried();

  JSContextGroupRef group_;
  Engine* previous_;
  HostClasses classes_;
  JSGlobalContextRef idle_context_;
  JSObjectRef idle_function_;
  Watchdog watchdog_;
  ParsedScripts scripts_;
  RepeatedTexts texts_;
  std::unique_ptr<ParsedScript> prelude_;
  std::unique_ptr<ParsedScript> built_ins_;
  std::unique_ptr<ParsedScript> vbscript_;
  bool has_looked_at_built_ins_ = false;
  Worlds worlds_{*this};
  std::vector<Realm*> realms_;
  MemberCache members_;
  AskedNames asked_names_;
  DepartedException departed_;
  ExecutedErrors executed_;
  std::mutex buried_lock_;
  HostObject* buried_ = nullptr;  // a list of them
  std::atomic<bool> has_buried_ = false;
};

}  // namespace zelto::script
