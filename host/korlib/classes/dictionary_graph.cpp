#include "classes/dictionary_graph.h"

#include <korlib_host/dictionaries.h>

#include <mutex>
#include <new>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "classes/dictionary.h"

namespace korlib {
namespace {

std::mutex g_candidates_lock;  // of all lists; nothing is called while it is held

}  // namespace

// One thread's candidates.
class CandidateList {
 public:
  CandidateList() = default;
  CandidateList(const CandidateList&) = delete;
  CandidateList& operator=(const CandidateList&) = delete;
  ~CandidateList() {
    const std::lock_guard guard(g_candidates_lock);
    list_.clear();
  }

  static CandidateList& of_thread() {
    thread_local CandidateList list;
    return list;
  }

  void enter(CycleCandidate& candidate) {
    const std::lock_guard guard(g_candidates_lock);
    if (!candidate.hook_.is_linked()) list_.push_back(candidate);
  }
  static void leave(CycleCandidate& candidate) {
    const std::lock_guard guard(g_candidates_lock);
    candidate.hook_.unlink();
  }
  // All of them but those that are going, which are left to go.
  std::vector<CComPtr<Dictionary>> take() {
    std::vector<CComPtr<Dictionary>> taken;
    const std::lock_guard guard(g_candidates_lock);
    taken.reserve(list_.size());  // all that can fail
    while (!list_.empty()) {
      auto& dictionary = static_cast<Dictionary&>(list_.front());
      list_.pop_front();
      if (dictionary.try_add_ref()) taken.emplace_back().attach(&dictionary);
    }
    return taken;
  }

 private:
  using Hook = boost::intrusive::member_hook<CycleCandidate, CycleCandidate::Hook, &CycleCandidate::hook_>;
  boost::intrusive::list<CycleCandidate, Hook, boost::intrusive::constant_time_size<false>> list_;
};

void CycleCandidate::enter() noexcept {
  has_entered_ = true;
  CandidateList::of_thread().enter(*this);
}

void CycleCandidate::leave() noexcept {
  if (has_entered_) CandidateList::leave(*this);
}

namespace {

// Dictionaries, and how often each is held by another one of them.
class DictionaryGraph {
 public:
  explicit DictionaryGraph(korlib_host::CycleReach reach) : reach_(reach) {}

  // One that the caller holds until garbage() has answered.
  void add_candidate(Dictionary* dictionary) {
    if (Node* const node = add(dictionary)) ++node->held_aside;
  }

  // Adds what those that were added hold.
  void visit() {
    while (!unvisited_.empty()) {
      Dictionary* const holder = unvisited_.back();
      unvisited_.pop_back();
      for (const CComPtr<IUnknown>& object : holder->objects()) {
        Dictionary* const held = object ? Dictionary::behind(object.get()) : nullptr;
        if (!held) continue;
        Node* const node = add(held);
        if (!node) continue;
        ++node->held_inside;
        nodes_.at(holder).holds.push_back(held);
      }
    }
  }

  // Those that nobody holds but the others, this graph and its caller, not even through what somebody holds.
  std::vector<CComPtr<Dictionary>> garbage() {
    for (auto& [dictionary, node] : nodes_) {
      if (references(*dictionary) > node.held_inside + node.held_aside) reach(node);
    }
    while (!unvisited_.empty()) {
      const Node& holder = nodes_.at(unvisited_.back());
      unvisited_.pop_back();
      for (Dictionary* const held : holder.holds) reach(nodes_.at(held));
    }
    std::vector<CComPtr<Dictionary>> found;
    for (auto& [dictionary, node] : nodes_) {
      if (!node.is_reached) found.push_back(node.dictionary);
    }
    return found;
  }

 private:
  struct Node {
    CComPtr<Dictionary> dictionary;
    ULONG held_inside = 0;
    ULONG held_aside = 1;  // here
    bool is_reached = false;
    std::vector<Dictionary*> holds;
  };

  // Null for one that other threads may be using.
  Node* add(Dictionary* dictionary) {
    if (dictionary->is_shared() && reach_ != korlib_host::CycleReach::all) return nullptr;
    const auto [place, is_new] = nodes_.try_emplace(dictionary);
    if (is_new) {
      place->second.dictionary = dictionary;
      unvisited_.push_back(dictionary);
    }
    return &place->second;
  }
  static ULONG references(Dictionary& dictionary) {
    dictionary.AddRef();
    return dictionary.Release();
  }
  void reach(Node& node) {
    if (node.is_reached) return;
    node.is_reached = true;
    unvisited_.push_back(node.dictionary.get());
  }

  const korlib_host::CycleReach reach_;
  std::unordered_map<Dictionary*, Node> nodes_;
  std::vector<Dictionary*> unvisited_;
};

// False when there was nothing to free.
bool free_some_cycles(korlib_host::CycleReach reach) {
  std::vector<CComPtr<Dictionary>> candidates = CandidateList::of_thread().take();
  if (candidates.empty()) return false;
  std::vector<CComPtr<Dictionary>> garbage;
  try {
    DictionaryGraph graph(reach);
    for (const CComPtr<Dictionary>& candidate : candidates) graph.add_candidate(candidate.get());
    graph.visit();
    garbage = graph.garbage();
  } catch (const std::bad_alloc&) {
    for (const CComPtr<Dictionary>& candidate : candidates) candidate->enter();
    throw;
  }
  candidates.clear();
  for (const CComPtr<Dictionary>& dictionary : garbage) dictionary->RemoveAll();
  return !garbage.empty();
}

}  // namespace
}  // namespace korlib

namespace korlib_host {

using korlib::Dictionary;

bool share(const VARIANT& value) {
  std::vector<Dictionary*> fresh;  // held by the value
  std::unordered_set<Dictionary*> seen;
  bool can_be_shared = true;
  const auto visit = [&](IUnknown* object) {
    Dictionary* const dictionary = object ? Dictionary::behind(object) : nullptr;
    if (!dictionary) can_be_shared = false;
    if (dictionary && !dictionary->is_shared() && seen.insert(dictionary).second) fresh.push_back(dictionary);
  };
  korlib::for_each_object(value, visit);
  for (std::size_t i = 0; can_be_shared && i < fresh.size(); ++i) {
    for (const CComPtr<IUnknown>& object : fresh[i]->objects()) visit(object.get());
  }
  if (!can_be_shared) return false;
  for (Dictionary* const dictionary : fresh) dictionary->set_shared();
  return true;
}

void watch_for_cycles(const VARIANT& value) noexcept {
  if (!korlib::may_hold_objects(value)) return;
  const auto watch = [](IUnknown* object) {
    Dictionary* const dictionary = object ? Dictionary::behind(object) : nullptr;
    if (dictionary && dictionary->holds_dictionaries()) dictionary->enter();
  };
  korlib::for_each_object(value, watch);
}

void free_cycles(CycleReach reach) noexcept {
  try {
    while (korlib::free_some_cycles(reach)) {
    }
  } catch (const std::bad_alloc&) {
    return;  // the next call looks at them again
  }
}

}  // namespace korlib_host
