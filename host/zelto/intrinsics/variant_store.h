// Named values that outlive a page: what Session and Application hold.
#pragma once

#include <korlib/comvariant.h>

#include <string>
#include <string_view>
#include <vector>

#include "base/keyed_hash.h"
#include "base/ordered_table.h"

namespace zelto {

// Names in the order in which they were first set, found in any letter case.
class VariantTable {
 public:
  // A copy of the value; VT_EMPTY for a name that is missing.
  HRESULT get(std::wstring_view name, VARIANT* value) const;
  bool has(std::wstring_view name) const { return entries_.find(name) != nullptr; }
  void put(std::wstring_view name, CComVariant value);
  void remove(std::wstring_view name);
  void clear();
  std::vector<std::wstring> names() const;

 private:
  struct Entry {
    std::wstring name;
    CComVariant value;
  };
  using Entries = base::OrderedTable<&Entry::name, base::FoldedHash, base::FoldedEqual>;

  Entries entries_;
};

// The store behind a Contents collection. Every call is one step: none sees another one half done.
class VariantStore {
 public:
  virtual ~VariantStore() = default;
  virtual HRESULT get(std::wstring_view name, VARIANT* value) = 0;
  // Refuses what cannot live as long as the store.
  virtual HRESULT put(std::wstring_view name, const VARIANT& value) = 0;
  virtual HRESULT remove(std::wstring_view name) = 0;
  virtual HRESULT clear() = 0;
  virtual HRESULT names(std::vector<std::wstring>& names) = 0;
};

// Whether a value may be kept, under a name that is new or not, which fails with a message when the program has too
// much already. One that takes only the place of another always may.
HRESULT check_room(const VARIANT& value, bool is_new, std::wstring_view source);

// A script's object dies with its page. Looks into arrays as well.
bool holds_script_object(const VARIANT& value);

}  // namespace zelto
