#include "script/cause_chain.h"

#include <algorithm>

#include "script/text.h"

namespace zelto::script {

// What was thrown may be nothing, a cause may not.
bool CauseChain::has_next() const {
  if (!next_) return false;
  if (seen_.empty()) return true;
  if (JSValueIsUndefined(context_, next_) || JSValueIsNull(context_, next_)) return false;
  return std::ranges::find(seen_, next_) == seen_.end();
}

void CauseChain::step() {
  link_ = next_;
  seen_.push_back(link_);
  next_ = JSValueIsObject(context_, link_) ? property(context_, object_of(link_), "cause") : nullptr;
}

void CauseChain::advance() {
  if (seen_.size() < kMost && has_next())
    step();
  else
    link_ = nullptr;
}

std::size_t CauseChain::count_rest() {
  constexpr std::size_t kEnough = 1000;
  const std::size_t before = seen_.size();
  while (seen_.size() < kEnough && has_next()) step();
  link_ = nullptr;
  return seen_.size() - before;
}

}  // namespace zelto::script
