#include <korlib_host/memory_limit.h>

namespace korlib_host {

namespace {
thread_local MemoryLimit* t_limit = nullptr;
}  // namespace

void set_memory_limit(MemoryLimit* limit) noexcept { t_limit = limit; }

MemoryLimit* memory_limit() noexcept { return t_limit; }

}  // namespace korlib_host
