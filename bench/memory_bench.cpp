// Pools beside general allocators: one block in, one out, from a working set; filling and dropping;
// and how the list walks grow.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <malloc.h>

#include <array>
#include <cstdlib>
#include <memory_resource>
#include <random>
#include <vector>

#include "comnlib/memory.h"
#include "comnlib/thread.h"

namespace {

constexpr std::size_t kWorkingSet = 256;  // a power of two

// --- What is compared
// ------------------------------------------------------------------------------

struct Malloc {
  static const char* missing() { return nullptr; }
  static void* allocate(std::size_t size) { return std::malloc(size); }
  static void free(void* block) { std::free(block); }
};

// Zeroed, as pools give it.
struct Calloc : Malloc {
  static void* allocate(std::size_t size) { return std::calloc(1, size); }
};

// Keeps the C library from handing memory back in between: the kernel is not what is measured.
[[maybe_unused]] const bool keeps_memory =
    mallopt(M_TRIM_THRESHOLD, 1 << 30) == 1 && mallopt(M_MMAP_THRESHOLD, 1 << 29) == 1;

// An allocator in a library of its own, called as directly as malloc is: through one pointer.
// jemalloc's thread-local data need room that GLIBC_TUNABLES grants; tools/bench sets it.
struct Loaded {
  void* (*allocate)(std::size_t) = nullptr;
  void (*free)(void*) = nullptr;
  Loaded(const char* library, const char* allocate_name, const char* free_name) {
    void* handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) return;
    allocate = reinterpret_cast<void* (*)(std::size_t)>(dlsym(handle, allocate_name));
    free = reinterpret_cast<void (*)(void*)>(dlsym(handle, free_name));
  }
};

template <const Loaded& library>
struct LoadedAllocator {
  static const char* missing() { return library.free ? nullptr : "library not installed"; }
  static void* allocate(std::size_t size) { return library.allocate(size); }
  static void free(void* block) { library.free(block); }
};

const Loaded jemalloc("libjemalloc.so.2", "malloc", "free");
const Loaded mimalloc("libmimalloc.so.2", "mi_malloc", "mi_free");
using Jemalloc = LoadedAllocator<jemalloc>;
using Mimalloc = LoadedAllocator<mimalloc>;

struct Pool {
  CS_THREAD threads = *comn_thread_table();
  CS_CONTEXT context = {};
  MmHandle* handle = nullptr;

  Pool(CS_INT kind, bool locked, CS_INT chunksize = 1 << 16) {
    context.ctxversion = 113;
    context.ctxthread = locked ? &threads : nullptr;
    context.ctxmalloc = [](CS_CONTEXT*, CS_INT size) {
      return std::malloc(static_cast<std::size_t>(size));
    };
    context.ctxfree = [](CS_CONTEXT*, CS_VOID* block) { std::free(block); };
    comn_mminit(&context, &handle);
    comn_mmproperty(handle, CS_SET, MM_PROP_POOLTYPE, &kind, 0, nullptr);
    comn_mmproperty(handle, CS_SET, MM_PROP_CHUNKSIZE, &chunksize, 0, nullptr);
    if (kind != MM_POOL_BUDDY) {
      CS_INT blocksize = chunksize - 32;
      comn_mmproperty(handle, CS_SET, MM_PROP_BLOCKSIZE, &blocksize, 0, nullptr);
    }
  }
  ~Pool() { comn_mmdrop(handle, MM_FORCE_DROP); }
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;

  void* allocate(std::size_t size) const {
    void* block = nullptr;
    while (block == nullptr) comn_mmalloc(handle, static_cast<CS_INT>(size), &block);
    return block;
  }
  void free(void* block) const { comn_mmfree(handle, block); }
};

// --- One block in, one out
// -------------------------------------------------------------------------

