#include "support/failing_allocations.h"

#include <dlfcn.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <string_view>

#include <korlib/safearray.h>
#include <korlib/types.h>

namespace {

std::atomic<int> allocations_left = 0;  // to the first that fails
std::atomic<int> failures_left = 0;
std::atomic<bool> has_failed_once = false;
std::atomic<bool> is_armed_elsewhere = false;
thread_local bool has_armed_elsewhere = false;
thread_local bool is_armed = false;
std::atomic<long> live = 0;

bool take_one(std::atomic<int>& count) {
  int left = count.load();
  while (left > 0 && !count.compare_exchange_weak(left, left - 1)) continue;
  return left > 0;
}

// The script engine and what it stands on end the program where they get no memory.
bool belongs_to_engine(const void* code) {
  Dl_info module{};
  if (!dladdr(code, &module) || !module.dli_fname) return false;
  const std::string_view name = module.dli_fname;
  return name.find("libjavascriptcoregtk") != name.npos || name.find("libglib-") != name.npos ||
         name.find("libgobject-") != name.npos;
}

// `caller` is the place in the program that asks.
bool runs_out(const void* caller = nullptr) {
  if (!is_armed && (has_armed_elsewhere || !is_armed_elsewhere)) return false;
  if (caller && belongs_to_engine(caller)) return false;
  if (take_one(allocations_left) || !take_one(failures_left)) return false;
  has_failed_once = true;
  return true;
}

template <class Function>
Function* host_function(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void* allocate(std::size_t bytes, const void* caller) {
  void* const block = runs_out(caller) ? nullptr : std::malloc(bytes ? bytes : 1);
  if (block) live.fetch_add(1, std::memory_order_relaxed);
  return block;
}

void release(void* block) {
  if (block) live.fetch_sub(1, std::memory_order_relaxed);
  std::free(block);
}

}  // namespace

namespace test {

FailingAllocation::FailingAllocation(int n, int times, On threads) {
  allocations_left = n;
  failures_left = times;
  has_failed_once = false;
  is_armed = threads == On::this_thread;
  has_armed_elsewhere = threads == On::other_threads;
  is_armed_elsewhere = has_armed_elsewhere;
}

FailingAllocation::~FailingAllocation() { is_armed = has_armed_elsewhere = is_armed_elsewhere = false; }

bool FailingAllocation::has_failed() const { return has_failed_once; }

void* fallible_malloc(std::size_t bytes) { return runs_out() ? nullptr : std::malloc(bytes); }

void* fallible_realloc(void* block, std::size_t bytes) { return runs_out() ? nullptr : std::realloc(block, bytes); }

long live_allocations() { return live; }

}  // namespace test

extern "C" KORLIB_API BSTR SysAllocString(const OLECHAR* text) {
  static auto* const real = host_function<BSTR(const OLECHAR*)>("SysAllocString");
  return runs_out() ? nullptr : real(text);
}

extern "C" KORLIB_API BSTR SysAllocStringLen(const OLECHAR* text, UINT length) {
  static auto* const real = host_function<BSTR(const OLECHAR*, UINT)>("SysAllocStringLen");
  return runs_out() ? nullptr : real(text, length);
}

extern "C" KORLIB_API BSTR SysAllocStringByteLen(const char* bytes, UINT length) {
  static auto* const real = host_function<BSTR(const char*, UINT)>("SysAllocStringByteLen");
  return runs_out() ? nullptr : real(bytes, length);
}

extern "C" KORLIB_API BOOL SysReAllocString(BSTR* target, const OLECHAR* text) {
  static auto* const real = host_function<BOOL(BSTR*, const OLECHAR*)>("SysReAllocString");
  return runs_out() ? FALSE : real(target, text);
}

extern "C" KORLIB_API BOOL SysReAllocStringLen(BSTR* target, const OLECHAR* text, UINT length) {
  static auto* const real = host_function<BOOL(BSTR*, const OLECHAR*, UINT)>("SysReAllocStringLen");
  return runs_out() ? FALSE : real(target, text, length);
}

extern "C" KORLIB_API SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dims, const SAFEARRAYBOUND* bounds) {
  static auto* const real = host_function<SAFEARRAY*(VARTYPE, UINT, const SAFEARRAYBOUND*)>("SafeArrayCreate");
  return runs_out() ? nullptr : real(type, dims, bounds);
}

extern "C" KORLIB_API SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lower_bound, ULONG elements) {
  static auto* const real = host_function<SAFEARRAY*(VARTYPE, LONG, ULONG)>("SafeArrayCreateVector");
  return runs_out() ? nullptr : real(type, lower_bound, elements);
}

// A sanitizer has it to itself.
#ifndef KOR_SANITIZED
extern "C" KORLIB_API void* realloc(void* block, std::size_t bytes) noexcept {
  static auto* const real = host_function<void*(void*, std::size_t)>("realloc");
  return runs_out(__builtin_return_address(0)) ? nullptr : real(block, bytes);
}
#endif

// Not inlined: the compiler would see malloc paired with delete, and object.
[[gnu::noinline]] void* operator new(std::size_t bytes) {
  void* block = allocate(bytes, __builtin_return_address(0));
  if (!block) throw std::bad_alloc();
  return block;
}

[[gnu::noinline]] void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return allocate(bytes, __builtin_return_address(0));
}
[[gnu::noinline]] void* operator new[](std::size_t bytes) {
  void* block = allocate(bytes, __builtin_return_address(0));
  if (!block) throw std::bad_alloc();
  return block;
}
[[gnu::noinline]] void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  return allocate(bytes, __builtin_return_address(0));
}

[[gnu::noinline]] void operator delete(void* block) noexcept { release(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { release(block); }
[[gnu::noinline]] void operator delete[](void* block) noexcept { release(block); }
[[gnu::noinline]] void operator delete[](void* block, std::size_t) noexcept { release(block); }
