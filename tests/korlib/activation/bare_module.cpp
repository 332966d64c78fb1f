// Modules that lack an entry point: BARE_MAIN has DllMain alone, BARE_CLASS_OBJECT does not say when it can be closed.
#include "korlib/activation/sample_module.h"

extern "C" {

KORLIB_API int DllMain(void*, unsigned int reason, void*) {
  sample_step(reason == DLL_PROCESS_ATTACH ? "attach" : "detach");
  return TRUE;
}

#ifdef BARE_CLASS_OBJECT
KORLIB_API HRESULT DllGetClassObject(REFCLSID, REFIID, void** ppv) {
  *ppv = nullptr;
  return CLASS_E_CLASSNOTAVAILABLE;
}
#endif
}
