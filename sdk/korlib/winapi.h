// The Windows functions that the component calls and a host may supply.
//
// The component carries a weak fallback for each of them; a function of the same name that the host
// process exports is used instead. What a fallback does, where that differs from what the name
// promises, is written at its definition in mirt/compat. A host that supplies one keeps to the comment
// here.
#pragma once

#include <pthread.h>

#include <cwchar>

#include <korlib/guid.h>
#include <korlib/types.h>

// A lock in the caller's memory. Not recursive: a thread that enters twice waits for ever.
using CRITICAL_SECTION = pthread_mutex_t;

// The handle that is none: not null.
// NOLINTNEXTLINE(performance-no-int-to-ptr): not an address, by convention
inline HANDLE invalid_handle() { return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1)); }

// The one way in which the component opens a file: an existing one, to read.
inline constexpr DWORD GENERIC_READ = 0x80000000u;
inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 128;
// Room for a path in a fixed buffer, in characters with the NUL.
inline constexpr std::size_t MAX_PATH = 260;

// For FormatMessageW: a system text, with its placeholders left in it.
inline constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x200;
inline constexpr DWORD FORMAT_MESSAGE_FROM_SYSTEM = 0x1000;

// For LCMapStringW: which width the characters shall have.
inline constexpr DWORD LCMAP_HALFWIDTH = 0x00400000u;
inline constexpr DWORD LCMAP_FULLWIDTH = 0x00800000u;

// The key under which classes are registered.
// NOLINTNEXTLINE(performance-no-int-to-ptr): likewise
inline HKEY hkey_classes_root() { return reinterpret_cast<HKEY>(std::uintptr_t{0x80000000u}); }
// What the component asks of a registry: to set values, which are text.
inline constexpr DWORD KEY_SET_VALUE = 2;
inline constexpr DWORD REG_SZ = 1;
// What registry functions answer, beside other codes for other failures.
inline constexpr LONG ERROR_SUCCESS = 0;
inline constexpr LONG ERROR_FILE_NOT_FOUND = 2;

