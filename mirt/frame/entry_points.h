// The module's entry points. korlib/activation.h says what a host may expect of them.
#pragma once

#include <span>

#include <korlib/unknown.h>

struct ClassEntry {
  const CLSID* clsid;
  const wchar_t* name;  // the bare name, for a host without a registry
  IClassFactory* object;
};

// The classes that a host can ask for, in the order in which they are searched; an empty name asks for the
// first. Defined in module.cpp, which alone knows them.
std::span<const ClassEntry> class_table();

extern "C" {
// TRUE on attach only when both type libraries were found whole; otherwise the component's own type
// information serves what was not, and the module works all the same.
KORLIB_API int DllMain(void* hModule, unsigned int reason, void* reserved);
KORLIB_API HRESULT DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);
KORLIB_API HRESULT DllCanUnloadNow();
KORLIB_API HRESULT DllRegisterServer();
KORLIB_API HRESULT DllUnregisterServer();
}
