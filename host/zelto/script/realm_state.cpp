#include "script/realm_state.h"

#include <algorithm>
#include <limits>

#include "language/lexemes.h"
#include "script/engine.h"
#include "script/errors.h"
#include "script/script_classes.h"
#include "script/script_object.h"

extern "C" JS_EXPORT void JSGlobalContextSetUnhandledRejectionCallback(JSGlobalContextRef ctx, JSObjectRef function,
                                                                       JSValueRef* exception);

namespace zelto::script {
namespace {

constexpr JSPropertyAttributes kFixed =
    kJSPropertyAttributeDontEnum | kJSPropertyAttributeReadOnly | kJSPropertyAttributeDontDelete;

JSValueRef on_unhandled_rejection(JSContextRef ctx, JSObjectRef, JSObjectRef, std::size_t count,
                                  const JSValueRef* values, JSValueRef*) {
  EngineState* engine = EngineState::current();
  RealmState* realm = engine ? engine->realm_of(ctx) : nullptr;
  if (realm && count > 1) realm->note_rejection(values[1]);
  return JSValueMakeUndefined(ctx);
}

// The failures with which Invoke names the argument that it could not take, before the member has run.
constexpr bool is_bad_argument(HRESULT hr) { return hr == DISP_E_TYPEMISMATCH || hr == DISP_E_PARAMNOTFOUND; }

}  // namespace

RealmState::RealmState(EngineState& engine)
    : engine_(engine),
      context_(JSGlobalContextCreateInGroup(engine.group(), nullptr)),
      global_(JSContextGetGlobalObject(context_)) {
  engine_.add_realm(this);
  run_prelude();
}

RealmState::~RealmState() {
  engine_.forget_exception();
  engine_.release_buried();
  disconnect_wrappers();
  automation_objects_.clear();
  // Letting go of one object may let go of others, or call back for the last time.
  while (Held* held = held_) {
    abandon(held);
    held->end_of_realm();
  }
  output_.reset();
  server_.reset();
  missing_ = {};
  for (JSObjectRef kept : {make_error_, make_array_, has_name_, object_prototype_}) {
    if (kept) JSValueUnprotect(context_, kept);
  }
  // The engine never lets go of this callback: a function of this realm would keep all of it in memory.
  JSGlobalContextSetUnhandledRejectionCallback(context_, engine_.idle_function(), nullptr);
  engine_.remove_realm(this);
  JSGlobalContextRelease(context_);
  engine_.realm_has_ended();
}

void RealmState::run_prelude() {
  JSObjectRef helper = JSObjectMake(context_, engine_.classes().helper, nullptr);
  JSObjectRef sample = JSObjectMake(context_, engine_.classes().object, nullptr);
  JSValueRef arguments[] = {helper, JSObjectGetPrototype(context_, sample)};
  JSValueRef function = JSScriptEvaluate(context_, engine_.prelude(), nullptr, nullptr);
  JSValueRef made = JSObjectCallAsFunction(context_, const_cast<JSObjectRef>(function), nullptr, 2, arguments, nullptr);
  auto* functions = const_cast<JSObjectRef>(made);
  unsigned at = 0;
  for (JSObjectRef* kept : {&make_error_, &make_array_, &has_name_, &object_prototype_}) {
    *kept = const_cast<JSObjectRef>(JSObjectGetPropertyAtIndex(context_, functions, at++, nullptr));
    JSValueProtect(context_, *kept);
  }
  JSObjectSetProperty(context_, global_, JsString("$zelto").get(), helper, kFixed, nullptr);
  JSObjectRef rejected = JSObjectMakeFunctionWithCallback(context_, nullptr, on_unhandled_rejection);
  JSGlobalContextSetUnhandledRejectionCallback(context_, rejected, nullptr);
}

void RealmState::set_object(std::wstring_view name, IDispatch* object) {
  JSValueRef value = object ? static_cast<JSValueRef>(wrap(object)) : JSValueMakeNull(context_);
  JSObjectSetProperty(context_, global_, JsString(name).get(), value, kJSPropertyAttributeDontEnum, nullptr);
  if (name == L"Server") server_ = object;
}

void RealmState::set_output(IDispatch* response) {
  output_.reset();
  if (response) response->QueryInterface(korlib::iid_of<ZeltoTypeLibrary::IResponse>, output_.put_void());
}

void RealmState::remember(const std::shared_ptr<const language::Program>& program) {
  programs_[program->url] = program;
  running_ = program.get();
  has_lexical_names_ = has_lexical_names_ || program->declares_lexical_names;
}

Outcome RealmState::run(const std::shared_ptr<const language::Program>& program) {
  const EngineState::Run run(engine_);
  const language::Program* previous = running_;
  remember(program);
  const ParsedScript& parsed = engine_.parsed(program);
  if (!parsed.get()) return {Outcome::failed, describe_syntax(*program, parsed)};
  JSValueRef exception = nullptr;
  thrown_at_.reset();
  rejection_.reset();
  JSScriptEvaluate(context_, parsed.get(), nullptr, &exception);
  Outcome outcome = outcome_of(exception);
  if (previous) running_ = previous;
  return outcome;
}

Outcome RealmState::call(std::wstring_view function) {
  const EngineState::Run run(engine_);
  const JsString name(function);
  bool is_lexical = false;
  if (!declares(name, &is_lexical)) return {};
  thrown_at_.reset();
  rejection_.reset();
  JSValueRef exception = nullptr;
  JSValueRef value = is_lexical ? lexical_value(name, &exception) : property(global_, name);
  if (value && !exception && is_function(value)) {
    JSObjectCallAsFunction(context_, const_cast<JSObjectRef>(value), nullptr, 0, nullptr, &exception);
  }
  return outcome_of(exception);
}

Outcome RealmState::outcome_of(JSValueRef exception) {
  engine_.release_buried();
  if (engine_.is_exhausted()) return {Outcome::out_of_memory, {}};
  if (engine_.has_timed_out()) return {Outcome::timed_out, {}};
  if (engine_.has_stopped()) return {Outcome::stopped, {}};
  if (exception) return {Outcome::failed, describe_exception(exception)};
  if (rejection_) return {Outcome::failed, *rejection_};
  return {};
}

bool RealmState::is_function(JSValueRef value) const {
  return JSValueIsObject(context_, value) && JSObjectIsFunction(context_, const_cast<JSObjectRef>(value)) &&
         !JSValueIsObjectOfClass(context_, value, engine_.classes().object);
}

bool RealmState::has_own_name(JSObjectRef object, const JsString& name) const {
  if (!JSObjectHasProperty(context_, object, name.get())) return false;
  if (!JSObjectHasProperty(context_, object_prototype_, name.get())) return true;
  JSValueRef arguments[] = {object, JSValueMakeString(context_, name.get())};
  JSValueRef answer = JSObjectCallAsFunction(context_, has_name_, nullptr, 2, arguments, nullptr);
  return answer && JSValueToBoolean(context_, answer);
}

bool RealmState::declares(const JsString& name, bool* is_lexical) {
  *is_lexical = false;
  if (JSObjectHasProperty(context_, global_, name.get())) {
    // The engine's own globals, and the host's objects, are not enumerable; what a script declares is.
    const JsString test("propertyIsEnumerable");
    JSValueRef function = property(make_error_, test);
    JSValueRef argument = JSValueMakeString(context_, name.get());
    JSValueRef answer =
        JSValueIsObject(context_, function)
            ? JSObjectCallAsFunction(context_, const_cast<JSObjectRef>(function), global_, 1, &argument, nullptr)
            : nullptr;
    if (answer && JSValueToBoolean(context_, answer)) return true;
  }
  if (!has_lexical_names_) return false;
  JSValueRef exception = nullptr;
  *is_lexical = lexical_value(name, &exception) && !exception;
  return *is_lexical;
}

// `typeof` a name tells a declared one from a global of the engine only by where it lives, so the
// question is asked of a name that the global object does not have.
JSValueRef RealmState::lexical_value(const JsString& name, JSValueRef* exception) {
  if (!language::is_plain_name(to_wide(name.view())) || JSObjectHasProperty(context_, global_, name.get()))
    return nullptr;
  return JSEvaluateScript(context_, name.get(), nullptr, nullptr, 1, exception);
}

void RealmState::set_lexical_value(const JsString& name, JSValueRef value, JSValueRef* exception) {
  const std::u16string source = u"(function(value) { " + std::u16string(name.view()) + u" = value })";
  JSValueRef setter =
      JSEvaluateScript(context_, JsString(std::u16string_view(source)).get(), nullptr, nullptr, 1, exception);
  if (setter) JSObjectCallAsFunction(context_, const_cast<JSObjectRef>(setter), nullptr, 1, &value, exception);
}

JSValueRef RealmState::items_of(JSObjectRef object, JSValueRef* exception) {
  JSValueRef argument = object;
  return JSObjectCallAsFunction(context_, make_array_, nullptr, 1, &argument, exception);
}

JSValueRef RealmState::property(JSObjectRef object, const JsString& name) const {
  JSValueRef exception = nullptr;
  JSValueRef value = JSObjectGetProperty(context_, object, name.get(), &exception);
  return value && !exception ? value : JSValueMakeUndefined(context_);
}

std::wstring RealmState::text_of(JSValueRef value) const {
  const JsString text(JSValueToStringCopy(context_, value, nullptr));
  return text.get() ? to_wide(text.view()) : std::wstring();
}

bool RealmState::may_call(JSValueRef* exception) {
  engine_.release_buried();
  missing_.is_fresh = false;
  if (engine_.must_unwind()) {
    raise(kPageStopped, {}, exception);
    return false;
  }
  if (stack_is_low()) {
    raise_out_of_stack(exception);
    return false;
  }
  return true;
}

HRESULT RealmState::invoke(IDispatch* object, DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result) {
  const CComPtr<IDispatch> alive(object);
  UINT refused = 0;
  HRESULT hr = invoke_once(object, id, flags, params, result, &refused);
  // A required argument that was `undefined`: each goes once, so this ends.
  while (is_bad_argument(hr) && !is_unwinding() && refused < params->cArgs &&
         korlib::is_omitted(params->rgvarg[refused])) {
    VariantInit(&params->rgvarg[refused]);
    hr = invoke_once(object, id, flags, params, result, &refused);
  }
  return hr;
}

HRESULT RealmState::invoke_once(IDispatch* object, DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                                UINT* refused) {
  constexpr UINT kNone = std::numeric_limits<UINT>::max();
  clear_error();
  engine_.forget_exception();
  unknown_name_.clear();
  EXCEPINFO info{};
  *refused = kNone;
  HRESULT hr = object->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, flags, params, result, &info, refused);
  if (hr == DISP_E_EXCEPTION) {
    if (info.pfnDeferredFillIn) info.pfnDeferredFillIn(&info);
    if (info.bstrDescription) {
      set_error(hr, korlib::view_of(info.bstrSource), korlib::view_of(info.bstrDescription));
    }
    if (FAILED(info.scode)) hr = info.scode;
  }
  SysFreeString(info.bstrSource);
  SysFreeString(info.bstrDescription);
  SysFreeString(info.bstrHelpFile);
  return hr;
}

