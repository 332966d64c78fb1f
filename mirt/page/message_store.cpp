#include "page/message_store.h"

namespace page {

HRESULT MessageStore::add(const VARIANT& message, BSTR key) {
  CComVariant copy;
  RETURN_IF_FAILED(VariantCopyInd(&copy, &message));
  lists_[CComBSTR(korlib::view_of(key))].push_back(std::move(copy));
  return S_OK;
}

const MessageStore::List* MessageStore::find(BSTR key) const {
  const auto found = lists_.find(CComBSTR(korlib::view_of(key)));
  return found == lists_.end() ? nullptr : &found->second;
}

}  // namespace page
