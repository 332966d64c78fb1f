// Type information that the component carries itself, so that scripts can call its objects where no type
// library is. It maps names to identifiers and late-bound calls to typed members.
//
// The objects are static and hold no state: any thread may use them, and counting changes nothing.
#pragma once

#include <korlib/plain_typeinfo.h>
#include <korlib/ptr.h>

class StaticTypeInfo : public korlib::PlainTypeInfo {
 public:
  STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
  ULONG AddRef() override { return 2; }
  ULONG Release() override { return 1; }

  // The first of `names` only, in any letter case; names of arguments get no identifier.
  STDMETHODIMP GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) override;

 protected:
  constexpr StaticTypeInfo() = default;
  ~StaticTypeInfo() = default;

 private:
  // DISPID_UNKNOWN when there is no such member.
  virtual MEMBERID find_member(const wchar_t* name) const = 0;
};

// Knows no names: for interfaces that are used early-bound, or through the host's type library.
class PassiveTypeInfo final : public StaticTypeInfo {
 public:
  constexpr PassiveTypeInfo() = default;
  STDMETHODIMP GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) override;
  STDMETHODIMP Invoke(void*, MEMBERID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override;

 private:
  MEMBERID find_member(const wchar_t*) const override { return DISPID_UNKNOWN; }
};

// The type information of an interface whose members are in a table (member_table.h).
#define MIRT_DECLARE_TYPE_INFO(Name)                                                                  \
  class Name final : public StaticTypeInfo {                                                          \
   public:                                                                                            \
    constexpr Name() = default;                                                                       \
    STDMETHODIMP Invoke(void* instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result, \
                        EXCEPINFO* excepinfo, UINT* argerr) override;                                 \
                                                                                                      \
   private:                                                                                           \
    MEMBERID find_member(const wchar_t* name) const override;                                         \
  }

MIRT_DECLARE_TYPE_INFO(MirtTypeInfo);
MIRT_DECLARE_TYPE_INFO(MirtedTemplatorTypeInfo);
MIRT_DECLARE_TYPE_INFO(TextTemplatorTypeInfo);
MIRT_DECLARE_TYPE_INFO(FormFileTypeInfo);
MIRT_DECLARE_TYPE_INFO(UtilityTypeInfo);

#undef MIRT_DECLARE_TYPE_INFO
