// The messages of a page: lists of values under keys.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <korlib/comvariant.h>

namespace page {

class MessageStore {
 public:
  using List = std::vector<CComVariant>;

  // Keeps a copy of the value at the end of the key's list. References are followed: what they refer to
  // is gone when the caller returns.
  HRESULT add(const VARIANT& message, std::wstring_view key);
  bool empty() const { return lists_.empty(); }
  // The key's messages in the order in which they were added; null when the key is unknown.
  const List* find(std::wstring_view key) const;

 private:
  std::map<std::wstring, List, std::less<>> lists_;
};

}  // namespace page
