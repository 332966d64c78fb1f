// The page's scripts, added one after the other and called by name, and the dictionaries that they fill.
#include "frame/error.h"
#include "page/mirt_impl.h"

namespace {

using Self = GIMirtImpl<IMirt>;

}  // namespace

STDMETHODIMP Self::AddScript(IDispatch* script) try {
  handler_.add(script);
  return S_OK;
} catch (...) {
  return mirt::hresult_from_exception();
}

STDMETHODIMP Self::putref_Script(IDispatch* script) { return AddScript(script); }

STDMETHODIMP Self::get_Script(IDispatch** script) {
  if (!script) return E_POINTER;
  IDispatch* last = handler_.last();
  if (!last) return S_OK;
  last->AddRef();
  *script = last;
  return S_OK;
}

STDMETHODIMP Self::FireEvent(BSTR name, VARIANT* argument, VARIANT* result, VARIANT_BOOL* exists) try {
  if (!exists) return E_POINTER;
  *exists = VARIANT_FALSE;
  const CComPtr<IDispatch> alive(owner_);
  CEvent event;
  const HRESULT found = handler_.GetEvent(name ? name : L"", event);
  if (found == DISP_E_UNKNOWNNAME) {
    mirt::forget_error();
    return S_OK;
  }
  RETURN_IF_FAILED(found);
  *exists = VARIANT_TRUE;
  RETURN_IF_FAILED(event.Fire(alive.get(), argument));
  return result ? VariantCopy(result, &event.result) : S_OK;
} catch (...) {
  return mirt::hresult_from_exception();
}

STDMETHODIMP Self::get_Bag(IDispatch** bag) {
  if (!bag) return E_POINTER;
  *bag = nullptr;
  CComPtr<IKorLibDictionary> held;
  RETURN_IF_FAILED(memory_.get_bag(&held));
  return held.query(bag);
}

STDMETHODIMP Self::get_View(IDispatch** view) {
  if (!view) return E_INVALIDARG;
  *view = nullptr;
  return dictionaries_.view ? dictionaries_.view.query(view) : E_FAIL;
}

STDMETHODIMP Self::get_Include(IDispatch** include) {
  if (!include) return E_POINTER;
  *include = nullptr;
  return dictionaries_.include ? dictionaries_.include.query(include) : S_OK;
}

STDMETHODIMP Self::Abandon() { return memory_.abandon(); }
