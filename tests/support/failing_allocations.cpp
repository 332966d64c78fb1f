#include "support/failing_allocations.h"

#include <dlfcn.h>

#include <cstdlib>
#include <new>

#include <korlib/safearray.h>
#include <korlib/types.h>

namespace {

int allocations_left = -1;  // negative: nothing fails

bool runs_out() {
  if (allocations_left < 0) return false;
  return allocations_left-- == 0;
}

template <class Function>
Function* host_function(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

namespace test {

FailingAllocation::FailingAllocation(int n) { allocations_left = n; }
FailingAllocation::~FailingAllocation() { allocations_left = -1; }
bool FailingAllocation::has_failed() const { return allocations_left < 0; }

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

extern "C" KORLIB_API SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lower_bound, ULONG elements) {
  static auto* const real = host_function<SAFEARRAY*(VARTYPE, LONG, ULONG)>("SafeArrayCreateVector");
  return runs_out() ? nullptr : real(type, lower_bound, elements);
}

// Not inlined: the compiler would see malloc paired with delete, and object.
[[gnu::noinline]] void* operator new(std::size_t bytes) {
  void* block = runs_out() ? nullptr : std::malloc(bytes ? bytes : 1);
  if (!block) throw std::bad_alloc();
  return block;
}

[[gnu::noinline]] void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return runs_out() ? nullptr : std::malloc(bytes ? bytes : 1);
}

[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }
