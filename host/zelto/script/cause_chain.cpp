#include "script/cause_chain.h"

#include <algorithm>

#include "language/lexemes.h"
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

bool tells(std::wstring_view words, std::wstring_view of_cause) {
  const auto is_border = [](wchar_t a, wchar_t b) { return !language::is_word(a) || !language::is_word(b); };
  for (std::size_t at = words.find(of_cause); at != words.npos; at = words.find(of_cause, at + 1)) {
    const std::size_t end = at + of_cause.size();
    const bool begins = at == 0 || is_border(words[at - 1], words[at]);
    if (begins && (end == words.size() || end == 0 || is_border(words[end - 1], words[end]))) return true;
  }
  return false;
}

}  // namespace zelto::script
