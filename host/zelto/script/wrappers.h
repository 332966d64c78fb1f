// Objects across the border: automation objects as the script sees them, and the script's as automation does.
#pragma once

#include <boost/intrusive/list.hpp>

#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include <korlib/dispatch.h>
#include <korlib/ptr.h>

#include "script/host_object.h"
#include "script/jsc.h"

namespace zelto::script {

class AutomationObject;
class ScriptObject;

// Wrappers whose last reference went on another thread, waiting for the realm's own.
struct Graveyard {
  std::mutex lock;
  ScriptObject* dead = nullptr;  // a list of them
  bool closed = false;           // the realm is gone: wrappers free themselves
};

// Those of one realm: while somebody holds a wrapper, the same object gets the same one.
class Wrappers {
 public:
  explicit Wrappers(Realm& realm) : realm_(realm) {}
  Wrappers(const Wrappers&) = delete;
  Wrappers& operator=(const Wrappers&) = delete;

  // Of an object of the host or a component. One without members is opaque; a wrapped object of a script of this
  // engine is itself again.
  JSValueRef to_script(IUnknown* object);
  JSObjectRef wrap(IDispatch* object);
  // A wrapper that the world has kept stands for the object from here on.
  void bind(AutomationObject& kept, IDispatch* object);
  JSObjectRef make(JSClassRef jsclass, std::unique_ptr<HostObject> object);
  // The counted wrapper of a script's object.
  CComPtr<IDispatch> to_automation(JSObjectRef object);

  // The realm ends: every object that the script holds is released, and wrappers that somebody keeps answer a
  // clear error from here on.
  void end();

  // For the objects themselves, as they come and go.
  void adopt(HostObject& object) noexcept { held_.push_front(object); }
  void forget(AutomationObject* object) noexcept;
  void forget(ScriptObject* object) noexcept;
  const std::shared_ptr<Graveyard>& graveyard() const noexcept { return graveyard_; }

 private:
  void release_foreign();

  Realm& realm_;
  boost::intrusive::list<HostObject, boost::intrusive::constant_time_size<false>> held_;
  std::unordered_map<IUnknown*, AutomationObject*> automation_objects_;  // by identity
  // Several for one object when some are on their way out on other threads.
  std::unordered_multimap<JSObjectRef, ScriptObject*> script_objects_;
  std::shared_ptr<Graveyard> graveyard_ = std::make_shared<Graveyard>();
};

}  // namespace zelto::script
