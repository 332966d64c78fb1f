// Late binding for objects of the host's collection interfaces that a component implements. The members are
// those of the host's own collections (intrinsics/collections.h).
#include <korlib_host/class_type_info.h>
#include <korlib_host/thunks.h>
#include <zelto/asp.h>

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

}  // namespace

ITypeInfo* string_list_type_info() {
  static korlib::ClassTypeInfo info(L"StringList", kStringList);
  return &info;
}

ITypeInfo* request_dictionary_type_info() {
  static korlib::ClassTypeInfo info(L"RequestDictionary", kRequestDictionary);
  return &info;
}

}  // namespace zelto
