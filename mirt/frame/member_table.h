// A member table: one row per dispatch identifier, in the order of the identifiers, with what serves each
// kind of call. A kind that a row leaves empty is not served.
#pragma once

#include "frame/member_call.h"

namespace mirt::dispatch {

template <class Interface>
using Server = HRESULT (*)(Interface* instance, DISPPARAMS* params, VARIANT* result, UINT* argerr);

template <class Interface>
struct Member {
  const wchar_t* name;
  Server<Interface> method = nullptr;
  Server<Interface> get = nullptr;
  Server<Interface> put = nullptr;
  Server<Interface> putref = nullptr;
};

template <class Interface, auto M>
constexpr Member<Interface> method(const wchar_t* name) {
  return {.name = name, .method = &call<Interface, M>};
}
template <class Interface, auto Get>
constexpr Member<Interface> property(const wchar_t* name) {
  return {.name = name, .get = &call<Interface, Get>};
}
template <class Interface, auto Get, auto Put>
constexpr Member<Interface> property(const wchar_t* name) {
  return {.name = name, .get = &call<Interface, Get>, .put = &call<Interface, Put>};
}
template <class Interface, auto Get, auto PutRef>
constexpr Member<Interface> object_property(const wchar_t* name) {
  return {.name = name, .get = &call<Interface, Get>, .putref = &call<Interface, PutRef>};
}

// Flags are looked at bit by bit, writes before reads: a caller that cannot tell a method from a
// property read sets both bits and is served either way.
template <class Interface>
HRESULT invoke(const Member<Interface>& member, Interface* instance, WORD flags, DISPPARAMS* params, VARIANT* result,
               UINT* argerr) {
  if ((flags & DISPATCH_PROPERTYPUTREF) && member.putref) return member.putref(instance, params, result, argerr);
  if ((flags & DISPATCH_PROPERTYPUT) && member.put) return member.put(instance, params, result, argerr);
  if ((flags & DISPATCH_METHOD) && member.method) return member.method(instance, params, result, argerr);
  if ((flags & DISPATCH_PROPERTYGET) && member.get) return member.get(instance, params, result, argerr);
  return DISP_E_MEMBERNOTFOUND;
}

// A call of the member of that identifier, in a table whose first row has identifier `first`.
template <class Interface, std::size_t Size>
HRESULT invoke_in(const Member<Interface> (&table)[Size], DISPID first, Interface* instance, DISPID id, WORD flags,
                  DISPPARAMS* params, VARIANT* result, UINT* argerr) {
  if (result) VariantInit(result);
  if (id < first || id - first >= static_cast<DISPID>(Size)) return DISP_E_MEMBERNOTFOUND;
  return invoke(table[id - first], instance, flags, params, result, argerr);
}

bool name_eq(const wchar_t* a, const wchar_t* b);  // letter case does not count

template <class Interface, std::size_t Size>
DISPID find_name(const Member<Interface> (&table)[Size], DISPID first, const wchar_t* name) {
  for (std::size_t i = 0; i < Size; ++i) {
    if (name_eq(table[i].name, name)) return first + static_cast<DISPID>(i);
  }
  return DISPID_UNKNOWN;
}

}  // namespace mirt::dispatch
