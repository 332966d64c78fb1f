// The module's entry points. What a host may expect of them is told in korlib/activation.h.
#pragma once

#include <korlib/unknown.h>

extern "C" {
// TRUE on attach only when both type libraries were found whole; otherwise the component's own type
// information serves what was not, and the module works all the same.
KORLIB_API int DllMain(void* hModule, unsigned int reason, void* reserved);
KORLIB_API HRESULT DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);
KORLIB_API HRESULT DllCanUnloadNow();
KORLIB_API HRESULT DllRegisterServer();
KORLIB_API HRESULT DllUnregisterServer();
}
