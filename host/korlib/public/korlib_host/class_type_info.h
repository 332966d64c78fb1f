// Type information over a member table: what kind of object it is, which members it has, and late binding.
#pragma once

#include <span>

#include <korlib/plain_typeinfo.h>
#include <korlib_host/members.h>

namespace korlib {

// Answers ITypeInfo for every object of one class. Static: never freed, however often it is released. GetDocumentation
// answers the class's name for MEMBERID_NIL (-1), GetNames the name of the member with an identifier; arguments have no
// names.
class KORLIB_API ClassTypeInfo final : public PlainTypeInfo {
 public:
  // `members` must outlive the process's last call. Instances given to Invoke are what its operations expect.
  ClassTypeInfo(const wchar_t* name, std::span<const Member> members) : name_(name), members_(members) {}

  HRESULT QueryInterface(REFIID riid, void** ppv) override;
  // Counts nothing; the numbers only say that it goes on living.
  ULONG AddRef() override { return 2; }
  ULONG Release() override { return 1; }
  // As members.h says of ids_of_names() and invoke_member().
  HRESULT GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) override;
  HRESULT Invoke(void* instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO* excepinfo,
                 UINT* argerr) override;
  // Only names are known: the other texts are null. TYPE_E_ELEMENTNOTFOUND for an identifier that no member has.
  HRESULT GetDocumentation(MEMBERID id, BSTR* name, BSTR* doc, DWORD* help, BSTR* file) override;
  HRESULT GetNames(MEMBERID id, BSTR* names, UINT capacity, UINT* count) override;

 private:
  const wchar_t* name_;
  std::span<const Member> members_;
};

}  // namespace korlib
