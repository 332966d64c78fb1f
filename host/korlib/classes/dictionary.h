// Scripting.Dictionary.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

#include <korlib/dictionary.h>
#include <korlib_host/dispatch_object.h>

#include "base/ordered_table.h"
#include "classes/dictionary_graph.h"
#include "classes/dictionary_key.h"

namespace korlib {

// Answered by this class only, so that its objects can be told from others that look like dictionaries.
struct IHostDictionary : IKorLibDictionary {
 protected:
  ~IHostDictionary() = default;
};

// Any thread may call any member: a dictionary may live in the Application. Keys and values are released
// with the lock free, because an object's last release may come back here.
class Dictionary final : public DispatchObject<Dictionary, IHostDictionary>, public CycleCandidate {
 public:
  static constexpr const wchar_t* kClassName = L"Dictionary";
  static std::span<const Member> members();
  // The dictionary behind a pointer, null when it is another object. Not counted.
  static Dictionary* behind(IUnknown* object) noexcept;

  ~Dictionary() override { leave(); }

  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return query_list<IHostDictionary, IKorLibDictionary, IDispatch, IUnknown>(this, riid, ppv);
  }

  // A shared dictionary takes only what every thread may use. Who shares it has seen to what is in it already.
  bool is_shared() const { return is_shared_; }
  void set_shared() { is_shared_ = true; }
  // Some dictionary has been put into this one.
  bool holds_dictionaries() const { return holds_dictionaries_; }
  // The objects among its keys and values, those in arrays as well; null for a reference to memory of somebody else.
  std::vector<CComPtr<IUnknown>> objects();

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

 protected:
  void on_last_release() override;

 private:
  enum class Part { key, value };

  struct Entry {
    DictionaryKey key;
    CComVariant value;
  };
  struct KeyHash {
    std::size_t operator()(const KeyForm& key) const { return key.hash(); }
  };
  using Table = base::OrderedTable<&Entry::key, KeyHash, std::equal_to<>>;

  // Null when the key is missing. With the lock held.
  Entry* find(WantedKey& key);
  // Behind the others, under a key that none of them has. With the lock held.
  HRESULT add(WantedKey& key, CComVariant value);
  HRESULT store(const VARIANT& key, const VARIANT& value, bool may_replace);
  // Whether a key or value may come in.
  HRESULT admit(const VARIANT& value);
  std::vector<CComVariant> snapshot(Part part);
  HRESULT to_array(Part part, VARIANT* array);

  std::mutex lock_;
  Table table_;
  bool ignores_case_ = false;
  Dictionary* next_ended_ = nullptr;  // while it waits for its end
  std::atomic<bool> is_shared_{false};
  std::atomic<bool> holds_dictionaries_{false};
};

}  // namespace korlib

KORLIB_IID(korlib::IHostDictionary, "5B0E1C0B-6E0B-4C4C-9A43-2D0B8F2E6A71");
