// The error object, the slot that each thread has for one, and what fills it.
#include <korlib_host/errors.h>

#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include <korlib/combstr.h>
#include <korlib_host/counted.h>
#include <korlib_host/kept_values.h>

namespace {

class ErrorInfo final : public korlib::Counted<IErrorInfo, ICreateErrorInfo> {
 public:
  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<IErrorInfo, ICreateErrorInfo, IUnknown>(this, riid, ppv);
  }

  HRESULT GetGUID(GUID* guid) override {
    if (!guid) return E_POINTER;
    *guid = guid_;
    return S_OK;
  }
  HRESULT GetSource(BSTR* source) override { return give(source_, source); }
  HRESULT GetDescription(BSTR* description) override { return give(description_, description); }
  HRESULT GetHelpFile(BSTR* file) override { return give(help_file_, file); }
  HRESULT GetHelpContext(DWORD* context) override {
    if (!context) return E_POINTER;
    *context = help_context_;
    return S_OK;
  }

  HRESULT SetGUID(REFGUID guid) override {
    guid_ = guid;
    return S_OK;
  }
  HRESULT SetSource(LPOLESTR source) override { return keep(source, source_); }
  HRESULT SetDescription(LPOLESTR description) override { return keep(description, description_); }
  HRESULT SetHelpFile(LPOLESTR file) override { return keep(file, help_file_); }
  HRESULT SetHelpContext(DWORD context) override {
    help_context_ = context;
    return S_OK;
  }

  // False when there is no memory for them.
  bool set_words(std::wstring_view source, std::wstring_view description) noexcept {
    source_.attach(korlib::new_bstr(source.substr(0, source.find(L'\0'))));
    description_.attach(korlib::new_bstr(description.substr(0, description.find(L'\0'))));
    return source_.get() && description_.get();
  }

 private:
  static HRESULT give(const CComBSTR& text, BSTR* out) {
    if (!out) return E_POINTER;
    *out = text.copy();
    return *out || !text.get() ? S_OK : E_OUTOFMEMORY;
  }
  static HRESULT keep(const OLECHAR* text, CComBSTR& slot) {
    CComBSTR fresh(text);
    if (text && !fresh.get()) return E_OUTOFMEMORY;
    slot = std::move(fresh);
    return S_OK;
  }

  GUID guid_{};
  CComBSTR source_;
  CComBSTR description_;
  CComBSTR help_file_;
  DWORD help_context_ = 0;
};

// Counted. Looked at before every call of an object, so that it lies at a fixed offset: the library is loaded with the
// program.
constinit thread_local IErrorInfo* current __attribute__((tls_model("initial-exec"))) = nullptr;

// Releases the object when the thread ends.
struct Ending {
  ~Ending() { SetErrorInfo(0, nullptr); }
};

}  // namespace

HRESULT CreateErrorInfo(ICreateErrorInfo** info) {
  if (!info) return E_POINTER;
  *info = new (std::nothrow) ErrorInfo;
  return *info ? S_OK : E_OUTOFMEMORY;
}

HRESULT SetErrorInfo(ULONG, IErrorInfo* info) {
  if (info) {
    thread_local const Ending ending;
    info->AddRef();
  }
  if (IErrorInfo* const last = std::exchange(current, info)) last->Release();
  return S_OK;
}

HRESULT GetErrorInfo(ULONG, IErrorInfo** info) {
  if (!info) return E_POINTER;
  *info = std::exchange(current, nullptr);
  return *info ? S_OK : S_FALSE;
}

namespace korlib {

// Throws nothing: members that need no guard otherwise end with it.
HRESULT raise(HRESULT hr, std::wstring_view source, std::wstring_view text) {
  CComPtr<ErrorInfo> info;
  info.attach(new (std::nothrow) ErrorInfo);
  if (info && info->set_words(source, text)) SetErrorInfo(0, info.get());
  return hr;
}

namespace {

HRESULT raise_what(std::wstring_view source, std::string_view what) {
  try {
    return raise(E_FAIL, source, std::wstring(what.begin(), what.end()));
  } catch (const std::bad_alloc&) {
    return E_FAIL;  // without words
  }
}

}  // namespace

// Nor does this, where exceptions end.
HRESULT hresult_from_exception(std::wstring_view source) {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (const std::length_error&) {
    return E_OUTOFMEMORY;
  } catch (const std::exception& problem) {
    return raise_what(source, problem.what());
  } catch (...) {
    return E_UNEXPECTED;
  }
}

}  // namespace korlib

namespace korlib_host {

HRESULT raise_full(std::wstring_view source) noexcept {
  return korlib::raise(E_OUTOFMEMORY, source,
                       L"Nothing more can be kept: the site has all the memory that it may have.");
}

}  // namespace korlib_host
