// Result codes, and the one macro that passes a failure on.
//
// Bit 31 set means failure. S_FALSE is a success that answers "no". The values are those that scripts
// and tools know from automation; none is made up here.
#pragma once

#include <korlib/types.h>

namespace korlib {
consteval HRESULT hresult(std::uint32_t code) { return static_cast<HRESULT>(code); }

constexpr HRESULT only_hresult(HRESULT hr) { return hr; }
template <class T>
HRESULT only_hresult(T) = delete;  // a bool or a size here is a bug: do not compile
}  // namespace korlib

constexpr bool SUCCEEDED(HRESULT hr) { return hr >= 0; }
constexpr bool FAILED(HRESULT hr) { return hr < 0; }

// Leaves the calling function with the expression's result when that is a failure.
#define RETURN_IF_FAILED(expr)                             \
  do {                                                     \
    const HRESULT hr_once_ = ::korlib::only_hresult(expr); \
    if (FAILED(hr_once_)) return hr_once_;                 \
  } while (false)

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = korlib::hresult(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = korlib::hresult(0x80004002);
inline constexpr HRESULT E_POINTER = korlib::hresult(0x80004003);
inline constexpr HRESULT E_ABORT = korlib::hresult(0x80004004);
inline constexpr HRESULT E_FAIL = korlib::hresult(0x80004005);
inline constexpr HRESULT E_UNEXPECTED = korlib::hresult(0x8000FFFF);
inline constexpr HRESULT E_ACCESSDENIED = korlib::hresult(0x80070005);
inline constexpr HRESULT E_OUTOFMEMORY = korlib::hresult(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = korlib::hresult(0x80070057);

// Late binding.
inline constexpr HRESULT DISP_E_UNKNOWNINTERFACE = korlib::hresult(0x80020001);
inline constexpr HRESULT DISP_E_MEMBERNOTFOUND = korlib::hresult(0x80020003);
inline constexpr HRESULT DISP_E_PARAMNOTFOUND = korlib::hresult(0x80020004);
inline constexpr HRESULT DISP_E_TYPEMISMATCH = korlib::hresult(0x80020005);
inline constexpr HRESULT DISP_E_UNKNOWNNAME = korlib::hresult(0x80020006);
inline constexpr HRESULT DISP_E_NONAMEDARGS = korlib::hresult(0x80020007);
inline constexpr HRESULT DISP_E_BADVARTYPE = korlib::hresult(0x80020008);
inline constexpr HRESULT DISP_E_EXCEPTION = korlib::hresult(0x80020009);
inline constexpr HRESULT DISP_E_OVERFLOW = korlib::hresult(0x8002000A);
inline constexpr HRESULT DISP_E_BADINDEX = korlib::hresult(0x8002000B);
inline constexpr HRESULT DISP_E_ARRAYISLOCKED = korlib::hresult(0x8002000D);
inline constexpr HRESULT DISP_E_BADPARAMCOUNT = korlib::hresult(0x8002000E);
inline constexpr HRESULT DISP_E_DIVBYZERO = korlib::hresult(0x80020012);

// Activation.
inline constexpr HRESULT CLASS_E_NOAGGREGATION = korlib::hresult(0x80040110);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = korlib::hresult(0x80040111);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = korlib::hresult(0x80040154);
inline constexpr HRESULT CO_E_CLASSSTRING = korlib::hresult(0x800401F3);
inline constexpr HRESULT CO_E_DLLNOTFOUND = korlib::hresult(0x800401F8);
inline constexpr HRESULT CO_E_ERRORINDLL = korlib::hresult(0x800401F9);
inline constexpr HRESULT CONTEXT_E_NOCONTEXT = korlib::hresult(0x8004E004);

// Type libraries.
inline constexpr HRESULT TYPE_E_ELEMENTNOTFOUND = korlib::hresult(0x8002802B);
inline constexpr HRESULT TYPE_E_CANTLOADLIBRARY = korlib::hresult(0x80029C4A);
