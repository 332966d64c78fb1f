#include "script/object_calls.h"

#include <array>
#include <limits>

#include <korlib_host/errors.h>

#include "script/automation_object.h"
#include "script/realm.h"

namespace zelto::script {
namespace {

constexpr WORD kCall = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
constexpr int kMostDefaults = 8;  // a default member that answers an object with a default member …
constexpr ULONG kBatch = 64;      // items of an enumeration

// The failures with which Invoke names the argument that it could not take, before the member has run.
constexpr bool is_bad_argument(HRESULT hr) { return hr == DISP_E_TYPEMISMATCH || hr == DISP_E_PARAMNOTFOUND; }

}  // namespace

bool ObjectCalls::may_call(JSValueRef* exception) {
  realm_.engine().release_buried();
  realm_.missing().pass();
  if (realm_.engine().watchdog().must_unwind()) {
    SetErrorInfo(0, nullptr);  // an earlier call's
    return realm_.errors().raise(kPageStopped, {}, exception);
  }
  if (stack_is_low()) return realm_.errors().raise_out_of_stack(exception);
  return hand_text_over(exception);
}

// What the object has done may have changed that.
void ObjectCalls::limit_collecting() {
  constexpr std::int32_t kMostText = 32768;
  realm_.prelude().set_most_text(realm_.globals().may_collect() ? kMostText : -1);
}

bool ObjectCalls::write(const VARIANT& value, JSValueRef* exception) {
  const CComPtr<ZeltoTypeLibrary::IResponse> output(realm_.globals().output());
  if (!output) return realm_.errors().raise_text(L"This script has no page to write to", E_UNEXPECTED, exception);
  SetErrorInfo(0, nullptr);
  const HRESULT hr = output->Write(value);
  return realm_.errors().check(hr, L"Write", exception);
}

JsString ObjectCalls::take_text(JSValueRef* exception) const {
  const EngineLock lock(realm_.context());
  JSValueRef taken = realm_.prelude().take_text();
  return JsString(taken ? JSValueToStringCopy(realm_.context(), taken, exception) : nullptr);
}

bool ObjectCalls::has_text() const noexcept { return realm_.prelude().has_text(); }

bool ObjectCalls::write_collected(JSValueRef* exception) {
  const JsString text = take_text(exception);
  if (!text.get()) return *exception ? false : realm_.errors().raise(E_OUTOFMEMORY, {}, exception);
  const CComPtr<IPageOutput> output(realm_.globals().page_output());
  if (!output) return write(korlib::borrowed(CComBSTR(to_wide(text.view()))), exception);
  SetErrorInfo(0, nullptr);
  return realm_.errors().check(output->write_text(text.view()), L"Write", exception);
}

HRESULT ObjectCalls::invoke(IDispatch* object, DISPID id, WORD flags, DISPPARAMS params, VARIANT* result) {
  const CComPtr<IDispatch> alive(object);
  UINT refused = 0;
  HRESULT hr = invoke_once(object, id, flags, &params, result, &refused);
  // A required argument that was `undefined`: each goes once, so this ends.
  while (is_bad_argument(hr) && !is_unwinding() && CallArguments::fill_omitted(&params, refused)) {
    hr = invoke_once(object, id, flags, &params, result, &refused);
  }
  return hr;
}

HRESULT ObjectCalls::invoke_once(IDispatch* object, DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                                 UINT* refused) {
  constexpr UINT kNone = std::numeric_limits<UINT>::max();
  realm_.errors().begin_call();
  EXCEPINFO info{};
  *refused = kNone;
  HRESULT hr = object->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, flags, params, result, &info, refused);
  limit_collecting();
  if (hr == DISP_E_EXCEPTION) {
    if (info.pfnDeferredFillIn) info.pfnDeferredFillIn(&info);
    if (info.bstrDescription) {
      korlib::raise(hr, korlib::view_of(info.bstrSource), korlib::view_of(info.bstrDescription));
    }
    if (FAILED(info.scode)) hr = info.scode;
  }
  for (BSTR text : {info.bstrSource, info.bstrDescription, info.bstrHelpFile}) {
    if (text) SysFreeString(text);
  }
  return hr;
}

JSValueRef ObjectCalls::call(const CallTarget& target, std::size_t count, const JSValueRef* values,
                             JSValueRef* exception) {
  CallArguments arguments;
  RepeatedTexts::Loan loan(realm_.values().texts());
  if (!may_call(exception) || !arguments.convert(realm_.values(), count, values, exception, &loan)) return nullptr;
  JSValueRef value = call(target, arguments, exception);
  // Of what Server gives for one argument, only a created object is an object.
  if (value && target.object.get() == realm_.globals().server() && count == 1) note_kind(value, values[0]);
  return value;
}

