// The module's own state, exported under plain names.
//
// Class objects and the other process-wide objects are declared in the room that knows their type and
// are defined, in the order that matters, in module.cpp.
#pragma once

#include <korlib/typeinfo.h>
#include <korlib/winapi.h>

extern KORLIB_API HMODULE g_hDLL;                // as given to DllMain on attach
extern KORLIB_API wchar_t g_aDLLPath[MAX_PATH];  // the module's own path, empty where nobody knows it
extern KORLIB_API long g_nRefCount;              // live objects and class-object references; interlocked

// What each object's late-bound side forwards to: the component's own type information, or the one that
// DllMain took from the type libraries. Set before any other object of the module is built.
extern KORLIB_API ITypeInfo* g_pTI_IMirt;
extern KORLIB_API ITypeInfo* g_pTI_IMirtedTemplator;
extern KORLIB_API ITypeInfo* g_pTI_IFormFile;
extern KORLIB_API ITypeInfo* g_pTI_ITextTemplator;
extern KORLIB_API ITypeInfo* g_pTI_IUtility;
extern KORLIB_API ITypeInfo* g_pTI_IStringList;
extern KORLIB_API ITypeInfo* g_pTI_IRequestDictionary;
