// Type information and type libraries without descriptions: bases for classes that serve names and calls,
// and look-up by identifier, which is all that this system asks for. The rest answers E_NOTIMPL.
#pragma once

#include <korlib/typeinfo.h>

namespace korlib {

// A base for type information that maps names and calls and describes nothing:
//
//   class ThingTypeInfo final : public korlib::PlainTypeInfo {
//     // QueryInterface, AddRef, Release: as for any object, or without counting for a static one
//     HRESULT GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) override;
//     HRESULT Invoke(void* instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result,
//                    EXCEPINFO* excepinfo, UINT* argerr) override;
//   };
//
// It holds no state, so that a static object can be built by the compiler. Whether references are counted is
// the class's choice.
class PlainTypeInfo : public ITypeInfo {
 public:
  PlainTypeInfo(const PlainTypeInfo&) = delete;
  PlainTypeInfo& operator=(const PlainTypeInfo&) = delete;

  // Results are not touched: a caller that ignores the code must not read them.
  HRESULT GetTypeAttr(TYPEATTR**) override { return E_NOTIMPL; }
  HRESULT GetTypeComp(ITypeComp**) override { return E_NOTIMPL; }
  HRESULT GetFuncDesc(UINT, FUNCDESC**) override { return E_NOTIMPL; }
  HRESULT GetVarDesc(UINT, VARDESC**) override { return E_NOTIMPL; }
  HRESULT GetNames(MEMBERID, BSTR*, UINT, UINT*) override { return E_NOTIMPL; }
  HRESULT GetRefTypeOfImplType(UINT, DWORD*) override { return E_NOTIMPL; }
  HRESULT GetImplTypeFlags(UINT, INT*) override { return E_NOTIMPL; }
  HRESULT GetDocumentation(MEMBERID, BSTR*, BSTR*, DWORD*, BSTR*) override { return E_NOTIMPL; }
  HRESULT GetDllEntry(MEMBERID, INVOKEKIND, BSTR*, BSTR*, WORD*) override { return E_NOTIMPL; }
  HRESULT GetRefTypeInfo(DWORD, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT AddressOfMember(MEMBERID, INVOKEKIND, void**) override { return E_NOTIMPL; }
  HRESULT CreateInstance(IUnknown*, REFIID, void**) override { return E_NOTIMPL; }
  HRESULT GetMops(MEMBERID, BSTR*) override { return E_NOTIMPL; }
  HRESULT GetContainingTypeLib(ITypeLib**, UINT*) override { return E_NOTIMPL; }
  void ReleaseTypeAttr(TYPEATTR*) override {}
  void ReleaseFuncDesc(FUNCDESC*) override {}
  void ReleaseVarDesc(VARDESC*) override {}

 protected:
  constexpr PlainTypeInfo() = default;
  ~PlainTypeInfo() = default;
};

// A base for libraries that find type information by identifier. Left to the class: IUnknown,
// GetTypeInfoOfGuid, and the two that count and number where it can tell.
class PlainTypeLib : public ITypeLib {
 public:
  PlainTypeLib(const PlainTypeLib&) = delete;
  PlainTypeLib& operator=(const PlainTypeLib&) = delete;

  // A library that cannot count says that it has none.
  UINT GetTypeInfoCount() override { return 0; }
  HRESULT GetTypeInfo(UINT, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT GetTypeInfoType(UINT, TYPEKIND*) override { return E_NOTIMPL; }
  HRESULT GetLibAttr(TLIBATTR**) override { return E_NOTIMPL; }
  HRESULT GetTypeComp(ITypeComp**) override { return E_NOTIMPL; }
  HRESULT GetDocumentation(INT, BSTR*, BSTR*, DWORD*, BSTR*) override { return E_NOTIMPL; }
  HRESULT IsName(LPOLESTR, ULONG, BOOL*) override { return E_NOTIMPL; }
  HRESULT FindName(LPOLESTR, ULONG, ITypeInfo**, MEMBERID*, USHORT*) override { return E_NOTIMPL; }
  void ReleaseTLibAttr(TLIBATTR*) override {}

 protected:
  PlainTypeLib() = default;
  ~PlainTypeLib() = default;
};

}  // namespace korlib
