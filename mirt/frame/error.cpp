#include "frame/error.h"

#include <new>
#include <stdexcept>

#include <korlib/errorinfo.h>
#include <korlib/ptr.h>

int RaiseError(int hr, const wchar_t* source, const wchar_t* description) {
  CComPtr<ICreateErrorInfo> spCreate;
  if (FAILED(CreateErrorInfo(spCreate.put())) || !spCreate) return hr;
  // The setters copy; they take non-const text because their ancestors do.
  spCreate->SetSource(const_cast<LPOLESTR>(source));
  spCreate->SetDescription(const_cast<LPOLESTR>(description));
  CComPtr<IErrorInfo> spInfo;
  if (SUCCEEDED(spCreate.query(spInfo.put())) && spInfo) SetErrorInfo(0, spInfo.get());
  return hr;
}

namespace mirt {

void forget_error() noexcept { SetErrorInfo(0, nullptr); }

HRESULT hresult_from_exception() noexcept {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (const std::length_error&) {  // a container asked for more than it can ever hold
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_FAIL;
  }
}

}  // namespace mirt
