// Making an object of a class for the class table.
#pragma once

#include <new>

#include <korlib_host/class_table.h>
#include <korlib_host/dispatch_object.h>

namespace korlib {

template <class Object>
HRESULT create_object(REFIID riid, void** ppv) {
  if (!ppv) return E_POINTER;
  *ppv = nullptr;
  try {
    return make<Object>()->QueryInterface(riid, ppv);
  } catch (...) {
    return hresult_from_exception(L"");
  }
}

}  // namespace korlib
