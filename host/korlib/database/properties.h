// What the members of these classes have in common: handing out the values of properties.
#pragma once

#include <string>
#include <string_view>
#include <type_traits>

#include <korlib_host/dispatch_object.h>
#include <korlib_host/errors.h>
#include <korlib_host/results.h>

#include "classes/script_errors.h"
#include "database/constants.h"

namespace korlib {

// How these classes recognise each other's objects among all that a script may pass.
template <class Object>
struct IObjectAccess : IUnknown {
  virtual Object* object() = 0;

 protected:
  ~IObjectAccess() = default;
};

// Beside what results.h gives: an enumerator's number, and an object, which is counted.
template <class Enum>
requires std::is_enum_v<Enum> HRESULT give(Enum value, LONG* out) { return give(static_cast<LONG>(value), out); }
inline HRESULT give(IDispatch* object, IDispatch** out) { return CComPtr<IDispatch>(object).copy_to(out); }

// The new value of a property that is one of the numbers or enumerators from `first` to `last`. Another number is
// refused as kInvalidArgument, with `text`.
template <class Value>
HRESULT choose(LONG number, Value first, Value last, std::wstring_view source, std::wstring_view text, Value& chosen) {
  const bool is_known = number >= static_cast<LONG>(first) && number <= static_cast<LONG>(last);
  if (!is_known) return raise(kInvalidArgument, source, text);
  chosen = static_cast<Value>(number);
  return S_OK;
}

// The new text of a property.
inline HRESULT keep(BSTR text, std::wstring& kept) {
  kept = view_of(text);
  return S_OK;
}

}  // namespace korlib