// Frees a random block of the working set and allocates another in its place.
void replace(benchmark::State& state, const auto& allocator, auto next_size) {
  std::array<void*, kWorkingSet> blocks = {};
  for (void*& block : blocks) block = allocator.allocate(next_size());
  std::array<CS_BYTE, 1024> places = {};
  for (std::mt19937 random(1); CS_BYTE & place : places) place = static_cast<CS_BYTE>(random());
  std::size_t i = 0;
  for (auto _ : state) {
    void*& block = blocks[places[i++ % places.size()]];
    allocator.free(block);
    benchmark::DoNotOptimize(block = allocator.allocate(next_size()));
  }
  for (void* block : blocks) allocator.free(block);
}

auto fixed_size(const benchmark::State& state) {
  return [size = static_cast<std::size_t>(state.range(0))] { return size; };
}

// 16 to 256 bytes, in an order of their own.
auto mixed_sizes() {
  return [i = 0u]() mutable { return 16 + (i += 97) % 241; };
}

template <class Allocator>
void replace_fixed(benchmark::State& state) {
  if (Allocator::missing() != nullptr) return state.SkipWithError(Allocator::missing());
  replace(state, Allocator(), fixed_size(state));
}
template <class Allocator>
void replace_mixed(benchmark::State& state) {
  if (Allocator::missing() != nullptr) return state.SkipWithError(Allocator::missing());
  replace(state, Allocator(), mixed_sizes());
}
template <CS_INT kind, bool locked>
void replace_fixed_in_pool(benchmark::State& state) {
  replace(state, Pool(kind, locked), fixed_size(state));
}
template <bool locked>
void replace_mixed_in_pool(benchmark::State& state) {
  replace(state, Pool(MM_POOL_BUDDY, locked), mixed_sizes());
}

#define SIZES ->Arg(16)->Arg(64)->Arg(256)
BENCHMARK(replace_fixed<Malloc>)->Name("replace/malloc") SIZES;
BENCHMARK(replace_fixed<Calloc>)->Name("replace/calloc") SIZES;
BENCHMARK(replace_fixed<Jemalloc>)->Name("replace/jemalloc") SIZES;
BENCHMARK(replace_fixed<Mimalloc>)->Name("replace/mimalloc") SIZES;
BENCHMARK(replace_fixed_in_pool<MM_POOL_UNIFORM, false>)->Name("replace/uniform") SIZES;
BENCHMARK(replace_fixed_in_pool<MM_POOL_UNIFORM, true>)->Name("replace/uniform_locked") SIZES;
BENCHMARK(replace_fixed_in_pool<MM_POOL_BUDDY, false>)->Name("replace/buddy") SIZES;
BENCHMARK(replace_fixed_in_pool<MM_POOL_BUDDY, true>)->Name("replace/buddy_locked") SIZES;
BENCHMARK(replace_mixed<Malloc>)->Name("replace_mixed/malloc");
BENCHMARK(replace_mixed<Calloc>)->Name("replace_mixed/calloc");
BENCHMARK(replace_mixed<Jemalloc>)->Name("replace_mixed/jemalloc");
BENCHMARK(replace_mixed<Mimalloc>)->Name("replace_mixed/mimalloc");
BENCHMARK(replace_mixed_in_pool<false>)->Name("replace_mixed/buddy");
BENCHMARK(replace_mixed_in_pool<true>)->Name("replace_mixed/buddy_locked");

// --- Many blocks, dropped together
// -----------------------------------------------------------------

constexpr std::size_t kFilled = 1000;

void* touched(void* block) {
  *static_cast<CS_INT*>(block) = 1;
  benchmark::DoNotOptimize(block);
  return block;
}

void fill_and_free(benchmark::State& state, const auto& allocator, auto next_size) {
  std::vector<void*> blocks(kFilled);
  for (auto _ : state) {
    for (void*& block : blocks) block = touched(allocator.allocate(next_size()));
    for (void* block : blocks) allocator.free(block);
  }
}