JSValueRef ObjectCalls::call(const CallTarget& target, CallArguments& arguments, JSValueRef* exception) {
  CComVariant result;
  const HRESULT hr = invoke(target.object.get(), target.id, kCall, arguments.params(), &result);
  return realm_.errors().check(hr, target.name, exception) ? realm_.values().to_script(result, exception) : nullptr;
}

JSValueRef ObjectCalls::call_bare(const CallTarget& target, JSValueRef otherwise, JSValueRef* exception) {
  if (!may_call(exception)) return nullptr;
  CComVariant result;
  const HRESULT hr = invoke(target.object.get(), target.id, kCall, {}, &result);
  if (is_refused(hr) && otherwise && !is_unwinding()) return otherwise;
  return realm_.errors().check(hr, target.name, exception) ? realm_.values().to_script(result, exception) : nullptr;
}

HRESULT ObjectCalls::put_once(IDispatch* object, DISPID id, const CallArguments& arguments, const VARIANT& value) {
  PutArguments all(arguments, value);
  const bool is_object = value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN;
  const WORD flags = is_object ? DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF : DISPATCH_PROPERTYPUT;
  return invoke(object, id, flags, all.params(), nullptr);
}

HRESULT ObjectCalls::get_object(IDispatch* object, DISPID id, CallArguments& arguments, WORD flags,
                                CComPtr<IDispatch>* out) {
  CComVariant result;
  RETURN_IF_FAILED(invoke(object, id, flags, arguments.params(), &result));
  if (result.vt == VT_DISPATCH) *out = result.pdispVal;
  return *out ? S_OK : DISP_E_MEMBERNOTFOUND;
}

HRESULT ObjectCalls::put(IDispatch* object, DISPID id, CallArguments& arguments, const VARIANT& value) {
  const HRESULT hr = put_once(object, id, arguments, value);
  if (!is_refused(hr) || is_unwinding() || arguments.empty()) return hr;
  CComPtr<IDispatch> inner;
  CallArguments none;
  if (id != DISPID_VALUE && SUCCEEDED(get_object(object, id, none, DISPATCH_PROPERTYGET, &inner))) {
    return put(inner.get(), DISPID_VALUE, arguments, value);
  }
  if (SUCCEEDED(get_object(object, id, arguments, kCall, &inner))) {
    return put_once(inner.get(), DISPID_VALUE, none, value);
  }
  SetErrorInfo(0, nullptr);  // the words are about what was tried last
  return hr;
}

HRESULT ObjectCalls::read_default(IDispatch* object, VARIANT* value) {
  CComPtr<IDispatch> current(object);
  for (int i = 0; i < kMostDefaults; ++i) {
    CComVariant result;
    RETURN_IF_FAILED(invoke(current.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {}, &result));
    if (result.vt != VT_DISPATCH || !result.pdispVal) {
      result.detach_to(value);
      return S_OK;
    }
    current = result.pdispVal;
  }
  return S_FALSE;
}

JSValueRef ObjectCalls::default_value(IDispatch* object, JSValueRef* exception) {
  if (!may_call(exception)) return nullptr;
  CComVariant value;
  const HRESULT hr = read_default(object, &value);
  if (hr == S_FALSE || (is_refused(hr) && !is_unwinding())) return nullptr;
  return realm_.errors().check(hr, {}, exception) ? realm_.values().to_script(value, exception) : nullptr;
}

HRESULT ObjectCalls::collect_items(IDispatch* object, std::vector<CComVariant>* items) {
  CComVariant result;
  RETURN_IF_FAILED(invoke(object, DISPID_NEWENUM, kCall, {}, &result));
  if ((result.vt != VT_UNKNOWN && result.vt != VT_DISPATCH) || !result.punkVal) return DISP_E_TYPEMISMATCH;
  CComPtr<IEnumVARIANT> enumerator;
  RETURN_IF_FAILED(result.punkVal->QueryInterface(korlib::iid_of<IEnumVARIANT>, enumerator.put_void()));
  for (;;) {
    if (realm_.engine().watchdog().must_unwind()) return kPageStopped;
    std::array<CComVariant, kBatch> batch;
    ULONG fetched = 0;
    const HRESULT hr = enumerator->Next(kBatch, batch.data(), &fetched);
    for (ULONG i = 0; i < fetched && i < kBatch; ++i) items->emplace_back().attach(&batch[i]);
    RETURN_IF_FAILED(hr);
    if (hr != S_OK || fetched < kBatch) return S_OK;
  }
}

void ObjectCalls::note_kind(JSValueRef object, JSValueRef name) {
  if (!realm_.engine().classes().is_automation_object(realm_.context(), object)) return;
  auto* held = static_cast<AutomationObject*>(living_host_object(object_of(object)));
  if (held) held->set_kind(text_of(realm_.context(), name));
}

}  // namespace zelto::script
