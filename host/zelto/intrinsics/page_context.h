// The context of a request, through which components reach its intrinsic objects.
#pragma once

#include <korlib/ptr.h>
#include <korlib_host/dispatch_object.h>
#include <zelto/context.h>

#include <atomic>
#include <string>
#include <utility>
#include <vector>

namespace zelto {

class PageContext final : public IGetContextProperties {
 public:
  using Objects = std::vector<std::pair<std::wstring, CComPtr<IDispatch>>>;
  explicit PageContext(Objects objects) : objects_(std::move(objects)) {}
  PageContext(const PageContext&) = delete;
  PageContext& operator=(const PageContext&) = delete;

  HRESULT QueryInterface(REFIID riid, void** ppv) override;
  ULONG AddRef() override { return references_.fetch_add(1, std::memory_order_relaxed) + 1; }
  ULONG Release() override;

  HRESULT Count(LONG* count) override;
  HRESULT GetProperty(BSTR name, VARIANT* value) override;
  HRESULT EnumNames(IUnknown** names) override;

 private:
  ~PageContext() = default;

  Objects objects_;
  std::atomic<ULONG> references_{1};
};

}  // namespace zelto
