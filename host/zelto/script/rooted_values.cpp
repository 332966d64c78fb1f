#include "script/rooted_values.h"

namespace zelto::script {

RootedValues::RootedValues(JSContextRef ctx, std::size_t capacity)
    : ctx_(ctx), protected_(capacity > kOnStack ? capacity : 0), values_(on_stack_.data()) {
  if (!protected_.empty()) values_ = protected_.data();
}

RootedValues::~RootedValues() {
  if (protected_.empty()) return;
  for (std::size_t i = 0; i < size_; ++i) JSValueUnprotect(ctx_, values_[i]);
}

void RootedValues::push_back(JSValueRef value) {
  values_[size_++] = value;
  if (!protected_.empty()) JSValueProtect(ctx_, value);
}

}  // namespace zelto::script
