// Strings of the runtime, which keeps freed blocks for its thread, beside malloc of blocks as large: one
// string after the other, as calls make them, and many alive at once, as an array holds them. With more
// threads each has its own.
#include <benchmark/benchmark.h>
#include <korlib/bstr.h>

#include <array>
#include <cstdlib>

namespace {

constexpr std::size_t kAlive = 256;

void lengths(benchmark::internal::Benchmark* each) {
  for (const int characters : {4, 32, 200, 1000}) each->Arg(characters);
}

// A string's block: its length in front, a NUL behind.
std::size_t block_size(const benchmark::State& state) {
  return 8 + (static_cast<std::size_t>(state.range(0)) + 1) * sizeof(wchar_t);
}

struct Strings {
  using Block = BSTR;
  static Block make(const benchmark::State& state) {
    return SysAllocStringLen(nullptr, static_cast<UINT>(state.range(0)));
  }
  static void free(Block block) { SysFreeString(block); }
};

struct Allocator {
  using Block = void*;
  static Block make(const benchmark::State& state) { return std::malloc(block_size(state)); }
  static void free(Block block) { std::free(block); }
};

template <class Kind>
void one_by_one(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) {
    const typename Kind::Block block = Kind::make(state);
    benchmark::DoNotOptimize(block);
    Kind::free(block);
  }
  state.SetItemsProcessed(state.iterations());
}

template <class Kind>
void many_alive(benchmark::State& state) {
  std::array<typename Kind::Block, kAlive> blocks{};
  for ([[maybe_unused]] auto _ : state) {
    for (auto& block : blocks) block = Kind::make(state);
    benchmark::DoNotOptimize(blocks.data());
    for (const auto block : blocks) Kind::free(block);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kAlive));
}

BENCHMARK(one_by_one<Strings>)->Name("strings_one_by_one")->Apply(lengths);
BENCHMARK(one_by_one<Allocator>)->Name("malloc_one_by_one")->Apply(lengths);
BENCHMARK(many_alive<Strings>)->Name("strings_many_alive")->Apply(lengths);
BENCHMARK(many_alive<Allocator>)->Name("malloc_many_alive")->Apply(lengths);
BENCHMARK(one_by_one<Strings>)->Name("strings_two_threads")->Arg(32)->Threads(2);
BENCHMARK(one_by_one<Allocator>)->Name("malloc_two_threads")->Arg(32)->Threads(2);

}  // namespace