void RealmState::adopt(Held* held) noexcept {
  held->next_ = held_;
  if (held_) held_->previous_ = held;
  held_ = held;
}

void RealmState::abandon(Held* held) noexcept {
  (held->previous_ ? held->previous_->next_ : held_) = held->next_;
  if (held->next_) held->next_->previous_ = held->previous_;
  held->previous_ = held->next_ = nullptr;
}

JSObjectRef RealmState::make(JSClassRef jsclass, std::unique_ptr<Held> held) {
  return JSObjectMake(context_, jsclass, held.release());
}

JSObjectRef RealmState::wrap(IDispatch* dispatch) {
  CComPtr<IUnknown> identity;
  if (FAILED(dispatch->QueryInterface(korlib::iid_of<IUnknown>, identity.put_void()))) identity = dispatch;
  if (const auto known = automation_objects_.find(identity.get()); known != automation_objects_.end()) {
    if (JSObjectRef object = known->second->script_object()) return object;
  }
  auto held = std::make_unique<AutomationObject>(*this, identity, CComPtr<IDispatch>(dispatch));
  AutomationObject* kept = held.get();
  JSObjectRef object = make(engine_.classes().object, std::move(held));
  kept->set_weak(JSWeakCreate(engine_.group(), object));
  automation_objects_[identity.get()] = kept;
  return object;
}

