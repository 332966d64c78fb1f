#include "mirt/upload/counted_memory.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

using test::kPage;

constexpr std::size_t kPages = std::size_t{1} << 16;
constexpr std::size_t kSmallest = 8 * kPage;  // what is counted of what is allocated
// More than one copying or comparing goes through at a time, and fewer than the smallest block has.
constexpr std::size_t kOpen = 6;

char* memory = nullptr;  // all pages, none of them given twice
std::size_t used = 0;    // pages
std::size_t limit = 0;
std::size_t visit_count = 0;
char* open_pages[kOpen] = {};
bool is_counting = false;
struct sigaction action_before;

bool is_ours(const void* address) {
  const auto at = reinterpret_cast<std::uintptr_t>(address);
  const auto start = reinterpret_cast<std::uintptr_t>(memory);
  return memory && at >= start && at < start + kPages * kPage;
}

void set_access(char* page, std::size_t pages, int access) {
  if (mprotect(page, pages * kPage, access) != 0) std::abort();
}

[[noreturn]] void end_program() {
  const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
  std::fprintf(stderr, "%s.%s: after %zu visits of %zu allowed, %zu pages taken\n", test->test_suite_name(),
               test->name(), visit_count, limit, used);
  std::abort();
}

// Called where a program comes to a closed page; it tries again after this.
void visit(int, siginfo_t* info, void*) {
  if (!is_ours(info->si_addr)) {
    sigaction(SIGSEGV, &action_before, nullptr);
    return;
  }
  if (visit_count == limit) end_program();
  char*& oldest = open_pages[visit_count++ % kOpen];
  if (oldest) set_access(oldest, 1, PROT_NONE);
  oldest = memory + static_cast<std::size_t>(static_cast<char*>(info->si_addr) - memory) / kPage * kPage;
  set_access(oldest, 1, PROT_READ | PROT_WRITE);
}

char* take(std::size_t bytes) {
  const std::size_t pages = (bytes + kPage - 1) / kPage;
  if (pages > kPages - used) end_program();
  char* const block = memory + used * kPage;
  used += pages;
  return block;
}

void* allocate(std::size_t bytes) {
  return is_counting && bytes >= kSmallest ? take(bytes) : std::malloc(bytes ? bytes : 1);
}

void release(void* block) {
  if (!is_ours(block)) std::free(block);
}

}  // namespace

namespace test {

CountedMemory::CountedMemory(std::size_t limit_of_visits) {
  void* pages = mmap(nullptr, kPages * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (pages == MAP_FAILED) std::abort();
  memory = static_cast<char*>(pages);
  limit = limit_of_visits;
  used = visit_count = 0;
  std::memset(open_pages, 0, sizeof open_pages);
  struct sigaction action {};
  action.sa_sigaction = visit;
  action.sa_flags = SA_SIGINFO;
  sigaction(SIGSEGV, &action, &action_before);
  is_counting = true;
}

CountedMemory::~CountedMemory() {
  is_counting = false;
  sigaction(SIGSEGV, &action_before, nullptr);
  munmap(memory, kPages * kPage);
  memory = nullptr;
}

const char* CountedMemory::copy_of(std::string_view bytes) {
  char* const copy = take(bytes.size());
  const std::size_t pages = (bytes.size() + kPage - 1) / kPage;
  set_access(copy, pages, PROT_READ | PROT_WRITE);
  std::memcpy(copy, bytes.data(), bytes.size());
  set_access(copy, pages, PROT_NONE);
  return copy;
}

}  // namespace test

// Not inlined: the compiler would see malloc paired with delete, and object.
[[gnu::noinline]] void* operator new(std::size_t bytes) {
  void* block = allocate(bytes);
  if (!block) throw std::bad_alloc();
  return block;
}

[[gnu::noinline]] void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return allocate(bytes); }

[[gnu::noinline]] void operator delete(void* block) noexcept { release(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { release(block); }
