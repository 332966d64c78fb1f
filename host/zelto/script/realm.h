// A page's world in the script engine: a global object of its own with everything that a script makes in it.
//
//   Engine engine;                        // on the worker's thread, for as long as it lives
//   engine.set_time_limit(90s);
//   {
//     Realm realm(engine);
//     realm.set_object(L"Response", response);
//     realm.set_output(response);
//     Outcome outcome = realm.run(program);
//   }                                     // everything that the script held has been released here
//
// How values cross between script and objects: values.h. What a script expects of an object: automation_object.h.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "script/engine.h"
#include "script/errors.h"
#include "script/object_calls.h"
#include "script/values.h"
#include "script/world/globals.h"
#include "script/world/world.h"
#include "script/wrappers.h"

namespace zelto::script {

// A page that is executed by another one gets a realm of the same engine while the first still runs.
class Realm {
 public:
  // `page` is the only program that runs in it, which may then have been prepared for; null for any.
  explicit Realm(Engine& engine, std::shared_ptr<const language::Program> page = nullptr);
  // Releases every object that the script holds. Wrappers of script objects that somebody kept, in a
  // Session say, stay safe to call and to release from any thread, and answer a clear error.
  ~Realm();
  Realm(const Realm&) = delete;
  Realm& operator=(const Realm&) = delete;

  // A global name for an object, e.g. L"Response". The script may shadow it.
  void set_object(std::wstring_view name, IDispatch* object);

  // Where page text and `<%= %>` go: the object's ZeltoTypeLibrary::IResponse. Null is allowed.
  void set_output(IDispatch* response) { globals_.set_output(response); }

  // Where `console.log` and its like go; nowhere without one.
  void set_log(LogSink sink) { globals_.set_log(std::move(sink)); }

  // The folder that templates of the site lie below, by which errors name them. Outlives the realm.
  void set_root(std::string_view root) noexcept { errors_.set_root(root); }

  // Runs the program to its end. May be called from within a member that a script is calling.
  Outcome run(const std::shared_ptr<const language::Program>& program);

  // Calls a function of the script without arguments, if there is one: `Session_OnStart`. A missing one
  // is `completed`.
  Outcome call(std::wstring_view function);

  // What the script declared, as the object that `this` is at top level: var, function, let, const and
  // class names; the engine's own globals and the names given with set_object are not among them. The
  // caller releases it.
  IDispatch* global() { return wrappers_.to_automation(globals_.object()).detach(); }

  // The realm's parts, for this room.
  Engine& engine() noexcept { return engine_; }
  JSContextRef context() const noexcept { return world_->context(); }
  World& world() noexcept { return *world_; }
  const Prelude& prelude() const noexcept { return world_->prelude(); }
  MissingMember& missing() noexcept { return missing_; }
  ErrorReports& reports() noexcept { return reports_; }
  Errors& errors() noexcept { return errors_; }
  Wrappers& wrappers() noexcept { return wrappers_; }
  Values& values() noexcept { return values_; }
  Globals& globals() noexcept { return globals_; }
  // Before its script gets hold of the global object, be it from an object.
  void show_global() { world_->show_global(); }
  ObjectCalls& calls() noexcept { return calls_; }
  // The program whose code runs, or ran last; null before the first.
  const language::Program* running() const noexcept { return running_; }

 private:
  PageFunction* prepare(const language::Program& program);
  Outcome outcome_of(JSValueRef exception);

  Engine& engine_;
  const std::shared_ptr<const language::Program> page_;
  std::unique_ptr<World> world_;
  MissingMember missing_;
  ErrorReports reports_;
  Errors errors_;
  Wrappers wrappers_;
  Values values_;
  Globals globals_;
  ObjectCalls calls_;
  const language::Program* running_ = nullptr;
};

}  // namespace zelto::script
