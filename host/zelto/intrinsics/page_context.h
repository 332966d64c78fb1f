// The context of a request, through which components reach its intrinsic objects.
#pragma once

#include <korlib_host/counted.h>
#include <zelto/context.h>

#include <string_view>
#include <utility>
#include <vector>

namespace zelto {

class PageContext final : public korlib::Counted<IGetContextProperties> {
 public:
  // Their names outlive it.
  using Objects = std::vector<std::pair<std::wstring_view, CComPtr<IDispatch>>>;
  explicit PageContext(Objects objects) : objects_(std::move(objects)) {}

  HRESULT QueryInterface(REFIID riid, void** ppv) override;

  HRESULT Count(LONG* count) override;
  HRESULT GetProperty(BSTR name, VARIANT* value) override;
  HRESULT EnumNames(IUnknown** names) override;

 private:
  Objects objects_;
};

}  // namespace zelto
