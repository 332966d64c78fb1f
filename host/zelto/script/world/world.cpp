#include "script/world/world.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "script/automation_object.h"
#include "script/callback.h"
#include "script/realm.h"
#include "script/world/function_links.h"

namespace zelto::script {
namespace {

JSValueRef on_unhandled_rejection(JSContextRef ctx, JSObjectRef, JSObjectRef, std::size_t count,
                                  const JSValueRef* values, JSValueRef*) {
  Realm* realm = Engine::realm_of(ctx);
  if (realm && count > 1 && !realm->engine().watchdog().is_unwinding()) realm->reports().note_rejection(values[1]);
  return JSValueMakeUndefined(ctx);
}

JSGlobalContextRef make_context(Engine& engine) {
  const Watchdog::Quiet quiet(engine.watchdog());
  return JSGlobalContextCreateInGroup(engine.group(), nullptr);
}

}  // namespace

void World::Release::operator()(JSGlobalContextRef context) const {
  // The engine never lets go of this callback: a function of this world would keep all of it in memory.
  JSGlobalContextSetUnhandledRejectionCallback(context, engine.idle_function(), nullptr);
  JSGlobalContextRelease(context);
}

World::World(Engine& engine)
    : engine_(engine), context_(make_context(engine), Release{engine}), kept_wrappers_(context()) {
  const Watchdog::Quiet quiet(engine.watchdog());  // a half one is of no use
  prelude_ = std::make_unique<Prelude>(engine, context());
  JSObjectRef rejected = JSObjectMakeFunctionWithCallback(context(), nullptr, callback<on_unhandled_rejection>);
  JSGlobalContextSetUnhandledRejectionCallback(context(), rejected, nullptr);
}

World::~World() {
  for (const Host& host : hosts_) {
    if (host.wrapper) JSValueUnprotect(context(), host.wrapper);
  }
}

const vbscript::Library& World::make_library(JSValueRef prelude, JSValueRef host_prototype) {
  if (!library_) library_ = std::make_unique<vbscript::Library>(engine_, context(), prelude, host_prototype);
  return *library_;
}

const vbscript::Library* World::need_library() {
  if (!library_) prelude_->make_library();
  return library_.get();
}

AutomationObject* World::set_host(std::u16string_view name) {
  auto host = std::ranges::find(hosts_, name, &Host::name);
  if (host == hosts_.end()) {
    host = hosts_.insert(host, Host{.name = std::u16string(name)});
    has_other_hosts_ |= surroundings_ != nullptr;
    host_names_.append(name) += u' ';
  }
  host->is_set = true;
  return host->object;
}

// A name that this page does not have: a session that could not be opened, say.
void World::drop_missing_hosts() {
  JSObjectRef global = JSContextGetGlobalObject(context());
  std::erase_if(hosts_, [&](const Host& host) {
    if (host.is_set) return false;
    has_other_hosts_ = true;
    JSObjectDeleteProperty(context(), global, JsString(std::u16string_view(host.name)).get(), nullptr);
    if (host.wrapper) JSValueUnprotect(context(), host.wrapper);
    return true;
  });
}

void World::keep_hosts() {
  JSObjectRef global = JSContextGetGlobalObject(context());
  for (Host& host : hosts_) {
    JSValueRef value = property(context(), global, JsString(std::u16string_view(host.name)));
    if (!engine_.classes().is_automation_object(context(), value)) continue;
    host.wrapper = object_of(value);
    JSValueProtect(context(), host.wrapper);
    host.object = static_cast<AutomationObject*>(static_cast<HostObject*>(JSObjectGetPrivate(host.wrapper)));
    host.object->set_kept(host.wrapper);
    host.structure = Structure(host.wrapper);
  }
}

bool World::prepare(const DeclaredNames& declared) {
  JSScriptRef source = engine_.built_ins();
  if (!source) return false;
  FunctionLinks::replace(context());
  built_ins_ = std::make_unique<BuiltIns>(source, context());
  keep_hosts();
  Names hosts;
  for (const Host& host : hosts_) hosts.push_back(host.name);
  surroundings_ = std::make_unique<Surroundings>(context(), use_ == Use::own ? declared.properties : Names(), hosts,
                                                 built_ins_->rest_check());
  return true;
}

PageFunction* World::function_of(const ProgramPtr& program) {
  const Watchdog::Quiet quiet(engine_.watchdog());
  const auto known = std::ranges::find(pages_, program.get(), &Page::key);
  if (known != pages_.end()) return known->function.get();
  const std::optional<DeclaredNames> declared = DeclaredNames::of(engine_, *program);
  if (!declared || !declared->are_free(context()) || (!surroundings_ && !prepare(*declared))) return nullptr;
  std::unique_ptr<PageFunction> made = PageFunction::make(engine_, context(), *surroundings_, *program, *declared);
  if (!made) return nullptr;
  pages_.push_back({program, program.get(), std::move(made)});
  return pages_.back().function.get();
}

PageFunction* World::page_of(const ProgramPtr& program) {
  if (surroundings_) drop_missing_hosts();
  page_ = use_ == Use::once ? nullptr : function_of(program);
  return page_;
}

bool World::has(const ProgramPtr& program) const noexcept {
  return std::ranges::any_of(pages_,
                             [&](const Page& one) { return one.key == program.get() && !one.program.expired(); });
}

std::vector<const language::Program*> World::programs() const {
  std::vector<const language::Program*> all;
  for (const Page& one : pages_) all.push_back(one.key);
  return all;
}

template <class Test>
void World::drop_if(Test test) noexcept {
  page_ = nullptr;
  std::erase_if(pages_, test);
}

void World::drop(const language::Program* program) noexcept {
  drop_if([&](const Page& one) { return one.key == program; });
}

void World::drop_ended() noexcept {
  drop_if([](const Page& one) { return one.program.expired(); });
}

void World::begin(const language::Program& program, const PageFunction* page, JSValueRef response, JSValueRef server) {
  const bool is_other = std::exchange(last_program_, page ? nullptr : &program) != &program;
  JSValueRef literals = page ? page->literals() : is_other ? JSValueMakeNull(context()) : nullptr;
  prelude_->begin(response, server, literals);
}

void World::show_global() {
  if (use_ != Use::shared || !page_ || std::exchange(is_shown_, true)) return;
  const Watchdog::Quiet quiet(engine_.watchdog());
  page_->show_names();
}

void World::show_all_names() {
  show_global();
  if (!page_ || !page_->has_lexical_names() || std::exchange(are_all_shown_, true)) return;
  const Watchdog::Quiet quiet(engine_.watchdog());
  is_shown_ = true;
  page_->show_lexical_names();
}

bool World::restore(bool may_hide) {
  if (has_other_hosts_ || is_shown_) return false;
  const Watchdog::Quiet quiet(engine_.watchdog());
  prelude_->end();
  for (Host& host : hosts_) {
    host.is_set = false;
    if (!host.structure.is_kept() || (host.object && !host.object->are_members_kept())) return false;
  }
  kept_wrappers_.restore();
  if (!built_ins_->are_structures_kept()) return false;
  Surroundings::Left left = page_->restore(may_hide);
  undeclared_ = std::move(left.undeclared);
  return left.nothing && built_ins_->are_structures_kept() && built_ins_->are_slots_kept();
}

}  // namespace zelto::script
