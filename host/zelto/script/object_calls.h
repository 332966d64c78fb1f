// Calls of automation objects by the script.
//
//   - an `undefined` argument is passed as omitted. An object whose parameter must be given either takes that for
//     the empty value, or refuses it before the member runs: DISP_E_TYPEMISMATCH or DISP_E_PARAMNOTFOUND, and its
//     index in *puArgErr, which is otherwise left alone. Then the call is made again with VT_EMPTY for it. So
//     what `Session("none")` or `m.Request("none")` gave may be passed on as the text "" or the number 0;
//   - assignments are DISPATCH_PROPERTYPUT, of an object DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF;
//   - a failing HRESULT becomes an Error with message (error object's description), source and number.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <korlib/comvariant.h>
#include <korlib/dispatch.h>
#include <korlib/ptr.h>

#include "script/call_arguments.h"

namespace zelto::script {

class Realm;

// A member of an object, or the object itself: what is called without a name.
struct CallTarget {
  CComPtr<IDispatch> object;
  DISPID id = DISPID_VALUE;
  std::wstring name;  // for messages; empty for the object itself
};

// The member with that identifier cannot be had with these arguments, or at all.
constexpr bool is_refused(HRESULT hr) {
  return hr == DISP_E_MEMBERNOTFOUND || hr == DISP_E_BADPARAMCOUNT || hr == korlib::hresult(0x8002000F);
}

// Those of one realm. A function that answers a script value answers null with an exception.
class ObjectCalls {
 public:
  explicit ObjectCalls(Realm& realm) : realm_(realm) {}

  // Every call of an object passes here first, and what the script has collected for the page goes out before it; false
  // with an exception when the page is over, late, or out of stack.
  bool may_call(JSValueRef* exception);

  // Writes to the page.
  bool write(const VARIANT& value, JSValueRef* exception);
  // Writes what the script has collected. True when there is nothing.
  bool hand_text_over(JSValueRef* exception) { return !has_text() || write_collected(exception); }
  // Tells the script how much it may collect.
  void limit_collecting();

  // Makes the call and answers a failing result as it is. An omitted argument that the object says it cannot take is
  // VT_EMPTY afterwards.
  HRESULT invoke(IDispatch* object, DISPID id, WORD flags, DISPPARAMS params, VARIANT* result);

  JSValueRef call(const CallTarget& target, std::size_t count, const JSValueRef* values, JSValueRef* exception);
  JSValueRef call(const CallTarget& target, CallArguments& arguments, JSValueRef* exception);
  // Calls without arguments. Where that cannot be done (is_refused), answers `otherwise`, or fails when that is null.
  JSValueRef call_bare(const CallTarget& target, JSValueRef otherwise, JSValueRef* exception);

  // Sets the member. Where it takes no assignment with these arguments, its value's default member is set instead:
  // Session.Contents("x") = v, and rs.Fields("x") = v sets the field's value.
  HRESULT put(IDispatch* object, DISPID id, CallArguments& arguments, const VARIANT& value);

  // Of the default member, and of that of an object that it answers, and so on. S_FALSE, with nothing, when there is no
  // end of objects.
  HRESULT read_default(IDispatch* object, VARIANT* value);
  // The value that stands for an object in text and sums; null when it has none, or with an exception.
  JSValueRef default_value(IDispatch* object, JSValueRef* exception);

  // What the object's DISPID_NEWENUM steps through.
  HRESULT collect_items(IDispatch* object, std::vector<CComVariant>* items);

  // Remembers the name by which the script created the object: messages call it so when it does not say what it is.
  void note_kind(JSValueRef object, JSValueRef name);

 private:
  bool has_text() const noexcept;
  bool write_collected(JSValueRef* exception);
  JsString take_text(JSValueRef* exception) const;
  HRESULT invoke_once(IDispatch* object, DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result, UINT* refused);
  HRESULT put_once(IDispatch* object, DISPID id, const CallArguments& arguments, const VARIANT& value);
  HRESULT get_object(IDispatch* object, DISPID id, CallArguments& arguments, WORD flags, CComPtr<IDispatch>* out);

  Realm& realm_;
};

}  // namespace zelto::script
