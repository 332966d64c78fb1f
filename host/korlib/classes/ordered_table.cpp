#include "classes/ordered_table.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace korlib {

OrderedTable::Index* OrderedTable::slot_of(const KeyView& key) {
  if (slots_.empty()) return nullptr;
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t at = key.hash & mask;; at = (at + 1) & mask) {
    Index& slot = slots_[at];
    if (slot == kFree) return nullptr;
    if (slot != kGone && same_key(entries_[slot - 1].view, key, ignore_case_)) return &slot;
  }
}

void OrderedTable::place(const KeyView& key, Index index) {
  const std::size_t mask = slots_.size() - 1;
  std::size_t at = key.hash & mask;
  while (slots_[at] != kFree) at = (at + 1) & mask;
  slots_[at] = index;
  ++used_slots_;
}

// Makes room for `expected` entries, and closes the gaps.
void OrderedTable::rebuild(std::size_t expected) {
  const std::size_t wanted = std::max(kMinSlots, std::bit_ceil(expected * 2));
  std::vector<Index> slots(wanted, kFree);
  entries_.reserve(std::max(entries_.size(), expected));
  std::erase_if(entries_, [](const Entry& entry) { return !entry.is_live; });
  slots_ = std::move(slots);
  used_slots_ = 0;
  for (std::size_t i = 0; i < entries_.size(); ++i) place(entries_[i].view, static_cast<Index>(i + 1));
}

OrderedTable::Entry* OrderedTable::find(KeyView& key) {
  key.hash = hash_key(key, ignore_case_);
  const Index* slot = slot_of(key);
  return slot ? &entries_[*slot - 1] : nullptr;
}

OrderedTable::Entry& OrderedTable::insert(CComVariant key, const KeyView& view, CComVariant value) {
  if ((used_slots_ + 1) * 3 > slots_.size() * 2 || entries_.size() > 2 * live_ + kMinSlots) rebuild(live_ + 1);
  entries_.push_back(Entry{std::move(key), std::move(value), view, true});
  Entry& entry = entries_.back();
  if (view.kind == KeyView::Kind::kText) entry.view.text = view_of(entry.key.bstrVal);
  place(entry.view, static_cast<Index>(entries_.size()));
  ++live_;
  return entry;
}

OrderedTable::Entry OrderedTable::take(Entry& entry) {
  *slot_of(entry.view) = kGone;
  --live_;
  return std::exchange(entry, Entry{{}, {}, {}, false});
}

CComVariant OrderedTable::rename(Entry& entry, CComVariant key, const KeyView& view) {
  const std::size_t number = static_cast<std::size_t>(&entry - entries_.data());
  *slot_of(entry.view) = kGone;
  CComVariant old = std::move(entry.key);
  entry.key = std::move(key);
  entry.view = view;
  if (view.kind == KeyView::Kind::kText) entry.view.text = view_of(entry.key.bstrVal);
  // Renaming uses slots up without adding entries.
  if ((used_slots_ + 1) * 3 > slots_.size() * 2) {
    rebuild(live_ + 1);
  } else {
    place(entry.view, static_cast<Index>(number + 1));
  }
  return old;
}

std::vector<OrderedTable::Entry> OrderedTable::take_all() {
  std::vector<Entry> taken = std::move(entries_);
  entries_ = {};
  slots_ = {};
  live_ = used_slots_ = 0;
  return taken;
}

}  // namespace korlib
