#include <array>

#include "script/arguments.h"

namespace zelto::script {
namespace {

constexpr ULONG kBatch = 64;

HRESULT enumerator_of(RealmState& realm, IDispatch* object, CComPtr<IEnumVARIANT>* out) {
  CComVariant result;
  DISPPARAMS none{};
  RETURN_IF_FAILED(realm.invoke(object, DISPID_NEWENUM, kCall, &none, &result));
  if ((result.vt != VT_UNKNOWN && result.vt != VT_DISPATCH) || !result.punkVal) return DISP_E_TYPEMISMATCH;
  return result.punkVal->QueryInterface(korlib::iid_of<IEnumVARIANT>, out->put_void());
}

}  // namespace

HRESULT collect_items(RealmState& realm, IDispatch* object, std::vector<CComVariant>* items) {
  CComPtr<IEnumVARIANT> enumerator;
  RETURN_IF_FAILED(enumerator_of(realm, object, &enumerator));
  for (;;) {
    if (realm.engine().must_unwind()) return kPageStopped;
    std::array<VARIANT, kBatch> batch;
    for (VARIANT& item : batch) VariantInit(&item);
    ULONG fetched = 0;
    const HRESULT hr = enumerator->Next(kBatch, batch.data(), &fetched);
    for (ULONG i = 0; i < fetched && i < kBatch; ++i) items->emplace_back().attach(&batch[i]);
    RETURN_IF_FAILED(hr);
    if (hr != S_OK || fetched < kBatch) return S_OK;
  }
}

}  // namespace zelto::script
