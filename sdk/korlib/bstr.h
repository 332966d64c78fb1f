// Counted strings (BSTR). The host supplies these functions.
//
// A BSTR may hold embedded NULs and, when made from bytes, a length that is not a multiple of four; the
// character length is then rounded down. All functions accept null as the empty string. Allocation
// failure, and a length that cannot be represented, give null (or FALSE).
#pragma once

#include <korlib/types.h>

extern "C" {
// A copy of NUL-terminated text, without what follows the NUL; null for null.
KORLIB_API BSTR SysAllocString(const OLECHAR* text);
// A string of `length` characters: copied from `text`, NULs included, or left for the caller to fill when that
// is null. A NUL is put after them in either case.
KORLIB_API BSTR SysAllocStringLen(const OLECHAR* text, UINT length);
// A string of `bytes` bytes: copied from `data`, or left for the caller to fill when null. For strings that
// carry bytes: a byte count that is not a multiple of four is kept.
KORLIB_API BSTR SysAllocStringByteLen(const char* data, UINT bytes);
// Replaces *target by a new string; the old one is freed. TRUE on success; on failure *target is kept.
// `text` may point into *target.
KORLIB_API BOOL SysReAllocString(BSTR* target, const OLECHAR* text);
// Text that lies in *target ends where *target does; null is *target itself. So a string is made longer or
// shorter by its own text: what is added is NUL characters.
KORLIB_API BOOL SysReAllocStringLen(BSTR* target, const OLECHAR* text, UINT length);
// Frees a string that one of these functions made; null is fine.
KORLIB_API void SysFreeString(BSTR text);
// The length without the NUL at the end, 0 for null. Neither looks at the characters.
KORLIB_API UINT SysStringLen(BSTR text);      // in characters
KORLIB_API UINT SysStringByteLen(BSTR text);  // in bytes
}

// Strings of at least this many bytes are refused, so that lengths and their terminator fit a UINT.
inline constexpr UINT kMaxBstrBytes = 0x7FFFFFF0u;
