// VARIANTs of every type, written in a word, for tables of cases.
#pragma once

#include <ostream>
#include <string_view>

#include <korlib/comvariant.h>

namespace values {

template <auto Member, VARTYPE Type, class Value>
CComVariant plain(Value value) {
  CComVariant v;
  v.vt = Type;
  v.*Member = value;
  return v;
}

inline CComVariant empty() { return {}; }
inline CComVariant of_type(VARTYPE vt) {
  CComVariant v;
  v.vt = vt;
  return v;
}
inline CComVariant null() { return of_type(VT_NULL); }
inline CComVariant i1(signed char n) { return plain<&VARIANT::cVal, VT_I1>(n); }
inline CComVariant i2(SHORT n) { return plain<&VARIANT::iVal, VT_I2>(n); }
inline CComVariant i4(LONG n) { return plain<&VARIANT::lVal, VT_I4>(n); }
inline CComVariant i8(LONGLONG n) { return plain<&VARIANT::llVal, VT_I8>(n); }
inline CComVariant integer(INT n) { return plain<&VARIANT::intVal, VT_INT>(n); }
inline CComVariant ui1(BYTE n) { return plain<&VARIANT::bVal, VT_UI1>(n); }
inline CComVariant ui2(USHORT n) { return plain<&VARIANT::uiVal, VT_UI2>(n); }
inline CComVariant ui4(ULONG n) { return plain<&VARIANT::ulVal, VT_UI4>(n); }
inline CComVariant ui8(ULONGLONG n) { return plain<&VARIANT::ullVal, VT_UI8>(n); }
inline CComVariant unsigned_integer(UINT n) { return plain<&VARIANT::uintVal, VT_UINT>(n); }
inline CComVariant r4(float n) { return plain<&VARIANT::fltVal, VT_R4>(n); }
inline CComVariant r8(double n) { return plain<&VARIANT::dblVal, VT_R8>(n); }
inline CComVariant date(DATE n) { return plain<&VARIANT::date, VT_DATE>(n); }
inline CComVariant cy(LONGLONG n) { return plain<&VARIANT::cyVal, VT_CY>(CY{n}); }
inline CComVariant boolean(bool b) { return CComVariant(b); }
inline CComVariant error(SCODE code) { return plain<&VARIANT::scode, VT_ERROR>(code); }
inline CComVariant text(std::wstring_view t) { return CComVariant(t); }

// A reference to the value of `of`, which lives longer.
inline CComVariant reference_to(VARIANT& of) {
  CComVariant v;
  v.vt = static_cast<VARTYPE>(VT_BYREF | of.vt);
  v.byref = &of.llVal;
  return v;
}
inline CComVariant reference_to_variant(VARIANT& of) {
  CComVariant v;
  v.vt = VT_BYREF | VT_VARIANT;
  v.pvarVal = &of;
  return v;
}

// Same type, same value; texts and doubles by content.
inline bool same(const VARIANT& a, const VARIANT& b) {
  if (a.vt != b.vt) return false;
  switch (a.vt) {
    case VT_EMPTY:
    case VT_NULL:
      return true;
    case VT_BSTR:
      return korlib::view_of(a.bstrVal) == korlib::view_of(b.bstrVal);
    case VT_I1:
    case VT_UI1:
      return a.bVal == b.bVal;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
      return a.uiVal == b.uiVal;
    case VT_R4:
      return a.fltVal == b.fltVal;
    case VT_R8:
    case VT_DATE:
      return a.dblVal == b.dblVal || a.ullVal == b.ullVal;  // no number equals itself by its bits
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_ERROR:
      return a.ulVal == b.ulVal;
    default:
      return a.ullVal == b.ullVal;
  }
}

inline void print(std::ostream& out, const VARIANT& v) {
  out << "vt " << v.vt << " ";
  if (v.vt == VT_BSTR) {
    for (const wchar_t c : korlib::view_of(v.bstrVal)) out << (c > 0 && c < 0x7F ? static_cast<char>(c) : '?');
  } else if (v.vt == VT_R8 || v.vt == VT_DATE) {
    out << v.dblVal;
  } else if (v.vt == VT_R4) {
    out << v.fltVal;
  } else {
    out << v.llVal;
  }
}

}  // namespace values

inline void PrintTo(const CComVariant& v, std::ostream* out) { values::print(*out, v); }
