#include "utility/bytes.h"

#include <cstring>
#include <new>

#include <korlib/text.h>

namespace mirt::utility {

namespace {

constexpr std::size_t kBytesPerCharacter = 4;  // of UTF-8, at most
constexpr LONG kByteArray = -2;

HRESULT give_array(const char* bytes, std::size_t size, VARIANT* decoded) {
  CComSafeArray array(VT_UI1, static_cast<ULONG>(size));
  if (!array) return E_FAIL;
  if (size) std::memcpy(array.data<char>(), bytes, size);
  array.detach_to(decoded);
  return S_OK;
}

HRESULT give_text(BSTR text, VARIANT* decoded) {
  if (!text) return E_OUTOFMEMORY;
  decoded->vt = VT_BSTR;
  decoded->bstrVal = text;
  return S_OK;
}

}  // namespace

HRESULT InputBytes::take(const VARIANT* input, LONG charset) {
  if (!input) return E_POINTER;
  if (input->vt == VT_BSTR) return take_text(input->bstrVal, charset);
  if (input->vt == (VT_ARRAY | VT_UI1)) return take_array(input->parray);
  return E_INVALIDARG;
}

HRESULT InputBytes::take_text(BSTR text, LONG charset) {
  if (!text) return S_OK;
  if (charset < 0) {
    data_ = reinterpret_cast<const char*>(text);
    size_ = SysStringByteLen(text);
    return S_OK;
  }
  const std::size_t length = SysStringLen(text);
  char* target = short_;
  std::size_t capacity = sizeof short_;
  if (length > sizeof short_ / kBytesPerCharacter) {
    capacity = utf32_utf8(text, length, nullptr, 0);
    long_.reset(new (std::nothrow) char[capacity]);
    if (!long_) return E_OUTOFMEMORY;
    target = long_.get();
  }
  size_ = utf32_utf8(text, length, target, capacity);
  data_ = target;
  return S_OK;
}

HRESULT InputBytes::take_array(const SAFEARRAY* array) {
  if (!array || array->cDims != 1 || array->vtElement != VT_UI1) return E_FAIL;
  size_ = array->rgsabound[0].cElements;
  if (size_) data_ = static_cast<const char*>(array->pvData);
  return S_OK;
}

HRESULT give_decoded(const char* bytes, std::size_t size, LONG charset, VARIANT* decoded) {
  if (size >= kMaxBstrBytes) return E_OUTOFMEMORY;
  if (charset == kByteArray) return give_array(bytes, size, decoded);
  if (charset < 0) return give_text(SysAllocStringByteLen(bytes, static_cast<UINT>(size)), decoded);
  const std::size_t length = utf8_utf32(bytes, size, nullptr, 0);
  CComBSTR text;
  RETURN_IF_FAILED(new_text(length, text.put()));
  utf8_utf32(bytes, size, text.get(), length);
  return give_text(text.detach(), decoded);
}

HRESULT new_text(std::size_t length, BSTR* text) {
  *text = length < kMaxBstrBytes / sizeof(wchar_t) ? SysAllocStringLen(nullptr, static_cast<UINT>(length)) : nullptr;
  return *text ? S_OK : E_OUTOFMEMORY;
}

}  // namespace mirt::utility
