// How classes are found and objects made. The host supplies these functions.
#pragma once

#include <korlib/unknown.h>

// Where an object may live. Everything here is made in the process of the caller; the value is not looked at.
inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;
inline constexpr DWORD CLSCTX_LOCAL_SERVER = 4;

namespace korlib {

// "Out of stack space", the code that script users know. A host that can tell answers it when scripts,
// objects or templates that use each other have come too deep for one more of them.
inline constexpr HRESULT kOutOfStack = hresult(0x800A001C);

}  // namespace korlib

extern "C" {
// One object of the class, asked for `riid`; one reference, the caller's. The host's own classes are looked up
// first, then what is registered, then the modules of the component folder.
//
// `outer` is null, or CLASS_E_NOAGGREGATION. An unknown class is REGDB_E_CLASSNOTREG, a module that cannot be
// used CO_E_DLLNOTFOUND or CO_E_ERRORINDLL, with words in the thread's error object. Where the thread's stack
// is nearly used up: korlib::kOutOfStack.
//
// On failure *ppv is null, except that an in-context class object that could not bind the new object leaves it
// in *ppv for the caller to release.
KORLIB_API HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID riid, void** ppv);
// The class object itself, for a caller that makes many; it keeps its module loaded. `reserved` is null.
KORLIB_API HRESULT CoGetClassObject(REFCLSID clsid, DWORD context, void* reserved, REFIID riid, void** ppv);
// The context of the request that the calling thread is running, counted; it answers to IGetContextProperties
// (zelto/context.h). Outside a request: CONTEXT_E_NOCONTEXT and null.
KORLIB_API HRESULT CoGetObjectContext(REFIID riid, void** ppv);
// Closes the modules whose DllCanUnloadNow answers S_OK. A host calls it when nothing runs.
KORLIB_API void CoFreeUnusedLibraries();

// A random identifier, RFC 4122 version 4, from the system's generator. E_FAIL and GUID_NULL without one.
KORLIB_API HRESULT CoCreateGuid(GUID* guid);
// "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" in upper case, with its NUL; the number of characters
// written including the NUL (39), or 0 when `capacity` is too small.
KORLIB_API INT StringFromGUID2(REFGUID guid, OLECHAR* out, INT capacity);
// The identifier that a text is. Accepts the braced form in any letter case; CO_E_CLASSSTRING and CLSID_NULL
// otherwise.
KORLIB_API HRESULT CLSIDFromString(const OLECHAR* text, CLSID* clsid);
// The class of that name, "Scripting.Dictionary", in any letter case; CO_E_CLASSSTRING and CLSID_NULL when none
// has it.
KORLIB_API HRESULT CLSIDFromProgID(const OLECHAR* prog_id, CLSID* clsid);
}

// The entry points that every component module exports.
//
// DllGetClassObject with CLSID_NULL reads *ppv as the wanted class's name (a const wchar_t*, null for
// the module's first class) before it writes it, so that a host without a registry can ask by name.
// Called once after loading and once before unloading, with the handle that stands for the module and one of
// the reasons below; answers a BOOL, which a host may not take for a failure.
using DllMainFunction = int (*)(void* module, unsigned int reason, void* reserved);
// A class object of the module, counted; CLASS_E_CLASSNOTAVAILABLE for a class that it does not have.
using DllGetClassObjectFunction = HRESULT (*)(REFCLSID clsid, REFIID riid, void** ppv);
// S_OK when nothing of the module is referenced any more, else S_FALSE.
using DllCanUnloadNowFunction = HRESULT (*)();
// Writes the module's classes into the registry, or takes them out; both entry points have this type.
using DllRegisterServerFunction = HRESULT (*)();

// The reasons for which DllMain is called; others mean nothing.
inline constexpr unsigned int DLL_PROCESS_DETACH = 0;
inline constexpr unsigned int DLL_PROCESS_ATTACH = 1;
