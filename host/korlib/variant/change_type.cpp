#include "variant/change_type.h"

#include <korlib/errorinfo.h>
#include <korlib/ptr.h>
#include <korlib_host/errors.h>

#include "variant/conversion.h"
#include "variant/ownership.h"

namespace korlib::variants {

namespace {

constexpr int kMaxObjectChain = 16;

bool is_object(VARTYPE vt) { return vt == VT_DISPATCH || vt == VT_UNKNOWN; }

// An object that has no default member, or one that wants arguments, has no value.
bool has_no_value(HRESULT hr) {
  return hr == DISP_E_MEMBERNOTFOUND || hr == DISP_E_UNKNOWNNAME || hr == DISP_E_BADPARAMCOUNT || hr == E_NOTIMPL;
}

HRESULT default_member(const VARIANT& object, CComVariant* value) {
  CComPtr<IDispatch> dispatch;
  if (!object.punkVal || FAILED(object.punkVal->QueryInterface(IID_IDispatch, dispatch.put_void()))) {
    return DISP_E_TYPEMISMATCH;
  }
  DISPPARAMS none{};
  const WORD flags = DISPATCH_PROPERTYGET | DISPATCH_METHOD;
  const HRESULT hr =
      dispatch->Invoke(DISPID_VALUE, IID_NULL, LOCALE_SYSTEM_DEFAULT, flags, &none, value->put(), nullptr, nullptr);
  if (!has_no_value(hr)) return hr;
  SetErrorInfo(0, nullptr);  // its words are not about the conversion
  return DISP_E_TYPEMISMATCH;
}

HRESULT to_interface(const VARIANT& source, VARTYPE vt, VARIANT* target) {
  if (!is_object(source.vt)) return DISP_E_TYPEMISMATCH;
  void* object = nullptr;
  if (source.punkVal) {
    const IID& iid = vt == VT_DISPATCH ? IID_IDispatch : IID_IUnknown;
    if (FAILED(source.punkVal->QueryInterface(iid, &object))) return DISP_E_TYPEMISMATCH;
  }
  target->vt = vt;
  target->byref = object;
  return S_OK;
}

// Whatever has a value, or is an object, can be had without it: empty asks for none of it, null says that it
// is not known. Null itself is not empty, and an omitted argument is neither.
HRESULT to_nothing(const VARIANT& source, VARTYPE vt, VARIANT* target) {
  const bool has_value = row_of(source.vt).load || is_object(source.vt);
  if (!has_value) return DISP_E_TYPEMISMATCH;
  target->vt = vt;
  return S_OK;
}

bool are_same_bits(const TypeRow& from, const TypeRow& to) {
  return from.integer_size != 0 && from.integer_size == to.integer_size;
}

// `source` is not a reference. *target is empty before and, on failure, after.
HRESULT convert(const VARIANT& source, VARTYPE vt, VARIANT* target) {
  if (source.vt == vt) return VariantCopy(target, &source);
  if (vt == VT_EMPTY || vt == VT_NULL) return to_nothing(source, vt, target);
  if (is_object(vt)) return to_interface(source, vt, target);

  PlainValue plain;
  RETURN_IF_FAILED(plain.load(source));
  const VARIANT& value = plain.get();
  if (value.vt == vt) return VariantCopy(target, &value);
  if ((value.vt | vt) & VT_ARRAY) return DISP_E_TYPEMISMATCH;
  const TypeRow& from = row_of(value.vt);
  const TypeRow& to = row_of(vt);
  if (!from.load || !to.store) return DISP_E_TYPEMISMATCH;
  if (are_same_bits(from, to)) {
    target->llVal = value.llVal;
  } else {
    RETURN_IF_FAILED(to.store(from.load(value), target));
  }
  target->vt = vt;
  return S_OK;
}

}  // namespace

HRESULT PlainValue::load(const VARIANT& source) {
  RETURN_IF_FAILED(follow(source, &value_));
  for (int i = 0; i < kMaxObjectChain && is_object(value_.vt); ++i) {
    CComVariant next;
    RETURN_IF_FAILED(default_member(value_, &next));
    // The answer may be a reference into its object, so it is copied while the object is still there.
    CComVariant copy;
    RETURN_IF_FAILED(VariantCopyInd(&copy, &next));
    answered_ = std::move(copy);
    RETURN_IF_FAILED(follow(answered_, &value_));
  }
  return is_object(value_.vt) ? DISP_E_TYPEMISMATCH : S_OK;
}

}  // namespace korlib::variants

HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT, VARTYPE vt) {
  if (!target || !source) return E_INVALIDARG;
  if ((vt & VT_BYREF) || !korlib::variants::is_variant_type(vt)) return DISP_E_BADVARTYPE;
  if (target == source && source->vt == vt) return S_OK;
  return korlib::guarded({}, [&]() -> HRESULT {
    VARIANT value;
    RETURN_IF_FAILED(korlib::variants::follow(*source, &value));
    CComVariant converted;
    RETURN_IF_FAILED(korlib::variants::convert(value, vt, &converted));
    RETURN_IF_FAILED(VariantClear(target));
    converted.detach_to(target);
    return S_OK;
  });
}
