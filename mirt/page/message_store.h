// The messages of a page: lists of values under keys.
#pragma once

#include <map>
#include <vector>

#include <korlib/combstr.h>
#include <korlib/comvariant.h>

namespace page {

class MessageStore {
 public:
  using List = std::vector<CComVariant>;

  // Keeps a copy of the value at the end of the key's list. References are followed: what they refer to
  // is gone when the caller returns. A null key is the empty one.
  HRESULT add(const VARIANT& message, BSTR key);
  bool empty() const { return lists_.empty(); }
  // The key's messages in the order in which they were added; null when the key is unknown.
  const List* find(BSTR key) const;

 private:
  std::map<CComBSTR, List> lists_;
};

}  // namespace page
