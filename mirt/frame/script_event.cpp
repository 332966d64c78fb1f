#include "frame/script_event.h"

#include "frame/error.h"

namespace {

// Asks the scripts from the last to the first until one succeeds; the answer of the one asked last.
template <class Ask>
HRESULT first_success(const std::vector<HeldScript>& scripts, Ask ask) {
  HRESULT hr = DISP_E_UNKNOWNNAME;
  // By index and with a reference of our own: the script asked may add another one.
  for (std::size_t i = scripts.size(); i-- > 0;) {
    const CComPtr<IDispatch> script(scripts[i].get());
    hr = script ? ask(script) : DISP_E_UNKNOWNNAME;
    if (SUCCEEDED(hr)) return S_OK;
    if (i > 0) mirt::forget_error();  // another one is asked
  }
  return hr;
}

}  // namespace

HRESULT CEvent::invoke(WORD flags, DISPPARAMS* params, VARIANT* value) {
  if (!dispatch) return E_UNEXPECTED;
  // The function may replace this event's object through its owner.
  const CComPtr<IDispatch> script = dispatch;
  const HRESULT hr = script->Invoke(dispid, IID_NULL, LOCALE_SYSTEM_DEFAULT, flags, params, value, nullptr, nullptr);
  return SUCCEEDED(hr) ? S_OK : hr;
}

HRESULT CEvent::Fire(IDispatch* owner, VARIANT* argument) {
  VARIANT arguments[] = {VARIANT{}, korlib::borrowed(owner)};  // in reverse order
  if (argument) {
    arguments[0].vt = VT_BYREF | VT_VARIANT;
    arguments[0].pvarVal = argument;
  }
  DISPPARAMS params{arguments, nullptr, 2, 0};
  return invoke(DISPATCH_METHOD, &params, result.put());
}

HRESULT CEvent::Get() {
  DISPPARAMS params{};
  return invoke(DISPATCH_PROPERTYGET, &params, result.put());
}

HRESULT CEvent::Put(VARIANT* value) {
  if (!value) return E_POINTER;
  DISPID named = DISPID_PROPERTYPUT;
  DISPPARAMS params{value, &named, 1, 1};
  return invoke(DISPATCH_PROPERTYPUT, &params, nullptr);
}

HRESULT CEventHandler::GetEvent(const wchar_t* name, CEvent& event) const {
  return first_success(scripts, [&](const CComPtr<IDispatch>& script) {
    auto* wanted = const_cast<LPOLESTR>(name);
    DISPID id = DISPID_UNKNOWN;
    RETURN_IF_FAILED(script->GetIDsOfNames(IID_NULL, &wanted, 1, LOCALE_SYSTEM_DEFAULT, &id));
    event.dispatch = script;
    event.dispid = id;
    return S_OK;
  });
}

HRESULT CEventHandler::GetValue(const wchar_t* name, VARIANT* value) const {
  const CComBSTR key(name);
  if (name && !key.get()) return E_OUTOFMEMORY;
  VARIANT argument = korlib::borrowed(key.get());
  return first_success(scripts, [&](const CComPtr<IDispatch>& script) {
    DISPPARAMS params{&argument, nullptr, 1, 0};
    CComVariant found;
    RETURN_IF_FAILED(script->Invoke(DISPID_VALUE, IID_NULL, LOCALE_SYSTEM_DEFAULT,
                                    DISPATCH_METHOD | DISPATCH_PROPERTYGET, &params, &found, nullptr, nullptr));
    found.detach_to(value);
    return S_OK;
  });
}

HRESULT fire_with_texts(CEvent& event, IDispatch* owner, const std::vector<std::wstringstream*>& texts) {
  CComSafeArray array(VT_VARIANT, static_cast<ULONG>(texts.size()));
  if (!array) return E_OUTOFMEMORY;
  VARIANT* element = array.data<VARIANT>();
  for (const std::wstringstream* text : texts) {
    CComVariant value(text->view());
    if (!value.bstrVal) return E_OUTOFMEMORY;
    value.detach_to(element++);
  }
  CComVariant argument;
  array.detach_to(&argument);
  return event.Fire(owner, &argument);
}
