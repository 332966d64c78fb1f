#include "script/thread_memory.h"

#include <korlib/types.h>
#include <korlib_host/memory_limit.h>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>

namespace zelto {
namespace {

// Needs neither making nor destroying: it counts from a thread's first block to its last.
constinit thread_local ThreadMemory t_memory;

std::atomic<std::int64_t> g_total{0};

}  // namespace

ThreadMemory& ThreadMemory::of_this_thread() noexcept { return t_memory; }

std::int64_t ThreadMemory::of_all_threads() noexcept {
  return g_total.load(std::memory_order_relaxed) + t_memory.unreported_;
}

void ThreadMemory::report() noexcept {
  g_total.fetch_add(unreported_, std::memory_order_relaxed);
  unreported_ = 0;
}

}  // namespace zelto

#ifdef KOR_SANITIZED

// The sanitizer's allocator is in the place of the C library's, and tells of every block. Not every compiler comes with
// a header for these.
extern "C" {

// NOLINTBEGIN(*-reserved-identifier): the sanitizers' names
int __sanitizer_install_malloc_and_free_hooks(void (*on_take)(const volatile void*, std::size_t),
                                              void (*on_give)(const volatile void*));
std::size_t __sanitizer_get_allocated_size(const volatile void* block);
// NOLINTEND(*-reserved-identifier)

}  // extern "C"

namespace {

void on_take(const volatile void*, std::size_t bytes) { zelto::t_memory.count(static_cast<std::int64_t>(bytes)); }

void on_give(const volatile void* block) {
  if (!block) return;
  const std::size_t bytes = __sanitizer_get_allocated_size(block);
  zelto::t_memory.count(-static_cast<std::int64_t>(bytes));
}

[[maybe_unused]] const int g_hooks = __sanitizer_install_malloc_and_free_hooks(on_take, on_give);

}  // namespace

#else

// In front of the C library's functions of these names, for the whole process: it lets a program do that, and keeps its
// own under the other names. They are all that give memory which free() takes, but valloc and pvalloc, which the C
// library itself calls obsolete.
extern "C" {

void* __libc_malloc(std::size_t bytes) noexcept;                           // NOLINT(*-reserved-identifier)
void* __libc_calloc(std::size_t count, std::size_t bytes) noexcept;        // NOLINT(*-reserved-identifier)
void* __libc_realloc(void* block, std::size_t bytes) noexcept;             // NOLINT(*-reserved-identifier)
void* __libc_memalign(std::size_t alignment, std::size_t bytes) noexcept;  // NOLINT(*-reserved-identifier)
void __libc_free(void* block) noexcept;                                    // NOLINT(*-reserved-identifier)

}  // extern "C"

namespace {

// Of null, nothing.
std::int64_t size_of(void* block) { return static_cast<std::int64_t>(::malloc_usable_size(block)); }

void* counted(void* block) {
  zelto::t_memory.count(size_of(block));
  return block;
}

// What a page may not take is not there, as if all memory were used up.
bool refuses(std::size_t bytes) noexcept {
  if (bytes < korlib_host::kLargeBlock) return false;
  korlib_host::MemoryLimit* const limit = korlib_host::memory_limit();
  if (!limit || limit->bears(bytes)) return false;
  errno = ENOMEM;
  return true;
}

constexpr bool is_power_of_two(std::size_t number) { return number != 0 && (number & (number - 1)) == 0; }

}  // namespace

extern "C" {

KORLIB_API void* malloc(std::size_t bytes) noexcept { return refuses(bytes) ? nullptr : counted(__libc_malloc(bytes)); }

KORLIB_API void* calloc(std::size_t count, std::size_t bytes) noexcept {
  std::size_t all = 0;  // too large for a number: the C library refuses it
  if (!__builtin_mul_overflow(count, bytes, &all) && refuses(all)) return nullptr;
  return counted(__libc_calloc(count, bytes));
}

KORLIB_API void free(void* block) noexcept {
  zelto::t_memory.count(-size_of(block));
  __libc_free(block);
}

// A failure leaves the block as it was; asked for no bytes, the C library frees it and answers null.
// Weak, because a test has one that fails in its place.
[[gnu::weak]] KORLIB_API void* realloc(void* block, std::size_t bytes) noexcept {
  const std::int64_t before = size_of(block);
  if (static_cast<std::int64_t>(bytes) > before && refuses(bytes - static_cast<std::size_t>(before))) return nullptr;
  void* const fresh = __libc_realloc(block, bytes);
  if (fresh || bytes == 0) zelto::t_memory.count(size_of(fresh) - before);
  return fresh;
}

KORLIB_API void* memalign(std::size_t alignment, std::size_t bytes) noexcept {
  return refuses(bytes) ? nullptr : counted(__libc_memalign(alignment, bytes));
}

KORLIB_API void* aligned_alloc(std::size_t alignment, std::size_t bytes) noexcept {
  return refuses(bytes) ? nullptr : counted(__libc_memalign(alignment, bytes));
}

KORLIB_API int posix_memalign(void** block, std::size_t alignment, std::size_t bytes) noexcept {
  if (alignment % sizeof(void*) != 0 || !is_power_of_two(alignment)) return EINVAL;
  void* const fresh = refuses(bytes) ? nullptr : counted(__libc_memalign(alignment, bytes));
  if (!fresh) return ENOMEM;
  *block = fresh;
  return 0;
}

// The engine has its large strings and tables straight from the system, and one of its operations may fill the machine
// with them before the page is looked at. It tells the page where it asked for very much and did not get it; where a
// table grew it ends the process.
KORLIB_API void* mmap(void* place, std::size_t bytes, int protection, int flags, int file, off_t offset) noexcept {
  constexpr std::size_t kLarge = std::size_t{16} << 20;  // what it takes ahead for small ones is less
  if ((flags & MAP_ANONYMOUS) != 0 && (flags & MAP_STACK) == 0 && bytes >= kLarge && refuses(bytes)) return MAP_FAILED;
  // The C library's own stands behind this one.
  const long result = ::syscall(SYS_mmap, place, bytes, protection, flags, file, offset);
  return reinterpret_cast<void*>(result);  // NOLINT(performance-no-int-to-ptr): so it is told
}

KORLIB_API void* mmap64(void* place, std::size_t bytes, int protection, int flags, int file, off64_t offset) noexcept {
  return mmap(place, bytes, protection, flags, file, offset);
}

}  // extern "C"

#endif
