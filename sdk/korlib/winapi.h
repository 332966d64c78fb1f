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

using CRITICAL_SECTION = pthread_mutex_t;  // not recursive: entering twice deadlocks

// NOLINTNEXTLINE(performance-no-int-to-ptr): a value that is no address, by convention
inline HANDLE invalid_handle() { return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1)); }

inline constexpr DWORD GENERIC_READ = 0x80000000u;
inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 128;
inline constexpr std::size_t MAX_PATH = 260;

inline constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x200;
inline constexpr DWORD FORMAT_MESSAGE_FROM_SYSTEM = 0x1000;

inline constexpr DWORD LCMAP_HALFWIDTH = 0x00400000u;
inline constexpr DWORD LCMAP_FULLWIDTH = 0x00800000u;

// NOLINTNEXTLINE(performance-no-int-to-ptr): likewise
inline HKEY hkey_classes_root() { return reinterpret_cast<HKEY>(std::uintptr_t{0x80000000u}); }
inline constexpr DWORD KEY_SET_VALUE = 2;
inline constexpr DWORD REG_SZ = 1;
inline constexpr LONG ERROR_SUCCESS = 0;
inline constexpr LONG ERROR_FILE_NOT_FOUND = 2;

extern "C" {

KORLIB_API BOOL IsEqualGUID(REFGUID a, REFGUID b);

// Locks, counters, time.
KORLIB_API void InitializeCriticalSection(CRITICAL_SECTION* section);
KORLIB_API void DeleteCriticalSection(CRITICAL_SECTION* section);
KORLIB_API void EnterCriticalSection(CRITICAL_SECTION* section);
KORLIB_API void LeaveCriticalSection(CRITICAL_SECTION* section);
KORLIB_API long InterlockedIncrement(long volatile* value);  // the new value; sequentially consistent
KORLIB_API long InterlockedDecrement(long volatile* value);
KORLIB_API void Sleep(unsigned int milliseconds);
KORLIB_API unsigned long GetTickCount();  // milliseconds of a monotonic clock
KORLIB_API BOOL DisableThreadLibraryCalls(void* module);

// Strings.
KORLIB_API int _wcsicmp(const wchar_t* a, const wchar_t* b);
KORLIB_API int _wcsnicmp(const wchar_t* a, const wchar_t* b, std::size_t count);
KORLIB_API int wcstombs_s(std::size_t* converted, char* target, const wchar_t* source, std::size_t count);
KORLIB_API int memcpy_s(void* target, std::size_t target_size, const void* source, std::size_t count);
KORLIB_API int swprintf_s(wchar_t* buffer, std::size_t count, const wchar_t* format, ...);
KORLIB_API int sscanf_s(const char* text, const char* format, ...) __attribute__((format(scanf, 2, 3)));

// Maps text by `flags`. A null target or a size below 1 asks for the size, in characters; a host's
// answer is the exact length of the result, and mapping into a buffer of that size returns it again.
KORLIB_API int LCMapStringW(unsigned int locale, unsigned int flags, const wchar_t* source, int source_length,
                            wchar_t* target, int target_length);
// The text of a system code into `buffer` (at most `size` characters with the NUL): its length, or 0.
KORLIB_API DWORD FormatMessageW(DWORD flags, const void* source, DWORD message, DWORD language, wchar_t* buffer,
                                DWORD size, void* arguments);

// Registry. 0 is success; keys are opened relative to `key`.
KORLIB_API LONG RegCreateKeyExW(HKEY key, const wchar_t* sub_key, DWORD reserved, const wchar_t* class_name,
                                DWORD options, DWORD access, void* security, HKEY* result, DWORD* disposition);
KORLIB_API LONG RegOpenKeyExW(HKEY key, const wchar_t* sub_key, DWORD options, DWORD access, HKEY* result);
// `bytes` counts two bytes a character by convention; the text ends at its NUL.
KORLIB_API LONG RegSetValueExW(HKEY key, const wchar_t* name, DWORD reserved, DWORD type, const BYTE* data,
                               DWORD bytes);
KORLIB_API LONG RegDeleteKeyW(HKEY key, const wchar_t* sub_key);
KORLIB_API LONG RegCloseKey(HKEY key);

// Files and paths. Handles are whatever the pair CreateFileW / CloseHandle agrees on; a host that
// supplies CreateFileW returns a FILE* so that the other two functions serve it as well.
KORLIB_API HANDLE CreateFileW(const wchar_t* path, DWORD access, DWORD share, void* security, DWORD creation,
                              DWORD flags, HANDLE pattern);
KORLIB_API BOOL CloseHandle(HANDLE handle);
KORLIB_API BOOL GetFileTime(HANDLE handle, FILETIME* creation, FILETIME* access, FILETIME* write);
KORLIB_API LONG CompareFileTime(const FILETIME* a, const FILETIME* b);
// The path of a module into `buffer`; its length, or 0.
KORLIB_API DWORD GetModuleFileNameW(void* module, wchar_t* buffer, DWORD size);
// The canonical form of `source` into `target`, which has room for MAX_PATH characters with the NUL.
KORLIB_API BOOL PathCanonicalizeW(wchar_t* target, const wchar_t* source);

}  // extern "C"
