// CComVariant: an owned VARIANT. CComSafeArray: an owned SAFEARRAY.
#pragma once

#include <utility>

#include <korlib/combstr.h>
#include <korlib/dispatch.h>
#include <korlib/variant.h>

namespace korlib {

// VariantInit where it is used: over whatever the bits are.
inline void make_empty(VARIANT* v) noexcept {
  v->vt = VT_EMPTY;
  v->wReserved1 = v->wReserved2 = v->wReserved3 = 0;
  v->llVal = 0;
}

}  // namespace korlib

// A VARIANT that clears itself. It is one, so `&value` and `value` are what functions take; by value they
// receive the bits and own nothing.
//
// Conversions from plain values are explicit, since `CComVariant(0)` and `CComVariant(false)` are different
// values to a script. What cannot be copied, because memory is short or the source is not valid, leaves
// VT_EMPTY; text that cannot, a VT_BSTR of null.
//
//   CComVariant value;
//   RETURN_IF_FAILED(dictionary->get_Item(korlib::borrowed(key), value.put()));
//   RETURN_IF_FAILED(value.change_type(VT_BSTR));
//   return sink->Write(value.bstrVal);
class CComVariant : public VARIANT {
 public:
  // VT_EMPTY: no value.
  CComVariant() noexcept : VARIANT{} {}
  // Plain values: VT_I4, VT_R8 and VT_BOOL.
  explicit CComVariant(LONG value) noexcept : CComVariant() {
    vt = VT_I4;
    lVal = value;
  }
  explicit CComVariant(double value) noexcept : CComVariant() {
    vt = VT_R8;
    dblVal = value;
  }
  explicit CComVariant(bool value) noexcept : CComVariant() {
    vt = VT_BOOL;
    boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
  }
  // A VT_BSTR with a copy of the text; null text gives an empty string.
  explicit CComVariant(std::wstring_view text) : CComVariant() {
    vt = VT_BSTR;
    bstrVal = korlib::new_bstr(text);
  }
  explicit CComVariant(const wchar_t* text) : CComVariant(std::wstring_view(text ? text : L"")) {}
  // VT_DISPATCH or VT_UNKNOWN with a reference of its own; a null object is legal.
  explicit CComVariant(IDispatch* object) noexcept : CComVariant() {
    vt = VT_DISPATCH;
    pdispVal = object;
    if (object) object->AddRef();
  }
  explicit CComVariant(IUnknown* object) noexcept : CComVariant() {
    vt = VT_UNKNOWN;
    punkVal = object;
    if (object) object->AddRef();
  }
  // Deep copies: strings and arrays are duplicated, objects counted. References (VT_BYREF) stay references.
  CComVariant(const CComVariant& other) : CComVariant() { VariantCopy(this, &other); }
  explicit CComVariant(const VARIANT& other) : CComVariant() { VariantCopy(this, &other); }
  // Moving takes the value over and leaves VT_EMPTY.
  CComVariant(CComVariant&& other) noexcept : VARIANT(static_cast<VARIANT&&>(other)) {}
  ~CComVariant() {
    if (!is_plain()) VariantClear(this);
  }

  // Assigning frees what was held. A value assigned to itself stays.
  CComVariant& operator=(const CComVariant& other) {
    if (this != &other) VariantCopy(this, &other);
    return *this;
  }
  CComVariant& operator=(CComVariant&& other) noexcept {
    if (this != &other) {
      reset();
      attach(&other);
    }
    return *this;
  }
  CComVariant& operator=(const VARIANT& other) {
    if (this != &other) VariantCopy(this, &other);
    return *this;
  }

  // Frees the value: VT_EMPTY.
  void reset() noexcept {
    if (is_plain()) {
      korlib::make_empty(this);
    } else {
      VariantClear(this);
    }
  }
  // For `member(value.put())`: empty until the callee fills it, and what it fills in is owned here.
  VARIANT* put() noexcept {
    reset();
    return this;
  }
  // Takes the value over; *source becomes VT_EMPTY.
  void attach(VARIANT* source) noexcept {
    reset();
    vt = source->vt;
    llVal = source->llVal;
    source->vt = VT_EMPTY;
  }
  // Gives the value away into an out-parameter, whose old bits are not looked at.
  void detach_to(VARIANT* target) noexcept {
    korlib::make_empty(target);
    target->vt = vt;
    target->llVal = llVal;
    vt = VT_EMPTY;
  }
  // Converts in place, by the rules of VariantChangeType. After a failure the value is the old one.
  HRESULT change_type(VARTYPE type) { return VariantChangeType(this, this, 0, type); }

