// How classes are found and objects made. The host supplies these functions.
#pragma once

#include <korlib/unknown.h>

inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;
inline constexpr DWORD CLSCTX_LOCAL_SERVER = 4;

namespace korlib {

// "Out of stack space", the code that script users know. A host that can tell answers it when scripts,
// objects or templates that use each other have come too deep for one more of them.
inline constexpr HRESULT kOutOfStack = hresult(0x800A001C);

}  // namespace korlib

extern "C" {
// One object of the class, asked for `riid`. On failure *ppv is null, except that an in-context class
// object that could not bind the new object leaves it in *ppv for the caller to release. Where the thread's
// stack is nearly used up: korlib::kOutOfStack.
KORLIB_API HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID riid, void** ppv);
KORLIB_API HRESULT CoGetClassObject(REFCLSID clsid, DWORD context, void* reserved, REFIID riid, void** ppv);
// The context of the request that the calling thread is running, which answers to
// IGetContextProperties. Outside a request: CONTEXT_E_NOCONTEXT.
KORLIB_API HRESULT CoGetObjectContext(REFIID riid, void** ppv);
// Closes the modules whose DllCanUnloadNow answers S_OK.
KORLIB_API void CoFreeUnusedLibraries();

// A random identifier, RFC 4122 version 4.
KORLIB_API HRESULT CoCreateGuid(GUID* guid);
// "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" in upper case, with its NUL; the number of characters
// written including the NUL (39), or 0 when `capacity` is too small.
KORLIB_API INT StringFromGUID2(REFGUID guid, OLECHAR* out, INT capacity);
// Accepts the braced form in any letter case; CO_E_CLASSSTRING otherwise.
KORLIB_API HRESULT CLSIDFromString(const OLECHAR* text, CLSID* clsid);
KORLIB_API HRESULT CLSIDFromProgID(const OLECHAR* prog_id, CLSID* clsid);
}

// The entry points that every component module exports.
//
// DllGetClassObject with CLSID_NULL reads *ppv as the wanted class's name (a const wchar_t*, null for
// the module's first class) before it writes it, so that a host without a registry can ask by name.
using DllMainFunction = int (*)(void* module, unsigned int reason, void* reserved);
using DllGetClassObjectFunction = HRESULT (*)(REFCLSID clsid, REFIID riid, void** ppv);
using DllCanUnloadNowFunction = HRESULT (*)();
using DllRegisterServerFunction = HRESULT (*)();

inline constexpr unsigned int DLL_PROCESS_DETACH = 0;
inline constexpr unsigned int DLL_PROCESS_ATTACH = 1;