void RealmState::forget(AutomationObject* object) noexcept {
  const auto known = automation_objects_.find(object->identity());
  if (known != automation_objects_.end() && known->second == object) automation_objects_.erase(known);
}

CComPtr<IDispatch> RealmState::unwrap(JSObjectRef object) {
  release_foreign_wrappers();
  CComPtr<IDispatch> wrapper;
  for (auto [known, end] = script_objects_.equal_range(object); known != end; ++known) {
    if (!known->second->try_add_ref()) continue;
    wrapper.attach(known->second);
    return wrapper;
  }
  auto* made = new ScriptObject(*this, object);
  wrapper.attach(made);
  script_objects_.emplace(object, made);
  return wrapper;
}

void RealmState::forget(ScriptObject* object) noexcept {
  const auto [first, last] = script_objects_.equal_range(object->object());
  const auto known = std::find_if(first, last, [&](const auto& entry) { return entry.second == object; });
  if (known != last) script_objects_.erase(known);
}

// With the lock held: a wrapper whose last reference goes elsewhere in this moment is either still waiting
// for the realm or finds itself disconnected.
void RealmState::disconnect_wrappers() {
  release_foreign_wrappers();
  std::vector<ScriptObject*> dead;
  {
    const std::lock_guard lock(graveyard_->lock);
    for (const auto& [object, wrapper] : std::exchange(script_objects_, {})) wrapper->end_of_realm();
    dead.swap(graveyard_->dead);
    graveyard_->closed = true;
  }
  for (ScriptObject* object : dead) delete object;
}

void RealmState::release_foreign_wrappers() {
  std::vector<ScriptObject*> dead;
  {
    const std::lock_guard lock(graveyard_->lock);
    dead.swap(graveyard_->dead);
  }
  for (ScriptObject* object : dead) {
    forget(object);
    delete object;
  }
}

}  // namespace zelto::script