extern "C" {

// TRUE when all 16 bytes are equal.
KORLIB_API BOOL IsEqualGUID(REFGUID a, REFGUID b);

// Locks. A section is initialised before its first use and deleted after its last; one thread at a time is
// between Enter and Leave.
KORLIB_API void InitializeCriticalSection(CRITICAL_SECTION* section);
KORLIB_API void DeleteCriticalSection(CRITICAL_SECTION* section);
KORLIB_API void EnterCriticalSection(CRITICAL_SECTION* section);
KORLIB_API void LeaveCriticalSection(CRITICAL_SECTION* section);
// Counters. The whole `long` changes in one step that all threads see in one order; the answer is the new
// value.
KORLIB_API long InterlockedIncrement(long volatile* value);
KORLIB_API long InterlockedDecrement(long volatile* value);
// Waits at least that long; 0 gives way to others.
KORLIB_API void Sleep(unsigned int milliseconds);
// Milliseconds of a clock that never goes back, counted from an unspecified moment.
KORLIB_API unsigned long GetTickCount();
// The module wants no calls of DllMain for threads. TRUE.
KORLIB_API BOOL DisableThreadLibraryCalls(void* module);

// Strings. Comparisons answer below, at or above 0. The first compares NUL-terminated names, the second at most
// `count` characters of paths, where letter case and the slash's direction do not count: the component judges
// by it which template folders are the same.
KORLIB_API int _wcsicmp(const wchar_t* a, const wchar_t* b);
KORLIB_API int _wcsnicmp(const wchar_t* a, const wchar_t* b, std::size_t count);
// Text that is ASCII into `target`, which has room for `count` bytes with the NUL that is always written; what
// does not fit is cut off. *converted, which may be null, counts the NUL. 0, or another number when an argument
// is missing.
KORLIB_API int wcstombs_s(std::size_t* converted, char* target, const wchar_t* source, std::size_t count);
// Copies `count` bytes. The caller has compared it with the target's size. 0.
KORLIB_API int memcpy_s(void* target, std::size_t target_size, const void* source, std::size_t count);
// Formats into a buffer of `count` characters with the NUL. 0, or 1 when the text does not fit; never the
// number of characters.
KORLIB_API int swprintf_s(wchar_t* buffer, std::size_t count, const wchar_t* format, ...);
// Reads by a format; the number of conversions done. No sizes stand after %s and %c.
KORLIB_API int sscanf_s(const char* text, const char* format, ...) __attribute__((format(scanf, 2, 3)));

// Maps text by `flags` (LCMAP_…). A negative source length means up to the NUL. A null target or a size below 1
// asks for the size, in characters; a host's answer is the exact length of the result, and mapping into a
// buffer of that size returns it again. 0 is a failure, unless the source is empty.
KORLIB_API int LCMapStringW(unsigned int locale, unsigned int flags, const wchar_t* source, int source_length,
                            wchar_t* target, int target_length);
// The text of a system code into `buffer` (at most `size` characters with the NUL): its length, or 0 when there
// is none. Only the FORMAT_MESSAGE_… flags above are asked for.
KORLIB_API DWORD FormatMessageW(DWORD flags, const void* source, DWORD message, DWORD language, wchar_t* buffer,
                                DWORD size, void* arguments);

// Registry. 0 is success; keys are opened relative to `key`, of which hkey_classes_root() is the first. A key
// that was opened, even a null one, is closed with RegCloseKey.
KORLIB_API LONG RegCreateKeyExW(HKEY key, const wchar_t* sub_key, DWORD reserved, const wchar_t* class_name,
                                DWORD options, DWORD access, void* security, HKEY* result, DWORD* disposition);
KORLIB_API LONG RegOpenKeyExW(HKEY key, const wchar_t* sub_key, DWORD options, DWORD access, HKEY* result);
// Sets a value of the key; a null name is its default value. `bytes` counts two bytes a character by
// convention, whatever a character's size; the text ends at its NUL.
KORLIB_API LONG RegSetValueExW(HKEY key, const wchar_t* name, DWORD reserved, DWORD type, const BYTE* data,
                               DWORD bytes);
// Deletes a key that has no keys in it.
KORLIB_API LONG RegDeleteKeyW(HKEY key, const wchar_t* sub_key);
KORLIB_API LONG RegCloseKey(HKEY key);

// Files and paths. Opens an existing file to read; invalid_handle() when that is not possible, and the caller
// closes what it got. Handles are whatever CreateFileW, CloseHandle and GetFileTime agree on; a host that supplies
// CreateFileW alone returns a FILE*, which the other two take.
KORLIB_API HANDLE CreateFileW(const wchar_t* path, DWORD access, DWORD share, void* security, DWORD creation,
                              DWORD flags, HANDLE pattern);
KORLIB_API BOOL CloseHandle(HANDLE handle);
// The times of an open file, in UTC, as finely as the file system keeps them; each may be null. FALSE leaves
// them alone. An edited template is found by its time of writing.
KORLIB_API BOOL GetFileTime(HANDLE handle, FILETIME* creation, FILETIME* access, FILETIME* write);
// Below, at or above 0 as `a` is earlier, equal or later.
KORLIB_API LONG CompareFileTime(const FILETIME* a, const FILETIME* b);
// The path of a module into `buffer`, which has room for `size` characters with the NUL: its length, or 0 when
// it is not known.
KORLIB_API DWORD GetModuleFileNameW(void* module, wchar_t* buffer, DWORD size);
// The canonical form of `source`, free of "." and "..", into `target`, which has room for MAX_PATH characters
// with the NUL; a longer one is cut. FALSE where it has none. Permission to read a file is judged by the
// beginning of this form.
KORLIB_API BOOL PathCanonicalizeW(wchar_t* target, const wchar_t* source);

}  // extern "C"
