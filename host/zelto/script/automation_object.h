// An automation object as the script sees it.
//
// What the script expects of an automation object, be it of the host or of a component:
//   - GetIDsOfNames finds members in any letter case and answers DISP_E_UNKNOWNNAME otherwise. Reading such a
//     name gives undefined, as pages that test for features expect; setting or calling it is an error whose words
//     name the object's kind and the nearest name, as far as GetTypeInfo tells them (GetDocumentation of
//     MEMBERID_NIL, GetNames of small identifiers);
//   - a member that is a method answers DISP_E_MEMBERNOTFOUND to DISPATCH_PROPERTYGET: `o.Close` is then a
//     function. A property that needs arguments answers DISP_E_BADPARAMCOUNT without them: `o.Item(1)`;
//   - `o.Name()` calls a method, and reads a property that takes no arguments: `rs.EOF()`. That holds for names that
//     begin with a capital letter, and for some that pages write in small ones (rewriter.h);
//   - `typeof o` is "function", because the object can be called: the engine has no object that can be called and
//     is "object". `o instanceof Function` is false;
//   - `o(args)` and `o[1]` invoke DISPID_VALUE, `o(args) = v` puts it; `for (x of o)` and Enumerator ask
//     for DISPID_NEWENUM; text and numbers are made from DISPID_VALUE without arguments;
//   - names are resolved once for each ITypeInfo that GetTypeInfo answers, so objects that share one must
//     share their members; objects without one are asked once for each name and object.
//
// How calls pass their arguments, and fail: object_calls.h.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include <korlib/dispatch.h>

#include "script/host_object.h"
#include "script/member_names.h"
#include "script/text.h"
#include "script/world/built_ins.h"

namespace zelto::script {

class AutomationMember;

class AutomationObject final : public HostObject {
 public:
  AutomationObject(Realm& realm, CComPtr<IUnknown> identity, CComPtr<IDispatch> dispatch);
  ~AutomationObject() override;

  void set_weak(JSWeakRef weak) noexcept { weak_ = weak; }
  // The wrapper lives as long as its world, and stands for one object after the other.
  void set_kept(JSObjectRef wrapper) noexcept { kept_ = wrapper; }
  void bind(Realm& realm, CComPtr<IUnknown> identity, CComPtr<IDispatch> dispatch);
  // Of a wrapper that is kept: the functions that stand for its members are, too, and are watched as it is.
  void add_member(JSObjectRef member);
  bool are_members_kept() const;
  struct Function {
    JsString name;
    std::size_t length;
    JSObjectRef function;
    AutomationMember* member;  // of the function
    unsigned uses;
  };
  // The function that stands for a member, where the script has got it before; null for any other name.
  Function* function(JSStringRef name);
  void remember_function(JSStringRef name, JSObjectRef function, AutomationMember* member);
  JSObjectRef script_object() const { return kept_ ? kept_ : weak_ ? JSWeakGetObject(weak_) : nullptr; }
  const CComPtr<IDispatch>& dispatch() const noexcept { return dispatch_; }
  IUnknown* identity() const noexcept { return identity_.get(); }
  MemberNames& names();
  // What messages call the object when it has no type information that says so; empty when unknown.
  const std::wstring& kind() const noexcept { return kind_; }
  void set_kind(std::wstring kind) { kind_ = std::move(kind); }
  // What for-in went through: these names index the object.
  void add_key(std::u16string key) { keys_.insert(std::move(key)); }
  bool has_key(std::u16string_view key) const { return !keys_.empty() && keys_.contains(std::u16string(key)); }

 protected:
  void release() override;

 private:
  CComPtr<IUnknown> identity_;
  CComPtr<IDispatch> dispatch_;
  JSWeakRef weak_ = nullptr;
  JSObjectRef kept_ = nullptr;
  std::vector<Structure> members_;
  std::vector<Function> functions_;  // some; the wrapper keeps them alive
  const void* class_ = nullptr;      // what class_names_ are of
  MemberNames* class_names_ = nullptr;
  std::unique_ptr<MemberNames> own_names_;
  std::wstring kind_;
  std::unordered_set<std::u16string> keys_;
};

JSClassRef make_object_class();

}  // namespace zelto::script
