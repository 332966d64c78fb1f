// Late-bound calls of what a smart pointer holds.
#pragma once

#include "support/late_bound.h"

namespace test {

template <class Object, class... Arguments>
Answer call(const CComPtr<Object>& object, const wchar_t* name, const Arguments&... arguments) {
  return call(static_cast<IDispatch*>(object.get()), name, arguments...);
}
template <class Object, class... Arguments>
Answer get(const CComPtr<Object>& object, const wchar_t* name, const Arguments&... arguments) {
  return get(static_cast<IDispatch*>(object.get()), name, arguments...);
}
template <class Object, class... Arguments>
Answer put(const CComPtr<Object>& object, const wchar_t* name, const Arguments&... arguments) {
  return put(static_cast<IDispatch*>(object.get()), name, arguments...);
}

// The default member, without arguments.
template <class Object>
Answer default_of(const CComPtr<Object>& object) {
  return invoke(static_cast<IDispatch*>(object.get()), DISPID_VALUE, DISPATCH_PROPERTYGET, {});
}

}  // namespace test
