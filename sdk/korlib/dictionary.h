// IKorLibDictionary: the host's dictionary class, "Scripting.Dictionary".
#pragma once

#include <korlib/dispatch.h>

// Keys are values of any type that VarCmp can compare; entries keep their insertion order.
//
// get_Item of a key that is missing creates it with an empty value, as this class is documented to do;
// put_Item creates or replaces. putref_Item is put_Item for objects.
struct IKorLibDictionary : IDispatch {
  virtual HRESULT get_Item(VARIANT key, VARIANT* value) = 0;
  virtual HRESULT put_Item(VARIANT key, VARIANT value) = 0;
  virtual HRESULT putref_Item(VARIANT key, VARIANT value) = 0;
  virtual HRESULT Add(VARIANT key, VARIANT value) = 0;  // a key that exists is an error
  virtual HRESULT Exists(VARIANT key, VARIANT_BOOL* exists) = 0;
  virtual HRESULT get_Count(LONG* count) = 0;
  virtual HRESULT Keys(VARIANT* keys) = 0;    // VT_ARRAY | VT_VARIANT, zero-based
  virtual HRESULT Items(VARIANT* items) = 0;  // likewise
  virtual HRESULT put_Key(VARIANT key, VARIANT new_key) = 0;
  virtual HRESULT Remove(VARIANT key) = 0;
  virtual HRESULT RemoveAll() = 0;
  virtual HRESULT get_CompareMode(LONG* mode) = 0;  // 0 binary, 1 text
  virtual HRESULT put_CompareMode(LONG mode) = 0;   // only while empty
  virtual HRESULT get__NewEnum(IUnknown** keys) = 0;

 protected:
  ~IKorLibDictionary() = default;
};
KORLIB_IID(IKorLibDictionary, "113A35B4-47FE-44CF-AA06-ACBBD8375F42");

inline constexpr GUID CLSID_ScriptingDictionary = korlib::guid("B08F31E7-1CA7-48CA-98DE-58AC14A12971");
