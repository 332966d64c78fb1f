// What a script holds of the host's world. Each lives as the private data of one engine object.
#pragma once

#include <boost/intrusive/list_hook.hpp>

#include <utility>

#include <korlib/hresult.h>
#include <korlib/ptr.h>

#include "script/jsc.h"

namespace zelto::script {

class Engine;
class Realm;

// A wrapper was used after its page, on either side of the border.
inline constexpr HRESULT kDisconnected = korlib::hresult(0x80010108);

// A node of the realm's list of everything held. The realm lets go of the references when it ends; the
// node itself goes when the engine has collected its object, on the engine's thread.
class HostObject : public boost::intrusive::list_base_hook<boost::intrusive::link_mode<boost::intrusive::auto_unlink>> {
 public:
  explicit HostObject(Realm& realm);
  virtual ~HostObject() = default;
  HostObject(const HostObject&) = delete;
  HostObject& operator=(const HostObject&) = delete;

  Engine& engine() const noexcept { return engine_; }
  Realm* realm() const noexcept { return realm_; }  // null once it has ended
  void end_of_realm();
  // For an object whose realm has ended, and whose place in the script another realm finds again.
  void begin_again(Realm& realm);

 protected:
  virtual void release() = 0;

 private:
  friend class Engine;

  Engine& engine_;
  Realm* realm_;
  HostObject* next_buried_ = nullptr;  // kept by the engine: a finalizer must not fail for want of memory
};

// An object without members. A script can hand it back.
class OpaqueObject final : public HostObject {
 public:
  OpaqueObject(Realm& realm, CComPtr<IUnknown> object) : HostObject(realm), object_(std::move(object)) {}
  const CComPtr<IUnknown>& object() const noexcept { return object_; }

 protected:
  void release() override { object_.reset(); }

 private:
  CComPtr<IUnknown> object_;
};

// The engine's classes of what a script sees of the host.
struct HostClasses {
  HostClasses();
  ~HostClasses();
  HostClasses(const HostClasses&) = delete;
  HostClasses& operator=(const HostClasses&) = delete;

  bool is_automation_object(JSContextRef ctx, JSValueRef value) const {
    return JSValueIsObjectOfClass(ctx, value, object);
  }
  // Whether it is a function of the script or a member that was read without being called. To the engine
  // every automation object is one, because it can be called for its default member.
  bool is_function(JSContextRef ctx, JSValueRef value) const {
    return JSValueIsObject(ctx, value) && JSObjectIsFunction(ctx, const_cast<JSObjectRef>(value)) &&
           !is_automation_object(ctx, value);
  }

  JSClassRef object;     // AutomationObject
  JSClassRef member;     // AutomationMember that can be called
  JSClassRef reference;  // AutomationMember that can be assigned to
  JSClassRef opaque;     // OpaqueObject
  JSClassRef builtins;   // $zelto
};

// What such a class begins with. `name` is what the script sees of it.
JSClassDefinition host_class(const char* name);

// The private data of an object of one of these classes while its realm lives, else null.
HostObject* living_host_object(JSObjectRef object);
// For an object whose realm has ended before the page that still has it: an executed page's, say.
void raise_ended(JSContextRef ctx, JSValueRef* exception);

// The private data of an object of the class; null with an exception when its page has ended.
template <class Kind>
Kind* living(JSContextRef ctx, JSObjectRef object, JSValueRef* exception) {
  auto* found = static_cast<Kind*>(living_host_object(object));
  if (!found) raise_ended(ctx, exception);
  return found;
}

}  // namespace zelto::script
