// What the module exports besides its entry points, under plain names: its own state.
//
// Class objects and the other process-wide objects are declared in the room that knows their type and
// are defined, in the order that matters, in module.cpp.
#pragma once

#include <span>

#include <korlib/typeinfo.h>
#include <korlib/winapi.h>

extern KORLIB_API HMODULE g_hDLL;                // as given to DllMain on attach
extern KORLIB_API wchar_t g_aDLLPath[MAX_PATH];  // the module's own path, empty where the host does not tell
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

namespace mirt {

// One of the seven pointers above.
struct TypeInfoSlot {
  ITypeInfo** slot;
  ITypeInfo* own;   // static; in force from load on
  const IID* iid;   // under which a type library has what may replace it
  bool is_of_host;  // described by the host's type library, not by the component's
};

// In the order in which they are set, replaced and released.
std::span<const TypeInfoSlot> type_info_slots();

}  // namespace mirt
