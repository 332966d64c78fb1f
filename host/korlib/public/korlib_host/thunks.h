// Typed operations made from member functions: arguments converted on the way in, the result on the way
// out. See dispatch_object.h.
//
// A late-bound call brings VARIANTs; a class has functions with types. Between them stands one Operation a function,
// which the compiler makes here from the function's signature:
//
//   HRESULT Advance(LONG by, LONG* reached);
//
//   Operation{.run = &run<Counter, &Counter::Advance, true>, .exists = true, .required = 1, .accepted = 1}
//
//   script: counter.Advance("3")  ->  Slot<LONG> reads 3 from the text  ->  Advance(3, &out.value)
//                                 ->  Out<LONG> makes a VT_I4 of what was reached
//
// Parameters of a member function, and what an argument becomes:
//
//   LONG, LONGLONG, VARIANT_BOOL, double   converted by VariantChangeType
//   BSTR                                   the caller's own when it is one, else converted; lives as long as the call
//   VARIANT                                borrowed from the caller, never VT_BYREF
//   VARIANT*                               anywhere but last: the caller's variable, in and out
//   Interface*                             asked of the object, counted for the call; null for null and for nothing
//   (const Arguments&, VARIANT* result)    all arguments as they came, any number of them
//
// What a function is given it may use while the call lasts. What it keeps it copies, or counts. A parameter of another
// type, `const wchar_t*` or a plain `bool` say, does not compile.
//
// An argument that is left out but required is VT_EMPTY for a VARIANT and DISP_E_PARAMNOTFOUND for any other type. One
// that Member::optional() lets be left out is the default given there for a number or a boolean, null for text and
// objects, and omitted() for a VARIANT.
//
// The last parameter may be a result: a pointer to any of these, or SAFEARRAY**. It is empty when the function is
// called. What the function puts there becomes the call's result where the caller wants one, and is released otherwise
// or when the function fails:
//
//   LONG, LONGLONG, VARIANT_BOOL, double   VT_I4, VT_I8, VT_BOOL, VT_R8
//   BSTR                                   VT_BSTR, null included
//   VARIANT                                itself
//   SAFEARRAY*                             VT_ARRAY and the type of its elements; null is VT_EMPTY
//   Interface*                             VT_DISPATCH where the interface derives from IDispatch, else VT_UNKNOWN;
//                                          null included
//
// An assignment (put, putref) has no result: a pointer that stands last is an argument there.
//
// Arguments are converted in their order, before the function is called. The first that cannot be ends the call with
// its code, and the caller learns which it was (argerr). Exceptions, the function's own and std::bad_alloc from here,
// go on to invoke_member().
//
// All of this is deduced when the program is compiled; the tables hold pointers to the functions made here. Classes use
// it through dispatch_object.h. A table for objects that are not derived from DispatchObject, such as those of a
// component, is written with operation(), for a ClassTypeInfo over it:
//
//   template <auto getter>
//   consteval korlib::Member read_only(const wchar_t* name) {
//     korlib::Member member;
//     member.name = name;
//     member.get = korlib::detail::operation<IClock, getter, true>();
//     return member;
//   }
#pragma once

#include <tuple>

#include <korlib/ptr.h>
#include <korlib_host/members.h>

