// DispatchObject: the base of every host object that scripts use.
//
// It brings an atomic reference count, QueryInterface, GetIDsOfNames and Invoke over the class's member
// table. A class lists its members in its source file; the typed operations are deduced from its member
// functions (thunks.h says from which parameter types):
//
//   class Counter final : public korlib::DispatchObject<Counter> {
//    public:
//     static constexpr const wchar_t* kClassName = L"Counter";  // as messages call it
//     static std::span<const korlib::Member> members();
//     HRESULT get_Count(LONG* count);
//     HRESULT put_Step(LONG step);
//     HRESULT Advance(LONG by, LONG* reached);
//   };
//
//   std::span<const korlib::Member> Counter::members() {
//     static constexpr korlib::Member table[] = {
//         property<&Counter::get_Count>(L"Count").is_default(),
//         property<nullptr, &Counter::put_Step>(L"Step"),
//         method<&Counter::Advance>(L"Advance").optional(1),
//     };
//     return table;
//   }
//
//   CComPtr<Counter> counter = korlib::make<Counter>();
//
// Identifiers follow the row numbers, counted from 1; is_default() and new_enum<…>() give the two that
// automation fixes. A member function HRESULT f(const korlib::Arguments&, VARIANT* result) takes any
// number of arguments of any type. Member functions may throw: Invoke turns exceptions into codes, but a
// typed interface's functions must not when C++ callers reach them.
#pragma once

#include <korlib/typeinfo.h>
#include <korlib_host/class_type_info.h>
#include <korlib_host/counted.h>
#include <korlib_host/errors.h>
#include <korlib_host/thunks.h>

namespace korlib {

// `Interface` is the typed interface, derived from IDispatch; `Extra` are further ones. QueryInterface answers these,
// IDispatch and IUnknown. Reference counts are safe on any thread; what else is, the class decides.
template <class Self, class Interface = IDispatch, class... Extra>
class DispatchObject : public Counted<Interface, Extra...> {
 public:
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return query_list<Interface, Extra..., IDispatch, IUnknown>(static_cast<Self*>(this), riid, ppv);
  }

  // One type information, over the same table: late binding for callers that go through ITypeInfo.
  HRESULT GetTypeInfoCount(UINT* count) override {
    if (!count) return E_POINTER;
    *count = 1;
    return S_OK;
  }
  HRESULT GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
    if (!info) return E_POINTER;
    *info = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    static ClassTypeInfo class_info(class_name(), Self::members());
    *info = &class_info;
    return S_OK;
  }
  // See ids_of_names() and invoke_member() for what these answer; `riid` must be IID_NULL.
  HRESULT GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
    if (riid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    return ids_of_names(Self::members(), names, count, ids);
  }
  HRESULT Invoke(DISPID id, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params, VARIANT* result,
                 EXCEPINFO* excepinfo, UINT* argerr) override {
    return invoke_member(Self::members(), static_cast<Self*>(this), id, riid, lcid, flags, params, result, excepinfo,
                         argerr);
  }

 protected:
  // Rows of the member table. A method: what a script calls.
  template <auto function>
  static consteval Member method(const wchar_t* name) {
    Member member;
    member.name = name;
    member.method = detail::operation<Self, function, true>();
    return member;
  }
  // A property: what a script reads and assigns. nullptr for what it cannot do; `reference_setter` takes the
  // assignment of an object (putref), which `setter` takes where it is missing.
  template <auto getter, auto setter = nullptr, auto reference_setter = nullptr>
  static consteval Member property(const wchar_t* name) {
    Member member;
    member.name = name;
    member.get = detail::operation<Self, getter, true>();
    member.put = detail::operation<Self, setter, false>();
    member.putref = detail::operation<Self, reference_setter, false>();
    return member;
  }
  // What enumerating scripts ask for (DISPID_NEWENUM). `getter` gives an IEnumVARIANT as IUnknown.
  template <auto getter>
  static consteval Member new_enum() {
    Member member = property<getter>(L"_NewEnum").numbered(DISPID_NEWENUM);
    member.method = member.get;  // enumerating callers set either bit
    return member;
  }

 private:
  static constexpr const wchar_t* class_name() {
    if constexpr (requires { Self::kClassName; }) {
      return Self::kClassName;
    } else {
      return L"";  // messages do without
    }
  }
};

}  // namespace korlib
