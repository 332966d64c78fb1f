// The base types that every interface of this system is written in.
//
// Names are those of the automation world; widths are fixed here and asserted, because the component
// and its host are built apart and meet only in memory. Text is UTF-32: one wchar_t is one character,
// so lengths in characters are a quarter of lengths in bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

// Integers of a fixed width, under the names that interfaces are written in. Signed ones are two's complement;
// bytes of a value lie in memory lowest first.
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using SHORT = std::int16_t;
using USHORT = std::uint16_t;
using INT = std::int32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
// Truth as the Windows functions answer it: 0 is false, every other value true. See VARIANT_BOOL for the one
// that scripts see.
using BOOL = std::int32_t;

// The result of a call: bit 31 set is a failure (hresult.h has the codes). SCODE is the same number where it is
// a value, in a VARIANT of type VT_ERROR.
using HRESULT = std::int32_t;
using SCODE = std::int32_t;
// A locale by number. The component passes it on and never looks at it.
using LCID = std::uint32_t;
// The number of a member of an object, as GetIDsOfNames gives it. Negative ones have a meaning of their own
// (dispatch.h).
using DISPID = std::int32_t;
using MEMBERID = DISPID;
// The type of a value in a VARIANT, one of VARENUM and its flags (variant.h).
using VARTYPE = std::uint16_t;
// Truth as scripts see it: -1 is true, 0 is false. Most members take only VARIANT_TRUE for true; compare with
// one of the two constants below, never with 1.
using VARIANT_BOOL = std::int16_t;
// A point in local time: days since 1899-12-30 00:00, the fraction being the time of day. Before that day the
// fraction still counts forward: -1.25 is 06:00 on 1899-12-29.
using DATE = double;

// A character of text. LPOLESTR is text that ends with a NUL; where it is an argument the callee does not write
// to it, though its type would allow that.
using OLECHAR = wchar_t;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;

// A counted string: points at the first character, the length in bytes lies in the four bytes before
// it, a NUL character after it. Made and freed by the Sys… functions only (bstr.h). Null is a legal
// value and reads as the empty string.
// A string in a variable belongs to whoever holds the variable. As an argument it stays the caller's; as a
// result it becomes the caller's, who frees it with SysFreeString.
using BSTR = OLECHAR*;

// Handles that only the functions that made them can read: of a file, of a registry key, of a loaded module.
using HANDLE = void*;
using HKEY = void*;
using HMODULE = void*;

// A point in time: 100-nanosecond ticks since 1601-01-01 00:00 UTC, in two halves.
struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

// A currency amount: ten-thousandths in a 64-bit integer.
union CY {
  LONGLONG int64;
};

// The two values of a VARIANT_BOOL.
inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

// The two values of a BOOL, unless the system's headers have defined them.
#ifndef TRUE
inline constexpr BOOL TRUE = 1;
#endif
#ifndef FALSE
inline constexpr BOOL FALSE = 0;
#endif

// What crosses a module boundary says so; everything else is built with hidden visibility.
#define KORLIB_API __attribute__((visibility("default")))

// The return type of an interface method's definition, spelled as its readers expect it.
#define STDMETHODIMP HRESULT

static_assert(sizeof(OLECHAR) == 4, "lengths count characters; SysStringByteLen is four times that");
static_assert(sizeof(HRESULT) == 4 && std::is_signed_v<HRESULT>, "FAILED() tests the sign bit");
static_assert(sizeof(LONG) == 4 && sizeof(BOOL) == 4, "scripts pass 32-bit integers");
static_assert(sizeof(VARIANT_BOOL) == 2, "true is 0xFFFF, compared as 16 bits");
static_assert(sizeof(DATE) == 8 && sizeof(CY) == 8, "variant payloads are eight bytes");
static_assert(sizeof(FILETIME) == 8, "file times are compared as one 64-bit count");
