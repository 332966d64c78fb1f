// A method, or a property with arguments, that was read without being called: a function bound to its object.
#pragma once

#include "script/host_object.h"
#include "script/object_calls.h"

namespace zelto::script {

class AutomationMember final : public HostObject {
 public:
  AutomationMember(Realm& realm, CallTarget target) : HostObject(realm), target_(std::move(target)) {}
  // A copy keeps the object while a call may end the realm.
  const CallTarget& target() const noexcept { return target_; }

 protected:
  void release() override { target_.object.reset(); }

 private:
  CallTarget target_;
};

JSClassRef make_member_class();

// `o(args)` as the target of an assignment: its property `v` is read by compound assignments and written by
// all of them.
class CallReference final : public HostObject {
 public:
  CallReference(Realm& realm, CallTarget target, CallArguments arguments)
      : HostObject(realm), target_(std::move(target)), arguments_(std::move(arguments)) {}
  const CallTarget& target() const noexcept { return target_; }
  CallArguments& arguments() noexcept { return arguments_; }

 protected:
  void release() override {
    target_.object.reset();
    arguments_ = {};
  }

 private:
  CallTarget target_;
  CallArguments arguments_;
};

JSClassRef make_reference_class();

}  // namespace zelto::script
