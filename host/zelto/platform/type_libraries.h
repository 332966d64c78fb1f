// The type libraries that components find under this host.
//
// The library of a module's path describes what the module itself exports: an identifier IID_x and, in
// g_pTI_x, the type information of that interface. The library of that path followed by "\2" is the
// host's own: IStringList and IRequestDictionary, usable late-bound. Type information that is handed out
// lives as long as its module, whatever its holders release.
#pragma once

#include <korlib/typeinfo.h>
#include <korlib_host/thunks.h>

namespace zelto {

// Makes LoadTypeLib answer these.
void install_type_libraries();

// The type information of IStringList and IRequestDictionary. It lives as long as the process, whatever its holders
// release.
ITypeInfo* string_list_type_info();
ITypeInfo* request_dictionary_type_info();

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

}  // namespace zelto
