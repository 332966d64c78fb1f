// An exception, what it gives as its cause, the cause of that, and so on.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "script/jsc.h"

namespace zelto::script {

// Errors may be each other's cause, and have no end of them: none comes twice, and of many the first are looked at.
//
//   for (CauseChain chain(context, exception); chain.link(); chain.advance()) …
class CauseChain {
 public:
  static constexpr std::size_t kMost = 16;

  CauseChain(JSContextRef context, JSValueRef exception) : context_(context), next_(exception) { advance(); }

  JSValueRef link() const noexcept { return link_; }  // null behind the last
  bool is_first() const noexcept { return seen_.size() == 1; }
  void advance();
  // How many there are behind those that were looked at.
  std::size_t count_rest();

 private:
  bool has_next() const;
  void step();

  JSContextRef context_;
  JSValueRef next_;
  JSValueRef link_ = nullptr;
  std::vector<JSValueRef> seen_;  // to compare with: some may be garbage by now
};

// Whether the words stand among others, as words of their own: "r" is not in "wrapped".
bool tells(std::wstring_view words, std::wstring_view of_cause);

}  // namespace zelto::script
