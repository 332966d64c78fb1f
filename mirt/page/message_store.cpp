#include "page/message_store.h"

#include "frame/values.h"

namespace page {

HRESULT MessageStore::add(const VARIANT& message, std::wstring_view key) {
  CComVariant copy;
  RETURN_IF_FAILED(mirt::copy_followed(&copy, message));
  lists_[std::wstring(key)].push_back(std::move(copy));
  return S_OK;
}

const MessageStore::List* MessageStore::find(std::wstring_view key) const {
  const auto found = lists_.find(key);
  return found == lists_.end() ? nullptr : &found->second;
}

}  // namespace page
