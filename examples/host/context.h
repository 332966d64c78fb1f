// How the component finds the objects of the request that it is made in.
#pragma once

#include <korlib/comvariant.h>
#include <korlib_host/counted.h>
#include <zelto/context.h>

#include <iterator>
#include <string_view>

#include "empty_objects.h"

namespace example {

// There is no "Session": a page without one has no state.
class Context final : public korlib::Counted<IGetContextProperties> {
 public:
  explicit Context(IDispatch* response)
      : objects_{{L"Request", CComVariant(korlib::make<Request>().get())},
                 {L"Response", CComVariant(response)},
                 {L"Server", CComVariant(korlib::make<Server>().get())},
                 {L"Application", CComVariant(korlib::make<Application>().get())}} {}

  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<IGetContextProperties, IUnknown>(this, riid, ppv);
  }
  HRESULT Count(LONG* count) override {
    *count = static_cast<LONG>(std::size(objects_));
    return S_OK;
  }
  HRESULT GetProperty(BSTR name, VARIANT* value) override {
    VariantInit(value);
    for (const Named& one : objects_) {
      if (korlib::view_of(name) == one.name) return VariantCopy(value, &one.object);
    }
    return E_INVALIDARG;
  }
  HRESULT EnumNames(IUnknown**) override { return E_NOTIMPL; }

 private:
  struct Named {
    std::wstring_view name;
    CComVariant object;
  };
  const Named objects_[4];
};

}  // namespace example
