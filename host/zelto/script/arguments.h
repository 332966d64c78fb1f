// The arguments of one call of an automation object.
#pragma once

#include <vector>

#include <korlib/comvariant.h>

#include "script/realm_state.h"

namespace zelto::script {

class CallArguments {
 public:
  // Arguments from the script; false with an exception when one has no form over there.
  bool convert(RealmState& realm, std::size_t count, const JSValueRef* values, JSValueRef* exception);
  void push_index(LONG index) { reversed_.emplace_back(index); }
  DISPPARAMS* params() {
    params_ = {reversed_.data(), nullptr, static_cast<UINT>(reversed_.size()), 0};
    return &params_;
  }
  std::vector<CComVariant> take() { return std::move(reversed_); }

 private:
  std::vector<CComVariant> reversed_;
  DISPPARAMS params_{};
};

// Sets a member, or the object itself when `id` is DISPID_VALUE. Where the member takes no assignment
// with these arguments, its value's default member is set instead: Session.Contents("x") = v, and
// rs.Fields("x") = v sets the field's value.
HRESULT put_member(RealmState& realm, IDispatch* object, DISPID id, std::vector<CComVariant>& reversed,
                   const VARIANT& value);

inline constexpr WORD kCall = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

// The member with that identifier cannot be had with these arguments, or at all.
constexpr bool is_refused(HRESULT hr) {
  return hr == DISP_E_MEMBERNOTFOUND || hr == DISP_E_BADPARAMCOUNT || hr == korlib::hresult(0x8002000F);
}

// Calls, and answers the result as a script value; null with an exception.
JSValueRef call_member(RealmState& realm, IDispatch* object, DISPID id, std::wstring_view name, std::size_t count,
                       const JSValueRef* values, JSValueRef* exception);

// Calls without arguments. Where that cannot be done (is_refused), answers `otherwise`, or fails when that is null.
JSValueRef call_bare(RealmState& realm, IDispatch* object, DISPID id, std::wstring_view name, JSValueRef otherwise,
                     JSValueRef* exception);

// Remembers the name by which the script created the object: messages call it so when it does not say what it is.
void note_kind(RealmState& realm, JSValueRef value, JSValueRef name);

// The value that stands for an object in text and sums; null when it has none, or with an exception.
JSValueRef default_value(RealmState& realm, IDispatch* object, JSValueRef* exception);

// What the object's DISPID_NEWENUM steps through.
HRESULT collect_items(RealmState& realm, IDispatch* object, std::vector<CComVariant>* items);

}  // namespace zelto::script
