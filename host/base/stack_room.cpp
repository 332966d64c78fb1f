#include "base/stack_room.h"

#include <pthread.h>

#include <cstdint>

namespace base {

namespace {

// The lowest address above the guard pages; 0 when the system does not tell.
std::uintptr_t lowest_address() noexcept {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return 0;
  void* start = nullptr;
  std::size_t size = 0;
  std::size_t guard = 0;
  const bool is_known = pthread_attr_getstack(&attributes, &start, &size) == 0;
  pthread_attr_getguardsize(&attributes, &guard);
  pthread_attr_destroy(&attributes);
  return is_known ? reinterpret_cast<std::uintptr_t>(start) + guard : 0;
}

}  // namespace

std::size_t stack_room() noexcept {
  thread_local const std::uintptr_t lowest = lowest_address();
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  return here > lowest ? here - lowest : 0;
}

}  // namespace base
