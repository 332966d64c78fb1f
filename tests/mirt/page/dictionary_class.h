// The host's dictionary class with failures where a test wants them, for as long as this lives.
#pragma once

#include <korlib/activation.h>
#include <korlib/dictionary.h>
#include <korlib/ptr.h>
#include <korlib_host/class_table.h>

namespace test {

class DictionaryClass {
 public:
  DictionaryClass() {
    if (!own_) CoGetClassObject(CLSID_ScriptingDictionary, 1, nullptr, IID_IClassFactory, own_.put_void());
    const korlib_host::ClassRow row{CLSID_ScriptingDictionary, nullptr, create};
    korlib_host::register_classes({&row, 1});
  }
  ~DictionaryClass() { fails_with_ = S_OK; }
  DictionaryClass(const DictionaryClass&) = delete;
  DictionaryClass& operator=(const DictionaryClass&) = delete;

  // No dictionary is made any more, after `allowed` ones.
  void fail(HRESULT hr, int allowed = 0) {
    fails_with_ = hr;
    allowed_ = allowed;
  }

 private:
  static HRESULT create(REFIID riid, void** ppv) {
    *ppv = nullptr;
    if (FAILED(fails_with_) && allowed_-- <= 0) return fails_with_;
    return own_->CreateInstance(nullptr, riid, ppv);
  }

  static inline CComPtr<IClassFactory> own_;  // the host's
  static inline HRESULT fails_with_ = S_OK;
  static inline int allowed_ = 0;
};

}  // namespace test
