#include "utility/members.h"

namespace mirt::utility {

HRESULT make_key(LONG, BSTR, BSTR* key) noexcept {
  *key = nullptr;
  return E_NOTIMPL;
}
HRESULT make_guid(VARIANT_BOOL, BSTR* guid) noexcept {
  *guid = nullptr;
  return E_NOTIMPL;
}
HRESULT sleep(LONG) noexcept { return E_NOTIMPL; }
HRESULT md5(const VARIANT*, LONG, BSTR* hex) noexcept {
  *hex = nullptr;
  return E_NOTIMPL;
}
HRESULT sha1(const VARIANT*, LONG, BSTR* hex) noexcept {
  *hex = nullptr;
  return E_NOTIMPL;
}
HRESULT find_string(const VARIANT*, const VARIANT*, VARIANT_BOOL*) noexcept { return E_NOTIMPL; }
HRESULT han_to_zen(BSTR, BSTR* wide) noexcept {
  *wide = nullptr;
  return E_NOTIMPL;
}
HRESULT zen_to_han(BSTR, BSTR* narrow) noexcept {
  *narrow = nullptr;
  return E_NOTIMPL;
}
HRESULT submit_decode(BSTR, BSTR* decoded) noexcept {
  *decoded = nullptr;
  return E_NOTIMPL;
}
HRESULT trim(BSTR, BSTR* trimmed) noexcept {
  *trimmed = nullptr;
  return E_NOTIMPL;
}
HRESULT html_encode(BSTR, BSTR* encoded) noexcept {
  *encoded = nullptr;
  return E_NOTIMPL;
}
HRESULT base64_encode(const VARIANT*, LONG, BSTR* encoded) noexcept {
  *encoded = nullptr;
  return E_NOTIMPL;
}
HRESULT url_encode(const VARIANT*, LONG, BSTR* encoded) noexcept {
  *encoded = nullptr;
  return E_NOTIMPL;
}
HRESULT base64_decode(BSTR, LONG, VARIANT* decoded) noexcept {
  VariantInit(decoded);
  return E_NOTIMPL;
}
HRESULT url_decode(BSTR, LONG, VARIANT* decoded) noexcept {
  VariantInit(decoded);
  return E_NOTIMPL;
}

}  // namespace mirt::utility
