// Scripting.Dictionary.
#pragma once

#include <functional>
#include <mutex>
#include <vector>

#include <korlib/dictionary.h>
#include <korlib_host/dispatch_object.h>

#include "base/ordered_table.h"
#include "classes/dictionary_key.h"

namespace korlib {

// Any thread may call any member: a dictionary may live in the Application. Keys and values are released
// with the lock free, because an object's last release may come back here.
class Dictionary final : public DispatchObject<Dictionary, IKorLibDictionary> {
 public:
  static constexpr const wchar_t* kClassName = L"Dictionary";
  static std::span<const Member> members();

  HRESULT get_Item(VARIANT key, VARIANT* value) override;
  HRESULT put_Item(VARIANT key, VARIANT value) override;
  HRESULT putref_Item(VARIANT key, VARIANT value) override;
  HRESULT Add(VARIANT key, VARIANT value) override;
  HRESULT Exists(VARIANT key, VARIANT_BOOL* exists) override;
  HRESULT get_Count(LONG* count) override;
  HRESULT Keys(VARIANT* keys) override;
  HRESULT Items(VARIANT* items) override;
  HRESULT put_Key(VARIANT key, VARIANT new_key) override;
  HRESULT Remove(VARIANT key) override;
  HRESULT RemoveAll() override;
  HRESULT get_CompareMode(LONG* mode) override;
  HRESULT put_CompareMode(LONG mode) override;
  HRESULT get__NewEnum(IUnknown** keys) override;

 private:
  enum class Part { key, value };

  struct Entry {
    DictionaryKey key;
    CComVariant value;
  };
  struct KeyHash {
    std::size_t operator()(const DictionaryKey& key) const { return key.hash(); }
  };
  using Table = base::OrderedTable<&Entry::key, KeyHash, std::equal_to<>>;

  // Null when the key is missing. With the lock held.
  Entry* find(DictionaryKey& key);
  HRESULT store(const VARIANT& key, const VARIANT& value, bool may_replace);
  std::vector<CComVariant> snapshot(Part part);
  HRESULT to_array(Part part, VARIANT* array);

  std::mutex lock_;
  Table table_;
  bool ignores_case_ = false;
};

}  // namespace korlib
