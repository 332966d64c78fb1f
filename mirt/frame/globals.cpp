#include "frame/globals.h"

HMODULE g_hDLL = nullptr;
wchar_t g_aDLLPath[MAX_PATH] = {};
long g_nRefCount = 0;

ITypeInfo* g_pTI_IMirt = nullptr;
ITypeInfo* g_pTI_IMirtedTemplator = nullptr;
ITypeInfo* g_pTI_IFormFile = nullptr;
ITypeInfo* g_pTI_ITextTemplator = nullptr;
ITypeInfo* g_pTI_IUtility = nullptr;
ITypeInfo* g_pTI_IStringList = nullptr;
ITypeInfo* g_pTI_IRequestDictionary = nullptr;
