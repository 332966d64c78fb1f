// Writing the module's classes into the registry, and taking them out.
#pragma once

#include <korlib/hresult.h>

// One class under HKEY_CLASSES_ROOT. E_FAIL at the first step that fails; every key opened is closed.
HRESULT RegistCOM(const wchar_t* progId, const wchar_t* clsid, const wchar_t* threadingModel);
HRESULT UnregistCOM(const wchar_t* progId, const wchar_t* clsid);
