#include "page/dictionaries.h"

#include <korlib/activation.h>

namespace page {

HRESULT new_dictionary(IKorLibDictionary** dictionary) {
  return CoCreateInstance(CLSID_ScriptingDictionary, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                          korlib::iid_of<IKorLibDictionary>, reinterpret_cast<void**>(dictionary));
}

HRESULT Dictionaries::make() {
  Dictionaries made;
  RETURN_IF_FAILED(new_dictionary(made.view.put()));
  RETURN_IF_FAILED(new_dictionary(made.include.put()));
  *this = std::move(made);
  return S_OK;
}

void Dictionaries::drop() {
  view.reset();
  include.reset();
}

}  // namespace page
