// Entries that are found by a key and keep the order in which they came: what collections of names and values are
// kept in.
#pragma once

#include <boost/intrusive/list.hpp>
#include <boost/intrusive/unordered_set.hpp>
#include <boost/iterator/indirect_iterator.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace base {

// How the order is kept. By links, an entry comes and goes at the same cost wherever it stands; by places, the n-th is
// found at once, and taking one moves those after it up.
struct ByLinks {
  using Hook = boost::intrusive::list_base_hook<>;

  template <class Node>
  class Sequence : public boost::intrusive::list<Node> {
   public:
    void reserve_one_more() {}
    void remove(Node& entry) { this->erase(this->iterator_to(entry)); }
    void delete_all() { this->clear_and_dispose(std::default_delete<Node>()); }
  };
};
struct ByPlaces {
  struct Hook {};

  template <class Node>
  class Sequence {
   public:
    using const_iterator = boost::indirect_iterator<typename std::vector<Node*>::const_iterator, const Node>;
    const_iterator begin() const { return nodes_.begin(); }
    const_iterator end() const { return nodes_.end(); }
    const Node& operator[](std::size_t place) const { return *nodes_[place]; }
    void reserve_one_more() {
      if (nodes_.size() == nodes_.capacity()) nodes_.reserve(std::max<std::size_t>(4, nodes_.size() * 2));
    }
    void push_back(Node& node) { nodes_.push_back(&node); }
    void remove(Node& node) { nodes_.erase(std::ranges::find(nodes_, &node)); }
    void delete_all() {
      for (Node* const node : std::exchange(nodes_, {})) delete node;
    }

   private:
    std::vector<Node*> nodes_;
  };
};

// `key` is the member of the entries that they are found by, such as &Field::name; no two are equal under `Equal`, and
// equal ones have one `Hash`. Both may take other types than the key's, which find() then takes as well.
//
// Not synchronised. An entry stays where it is in memory until it is taken. Everything that changes the table is done
// wholly or, with std::bad_alloc, not at all. A table that never had an entry takes no memory: most collections of a
// request have none, and a site has as many tables as sessions.
template <auto key, class Hash, class Equal, class Order = ByLinks>
class OrderedTable;

template <class EntryType, class Key, Key EntryType::*key, class Hash, class Equal, class Order>
class OrderedTable<key, Hash, Equal, Order> {
 private:
  using Linked = boost::intrusive::unordered_set_base_hook<boost::intrusive::store_hash<true>>;
  struct Node : EntryType, Order::Hook, Linked {
    explicit Node(EntryType&& entry) : EntryType(std::move(entry)) {}
  };
  using Sequence = typename Order::template Sequence<Node>;

 public:
  using Entry = EntryType;
  using const_iterator = typename Sequence::const_iterator;

  std::size_t size() const { return held_ ? held_->index.size() : 0; }
  bool empty() const { return size() == 0; }
  // Over the entries in their order.
  const_iterator begin() const { return held_ ? std::as_const(held_->order).begin() : const_iterator(); }
  const_iterator end() const { return held_ ? std::as_const(held_->order).end() : const_iterator(); }
  // By its place from 0, which must be there; for a table ByPlaces only.
  const Entry& operator[](std::size_t place) const { return held_->order[place]; }

  // Null where no entry has the key. Through the pointer everything but the key may be changed.
  template <class Wanted>
  Entry* find(const Wanted& wanted) {
    if (empty()) return nullptr;
    const auto found = held_->index.find(wanted, Hash(), SameKey());
    return found == held_->index.end() ? nullptr : &*found;
  }
  template <class Wanted>
  const Entry* find(const Wanted& wanted) const {
    return const_cast<OrderedTable*>(this)->find(wanted);
  }
  // The first that the condition holds for, without a look at the hashes.
  template <class Condition>
  Entry* find_if(Condition condition) {
    const auto found = std::find_if(begin(), end(), condition);
    return found == end() ? nullptr : const_cast<Node*>(&*found);
  }

  // After the others. No entry may have its key.
  Entry& add(Entry entry) {
    if (!held_) held_ = std::make_unique<Held>();
    auto node = std::make_unique<Node>(std::move(entry));
    held_->make_room();
    held_->order.push_back(*node);
    held_->index.insert(*node);
    return *node.release();
  }

  // Takes one of the table's entries out; the caller holds what it held.
  Entry take(Entry& entry) {
    const std::unique_ptr<Node> node(&static_cast<Node&>(entry));
    held_->index.erase(held_->index.iterator_to(*node));
    held_->order.remove(*node);
    return std::move(entry);
  }

  // Gives an entry of the table another key, which no other has, and answers the old one. The entry keeps its place.
  Key rename(Entry& entry, Key fresh) {
    auto& node = static_cast<Node&>(entry);
    held_->index.erase(held_->index.iterator_to(node));
    std::swap(node.*key, fresh);
    held_->index.insert(node);
    return fresh;
  }

 private:
  struct HashOfNode {
    std::size_t operator()(const Node& node) const { return Hash()(node.*key); }
  };
  struct SameKey {
    bool operator()(const Node& a, const Node& b) const { return Equal()(a.*key, b.*key); }
    template <class Wanted>
    bool operator()(const Wanted& wanted, const Node& node) const {
      return Equal()(wanted, node.*key);
    }
  };
  using Index =
      boost::intrusive::unordered_set<Node, boost::intrusive::base_hook<Linked>, boost::intrusive::hash<HashOfNode>,
                                      boost::intrusive::equal<SameKey>, boost::intrusive::power_2_buckets<true>>;
  using Bucket = typename Index::bucket_type;
  using Buckets = typename Index::bucket_traits;

  // What a table has from its first entry on. It stays where it is, because entries are linked to it.
  struct Held {
    Held() = default;
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held() {
      index.clear();
      order.delete_all();
    }

    // For one entry more: what can fail, before anything is changed.
    void make_room() {
      order.reserve_one_more();
      if (index.size() < index.bucket_count()) return;
      const std::size_t count = index.bucket_count() * 2;
      auto larger = std::make_unique<Bucket[]>(count);
      index.rehash(Buckets(larger.get(), count));
      more = std::move(larger);
    }

    std::array<Bucket, 8> first;
    std::unique_ptr<Bucket[]> more;
    Index index{Buckets(first.data(), first.size())};
    Sequence order;
  };

  std::unique_ptr<Held> held_;
};

}  // namespace base
