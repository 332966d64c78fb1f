// From a script's value to the text that a mark shows.
#include <korlib/comvariant.h>
#include <korlib/ptr.h>

#include "frame/error.h"
#include "templator/templator_concept.h"

namespace {

constexpr WORD kRead = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

HRESULT read_member(IDispatch* object, DISPID id, DISPPARAMS* params, CComVariant* found) {
  return object->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, kRead, params, found->put(), nullptr, nullptr);
}

// The object's item of that key; where it has no items, its property of that name.
HRESULT step_into_object(VARIANT* value, VARIANT* key) {
  IDispatch* object = value->pdispVal;
  if (!object) return DISP_E_TYPEMISMATCH;
  CComVariant found;
  DISPPARAMS with_key{key, nullptr, 1, 0};
  HRESULT hr = read_member(object, DISPID_VALUE, &with_key, &found);
  if (hr == DISP_E_MEMBERNOTFOUND) {
    mirt::forget_error();
    DISPID id = DISPID_UNKNOWN;
    RETURN_IF_FAILED(object->GetIDsOfNames(IID_NULL, &key->bstrVal, 1, LOCALE_SYSTEM_DEFAULT, &id));
    DISPPARAMS none{};
    hr = read_member(object, id, &none, &found);
  }
  RETURN_IF_FAILED(hr);
  VariantClear(value);
  found.detach_to(value);
  return S_OK;
}

HRESULT step_into_array(VARIANT* value, const VARIANT* key) {
  CComVariant number;
  RETURN_IF_FAILED(VariantChangeType(&number, key, 0, VT_I4));
  const SAFEARRAY* array = value->parray;
  if (!array || array->cDims != 1) return DISP_E_BADINDEX;
  const LONGLONG index = LONGLONG{number.lVal} - array->rgsabound[0].lLbound;
  if (index < 0 || index >= array->rgsabound[0].cElements) return DISP_E_BADINDEX;
  CComVariant element;  // a copy, since the array goes with the old value
  RETURN_IF_FAILED(VariantCopy(&element, static_cast<const VARIANT*>(array->pvData) + index));
  RETURN_IF_FAILED(VariantClear(value));
  element.detach_to(value);
  return S_OK;
}

HRESULT step_into(VARIANT* value, const std::wstringstream& entry) {
  const CComBSTR text = bstr_of(entry);
  if (!text.get()) return E_OUTOFMEMORY;
  VARIANT key = korlib::borrowed(text.get());
  if (value->vt == VT_DISPATCH) return step_into_object(value, &key);
  if (value->vt == (VT_ARRAY | VT_VARIANT)) return step_into_array(value, &key);
  return DISP_E_TYPEMISMATCH;
}

// As far as it goes: `step` is the entry that fails.
HRESULT walk(VARIANT* value, const MarkParams& path, std::size_t* step) {
  for (*step = 0; *step < path.size(); ++*step) RETURN_IF_FAILED(step_into(value, *path[*step]));
  return S_OK;
}

}  // namespace

HRESULT CTemplatorConcept::ChangeToBSTR(VARIANT* value, const MarkParams* path, bool emptyOnFail) {
  if (!value) return E_POINTER;
  std::size_t step = 0;
  if (path) RETURN_IF_FAILED(walk(value, *path, &step));
  const HRESULT hr = VariantChangeType(value, value, 0, VT_BSTR);
  if (SUCCEEDED(hr) || !emptyOnFail) return hr;
  mirt::forget_error();
  RETURN_IF_FAILED(VariantClear(value));
  value->vt = VT_BSTR;
  value->bstrVal = nullptr;
  return S_OK;
}

HRESULT CTemplatorConcept::make_text(VARIANT* value, const CMarkData* mark, bool emptyOnFail) {
  if (mark) {
    std::size_t step = 0;
    const HRESULT hr = walk(value, mark->Params, &step);
    if (FAILED(hr)) set_failed_step(*value, *mark, step, hr);
    RETURN_IF_FAILED(hr);
  }
  const bool is_object = value->vt == VT_DISPATCH && value->pdispVal;
  RETURN_IF_FAILED(ChangeToBSTR(value, nullptr, emptyOnFail));
  if (is_object) note_slip(TemplateSlip::object_as_text, value->bstrVal);
  return S_OK;
}
