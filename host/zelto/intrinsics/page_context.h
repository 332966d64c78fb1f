// The context of a request, through which components reach its intrinsic objects.
#pragma once

#include <korlib_host/counted.h>
#include <zelto/context.h>

#include <string>
#include <utility>
#include <vector>

namespace zelto {

class PageContext final : public korlib::Counted<IGetContextProperties> {
 public:
  using Objects = std::vector<std::pair<std::wstring, CComPtr<IDispatch>>>;
  explicit PageContext(Objects objects) : objects_(std::move(objects)) {}

  HRESULT QueryInterface(REFIID riid, void** ppv) override;

  HRESULT Count(LONG* count) override;
  HRESULT GetProperty(BSTR name, VARIANT* value) override;
  HRESULT EnumNames(IUnknown** names) override;

 private:
  Objects objects_;
};

}  // namespace zelto
