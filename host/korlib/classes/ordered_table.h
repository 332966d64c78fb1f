// The storage of a dictionary: a hash table whose entries keep their insertion order.
//
// Not synchronised. Nothing is released in here: what goes is handed back, so that the caller can let it
// go when no lock is held.
#pragma once

#include <vector>

#include "classes/dictionary_key.h"

namespace korlib {

class OrderedTable {
 public:
  struct Entry {
    CComVariant key;
    CComVariant value;
    KeyView view;  // of `key`
    bool is_live = true;
  };

  std::size_t size() const { return live_; }
  bool ignores_case() const { return ignore_case_; }
  void ignore_case(bool ignore) { ignore_case_ = ignore; }  // while empty

  // Valid until the table changes; null when the key is missing. Gives `key` its hash.
  Entry* find(KeyView& key);
  // The key must be missing; `view` is the one of `key`, as find() has left it.
  Entry& insert(CComVariant key, const KeyView& view, CComVariant value);
  // The entry that went.
  Entry take(Entry& entry);
  // Gives an entry another key, which must be missing; the old key. It keeps its place.
  CComVariant rename(Entry& entry, CComVariant key, const KeyView& view);
  std::vector<Entry> take_all();

  template <class Visitor>
  void for_each(Visitor&& visit) const {
    for (const Entry& entry : entries_) {
      if (entry.is_live) visit(entry);
    }
  }

 private:
  using Index = std::uint32_t;
  static constexpr Index kFree = 0;    // never used
  static constexpr Index kGone = ~0u;  // was used: a search goes on behind it
  static constexpr std::size_t kMinSlots = 8;

  Index* slot_of(const KeyView& key);
  void place(const KeyView& key, Index index);
  void rebuild(std::size_t expected);

  std::vector<Entry> entries_;  // in insertion order, with gaps where entries went
  std::vector<Index> slots_;    // a power of two; entry number + 1
  std::size_t live_ = 0;
  std::size_t used_slots_ = 0;  // kGone ones included
  bool ignore_case_ = false;
};

}  // namespace korlib
