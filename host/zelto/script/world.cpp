#include "script/world.h"

#include <algorithm>
#include <utility>

#include "script/callback.h"
#include "script/realm.h"

namespace zelto::script {
namespace {

JSValueRef on_unhandled_rejection(JSContextRef ctx, JSObjectRef, JSObjectRef, std::size_t count,
                                  const JSValueRef* values, JSValueRef*) {
  Realm* realm = Engine::realm_of(ctx);
  if (realm && count > 1 && !realm->engine().watchdog().is_unwinding()) realm->reports().note_rejection(values[1]);
  return JSValueMakeUndefined(ctx);
}

}  // namespace

void World::Release::operator()(JSGlobalContextRef context) const {
  // The engine never lets go of this callback: a function of this world would keep all of it in memory.
  JSGlobalContextSetUnhandledRejectionCallback(context, engine.idle_function(), nullptr);
  JSGlobalContextRelease(context);
}

World::World(Engine& engine)
    : engine_(engine), context_(JSGlobalContextCreateInGroup(engine.group(), nullptr), Release{engine}) {
  const Watchdog::Quiet quiet(engine.watchdog());  // a half one is of no use
  prelude_ = std::make_unique<Prelude>(engine, context());
  JSObjectRef rejected = JSObjectMakeFunctionWithCallback(context(), nullptr, callback<on_unhandled_rejection>);
  JSGlobalContextSetUnhandledRejectionCallback(context(), rejected, nullptr);
}

World::~World() = default;

void World::set_host_names(const std::vector<std::u16string>& names) {
  JSObjectRef global = JSContextGetGlobalObject(context());
  for (const std::u16string& name : host_names_) {
    if (std::ranges::find(names, name) != names.end()) continue;
    JSObjectDeleteProperty(context(), global, JsString(std::u16string_view(name)).get(), nullptr);
  }
  if (host_names_ != names) host_names_ = names;
}

PageFunction* World::page_of(const language::Program& program) {
  if (page_ || !is_kept_) return page_.get();
  const Watchdog::Quiet quiet(engine_.watchdog());
  JSScriptRef source = engine_.built_ins();
  if (!source) return nullptr;
  property(context(), JSContextGetGlobalObject(context()), "console");  // made when it is first asked for
  built_ins_ = std::make_unique<BuiltIns>(source, context());
  page_ = PageFunction::make(engine_, context(), program, {host_names_, built_ins_->values_check()});
  return page_.get();
}

void World::begin(const language::Program& program, JSValueRef response, JSValueRef server) {
  prelude_->begin(response, server, std::exchange(last_program_, &program) != &program);
}

bool World::restore() {
  const Watchdog::Quiet quiet(engine_.watchdog());
  return built_ins_->are_structures_kept() && page_->restore() && built_ins_->are_structures_kept();
}

}  // namespace zelto::script
