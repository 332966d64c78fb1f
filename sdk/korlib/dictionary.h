// IKorLibDictionary: the host's dictionary class, "Scripting.Dictionary".
#pragma once

#include <korlib/dispatch.h>

// Values by key. Keys are values of any type that VarCmp can compare; any other is E_INVALIDARG. Entries keep their
// insertion order. Keys and values are copied in and out, references followed, objects counted.
//
// Any thread may use one: what a page keeps in the application is shared by all. From then on, objects are refused as
// keys and as values (E_INVALIDARG), in arrays as well, but for dictionaries that hold no others. What goes is released
// when no lock is held. Failures raise words.
struct IKorLibDictionary : IDispatch {
  // The value of a key. A key that is missing is created with an empty value, as this class is documented to
  // do; ask Exists first where that matters.
  virtual HRESULT get_Item(VARIANT key, VARIANT* value) = 0;
  // Creates or replaces. An omitted value is stored as the empty one. putref_Item is put_Item for objects.
  virtual HRESULT put_Item(VARIANT key, VARIANT value) = 0;
  virtual HRESULT putref_Item(VARIANT key, VARIANT value) = 0;
  // Creates; a key that exists is an error.
  virtual HRESULT Add(VARIANT key, VARIANT value) = 0;
  // Whether the key is there; nothing is created.
  virtual HRESULT Exists(VARIANT key, VARIANT_BOOL* exists) = 0;
  virtual HRESULT get_Count(LONG* count) = 0;
  // All keys, or all values, in the order of insertion: a new VT_ARRAY | VT_VARIANT, zero-based.
  virtual HRESULT Keys(VARIANT* keys) = 0;
  virtual HRESULT Items(VARIANT* items) = 0;
  // Gives an entry another key; its place stays. A key that is missing, or a new one that exists, is an error.
  virtual HRESULT put_Key(VARIANT key, VARIANT new_key) = 0;
  // Removes an entry, or all; a key that is missing is an error.
  virtual HRESULT Remove(VARIANT key) = 0;
  virtual HRESULT RemoveAll() = 0;
  // How text keys are compared: 0 by their characters, 1 without letter case. It can be set only while the
  // dictionary is empty.
  virtual HRESULT get_CompareMode(LONG* mode) = 0;
  virtual HRESULT put_CompareMode(LONG mode) = 0;
  // The keys as they are now, as an IEnumVARIANT.
  virtual HRESULT get__NewEnum(IUnknown** keys) = 0;

 protected:
  ~IKorLibDictionary() = default;
};
KORLIB_IID(IKorLibDictionary, "113A35B4-47FE-44CF-AA06-ACBBD8375F42");

// The class, for CoCreateInstance.
inline constexpr GUID CLSID_ScriptingDictionary = korlib::guid("B08F31E7-1CA7-48CA-98DE-58AC14A12971");
