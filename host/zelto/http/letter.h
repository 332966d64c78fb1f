// What one thread leaves another, or itself, to do later.
#pragma once

#include <memory>

namespace zelto {

// `owner` is kept until the letter is opened, which must not throw.
struct Letter {
  std::shared_ptr<void> owner;
  void (*open)(void* owner) noexcept = nullptr;
};

}  // namespace zelto
