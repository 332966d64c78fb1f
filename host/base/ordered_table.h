// Entries that are found by a key and keep the order in which they came: what collections of names and values are
// kept in.
#pragma once

#include <boost/multi_index/hashed_index.hpp>
#include <boost/multi_index/member.hpp>
#include <boost/multi_index/ordered_index.hpp>
#include <boost/multi_index/random_access_index.hpp>
#include <boost/multi_index/sequenced_index.hpp>
#include <boost/multi_index_container.hpp>

#include <cstddef>
#include <utility>

namespace base {

// How the order is kept. By links, an entry comes and goes at the same cost wherever it stands; by places, the n-th is
// found at once, and taking one moves those after it up.
using ByLinks = boost::multi_index::sequenced<>;
using ByPlaces = boost::multi_index::random_access<>;

// How entries are found. By a hash: at the same cost however many there are; a table takes half a kibibyte before the
// first. By sorting: for tables of a few entries of which there may be very many. No two keys are equal under `Equal`,
// and equal ones have one `Hash`; `Less` tells equal ones by neither being the lesser. All may take other types than
// the key's, which find() then takes as well.
template <class Hash, class Equal>
struct ByHash {
  template <class KeyOf>
  using Index = boost::multi_index::hashed_unique<KeyOf, Hash, Equal>;
};
template <class Less>
struct BySorting {
  template <class KeyOf>
  using Index = boost::multi_index::ordered_unique<KeyOf, Less>;
};

// `key` is the member of the entries that they are found by, such as &Field::name.
//
// Not synchronised. An entry stays where it is in memory until it is taken. Everything that changes the table is done
// wholly or, with std::bad_alloc, not at all.
template <auto key, class Lookup, class Order = ByLinks>
class OrderedTable;

template <class EntryType, class Key, Key EntryType::*key, class Lookup, class Order>
class OrderedTable<key, Lookup, Order> {
 public:
  using Entry = EntryType;

  std::size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }
  // Over the entries in their order.
  auto begin() const { return entries_.begin(); }
  auto end() const { return entries_.end(); }
  // By its place from 0, which must be there; for a table ByPlaces only.
  const Entry& operator[](std::size_t place) const { return entries_[place]; }

  // Null where no entry has the key. Through the pointer everything but the key may be changed.
  template <class Wanted>
  Entry* find(const Wanted& wanted) {
    const auto found = by_key().find(wanted);
    return found == by_key().end() ? nullptr : const_cast<Entry*>(&*found);
  }
  template <class Wanted>
  const Entry* find(const Wanted& wanted) const {
    return const_cast<OrderedTable*>(this)->find(wanted);
  }

  // Behind the others. No entry may have its key.
  Entry& add(Entry entry) { return const_cast<Entry&>(*entries_.push_back(std::move(entry)).first); }

  // Takes one of the table's entries out; the caller holds what it held.
  Entry take(Entry& entry) { return std::move(by_key().extract(by_key().iterator_to(entry)).value()); }

  // The first, of a table that is not empty. Neither asks for memory.
  Entry take_first() { return std::move(entries_.extract(entries_.begin()).value()); }

  // Gives an entry of the table another key, which no other has, and answers the old one. The entry keeps its place.
  Key rename(Entry& entry, Key fresh) {
    by_key().modify_key(by_key().iterator_to(entry), [&](Key& current) { std::swap(current, fresh); });
    return fresh;
  }

 private:
  using Index =
      boost::multi_index::indexed_by<Order,
                                     typename Lookup::template Index<boost::multi_index::member<Entry, Key, key>>>;

  auto& by_key() { return entries_.template get<1>(); }

  boost::multi_index_container<Entry, Index> entries_;
};

}  // namespace base
