#include "script/realm.h"

#include <utility>

#include "script/callback.h"

namespace zelto::script {

Realm::Realm(Engine& engine, std::shared_ptr<const language::Program> page)
    : engine_(engine),
      page_(std::move(page)),
      world_(engine.worlds().take(page_)),
      reports_(context(), missing_),
      errors_(engine, world_->context(), prelude(), reports_, missing_),
      wrappers_(*this),
      values_(context(), engine.classes(), engine.texts(), errors_, wrappers_),
      globals_(context(), prelude(), wrappers_, reports_),
      calls_(*this) {
  engine_.add_realm(this);
}

Realm::~Realm() {
  engine_.departed().forget();
  engine_.executed().forget(world_->context());
  engine_.release_buried();
  wrappers_.end();
  engine_.remove_realm(this);
  const Outcome::Kind ending = engine_.watchdog().ending();
  const bool is_whole =
      ending == Outcome::completed || (ending == Outcome::stopped && !engine_.watchdog().is_running());
  engine_.worlds().give_back(std::move(world_), page_, is_whole);
  if (engine_.has_realms()) return;
  engine_.texts().clear();  // one may be a part of a large text, which it keeps
  engine_.watchdog().free_garbage();
}

void Realm::set_object(std::wstring_view name, IDispatch* object) {
  const Watchdog::Quiet quiet(engine_.watchdog());
  AutomationObject* const kept = world_->set_host(to_utf16(name));
  if (kept && object) wrappers_.bind(*kept, object);
  globals_.set_object(name, object, !kept);
}

// A page whose time is over meanwhile is ended in its own script: what is left half done here would be missed there.
PageFunction* Realm::prepare(const language::Program& program) {
  const Watchdog::Quiet quiet(engine_.watchdog());
  reports_.begin_run();
  PageFunction* const page = &program == page_.get() ? world_->page_of(page_) : nullptr;
  globals_.set_page(page);
  reports_.set_opening(page ? &program : nullptr, page ? page->opening_length() : 0);
  world_->begin(program, page, globals_.response(), globals_.server_object());
  calls_.limit_collecting();
  return page;
}

Outcome Realm::run(const std::shared_ptr<const language::Program>& program) {
  const Engine::Run run(engine_);
  reports_.remember(program);
  globals_.remember(*program);
  const ParsedScript& parsed = engine_.scripts().of(program);
  if (!parsed.get()) return {Outcome::failed, reports_.describe_syntax(*program, parsed)};
  const language::Program* previous = running_;
  running_ = program.get();
  PageFunction* const page = prepare(*program);
  JSValueRef exception = nullptr;
  if (page)
    page->call(&exception);
  else
    JSScriptEvaluate(context(), parsed.get(), nullptr, &exception);
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
  // An engine that ends a page at its limit must not be called, for the last of its text either. A page that ended
  // itself has none: what it called to do so came after that.
  if (!engine_.watchdog().is_unwinding()) {
    JSValueRef failure = nullptr;
    if (!calls_.hand_text_over(&failure) && !exception) exception = failure;
  }
  // What the engine could not have because the page may not is the page's limit, not the machine's. Nothing of the page
  // runs any more: its exception alone knows where that was.
  if (exception && !engine_.watchdog().is_unwinding()) {
    ScriptError place = reports_.place_of(exception);
    if (engine_.watchdog().must_unwind()) engine_.watchdog().set_ended_at(std::move(place));
  }
  if (engine_.watchdog().is_unwinding()) return {engine_.watchdog().ending(), engine_.watchdog().ended_at()};
  if (exception) return {Outcome::failed, reports_.describe(exception)};
  if (reports_.rejection()) return {Outcome::failed, reports_.rejection()};
  return {};
}

}  // namespace zelto::script
