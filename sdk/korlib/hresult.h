// Result codes, and the one macro that passes a failure on.
//
// Bit 31 set means failure. S_FALSE is a success that answers "no". The values are those that scripts
// and tools know from automation; none is made up here.
#pragma once

#include <korlib/types.h>

namespace korlib {
// A code as it is written everywhere, 0x8004…, as the signed number that it is.
consteval HRESULT hresult(std::uint32_t code) { return static_cast<HRESULT>(code); }

// What RETURN_IF_FAILED accepts: a result and nothing that converts to one.
constexpr HRESULT only_hresult(HRESULT hr) { return hr; }
template <class T>
HRESULT only_hresult(T) = delete;  // a bool or a size here is a bug: do not compile
}  // namespace korlib

// Whether a call did what it should. S_FALSE is a success; compare with S_OK where the answer "no" matters.
constexpr bool SUCCEEDED(HRESULT hr) { return hr >= 0; }
constexpr bool FAILED(HRESULT hr) { return hr < 0; }

// Leaves the calling function with the expression's result when that is a failure. The expression is evaluated
// once. What the function owns is freed by destructors.
#define RETURN_IF_FAILED(expr)                             \
  do {                                                     \
    const HRESULT hr_once_ = ::korlib::only_hresult(expr); \
    if (FAILED(hr_once_)) return hr_once_;                 \
  } while (false)

// General results.
inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
// The member exists and does nothing here.
inline constexpr HRESULT E_NOTIMPL = korlib::hresult(0x80004001);
// The object does not have the interface that was asked for.
inline constexpr HRESULT E_NOINTERFACE = korlib::hresult(0x80004002);
// A place for a result was null.
inline constexpr HRESULT E_POINTER = korlib::hresult(0x80004003);
// The work was stopped on purpose.
inline constexpr HRESULT E_ABORT = korlib::hresult(0x80004004);
// It failed; the thread's error object may say why (errorinfo.h).
inline constexpr HRESULT E_FAIL = korlib::hresult(0x80004005);
// The object is not in a state for this call.
inline constexpr HRESULT E_UNEXPECTED = korlib::hresult(0x8000FFFF);
// The system or the site's rules do not allow it.
inline constexpr HRESULT E_ACCESSDENIED = korlib::hresult(0x80070005);
// Memory was short, or the result would be larger than a string or an array can be.
inline constexpr HRESULT E_OUTOFMEMORY = korlib::hresult(0x8007000E);
// An argument has a value that the member does not take.
inline constexpr HRESULT E_INVALIDARG = korlib::hresult(0x80070057);

// Late binding (dispatch.h) and the values that it passes (variant.h, safearray.h).
inline constexpr HRESULT DISP_E_UNKNOWNINTERFACE = korlib::hresult(0x80020001);
// No such identifier, or one that is not served for this kind of call: a method that is read, say.
inline constexpr HRESULT DISP_E_MEMBERNOTFOUND = korlib::hresult(0x80020003);
// As the value of a VT_ERROR: this argument was left out.
inline constexpr HRESULT DISP_E_PARAMNOTFOUND = korlib::hresult(0x80020004);
// A value has no form of the type that is needed.
inline constexpr HRESULT DISP_E_TYPEMISMATCH = korlib::hresult(0x80020005);
// No member has that name.
inline constexpr HRESULT DISP_E_UNKNOWNNAME = korlib::hresult(0x80020006);
// The member takes its arguments by place only.
inline constexpr HRESULT DISP_E_NONAMEDARGS = korlib::hresult(0x80020007);
// The VARTYPE is none that exists.
inline constexpr HRESULT DISP_E_BADVARTYPE = korlib::hresult(0x80020008);
// The member failed, and EXCEPINFO says how.
inline constexpr HRESULT DISP_E_EXCEPTION = korlib::hresult(0x80020009);
// A number is out of the range of the type that is needed.
inline constexpr HRESULT DISP_E_OVERFLOW = korlib::hresult(0x8002000A);
// An index lies outside the bounds of the array or list.
inline constexpr HRESULT DISP_E_BADINDEX = korlib::hresult(0x8002000B);
// The array is in use and can be neither resized nor freed.
inline constexpr HRESULT DISP_E_ARRAYISLOCKED = korlib::hresult(0x8002000D);
// An argument that must be there is missing.
inline constexpr HRESULT DISP_E_BADPARAMCOUNT = korlib::hresult(0x8002000E);
inline constexpr HRESULT DISP_E_DIVBYZERO = korlib::hresult(0x80020012);

// Activation.
// An outer object was given; no class here can be part of another object.
inline constexpr HRESULT CLASS_E_NOAGGREGATION = korlib::hresult(0x80040110);
// The module does not have that class.
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = korlib::hresult(0x80040111);
// No host class, registered module or module of the component folder has that identifier.
inline constexpr HRESULT REGDB_E_CLASSNOTREG = korlib::hresult(0x80040154);
// The text is neither an identifier nor a known ProgID.
inline constexpr HRESULT CO_E_CLASSSTRING = korlib::hresult(0x800401F3);
// The module's file is not there, or cannot be loaded.
inline constexpr HRESULT CO_E_DLLNOTFOUND = korlib::hresult(0x800401F8);
// The file was loaded and is not a usable component module.
inline constexpr HRESULT CO_E_ERRORINDLL = korlib::hresult(0x800401F9);
// The calling thread runs no request.
inline constexpr HRESULT CONTEXT_E_NOCONTEXT = korlib::hresult(0x8004E004);

// Type libraries.
// The library does not describe that interface.
inline constexpr HRESULT TYPE_E_ELEMENTNOTFOUND = korlib::hresult(0x8002802B);
// There is no type library behind the path.
inline constexpr HRESULT TYPE_E_CANTLOADLIBRARY = korlib::hresult(0x80029C4A);
