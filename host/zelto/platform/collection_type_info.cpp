// Late binding for objects of the host's collection interfaces that a component implements. The members are
// those of the host's own collections (intrinsics/collections.h).
#include <korlib/plain_typeinfo.h>
#include <korlib/ptr.h>
#include <korlib_host/thunks.h>
#include <zelto/asp.h>

#include <span>

#include "platform/type_libraries.h"

namespace zelto {

namespace {

using ZeltoTypeLibrary::IRequestDictionary;
using ZeltoTypeLibrary::IStringList;

template <auto getter, class Interface>
consteval korlib::Member property(const wchar_t* name) {
  korlib::Member member;
  member.name = name;
  member.get = korlib::detail::operation<Interface, getter, true>();
  return member;
}

template <auto getter, class Interface>
consteval korlib::Member new_enum() {
  korlib::Member member = property<getter, Interface>(L"_NewEnum").numbered(DISPID_NEWENUM);
  member.method = member.get;
  return member;
}

constexpr korlib::Member kStringList[] = {
    property<&IStringList::get_Item, IStringList>(L"_Default").is_default().optional(0),
    property<&IStringList::get_Item, IStringList>(L"Item").optional(0).is_called(),
    property<&IStringList::get_Count, IStringList>(L"Count"),
    new_enum<&IStringList::get__NewEnum, IStringList>(),
};

constexpr korlib::Member kRequestDictionary[] = {
    property<&IRequestDictionary::get_Item, IRequestDictionary>(L"_Default").is_default().optional(0),
    property<&IRequestDictionary::get_Item, IRequestDictionary>(L"Item").optional(0).is_called(),
    property<&IRequestDictionary::get_Count, IRequestDictionary>(L"Count"),
    property<&IRequestDictionary::get_Key, IRequestDictionary>(L"Key"),
    new_enum<&IRequestDictionary::get__NewEnum, IRequestDictionary>(),
};

// Static: never freed, however often it is released.
class CollectionTypeInfo final : public korlib::PlainTypeInfo {
 public:
  explicit CollectionTypeInfo(std::span<const korlib::Member> members) : members_(members) {}

  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<ITypeInfo, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return 2; }
  ULONG Release() override { return 1; }
  HRESULT GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) override {
    return korlib::ids_of_names(members_, names, count, ids);
  }
  HRESULT Invoke(void* instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO* excepinfo,
                 UINT* argerr) override {
    return korlib::invoke_member(members_, instance, id, IID_NULL, LOCALE_SYSTEM_DEFAULT, flags, params, result,
                                 excepinfo, argerr);
  }

 private:
  std::span<const korlib::Member> members_;
};

}  // namespace

ITypeInfo* string_list_type_info() {
  static CollectionTypeInfo info(kStringList);
  return &info;
}

ITypeInfo* request_dictionary_type_info() {
  static CollectionTypeInfo info(kRequestDictionary);
  return &info;
}

}  // namespace zelto
