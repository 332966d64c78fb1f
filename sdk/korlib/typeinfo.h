// Type information: an object that maps member names to identifiers and turns a late-bound call into
// a call of a typed member. This system uses GetIDsOfNames and Invoke only; the description structures
// are named so that the table of operations is the usual one, and are never filled.
#pragma once

#include <korlib/dispatch.h>

// Descriptions, which are never made.
struct TYPEATTR;
struct FUNCDESC;
struct VARDESC;
struct TLIBATTR;
struct ITypeComp;
struct ITypeLib;

// What a type is, by the numbers of automation. Nobody here answers one.
enum TYPEKIND : INT { TKIND_ENUM, TKIND_RECORD, TKIND_MODULE, TKIND_INTERFACE, TKIND_DISPATCH };
// How a described member is called; the values are those of the DISPATCH_… bits.
enum INVOKEKIND : INT {
  INVOKE_FUNC = 1,
  INVOKE_PROPERTYGET = 2,
  INVOKE_PROPERTYPUT = 4,
  INVOKE_PROPERTYPUTREF = 8,
};

// What the names of one interface mean. An object's IDispatch forwards to it, so that the table of members is
// written once for a class. Any thread may use one.
struct ITypeInfo : IUnknown {
  // Descriptions: E_NOTIMPL throughout this system.
  virtual HRESULT GetTypeAttr(TYPEATTR** attr) = 0;
  virtual HRESULT GetTypeComp(ITypeComp** comp) = 0;
  virtual HRESULT GetFuncDesc(UINT index, FUNCDESC** desc) = 0;
  virtual HRESULT GetVarDesc(UINT index, VARDESC** desc) = 0;
  virtual HRESULT GetNames(MEMBERID id, BSTR* names, UINT capacity, UINT* count) = 0;
  virtual HRESULT GetRefTypeOfImplType(UINT index, DWORD* type) = 0;
  virtual HRESULT GetImplTypeFlags(UINT index, INT* flags) = 0;
  // As IDispatch::GetIDsOfNames. Null arrays and a count of 0 are E_INVALIDARG.
  virtual HRESULT GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) = 0;
  // As IDispatch::Invoke, on `instance`: the object, as a pointer to the interface that this type information
  // describes. An unknown identifier, and a kind of call that the member does not serve, is
  // DISP_E_MEMBERNOTFOUND.
  virtual HRESULT Invoke(void* instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                         EXCEPINFO* excepinfo, UINT* argerr) = 0;
  // Texts about members, where they are implemented, and types that they refer to.
  virtual HRESULT GetDocumentation(MEMBERID id, BSTR* name, BSTR* doc, DWORD* help, BSTR* file) = 0;
  virtual HRESULT GetDllEntry(MEMBERID id, INVOKEKIND kind, BSTR* dll, BSTR* name, WORD* ordinal) = 0;
  virtual HRESULT GetRefTypeInfo(DWORD type, ITypeInfo** info) = 0;
  virtual HRESULT AddressOfMember(MEMBERID id, INVOKEKIND kind, void** address) = 0;
  // Nothing below is used here either; releasing what was never given does nothing.
  virtual HRESULT CreateInstance(IUnknown* outer, REFIID riid, void** object) = 0;
  virtual HRESULT GetMops(MEMBERID id, BSTR* mops) = 0;
  virtual HRESULT GetContainingTypeLib(ITypeLib** library, UINT* index) = 0;
  virtual void ReleaseTypeAttr(TYPEATTR* attr) = 0;
  virtual void ReleaseFuncDesc(FUNCDESC* desc) = 0;
  virtual void ReleaseVarDesc(VARDESC* desc) = 0;

 protected:
  ~ITypeInfo() = default;
};
KORLIB_IID(ITypeInfo, "00020401-0000-0000-C000-000000000046");

// The type information of several interfaces. Of a library the component asks one thing: type information by
// identifier.
struct ITypeLib : IUnknown {
  // How many interfaces are described, and one of them by number, counted.
  virtual UINT GetTypeInfoCount() = 0;
  virtual HRESULT GetTypeInfo(UINT index, ITypeInfo** info) = 0;
  // What the interface of that number is.
  virtual HRESULT GetTypeInfoType(UINT index, TYPEKIND* kind) = 0;
  // The type information of an interface, counted; the caller releases it. TYPE_E_ELEMENTNOTFOUND and null when
  // the library does not describe that interface.
  virtual HRESULT GetTypeInfoOfGuid(REFGUID guid, ITypeInfo** info) = 0;
  // Descriptions, names and their look-up: E_NOTIMPL throughout this system.
  virtual HRESULT GetLibAttr(TLIBATTR** attr) = 0;
  virtual HRESULT GetTypeComp(ITypeComp** comp) = 0;
  virtual HRESULT GetDocumentation(INT index, BSTR* name, BSTR* doc, DWORD* help, BSTR* file) = 0;
  virtual HRESULT IsName(LPOLESTR name, ULONG hash, BOOL* found) = 0;
  virtual HRESULT FindName(LPOLESTR name, ULONG hash, ITypeInfo** infos, MEMBERID* ids, USHORT* count) = 0;
  virtual void ReleaseTLibAttr(TLIBATTR* attr) = 0;

 protected:
  ~ITypeLib() = default;
};
KORLIB_IID(ITypeLib, "00020402-0000-0000-C000-000000000046");

// The identifier under its usual name.
inline constexpr const GUID& IID_ITypeInfo = korlib::iid_of<ITypeInfo>;

extern "C" {
// The type library behind a path, counted; "…\2" asks for the second library of a module, which is the host's
// own. On failure *library is null. A host without type libraries answers TYPE_E_CANTLOADLIBRARY, or does not
// export the function: it is looked for when it is needed.
//
// A module may release what it took from a library more often than it counted it, once when it is detached and
// once when it is unloaded, so type information handed out lives as long as the process.
KORLIB_API HRESULT LoadTypeLib(const OLECHAR* path, ITypeLib** library);
}