template <class Allocator>
void fill(benchmark::State& state) {
  if (Allocator::missing() != nullptr) return state.SkipWithError(Allocator::missing());
  fill_and_free(state, Allocator(), mixed_sizes());
}
template <class Allocator>
void fill_fixed(benchmark::State& state) {
  if (Allocator::missing() != nullptr) return state.SkipWithError(Allocator::missing());
  fill_and_free(state, Allocator(), fixed_size(state));
}
template <bool locked>
void fill_fixed_uniform(benchmark::State& state) {
  fill_and_free(state, Pool(MM_POOL_UNIFORM, locked, 1 << 19), fixed_size(state));
}

void fill_monotonic(benchmark::State& state) {
  auto next_size = mixed_sizes();
  for (auto _ : state) {
    std::pmr::monotonic_buffer_resource resource(1 << 16);
    for (std::size_t i = 0; i < kFilled; ++i) touched(resource.allocate(next_size(), 4));
  }
}

template <bool locked>
void fill_alloconly(benchmark::State& state) {
  auto next_size = mixed_sizes();
  for (auto _ : state) {
    const Pool pool(MM_POOL_ALLOCONLY, locked);
    for (std::size_t i = 0; i < kFilled; ++i) touched(pool.allocate(next_size()));
  }
}

BENCHMARK(fill<Malloc>)->Name("fill_1000/malloc");
BENCHMARK(fill<Calloc>)->Name("fill_1000/calloc");
BENCHMARK(fill<Jemalloc>)->Name("fill_1000/jemalloc");
BENCHMARK(fill<Mimalloc>)->Name("fill_1000/mimalloc");
BENCHMARK(fill_monotonic)->Name("fill_1000/monotonic_buffer_resource");
BENCHMARK(fill_alloconly<false>)->Name("fill_1000/alloconly");
BENCHMARK(fill_alloconly<true>)->Name("fill_1000/alloconly_locked");

BENCHMARK(fill_fixed<Malloc>)->Name("fill_1000_fixed/malloc") SIZES;
BENCHMARK(fill_fixed<Calloc>)->Name("fill_1000_fixed/calloc") SIZES;
BENCHMARK(fill_fixed<Jemalloc>)->Name("fill_1000_fixed/jemalloc") SIZES;
BENCHMARK(fill_fixed<Mimalloc>)->Name("fill_1000_fixed/mimalloc") SIZES;
BENCHMARK(fill_fixed_uniform<false>)->Name("fill_1000_fixed/uniform") SIZES;
BENCHMARK(fill_fixed_uniform<true>)->Name("fill_1000_fixed/uniform_locked") SIZES;

// --- Growth
// ----------------------------------------------------------------------------------------

// Frees and allocates the first of `chunks` blocks that take a chunk each: every free walks past
// the chunks that came later.
void free_behind_chunks(benchmark::State& state) {
  const Pool pool(MM_POOL_UNIFORM, false, 256);
  const auto count = static_cast<std::size_t>(state.range(0));
  std::vector<void*> blocks(count);
  for (void*& block : blocks) block = pool.allocate(200);
  void* oldest = blocks.front();
  for (auto _ : state) {
    pool.free(oldest);
    benchmark::DoNotOptimize(oldest = pool.allocate(200));
  }
}
BENCHMARK(free_behind_chunks)->RangeMultiplier(8)->Range(1, 32768);

// The same with large blocks in one chunk: every free walks past the blocks that came later.
void free_behind_blocks(benchmark::State& state) {
  const Pool pool(MM_POOL_BUDDY, false, 1 << 28);
  const auto count = static_cast<std::size_t>(state.range(0));
  std::vector<void*> blocks(count);
  for (void*& block : blocks) block = pool.allocate(5000);
  std::size_t i = 0;
  for (auto _ : state) {
    void*& oldest = blocks[i++ % count];
    pool.free(oldest);
    benchmark::DoNotOptimize(oldest = pool.allocate(5000));
  }
}
BENCHMARK(free_behind_blocks)->RangeMultiplier(8)->Range(8, 4096);

}  // namespace
