// Type information and type libraries that do nothing but what this system asks of them.
#pragma once

#include <korlib/ptr.h>
#include <korlib/typeinfo.h>

namespace zelto {

// Static: never freed, however often it is released.
class StaticTypeInfo : public ITypeInfo {
 public:
  StaticTypeInfo() = default;
  StaticTypeInfo(const StaticTypeInfo&) = delete;
  StaticTypeInfo& operator=(const StaticTypeInfo&) = delete;

  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<ITypeInfo, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return 2; }
  ULONG Release() override { return 1; }

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
  ~StaticTypeInfo() = default;
};

}  // namespace zelto
