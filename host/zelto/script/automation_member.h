// A member of an automation object that the script holds: a method, or a property with arguments, that was read
// without being called is a function bound to its object. `o(args)` as the target of an assignment is a reference,
// which has its arguments as well: its property `v` is read by compound assignments and written by all of them.
#pragma once

#include "script/host_object.h"
#include "script/object_calls.h"

namespace zelto::script {

class AutomationMember final : public HostObject {
 public:
  AutomationMember(Realm& realm, CallTarget target, CallArguments arguments = {})
      : HostObject(realm), target_(std::move(target)), arguments_(std::move(arguments)) {}
  ~AutomationMember() override;
  // Lasts as long as the function does.
  const CallTarget& target() const noexcept { return target_; }
  CallArguments& arguments() noexcept { return arguments_; }
  // Of a realm that has ended: the member of that name of another object.
  void bind(Realm& new_realm, const CComPtr<IDispatch>& object, DISPID id) {
    if (realm()) return;
    begin_again(new_realm);
    target_.object = object;
    target_.id = id;
  }
  // The same as a function of the kind that the engine's compiled code calls straight away: to call an object of a
  // class it first has to find out how. For calls only: `function`, the member's own, is what a script sees, and keeps
  // it.
  JSObjectRef direct(JSContextRef ctx, JSObjectRef function, JSStringRef name);
  JSObjectRef function() const noexcept { return function_; }

 protected:
  void release() override {
    target_.object.reset();
    arguments_ = {};
  }

 private:
  CallTarget target_;
  CallArguments arguments_;
  JSObjectRef function_ = nullptr;  // these two when direct() has been asked for
  JSObjectRef direct_ = nullptr;
};

JSClassRef make_member_class();
JSClassRef make_reference_class();

}  // namespace zelto::script
