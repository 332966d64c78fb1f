#include "script/realm.h"

#include "script/callback.h"

namespace zelto::script {
namespace {

JSValueRef on_unhandled_rejection(JSContextRef ctx, JSObjectRef, JSObjectRef, std::size_t count,
                                  const JSValueRef* values, JSValueRef*) {
  Realm* realm = Engine::realm_of(ctx);
  if (realm && count > 1 && !realm->engine().watchdog().is_unwinding()) realm->reports().note_rejection(values[1]);
  return JSValueMakeUndefined(ctx);
}

}  // namespace

void Realm::ReleaseContext::operator()(JSGlobalContextRef context) const {
  // The engine never lets go of this callback: a function of this realm would keep all of it in memory.
  JSGlobalContextSetUnhandledRejectionCallback(context, engine.idle_function(), nullptr);
  JSGlobalContextRelease(context);
  if (!engine.has_realms()) engine.watchdog().free_garbage();
}

Realm::Realm(Engine& engine)
    : engine_(engine),
      context_(JSGlobalContextCreateInGroup(engine.group(), nullptr), ReleaseContext{engine}),
      quiet_(std::in_place, engine.watchdog()),
      prelude_(engine, context_.get()),
      reports_(context_.get(), missing_),
      errors_(engine, context_.get(), prelude_, reports_, missing_),
      wrappers_(*this),
      values_(context_.get(), engine.classes(), errors_, wrappers_),
      globals_(context_.get(), prelude_, wrappers_, reports_),
      calls_(*this) {
  JSObjectRef rejected = JSObjectMakeFunctionWithCallback(context_.get(), nullptr, callback<on_unhandled_rejection>);
  JSGlobalContextSetUnhandledRejectionCallback(context_.get(), rejected, nullptr);
  engine_.add_realm(this);
  quiet_.reset();
}

Realm::~Realm() {
  engine_.departed().forget();
  engine_.release_buried();
  wrappers_.end();
  engine_.remove_realm(this);
}

Outcome Realm::run(const std::shared_ptr<const language::Program>& program) {
  const Engine::Run run(engine_);
  reports_.remember(program);
  globals_.remember(*program);
  const ParsedScript& parsed = engine_.scripts().of(program);
  if (!parsed.get()) return {Outcome::failed, ErrorReports::describe_syntax(*program, parsed)};
  const language::Program* previous = running_;
  running_ = program.get();
  reports_.begin_run();
  JSValueRef exception = nullptr;
  JSScriptEvaluate(context_.get(), parsed.get(), nullptr, &exception);
  Outcome outcome = outcome_of(exception);
  if (previous) running_ = previous;
  return outcome;
}

Outcome Realm::call(std::wstring_view function) {
  const Engine::Run run(engine_);
  const JsString name(function);
  bool is_lexical = false;
  if (!globals_.declares(name, &is_lexical)) return {};
  reports_.begin_run();
  JSValueRef exception = nullptr;
  JSValueRef value =
      is_lexical ? globals_.lexical_value(name, &exception) : property(context(), globals_.object(), name);
  if (value && !exception && engine_.classes().is_function(context(), value)) {
    JSObjectCallAsFunction(context(), object_of(value), nullptr, 0, nullptr, &exception);
  }
  return outcome_of(exception);
}

Outcome Realm::outcome_of(JSValueRef exception) {
  engine_.release_buried();
  if (engine_.watchdog().is_unwinding()) return {engine_.watchdog().ending(), {}};
  if (exception) return {Outcome::failed, reports_.describe(exception)};
  if (reports_.rejection()) return {Outcome::failed, reports_.rejection()};
  return {};
}

}  // namespace zelto::script
