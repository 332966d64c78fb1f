// The members of the host's collection interfaces, and late binding for objects of a component that implement them.
#pragma once

#include <korlib/typeinfo.h>
#include <korlib_host/thunks.h>

namespace zelto {

template <class Object, auto getter>
consteval korlib::Member collection_property(const wchar_t* name) {
  korlib::Member member;
  member.name = name;
  member.get = korlib::detail::operation<Object, getter, true>();
  return member;
}

template <class Object>
consteval korlib::Member collection_enumerator() {
  korlib::Member member = collection_property<Object, &Object::get__NewEnum>(L"_NewEnum").numbered(DISPID_NEWENUM);
  member.method = member.get;  // enumerating callers set either bit
  return member;
}

// `Object` is the class, or the interface, whose instances the table's operations are given. The default member may
// be used without an index, for the whole text; Item needs one: a script reads `list.Item` before it calls it, and
// must not be given the text then.
template <class Object>
inline constexpr korlib::Member kStringListMembers[] = {
    collection_property<Object, &Object::get_Item>(L"_Default").is_default().optional(0),
    collection_property<Object, &Object::get_Item>(L"Item").optional(0).is_called(),
    collection_property<Object, &Object::get_Count>(L"Count"),
    collection_enumerator<Object>(),
};

template <class Object>
inline constexpr korlib::Member kRequestDictionaryMembers[] = {
    collection_property<Object, &Object::get_Item>(L"_Default").is_default().optional(0),
    collection_property<Object, &Object::get_Item>(L"Item").optional(0).is_called(),
    collection_property<Object, &Object::get_Count>(L"Count"),
    collection_property<Object, &Object::get_Key>(L"Key"),
    collection_enumerator<Object>(),
};

// The type information of IStringList and IRequestDictionary. It lives as long as the process, whatever its holders
// release.
ITypeInfo* string_list_type_info();
ITypeInfo* request_dictionary_type_info();

}  // namespace zelto
