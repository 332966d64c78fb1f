#include <korlib_host/enumerator.h>

#include <algorithm>
#include <memory>

#include <korlib_host/counted.h>

namespace korlib {
namespace {

using Values = std::shared_ptr<const std::vector<CComVariant>>;

class ValueEnumerator final : public Counted<IEnumVARIANT> {
 public:
  ValueEnumerator(Values values, std::size_t at) : values_(std::move(values)), at_(at) {}

  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return query_list<IEnumVARIANT, IUnknown>(this, riid, ppv);
  }

  HRESULT Next(ULONG count, VARIANT* values, ULONG* fetched) override {
    if (fetched) *fetched = 0;
    if (!values && count > 0) return E_POINTER;
    for (ULONG i = 0; i < count; ++i) VariantInit(&values[i]);
    ULONG got = 0;
    while (got < count && at_ < values_->size()) {
      const HRESULT hr = VariantCopy(&values[got], &(*values_)[at_]);
      if (FAILED(hr)) {
        for (ULONG i = 0; i < got; ++i) VariantClear(&values[i]);
        at_ -= got;
        return hr;
      }
      ++at_;
      ++got;
    }
    if (fetched) *fetched = got;
    return got == count ? S_OK : S_FALSE;
  }
  HRESULT Skip(ULONG count) override {
    const std::size_t step = std::min<std::size_t>(count, values_->size() - at_);
    at_ += step;
    return step == count ? S_OK : S_FALSE;
  }
  HRESULT Reset() override {
    at_ = 0;
    return S_OK;
  }
  HRESULT Clone(IEnumVARIANT** copy) override {
    if (!copy) return E_POINTER;
    *copy = new (std::nothrow) ValueEnumerator(values_, at_);
    return *copy ? S_OK : E_OUTOFMEMORY;
  }

 private:
  const Values values_;
  std::size_t at_;
};

}  // namespace

HRESULT make_enumerator(std::vector<CComVariant> values, IUnknown** enumerator) {
  if (!enumerator) return E_POINTER;
  *enumerator = nullptr;
  *enumerator = new ValueEnumerator(std::make_shared<const std::vector<CComVariant>>(std::move(values)), 0);
  return S_OK;
}

}  // namespace korlib
