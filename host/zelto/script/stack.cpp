#include "script/stack.h"

#include <korlib_host/errors.h>

#include "base/thread.h"

namespace zelto::script {
namespace {

// Enough for a few levels of component and engine frames; sanitizers make frames several times larger.
#ifdef KOR_SANITIZED
constexpr std::size_t kReserve = 2u << 20;
#else
constexpr std::size_t kReserve = 512u << 10;
#endif

}  // namespace

bool stack_is_low() noexcept { return base::stack_room() < kReserve; }

HRESULT check_stack() noexcept {
  if (!stack_is_low()) return S_OK;
  return korlib::raise(kOutOfStack, L"Zelto", L"Out of stack space");
}

}  // namespace zelto::script
