// GIUtilityImpl: the utility members, written once for the utility object and for the page controller.
//
//   class GIMirtImpl : public GIUtilityImpl<IMirt> …
//
// Each member forwards to a function of utility/members.h. mirt/mirt.h says what the members do.
#pragma once

#include <mirt/mirt.h>

#include "frame/class_factory.h"
#include "utility/members.h"

template <class Base>
class GIUtilityImpl : public Base {
 public:
  STDMETHODIMP MakeKey(LONG length, BSTR alphabet, BSTR* key) override {
    return mirt::utility::make_key(length, alphabet, key);
  }
  STDMETHODIMP MakeGUID(VARIANT_BOOL bare, BSTR* guid) override { return mirt::utility::make_guid(bare, guid); }
  STDMETHODIMP Sleep(LONG milliseconds) override { return mirt::utility::sleep(milliseconds); }
  STDMETHODIMP MD5(VARIANT* input, LONG charset, BSTR* hex) override { return mirt::utility::md5(input, charset, hex); }
  STDMETHODIMP SHA1(VARIANT* input, LONG charset, BSTR* hex) override {
    return mirt::utility::sha1(input, charset, hex);
  }
  STDMETHODIMP FindString(VARIANT* list, VARIANT* wanted, VARIANT_BOOL* found) override {
    return mirt::utility::find_string(list, wanted, found);
  }
  STDMETHODIMP HanToZen(BSTR text, BSTR* wide) override { return mirt::utility::han_to_zen(text, wide); }
  STDMETHODIMP ZenToHan(BSTR text, BSTR* narrow) override { return mirt::utility::zen_to_han(text, narrow); }
  STDMETHODIMP SubmitDecode(BSTR text, BSTR* decoded) override { return mirt::utility::submit_decode(text, decoded); }
  STDMETHODIMP Trim(BSTR text, BSTR* trimmed) override { return mirt::utility::trim(text, trimmed); }
  STDMETHODIMP HTMLEncode(BSTR text, BSTR* encoded) override { return mirt::utility::html_encode(text, encoded); }
  STDMETHODIMP Base64Encode(VARIANT* input, LONG charset, BSTR* encoded) override {
    return mirt::utility::base64_encode(input, charset, encoded);
  }
  STDMETHODIMP URLEncode(VARIANT* input, LONG charset, BSTR* encoded) override {
    return mirt::utility::url_encode(input, charset, encoded);
  }
  STDMETHODIMP Base64Decode(BSTR text, LONG charset, VARIANT* decoded) override {
    return mirt::utility::base64_decode(text, charset, decoded);
  }
  STDMETHODIMP URLDecode(BSTR text, LONG charset, VARIANT* decoded) override {
    return mirt::utility::url_decode(text, charset, decoded);
  }

 protected:
  ~GIUtilityImpl() = default;
};

// The class object of "Mirt.Utility".
using CUtility = GDualImplForPool<IUtility, GIUtilityImpl<IUtility>, &g_pTI_IUtility, &g_nRefCount>;
template <>
IObjectPool* CUtility::s_pPool;

extern KORLIB_API GClassFactoryPooled<CUtility, &g_nRefCount> g_oCF_Utility;
