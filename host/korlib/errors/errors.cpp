#include <korlib_host/errors.h>

#include <exception>
#include <new>
#include <stdexcept>
#include <string>

#include <korlib/ptr.h>

namespace korlib {

HRESULT raise(HRESULT hr, std::wstring_view source, std::wstring_view text) {
  CComPtr<ICreateErrorInfo> filling;
  if (FAILED(CreateErrorInfo(filling.put()))) return hr;
  std::wstring source_text(source);
  std::wstring description(text);
  filling->SetSource(source_text.data());
  filling->SetDescription(description.data());
  CComPtr<IErrorInfo> info;
  if (SUCCEEDED(filling.query(info.put()))) SetErrorInfo(0, info.get());
  return hr;
}

HRESULT hresult_from_exception(std::wstring_view source) {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (const std::length_error&) {
    return E_OUTOFMEMORY;
  } catch (const std::exception& problem) {
    const std::string_view what = problem.what();
    return raise(E_FAIL, source, std::wstring(what.begin(), what.end()));
  } catch (...) {
    return E_UNEXPECTED;
  }
}

}  // namespace korlib
