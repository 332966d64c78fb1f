#include "script/stack.h"

#include <pthread.h>

#include <cstdint>

#include "script/errors.h"

namespace zelto::script {
namespace {

// Enough for a few levels of component and engine frames; sanitizers make frames several times larger.
#ifdef KOR_SANITIZED
constexpr std::size_t kReserve = 2u << 20;
#else
constexpr std::size_t kReserve = 512u << 10;
#endif

// The lowest address of the thread's stack; 0 when it is unknown.
std::uintptr_t lowest_address() noexcept {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return 0;
  void* lowest = nullptr;
  std::size_t size = 0;
  std::size_t guard = 0;
  pthread_attr_getstack(&attributes, &lowest, &size);
  pthread_attr_getguardsize(&attributes, &guard);
  pthread_attr_destroy(&attributes);
  return reinterpret_cast<std::uintptr_t>(lowest) + guard;
}

}  // namespace

std::size_t remaining_stack() noexcept {
  thread_local const std::uintptr_t lowest = lowest_address();
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  return here > lowest ? here - lowest : 0;
}

bool stack_is_low() noexcept { return remaining_stack() < kReserve; }

HRESULT check_stack() noexcept {
  if (!stack_is_low()) return S_OK;
  return set_error(kOutOfStack, L"Zelto", L"Out of stack space");
}

}  // namespace zelto::script
