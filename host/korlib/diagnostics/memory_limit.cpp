#include <korlib_host/memory_limit.h>

#include <korlib_host/errors.h>
#include <korlib_host/kept_values.h>

namespace korlib_host {

namespace {
thread_local MemoryLimit* t_limit = nullptr;
}  // namespace

void set_memory_limit(MemoryLimit* limit) noexcept { t_limit = limit; }

HRESULT raise_full(std::wstring_view source) noexcept {
  return korlib::raise(E_OUTOFMEMORY, source,
                       L"Nothing more can be kept: the site has all the memory that it may have.");
}

MemoryLimit* memory_limit() noexcept { return t_limit; }

}  // namespace korlib_host
