#include "mirt/hosts/exact_host.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

#include <korlib/activation.h>
#include <korlib/bstr.h>
#include <korlib/errorinfo.h>
#include <korlib/text.h>
#include <korlib/variant.h>

namespace test {

IUnknown* object_context = nullptr;

// The runtime is opened for this program alone: nothing else sees its names.
void* runtime_function(const char* name) {
  static void* const runtime = dlopen(KORLIB_PATH, RTLD_NOW | RTLD_LOCAL);
  void* const found = runtime ? dlsym(runtime, name) : nullptr;
  if (!found) {
    std::fprintf(stderr, "%s\n", dlerror());
    std::abort();
  }
  return found;
}

}  // namespace test

// A function that passes its call on.
#define FORWARD(Result, name, parameters, arguments)                                                \
  Result name parameters {                                                                          \
    static auto* const function = reinterpret_cast<decltype(&name)>(test::runtime_function(#name)); \
    return function arguments;                                                                      \
  }

extern "C" {

FORWARD(HRESULT, CoCreateGuid, (GUID * guid), (guid))
FORWARD(HRESULT, CoCreateInstance, (REFCLSID clsid, IUnknown* outer, DWORD context, REFIID riid, void** ppv),
        (clsid, outer, context, riid, ppv))
FORWARD(HRESULT, CreateErrorInfo, (ICreateErrorInfo * *info), (info))
FORWARD(SAFEARRAY*, SafeArrayCreate, (VARTYPE vt, UINT dims, const SAFEARRAYBOUND* bounds), (vt, dims, bounds))
FORWARD(SAFEARRAY*, SafeArrayCreateVector, (VARTYPE vt, LONG lower, ULONG elements), (vt, lower, elements))
FORWARD(HRESULT, SafeArrayDestroy, (SAFEARRAY * array), (array))
FORWARD(HRESULT, SetErrorInfo, (ULONG reserved, IErrorInfo* info), (reserved, info))
FORWARD(INT, StringFromGUID2, (REFGUID guid, OLECHAR* out, INT capacity), (guid, out, capacity))
FORWARD(BSTR, SysAllocString, (const OLECHAR* text), (text))
FORWARD(BSTR, SysAllocStringByteLen, (const char* bytes, UINT length), (bytes, length))
FORWARD(BSTR, SysAllocStringLen, (const OLECHAR* text, UINT length), (text, length))
FORWARD(void, SysFreeString, (BSTR text), (text))
FORWARD(UINT, SysStringByteLen, (BSTR text), (text))
FORWARD(UINT, SysStringLen, (BSTR text), (text))
FORWARD(HRESULT, VarCmp, (const VARIANT* left, const VARIANT* right, LCID lcid, ULONG flags),
        (left, right, lcid, flags))
FORWARD(HRESULT, VariantChangeType, (VARIANT * target, const VARIANT* source, USHORT flags, VARTYPE vt),
        (target, source, flags, vt))
FORWARD(HRESULT, VariantClear, (VARIANT * v), (v))
FORWARD(HRESULT, VariantCopy, (VARIANT * target, const VARIANT* source), (target, source))
FORWARD(void, VariantInit, (VARIANT * v), (v))
FORWARD(std::size_t, utf32_utf8, (const wchar_t* text, std::size_t length, char* out, std::size_t capacity),
        (text, length, out, capacity))
FORWARD(std::size_t, utf8_utf32, (const char* bytes, std::size_t length, wchar_t* out, std::size_t capacity),
        (bytes, length, out, capacity))

HRESULT CoGetObjectContext(REFIID riid, void** ppv) {
  *ppv = nullptr;
  return test::object_context ? test::object_context->QueryInterface(riid, ppv) : E_FAIL;
}

}  // extern "C"
