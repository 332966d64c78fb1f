#include "strings/block_cache.h"

#include <array>
#include <cstdint>
#include <cstdlib>

#include <korlib_host/memory_limit.h>

namespace korlib::strings {
namespace {

// Apart, so that a small block needs no more than a look at its list.
[[gnu::noinline]] void* take_large(std::size_t bytes) noexcept {
  return korlib_host::may_take(bytes) ? std::malloc(bytes) : nullptr;
}

}  // namespace

#ifdef KOR_SANITIZED

void* take_block(std::size_t bytes, std::size_t* usable) noexcept {
  *usable = bytes;
  return take_large(bytes);
}

void give_block(void* block, std::size_t) noexcept { std::free(block); }

std::size_t usable_for(std::size_t bytes) noexcept { return bytes; }

#else

namespace {

constexpr std::size_t kStep = 32;
constexpr std::size_t kClasses = 32;  // blocks of 32, 64 … 1024 bytes
// Enough for the strings of a row or a form: many that live at once and go together. All classes full are half a
// mebibyte a thread, which the allocator can neither give back nor use for anything else.
constexpr std::size_t kKeptBytesPerClass = 16384;

struct FreeBlock {
  FreeBlock* next;
};

struct FreeList {
  FreeBlock* head;
  std::size_t count;
};

enum class State : std::uint8_t { unused, open, closed };

// Trivially destructible, so that it can still be asked while a thread destroys its other locals.
struct ThreadCache {
  std::array<FreeList, kClasses> lists;
  State state;
};

// The library is loaded with the program, so its locals lie at a fixed offset: one instruction instead
// of a call for every string.
constinit thread_local ThreadCache cache __attribute__((tls_model("initial-exec"))){};

// Opens the cache, and empties it when its thread ends; strings freed later go straight to the allocator.
struct Opening {
  Opening() noexcept { cache.state = State::open; }
  ~Opening() {
    cache.state = State::closed;
    for (FreeList& list : cache.lists) {
      while (FreeBlock* block = list.head) {
        list.head = block->next;
        std::free(block);
      }
      list.count = 0;
    }
  }
};

bool open_cache() noexcept {
  if (cache.state == State::unused) {
    // Constructed by the first use here, and so destroyed when the thread ends.
    thread_local const Opening opening;
  }
  return cache.state == State::open;
}

constexpr std::size_t class_of(std::size_t bytes) { return (bytes - 1) / kStep; }

}  // namespace

void* take_block(std::size_t bytes, std::size_t* usable) noexcept {
  const std::size_t index = class_of(bytes);
  if (index >= kClasses) {
    *usable = bytes;
    return take_large(bytes);
  }
  *usable = (index + 1) * kStep;
  FreeList& list = cache.lists[index];
  FreeBlock* const block = list.head;
  if (!block) return std::malloc(*usable);
  list.head = block->next;
  --list.count;
  return block;
}

void give_block(void* block, std::size_t usable) noexcept {
  const std::size_t index = class_of(usable);
  if (index >= kClasses || (cache.state != State::open && !open_cache())) return std::free(block);
  FreeList& list = cache.lists[index];
  if (list.count * usable >= kKeptBytesPerClass) return std::free(block);
  auto* const freed = static_cast<FreeBlock*>(block);
  freed->next = list.head;
  list.head = freed;
  ++list.count;
}

std::size_t usable_for(std::size_t bytes) noexcept {
  const std::size_t index = class_of(bytes);
  return index < kClasses ? (index + 1) * kStep : bytes;
}

#endif

}  // namespace korlib::strings
