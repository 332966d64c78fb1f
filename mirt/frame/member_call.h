// From a late-bound call to a typed member: the member's C++ signature says how its arguments are
// converted and how its result is stored.
//
//   BSTR, LONG, VARIANT_BOOL      converted to that type
//   VARIANT*                      the argument as it stands
//   IDispatch*, IUnknown*         the object in it
//
// A last parameter that is a pointer to one of BSTR, VARIANT_BOOL, VARIANT, SAFEARRAY* or an interface
// pointer is the member's result. Every other parameter is required.
//
// An argument that does not convert is DISP_E_TYPEMISMATCH, and its place in rgvarg goes into *argerr.
// Any other failure, the member's own DISP_E_TYPEMISMATCH included, leaves *argerr as it was.
#pragma once

#include <tuple>
#include <type_traits>
#include <utility>

#include "frame/arguments.h"

namespace mirt::dispatch {

template <class Parameter>
struct Argument;

template <>
struct Argument<BSTR> {
  CComVariant converted;
  BSTR value = nullptr;
  HRESULT take(const DISPPARAMS* params, UINT i) {
    // A string by value is the caller's for the time of the call, so it needs no copy. One behind a
    // reference may be replaced by a script that the member runs.
    if (params && i < params->cArgs && params->rgvarg[params->cArgs - i - 1].vt == VT_BSTR) {
      value = params->rgvarg[params->cArgs - i - 1].bstrVal;
      return S_OK;
    }
    RETURN_IF_FAILED(coerce_arg(params, i, VT_BSTR, &converted));
    value = converted.bstrVal;
    return S_OK;
  }
};

// Converted to `Type`, whose value lies in that field of a VARIANT.
template <VARTYPE Type, auto Field>
struct ConvertedArgument {
  std::remove_reference_t<decltype(std::declval<VARIANT&>().*Field)> value{};
  HRESULT take(const DISPPARAMS* params, UINT i) {
    CComVariant converted;
    RETURN_IF_FAILED(coerce_arg(params, i, Type, &converted));
    value = converted.*Field;
    return S_OK;
  }
};

template <>
struct Argument<LONG> : ConvertedArgument<VT_I4, &VARIANT::lVal> {};

template <>
struct Argument<VARIANT_BOOL> : ConvertedArgument<VT_BOOL, &VARIANT::boolVal> {};

template <>
struct Argument<VARIANT*> {
  VARIANT* value = nullptr;
  HRESULT take(const DISPPARAMS* params, UINT i) {
    value = disp_arg(params, i);
    return value ? S_OK : DISP_E_BADPARAMCOUNT;
  }
};

// `Take` fetches the object, which is held for the time of the call.
template <class Interface, HRESULT (*Take)(const DISPPARAMS*, UINT, CComPtr<Interface>*)>
struct ObjectArgument {
  CComPtr<Interface> object;
  Interface* value = nullptr;
  HRESULT take(const DISPPARAMS* params, UINT i) {
    RETURN_IF_FAILED(Take(params, i, &object));
    value = object.get();
    return S_OK;
  }
};

template <>
struct Argument<IDispatch*> : ObjectArgument<IDispatch, get_dispatch_arg> {};

template <>
struct Argument<IUnknown*> : ObjectArgument<IUnknown, get_unknown_arg> {};

// The result of a member, defined by `Pointee`, the type that its last parameter points to. What a
// failing member left behind is freed here.
template <class Pointee>
struct Result : std::false_type {};

// `Slot` owns what the member gave until `Set` hands it to the caller's result.
template <class Slot, auto Set>
struct OwnedResult : std::true_type {
  Slot slot;
  auto out() { return slot.put(); }
  HRESULT store(VARIANT* result) {
    Set(result, slot.detach());
    return S_OK;
  }
};

template <>
struct Result<BSTR> : OwnedResult<CComBSTR, set_bstr_result> {};

template <>
struct Result<SAFEARRAY*> : OwnedResult<CComSafeArray, set_array_result> {};

template <>
struct Result<IUnknown*> : OwnedResult<CComPtr<IUnknown>, set_unknown_result> {};

template <class Interface>
requires std::is_base_of_v<IDispatch, Interface>
struct Result<Interface*> : OwnedResult<CComPtr<Interface>, set_dispatch_result> {
};

template <>
struct Result<VARIANT_BOOL> : std::true_type {
  VARIANT_BOOL slot = VARIANT_FALSE;
  VARIANT_BOOL* out() { return &slot; }
  HRESULT store(VARIANT* result) {
    set_bool_result(result, slot);
    return S_OK;
  }
};

template <>
struct Result<VARIANT> : std::true_type {
  CComVariant slot;
  VARIANT* out() { return &slot; }
  HRESULT store(VARIANT* result) { return set_variant_result(result, slot); }
};

// Takes the i-th argument. A caller that gave no *argerr is not told which one did not convert.
template <class Parameter>
HRESULT take_one(Argument<Parameter>& argument, const DISPPARAMS* params, UINT i, UINT* argerr) {
  const HRESULT hr = argument.take(params, i);
  if (hr == DISP_E_TYPEMISMATCH && argerr) *argerr = params->cArgs - i - 1;
  return hr;
}

template <class... Arguments>
HRESULT take_all(const DISPPARAMS* params, std::tuple<Arguments...>& arguments, UINT* argerr) {
  HRESULT hr = S_OK;
  UINT i = 0;
  std::apply([&](auto&... argument) { ((SUCCEEDED(hr) ? hr = take_one(argument, params, i++, argerr) : hr), ...); },
             arguments);
  return hr;
}

// Calls with the inputs Is of Parameters, and a result after them when there is one parameter more.
template <class Object, class Member, class Parameters, std::size_t... Is>
HRESULT call_with(Object* object, Member member, const DISPPARAMS* params, VARIANT* result, UINT* argerr,
                  std::index_sequence<Is...>) {
  std::tuple<Argument<std::tuple_element_t<Is, Parameters>>...> arguments;
  RETURN_IF_FAILED(take_all(params, arguments, argerr));
  if constexpr (sizeof...(Is) == std::tuple_size_v<Parameters>) {
    return (object->*member)(std::get<Is>(arguments).value...);
  } else {
    Result<std::remove_pointer_t<std::tuple_element_t<sizeof...(Is), Parameters>>> answer;
    const HRESULT hr = (object->*member)(std::get<Is>(arguments).value..., answer.out());
    RETURN_IF_FAILED(hr);
    RETURN_IF_FAILED(answer.store(result));
    return hr;
  }
}

// How many of a member's parameters are arguments of a call.
template <class... Parameters>
constexpr std::size_t count_inputs() {
  constexpr std::size_t count = sizeof...(Parameters);
  if constexpr (count == 0) {
    return 0;
  } else {
    using Last = std::tuple_element_t<count - 1, std::tuple<Parameters...>>;
    return count - (std::is_pointer_v<Last> && Result<std::remove_pointer_t<Last>>::value ? 1 : 0);
  }
}

template <class Owner, class... Parameters>
constexpr UINT inputs_of(HRESULT (Owner::*)(Parameters...)) {
  return count_inputs<Parameters...>();
}

template <class Object, class Owner, class... Parameters>
HRESULT call_typed(Object* object, HRESULT (Owner::*member)(Parameters...), const DISPPARAMS* params, VARIANT* result,
                   UINT* argerr) {
  return call_with<Object, decltype(member), std::tuple<Parameters...>>(
      object, member, params, result, argerr, std::make_index_sequence<count_inputs<Parameters...>()>());
}

// One late-bound call of the typed member on `instance`, which points at the interface.
template <class Interface, auto TypedMember>
HRESULT call(void* instance, DISPPARAMS* params, VARIANT* result, UINT* argerr) {
  return call_typed(static_cast<Interface*>(instance), TypedMember, params, result, argerr);
}

}  // namespace mirt::dispatch
