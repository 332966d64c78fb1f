// Script values in native hands.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "script/jsc.h"

namespace zelto::script {

// The arguments of a call into the script while they are being made.
//
// The collector finds a value on the stack, or when it is told to; elsewhere in native memory it does not
// look. So these live on the stack, and a call with more than fit there has each of them protected.
class RootedValues {
 public:
  // Room for so many.
  RootedValues(JSContextRef ctx, std::size_t capacity)
      : ctx_(ctx),
        protected_(capacity > kOnStack ? capacity : 0),
        values_(protected_.empty() ? on_stack_.data() : protected_.data()) {}
  ~RootedValues() {
    if (protected_.empty()) return;
    for (std::size_t i = 0; i < size_; ++i) JSValueUnprotect(ctx_, values_[i]);
  }
  RootedValues(const RootedValues&) = delete;
  RootedValues& operator=(const RootedValues&) = delete;
  static void* operator new(std::size_t) = delete;

  void push_back(JSValueRef value) {
    values_[size_++] = value;
    if (!protected_.empty()) JSValueProtect(ctx_, value);
  }
  const JSValueRef* data() const noexcept { return values_; }
  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  JSValueRef operator[](std::size_t i) const noexcept { return values_[i]; }

 private:
  static constexpr std::size_t kOnStack = 8;

  JSContextRef ctx_;
  std::array<JSValueRef, kOnStack> on_stack_{};
  std::vector<JSValueRef> protected_;  // all of them, when there are more
  JSValueRef* values_;
  std::size_t size_ = 0;
};

// Keeps an object, and with it what it holds, to the end of a block that no longer names it.
class RootedObject {
 public:
  explicit RootedObject(JSObjectRef object) noexcept : object_(object) {}
  ~RootedObject() { asm volatile("" : : "m"(object_)); }  // a use that the optimiser has to believe in
  RootedObject(const RootedObject&) = delete;
  RootedObject& operator=(const RootedObject&) = delete;

 private:
  JSObjectRef object_;
};

}  // namespace zelto::script
