#include "script/wrappers.h"

#include <algorithm>
#include <utility>

#include "script/automation_object.h"
#include "script/realm.h"
#include "script/script_object.h"

namespace zelto::script {

namespace {

CComPtr<IUnknown> identity_of(IDispatch* object) {
  CComPtr<IUnknown> identity;
  if (FAILED(object->QueryInterface(korlib::iid_of<IUnknown>, identity.put_void()))) identity = object;
  return identity;
}

}  // namespace

JSValueRef Wrappers::to_script(IUnknown* object) {
  if (!object) return JSValueMakeNull(realm_.context());
  ScriptObject* script_object = script_object_behind(object);
  if (script_object && script_object->is_own_thread() && script_object->realm() &&
      &script_object->realm()->engine() == &realm_.engine()) {
    if (script_object->is_global()) script_object->realm()->show_global();
    return script_object->object();
  }
  CComQIPtr<IDispatch> dispatch(object);
  if (dispatch) return wrap(dispatch.get());
  return make(realm_.engine().classes().opaque, std::make_unique<OpaqueObject>(realm_, CComPtr<IUnknown>(object)));
}

void Wrappers::bind(AutomationObject& kept, IDispatch* object) {
  CComPtr<IUnknown> identity = identity_of(object);
  automation_objects_[identity.get()] = &kept;
  kept.bind(realm_, std::move(identity), CComPtr<IDispatch>(object));
}

JSObjectRef Wrappers::wrap(IDispatch* object) {
  const CComPtr<IUnknown> identity = identity_of(object);
  if (const auto known = automation_objects_.find(identity.get()); known != automation_objects_.end()) {
    if (JSObjectRef wrapper = known->second->script_object()) return wrapper;
  }
  KeptWrappers* const kept = realm_.world().kept_wrappers();
  const MemberNames* const of_class = kept ? realm_.engine().members().of(object) : nullptr;
  if (AutomationObject* const free = of_class ? kept->find(of_class) : nullptr) {
    bind(*free, object);
    return free->script_object();
  }
  const EngineLock lock(realm_.context());
  auto made = std::make_unique<AutomationObject>(realm_, identity, CComPtr<IDispatch>(object));
  AutomationObject* const held = made.get();
  JSObjectRef wrapper = make(realm_.engine().classes().object, std::move(made));
  if (of_class && kept->has_room(of_class)) {
    kept->keep(wrapper, held, of_class);
  } else {
    held->set_weak(JSWeakCreate(realm_.engine().group(), wrapper));
  }
  automation_objects_[identity.get()] = held;
  return wrapper;
}

JSObjectRef Wrappers::make(JSClassRef jsclass, std::unique_ptr<HostObject> object) {
  return JSObjectMake(realm_.context(), jsclass, object.release());
}

CComPtr<IDispatch> Wrappers::to_automation(JSObjectRef object) {
  release_foreign();
  CComPtr<IDispatch> wrapper;
  for (auto [known, end] = script_objects_.equal_range(object); known != end; ++known) {
    if (!known->second->try_add_ref()) continue;
    wrapper.attach(known->second);
    return wrapper;
  }
  auto* made = new ScriptObject(realm_, object);
  wrapper.attach(made);
  script_objects_.emplace(object, made);
  return wrapper;
}

void Wrappers::end() {
  {
    // With the lock held: a wrapper whose last reference goes elsewhere in this moment is either still waiting
    // for the realm or finds itself disconnected.
    const std::lock_guard lock(graveyard_->lock);
    for (const auto& [object, wrapper] : std::exchange(script_objects_, {})) wrapper->end_of_realm();
    graveyard_->closed = true;
  }
  release_foreign();
  automation_objects_.clear();
  // Letting go of one object may let go of others, or call back for the last time.
  while (!held_.empty()) {
    HostObject& object = held_.front();
    held_.pop_front();
    object.end_of_realm();
  }
}

void Wrappers::forget(AutomationObject* object) noexcept {
  const auto known = automation_objects_.find(object->identity());
  if (known != automation_objects_.end() && known->second == object) automation_objects_.erase(known);
}

void Wrappers::forget(ScriptObject* object) noexcept {
  const auto [first, last] = script_objects_.equal_range(object->object());
  const auto known = std::find_if(first, last, [&](const auto& entry) { return entry.second == object; });
  if (known != last) script_objects_.erase(known);
}

void Wrappers::release_foreign() {
  ScriptObject* dead = nullptr;
  {
    const std::lock_guard lock(graveyard_->lock);
    dead = std::exchange(graveyard_->dead, nullptr);
  }
  while (dead) {
    ScriptObject* const object = std::exchange(dead, dead->next_dead());
    forget(object);
    delete object;
  }
}

}  // namespace zelto::script
