// The dictionaries of a page that a script fills: View and Include while Process runs, and the Bag.
#include <korlib/activation.h>

#include "page/mirt_impl.h"

namespace {

using Self = GIMirtImpl<IMirt>;

HRESULT new_dictionary(IKorLibDictionary** dictionary) {
  return CoCreateInstance(CLSID_ScriptingDictionary, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                          korlib::iid_of<IKorLibDictionary>, reinterpret_cast<void**>(dictionary));
}

}  // namespace

HRESULT Self::make_dictionaries() {
  CComPtr<IKorLibDictionary> view;
  CComPtr<IKorLibDictionary> include;
  RETURN_IF_FAILED(new_dictionary(view.put()));
  RETURN_IF_FAILED(new_dictionary(include.put()));
  view_ = std::move(view);
  include_ = std::move(include);
  return S_OK;
}

STDMETHODIMP Self::get_Bag(IDispatch** bag) {
  if (!bag) return E_POINTER;
  *bag = nullptr;
  CComPtr<IKorLibDictionary> held;
  RETURN_IF_FAILED(get_session_bag(&held));
  return held.query(bag);
}

STDMETHODIMP Self::get_View(IDispatch** view) {
  if (!view) return E_INVALIDARG;
  *view = nullptr;
  return view_ ? view_.query(view) : E_FAIL;
}

STDMETHODIMP Self::get_Include(IDispatch** include) {
  if (!include) return E_POINTER;
  *include = nullptr;
  return include_ ? include_.query(include) : S_OK;
}
