// Making an object of a class for the class table.
#pragma once

#include <new>

#include <korlib_host/class_table.h>
#include <korlib_host/dispatch_object.h>

namespace korlib {

template <class Object>
HRESULT create_object(REFIID riid, void** ppv) {
  return guarded(L"", ppv, [&] { return make<Object>()->QueryInterface(riid, ppv); });
}

}  // namespace korlib
