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

STDMETHODIMP Self::get_Request(IDispatch** request) { return request ? fields_.get_submitted(request) : E_POINTER; }

STDMETHODIMP Self::ToArray(IDispatch* collection, SAFEARRAY** array) { return page::values_of(collection, array); }

STDMETHODIMP Self::PutIntoBag(BSTR name, VARIANT_BOOL as_array) try {
  const CComPtr<IDispatch> alive(owner_);
  CComPtr<IKorLibDictionary> bag;
  RETURN_IF_FAILED(memory_.get_bag(&bag));
  return PutInto(bag.get(), name, as_array);
} catch (...) {
  return mirt::hresult_from_exception();
}

STDMETHODIMP Self::PutIntoView(BSTR name, VARIANT_BOOL as_array) try {
  const CComPtr<IDispatch> alive(owner_);
  const CComPtr<IKorLibDictionary> view = dictionaries_.view;
  return view ? PutInto(view.get(), name, as_array) : E_FAIL;
} catch (...) {
  return mirt::hresult_from_exception();
}

STDMETHODIMP Self::PutIntoProp(BSTR name, VARIANT_BOOL as_array) try {
  const CComPtr<IDispatch> alive(owner_);
  return PutInto(nullptr, name, as_array);
} catch (...) {
  return mirt::hresult_from_exception();
}

HRESULT Self::PutInto(IKorLibDictionary* target, BSTR name, VARIANT_BOOL as_array) {
  return binding_.put_into(target, name, as_array != VARIANT_FALSE);
}