namespace korlib::detail {

// The type of a VARIANT that holds such a number, and where it does.
template <class Number>
struct NumberForm {
  VARTYPE type;
  Number VARIANT::*field;
};
template <class Number>
inline constexpr auto number_form = nullptr;  // no other number is a parameter
template <>
inline constexpr NumberForm<LONG> number_form<LONG>{VT_I4, &VARIANT::lVal};
template <>
inline constexpr NumberForm<LONGLONG> number_form<LONGLONG>{VT_I8, &VARIANT::llVal};
template <>
inline constexpr NumberForm<VARIANT_BOOL> number_form<VARIANT_BOOL>{VT_BOOL, &VARIANT::boolVal};
template <>
inline constexpr NumberForm<double> number_form<double>{VT_R8, &VARIANT::dblVal};

// An argument as one of the types. `keep` holds what had to be made for it and must live as long as `value` is used,
// which borrows from it or from the argument. DISP_E_PARAMNOTFOUND for an omitted one; otherwise what VariantChangeType
// answers: DISP_E_TYPEMISMATCH, DISP_E_OVERFLOW, E_OUTOFMEMORY. After a failure `value` is as it was.
//
// A VARIANT is not converted: a reference is followed to a copy, anything else borrowed bit by bit.
KORLIB_API HRESULT read_variant(const VARIANT& argument, CComVariant& keep, VARIANT& value);
// The caller's own string when the argument is one, which costs nothing.
KORLIB_API HRESULT read_text(const VARIANT& argument, CComVariant& keep, BSTR& value);
// Numbers and booleans, those that number_form names. The value itself is taken where it has the type already.
template <class Number>
KORLIB_API HRESULT read_number(const VARIANT& argument, Number& value);
// A counted reference in *object, for the caller to release; null for VT_EMPTY, VT_NULL and a null object, and after a
// failure. DISP_E_TYPEMISMATCH for what is not an object, or is one without that interface.
KORLIB_API HRESULT read_object(const VARIANT& argument, REFIID riid, void** object);

// One parameter while a call runs. load() reads its argument, load_default() takes the default of one left out;
// `value` is then passed to the member function. Holds what the value lives in, so it outlives the call. A parameter
// without a specialization below is one that no argument can become.
template <class Parameter>
struct Slot;

// Copied out of the argument: nothing is kept.
template <class Number>
requires std::is_arithmetic_v<Number>
struct Slot<Number> {
  Number value{};
  HRESULT load(const Arguments& arguments, UINT index) { return read_number(arguments[index], value); }
  void load_default(LONG number) { value = static_cast<Number>(number); }
};

// Null where an optional one is left out, and where the caller's own string is null: both read as empty text.
template <>
struct Slot<BSTR> {
  CComVariant keep;
  BSTR value = nullptr;
  HRESULT load(const Arguments& arguments, UINT index) { return read_text(arguments[index], keep, value); }
  void load_default(LONG) {}
};

// Passed by value, which means its bits: the function neither clears it nor keeps it.
template <>
struct Slot<VARIANT> {
  CComVariant keep;
  VARIANT value = omitted();
  HRESULT load(const Arguments& arguments, UINT index) {
    if (!is_omitted(arguments[index])) return read_variant(arguments[index], keep, value);
    value = VARIANT{};  // a value that is required and left out is the empty one
    return S_OK;
  }
  void load_default(LONG) { value = omitted(); }
};

// The caller's variable, for a function that writes its argument back: it clears what is there and leaves a value that
// the caller owns. Where the argument is left out, a VARIANT that holds omitted(); what is written there is forgotten
// without being cleared, so it may be a number and no text or object.
template <>
struct Slot<VARIANT*> {
  VARIANT left_out = omitted();
  VARIANT* value = &left_out;
  HRESULT load(const Arguments& arguments, UINT index) {
    value = arguments.slot(index);
    return S_OK;
  }
  void load_default(LONG) {}
};

// Counted for the call, whatever becomes of the argument meanwhile. A function that keeps it counts it again.
template <class Interface>
struct Slot<Interface*> {
  CComPtr<Interface> keep;
  Interface* value = nullptr;
  HRESULT load(const Arguments& arguments, UINT index) {
    const HRESULT hr = read_object(arguments[index], iid_of<Interface>, keep.put_void());
    value = keep.get();
    return hr;
  }
  void load_default(LONG) {}
};

// Where a result is received, and how it becomes a VARIANT: the member function writes `value`; move_to() hands it to
// *result, which is VT_EMPTY before, and is called once, after success. The destructor releases what was not handed
// over: a function that fails may leave something there.
template <class Value>
struct Out;

template <class Number>
requires std::is_arithmetic_v<Number>
struct Out<Number> {
  Number value{};
  void move_to(VARIANT* result) {
    result->vt = number_form<Number>.type;
    result->*number_form<Number>.field = value;
  }
};

// Any value, of whatever type the function chose; VT_EMPTY when it wrote none.
template <>
struct Out<VARIANT> {
  CComVariant value;
  void move_to(VARIANT* result) { value.detach_to(result); }
};

// One that points to something owned, which `release` frees unless it was handed over.
template <class Pointer, auto release>
struct PointerOut {
  Pointer value = nullptr;
  PointerOut() = default;
  ~PointerOut() {
    if (value) release(value);
  }
  PointerOut(const PointerOut&) = delete;
  PointerOut& operator=(const PointerOut&) = delete;
};

// A null string stays null: a script reads it as empty text.
template <>
struct Out<BSTR> : PointerOut<BSTR, SysFreeString> {
  void move_to(VARIANT* result) {
    result->vt = VT_BSTR;
    result->bstrVal = std::exchange(value, nullptr);
  }
};

// The array says itself what its elements are.
template <>
struct Out<SAFEARRAY*> : PointerOut<SAFEARRAY*, SafeArrayDestroy> {
  void move_to(VARIANT* result) {
    if (!value) return;
    result->vt = static_cast<VARTYPE>(VT_ARRAY | value->vtElement);
    result->parray = std::exchange(value, nullptr);
  }
};

inline void release_object(IUnknown* object) { object->Release(); }

// An object whose interface derives from IDispatch can be called by who receives it; another is passed on only.
template <class Interface>
struct Out<Interface*> : PointerOut<Interface*, release_object> {
  void move_to(VARIANT* result) {
    if constexpr (std::is_base_of_v<IDispatch, Interface>) {
      result->vt = VT_DISPATCH;
      result->pdispVal = std::exchange(this->value, nullptr);
    } else {
      result->vt = VT_UNKNOWN;
      result->punkVal = std::exchange(this->value, nullptr);
    }
  }
};

// Whether a parameter, standing last, is a result: a pointer to what Out knows. An interface pointer is an argument, a
// pointer to one is a result; a VARIANT* that is to be an argument has another parameter after it.
template <class Parameter>
inline constexpr bool is_result = false;
template <class Value>
inline constexpr bool is_result<Value*> =
    std::is_arithmetic_v<Value> || std::is_pointer_v<Value> || std::is_same_v<Value, VARIANT>;
template <>
inline constexpr bool is_result<BSTR> = false;  // wchar_t*: text going in

// The parameters of a member function, as a tuple. It returns an HRESULT and is not const; whether it is noexcept makes
// no difference.
template <class Function>
struct Signature;
template <class Class, class... Parameter>
struct Signature<HRESULT (Class::*)(Parameter...)> {
  using Parameters = std::tuple<Parameter...>;
};
template <class Class, class... Parameter>
struct Signature<HRESULT (Class::*)(Parameter...) noexcept> : Signature<HRESULT (Class::*)(Parameter...)> {};

template <class Function>
using ParametersOf = typename Signature<Function>::Parameters;

// Whether the last of the parameters is a result. A function without parameters has none.
template <class Parameters>
constexpr bool ends_in_result() {
  constexpr std::size_t count = std::tuple_size_v<Parameters>;
  if constexpr (count == 0)
    return false;
  else
    return is_result<std::tuple_element_t<count - 1, Parameters>>;
}

// Whether the function takes its arguments as they came, and with them the care for their number and types.
template <class Parameters>
inline constexpr bool takes_raw = false;
template <>
inline constexpr bool takes_raw<std::tuple<const Arguments&, VARIANT*>> = true;

// Fills one slot: from its argument, or from the member's default where an optional one was left out, at the end of the
// call or by an omitted argument in its place. Notes which argument could not be read.
template <std::size_t index, class SlotType>
HRESULT load_slot(SlotType& slot, const Operation& operation, const Arguments& arguments) {
  constexpr UINT at = static_cast<UINT>(index);
  if (at >= operation.required && is_omitted(arguments[at])) {
    const UINT which = at - operation.required;
    slot.load_default(which < kMaxOptional ? operation.defaults[which] : 0);
    return S_OK;
  }
  const HRESULT hr = slot.load(arguments, at);
  return FAILED(hr) ? arguments.reject(at, hr) : S_OK;
}

// Reads all arguments, in their order and up to the first that cannot be, then calls the function. `with_result` says
// that the parameter after those of `index` is a result; *result may be null for a caller that wants none.
template <class Self, auto function, bool with_result, std::size_t... index>
HRESULT run_typed(Self& self, const Operation& operation, const Arguments& arguments, VARIANT* result,
                  std::index_sequence<index...>) {
  using Parameters = ParametersOf<decltype(function)>;
  [[maybe_unused]] std::tuple<Slot<std::tuple_element_t<index, Parameters>>...> slots;
  HRESULT hr = S_OK;
  (void)((SUCCEEDED(hr = load_slot<index>(std::get<index>(slots), operation, arguments))) && ...);
  RETURN_IF_FAILED(hr);
  if constexpr (with_result) {
    using Last = std::tuple_element_t<sizeof...(index), Parameters>;
    Out<std::remove_pointer_t<Last>> out;
    hr = (self.*function)(std::get<index>(slots).value..., &out.value);
    if (SUCCEEDED(hr) && result) out.move_to(result);
  } else {
    hr = (self.*function)(std::get<index>(slots).value...);
  }
  return hr;
}

// What a table's Operation::run points to. `self` is an object of class Self, as its own address and not that of one of
// its bases; invoke_member() has counted the arguments already.
template <class Self, auto function, bool may_have_result>
HRESULT run(void* self, const Operation& operation, const Arguments& arguments, VARIANT* result) {
  using Parameters = ParametersOf<decltype(function)>;
  Self& object = *static_cast<Self*>(self);
  if constexpr (takes_raw<Parameters>) {
    CComVariant ignored;
    return (object.*function)(arguments, result ? result : &ignored);
  } else {
    constexpr bool with_result = may_have_result && ends_in_result<Parameters>();
    constexpr std::size_t count = std::tuple_size_v<Parameters> - (with_result ? 1 : 0);
    return run_typed<Self, function, with_result>(object, operation, arguments, result,
                                                  std::make_index_sequence<count>{});
  }
}

// The row's entry for a member function, or an empty one for nullptr. An assignment has no result (`may_have_result` is
// false): there a pointer that stands last is an argument. All arguments are required; Member::optional() lowers that.
template <class Self, auto function, bool may_have_result>
consteval Operation operation() {
  Operation made;
  if constexpr (!std::is_same_v<decltype(function), std::nullptr_t>) {
    using Parameters = ParametersOf<decltype(function)>;
    made.run = &run<Self, function, may_have_result>;
    made.exists = true;
    if constexpr (takes_raw<Parameters>) {
      made.accepted = 255;
    } else {
      constexpr bool with_result = may_have_result && ends_in_result<Parameters>();
      made.accepted = static_cast<BYTE>(std::tuple_size_v<Parameters> - (with_result ? 1 : 0));
      made.required = made.accepted;
    }
  }
  return made;
}

}  // namespace korlib::detail