 private:
  // Nothing, or a number that owns no memory: most of what comes and goes, and it does so without a call.
  bool is_plain() const noexcept { return vt < VT_BSTR; }
};

namespace korlib {

// A VARIANT for the duration of a call: refers to the text or object, owns and counts nothing. Never clear it,
// and never return it: a callee that keeps the value copies it.
inline VARIANT borrowed(BSTR text) noexcept {
  VARIANT v{};
  v.vt = VT_BSTR;
  v.bstrVal = text;
  return v;
}
inline VARIANT borrowed(IDispatch* object) noexcept {
  VARIANT v{};
  v.vt = VT_DISPATCH;
  v.pdispVal = object;
  return v;
}
// A VT_I4, which owns nothing either.
inline VARIANT long_variant(LONG value) noexcept {
  VARIANT v{};
  v.vt = VT_I4;
  v.lVal = value;
  return v;
}
// An argument that the caller left out, as late-bound callers pass it: VT_ERROR with DISP_E_PARAMNOTFOUND.
// Members that make an argument optional look for it with is_omitted.
inline VARIANT omitted() noexcept {
  VARIANT v{};
  v.vt = VT_ERROR;
  v.scode = DISP_E_PARAMNOTFOUND;
  return v;
}
inline bool is_omitted(const VARIANT& v) noexcept { return v.vt == VT_ERROR && v.scode == DISP_E_PARAMNOTFOUND; }

}  // namespace korlib

// An owned SAFEARRAY, or none. End every lock before the owner goes: a locked array cannot be freed.
//
//   CComSafeArray rows(VT_VARIANT, 3);
//   if (!rows) return E_OUTOFMEMORY;
//   CComVariant(L"first").detach_to(rows.data<VARIANT>());
//   rows.detach_to(pVal);
class CComSafeArray {
 public:
  CComSafeArray() noexcept = default;
  // A new zero-based array of one dimension, its elements zero (VT_EMPTY, null). None when memory is short:
  // look with `if (!array)`.
  CComSafeArray(VARTYPE vt, ULONG elements) : array_(SafeArrayCreateVector(vt, 0, elements)) {}
  CComSafeArray(CComSafeArray&& other) noexcept : array_(std::exchange(other.array_, nullptr)) {}
  CComSafeArray& operator=(CComSafeArray&& other) noexcept {
    std::swap(array_, other.array_);
    return *this;
  }
  CComSafeArray(const CComSafeArray&) = delete;
  CComSafeArray& operator=(const CComSafeArray&) = delete;
  ~CComSafeArray() { SafeArrayDestroy(array_); }

  // The array itself, still owned here; null when there is none.
  SAFEARRAY* get() const noexcept { return array_; }
  // Whether there is an array; one without elements is one.
  explicit operator bool() const noexcept { return array_ != nullptr; }
  // Takes over an array that the caller owned, in place of the one held.
  void attach(SAFEARRAY* array) noexcept {
    SafeArrayDestroy(array_);
    array_ = array;
  }
  // Gives the array away; none is left.
  [[nodiscard]] SAFEARRAY* detach() noexcept { return std::exchange(array_, nullptr); }
  // For `member(array.put())`.
  SAFEARRAY** put() noexcept {
    attach(nullptr);
    return &array_;
  }

  // The elements, of a type that the caller knows; valid while the array is neither resized nor freed.
  template <class Element>
  Element* data() const noexcept {
    return array_ ? static_cast<Element*>(array_->pvData) : nullptr;
  }
  // Elements of the first dimension.
  ULONG size() const noexcept { return array_ ? array_->rgsabound[array_->cDims - 1].cElements : 0; }

  // Hands the array over as the value of a VARIANT of type VT_ARRAY | element type.
  void detach_to(VARIANT* target) noexcept {
    VariantInit(target);
    target->vt = static_cast<VARTYPE>(VT_ARRAY | (array_ ? array_->vtElement : static_cast<VARTYPE>(VT_VARIANT)));
    target->parray = detach();
  }

 private:
  SAFEARRAY* array_ = nullptr;
};
