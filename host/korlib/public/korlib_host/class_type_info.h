// Type information over a member table: what kind of object it is, which members it has, and late binding.
//
// Objects derived from DispatchObject bring theirs (dispatch_object.h). An object that implements IDispatch by itself
// makes one of these for its class:
//
//   static ClassTypeInfo info(L"Clock", kClockMembers);
//   *out = &info;  // for GetTypeInfo
#pragma once

#include <span>

#include <korlib/plain_typeinfo.h>
#include <korlib_host/members.h>

namespace korlib {

// Answers ITypeInfo for every object of one class. It is to be a static object: it is never freed, however often it is
// released, and any thread may call it at any time. What is not declared here (attributes, descriptions, reference
// types) answers E_NOTIMPL, as PlainTypeInfo does.
class KORLIB_API ClassTypeInfo final : public PlainTypeInfo {
 public:
  // `name` is what scripts call the class. Both arguments are kept, not copied, and have to live as long as the
  // process.
  ClassTypeInfo(const wchar_t* name, std::span<const Member> members) : name_(name), members_(members) {}

  // ITypeInfo and IUnknown.
  HRESULT QueryInterface(REFIID riid, void** ppv) override;
  // Counts nothing; the numbers only say that it goes on living.
  ULONG AddRef() override { return 2; }
  ULONG Release() override { return 1; }
  // As ids_of_names() in members.h.
  HRESULT GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) override;
  // As invoke_member() in members.h. `instance` is an object of the class that the table's operations were made for:
  // its own address, which need not be that of one of its interfaces.
  HRESULT Invoke(void* instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO* excepinfo,
                 UINT* argerr) override;
  // The name of a member, or of the class for MEMBERID_NIL (-1), as a new string for the caller to free. Only names are
  // known: the other texts are null, the help context is 0. Each out-argument may be null. TYPE_E_ELEMENTNOTFOUND for
  // an identifier that no member has.
  HRESULT GetDocumentation(MEMBERID id, BSTR* name, BSTR* doc, DWORD* help, BSTR* file) override;
  // The name of the member in names[0], for the caller to free, and *count 1: arguments have no names. With a capacity
  // of 0 nothing is written but *count. E_POINTER, TYPE_E_ELEMENTNOTFOUND as above, E_OUTOFMEMORY.
  HRESULT GetNames(MEMBERID id, BSTR* names, UINT capacity, UINT* count) override;

 private:
  const wchar_t* name_;
  std::span<const Member> members_;
};

}  // namespace korlib
