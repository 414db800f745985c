// Pools beside general allocators: one block in, one out, from a working set; filling and dropping;
// and how both grow with the live blocks.
#include <dlfcn.h>
#include <malloc.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory_resource>
#include <random>
#include <vector>

#include "bench.h"
#include "comnlib/memory.h"

namespace {

using namespace bench;

// --- what is compared

struct Malloc {
  static constexpr bool frees_all = false;
  static const char* missing() { return nullptr; }
  static void* allocate(std::size_t size) { return std::malloc(size); }
  static void free(void* block) { std::free(block); }
};

// Zeroed, as pools give it.
struct Calloc : Malloc {
  static void* allocate(std::size_t size) { return std::calloc(1, size); }
};

// The same work in two calls; the compiler would make one of them.
struct Cleared : Malloc {
  static void* allocate(std::size_t size) {
    void* block = std::malloc(size);
    benchmark::DoNotOptimize(block);
    return std::memset(block, 0, size);
  }
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
  static constexpr bool frees_all = false;
  static const char* missing() { return library.free ? nullptr : "library not installed"; }
  static void* allocate(std::size_t size) { return library.allocate(size); }
  static void free(void* block) { library.free(block); }
};

const Loaded jemalloc("libjemalloc.so.2", "malloc", "free");
const Loaded mimalloc("libmimalloc.so.2", "mi_malloc", "mi_free");
using Jemalloc = LoadedAllocator<jemalloc>;
using Mimalloc = LoadedAllocator<mimalloc>;

// Frees what is left when it goes.
struct Pool {
  static constexpr bool frees_all = true;
  CS_THREAD threads = *comn_thread_table();
  CS_CONTEXT context = {};
  MmHandle* handle = nullptr;

  Pool(CS_INT kind, bool locked, CS_INT chunksize) {
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

// A kind of pool as an allocator.
template <CS_INT kind, bool locked = false, CS_INT chunksize = 1 << 16>
struct PoolOf : Pool {
  PoolOf() : Pool(kind, locked, chunksize) {}
  static const char* missing() { return nullptr; }
};

struct Monotonic {
  static constexpr bool frees_all = true;
  static const char* missing() { return nullptr; }
  void* allocate(std::size_t size) { return resource.allocate(size, 4); }
  std::pmr::monotonic_buffer_resource resource{1 << 16};
};

std::size_t argument(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(0));
}

// --- one block in, one out

template <class Allocator>
void free_rest(Allocator& allocator, const std::vector<void*>& blocks) {
  if constexpr (!Allocator::frees_all)
    for (void* block : blocks) allocator.free(block);
}

// Frees a random one of the live blocks and allocates another in its place.
template <class Allocator>
void replace(benchmark::State& state, std::size_t live, auto next_size) {
  if (Allocator::missing() != nullptr) return state.SkipWithError(Allocator::missing());
  Allocator allocator;
  std::vector<void*> blocks(live);
  for (void*& block : blocks) block = allocator.allocate(next_size());
  std::vector<std::uint32_t> places(std::max<std::size_t>(live, 1024));
  std::mt19937 random(1);
  for (std::uint32_t& place : places) place = static_cast<std::uint32_t>(random() % live);
  std::size_t i = 0;
  for (auto _ : state) {
    void*& block = blocks[places[i]];
    if (++i == places.size()) i = 0;
    allocator.free(block);
    benchmark::DoNotOptimize(block = allocator.allocate(next_size()));
  }
  free_rest(allocator, blocks);
}

auto fixed(std::size_t size) {
  return [size] { return size; };
}

// 16 to 256 bytes, in an order of their own.
auto mixed() {
  return [i = 0u]() mutable { return 16 + (i += 97) % 241; };
}

constexpr std::size_t kWorkingSet = 256;

template <class Allocator>
void replace_fixed(benchmark::State& state) {
  replace<Allocator>(state, kWorkingSet, fixed(argument(state)));
}
template <class Allocator>
void replace_mixed(benchmark::State& state) {
  replace<Allocator>(state, kWorkingSet, mixed());
}
template <class Allocator>
void replace_among(benchmark::State& state) {
  replace<Allocator>(state, argument(state), fixed(64));
}

// Frees the oldest of the live blocks and allocates the newest.
template <class Allocator, std::size_t size>
void replace_oldest(benchmark::State& state) {
  Allocator allocator;
  std::vector<void*> blocks(argument(state));
  for (void*& block : blocks) block = allocator.allocate(size);
  std::size_t i = 0;
  for (auto _ : state) {
    void*& oldest = blocks[i];
    if (++i == blocks.size()) i = 0;
    allocator.free(oldest);
    benchmark::DoNotOptimize(oldest = allocator.allocate(size));
  }
  free_rest(allocator, blocks);
}

// --- many blocks

void fill(auto& allocator, std::vector<void*>& blocks, auto& next_size) {
  for (void*& block : blocks) {
    block = allocator.allocate(next_size());
    *static_cast<CS_INT*>(block) = 1;
    benchmark::DoNotOptimize(block);
  }
}

template <class Allocator>
void fill_and_drop(benchmark::State& state, std::size_t count) {
  std::vector<void*> blocks(count);
  auto next_size = mixed();
  for (auto _ : state) {
    Allocator allocator;
    fill(allocator, blocks, next_size);
  }
  items(state, count);
}

template <class Allocator>
void fill_and_free(benchmark::State& state, std::size_t count, auto next_size) {
  if (Allocator::missing() != nullptr) return state.SkipWithError(Allocator::missing());
  Allocator allocator;
  std::vector<void*> blocks(count);
  for (auto _ : state) {
    fill(allocator, blocks, next_size);
    for (void* block : blocks) allocator.free(block);
  }
  items(state, count);
}

constexpr std::size_t kFilled = 1000;

template <class Allocator>
void fill_fixed(benchmark::State& state) {
  fill_and_free<Allocator>(state, kFilled, fixed(argument(state)));
}
template <class Allocator>
void fill_mixed(benchmark::State& state) {
  if constexpr (Allocator::frees_all)
    fill_and_drop<Allocator>(state, argument(state));
  else
    fill_and_free<Allocator>(state, argument(state), mixed());
}

// --- names

constexpr CS_INT kLargeChunk = 1 << 24;

void measure_at_sizes(const std::string& name, void (*function)(benchmark::State&)) {
  measure("memory/" + name, function)->ArgName("bytes")->Arg(16)->Arg(64)->Arg(256);
}

void measure_filling(const std::string& who, void (*function)(benchmark::State&)) {
  measure("memory/fill and drop, mixed sizes/" + who, function)->ArgName("blocks")->Arg(kFilled);
}

template <std::int64_t kMost = 1'000'000>
void curve_over_blocks(const std::string& name, void (*function)(benchmark::State&)) {
  measure("size/memory/" + name, function)->ArgName("live blocks")->Apply(decades<kMost>);
}

// What a general allocator does, every pool is compared with.
template <class Allocator>
void measure_general(const std::string& who) {
  measure_at_sizes("replace one/" + who, replace_fixed<Allocator>);
  measure("memory/replace one, mixed sizes/" + who, replace_mixed<Allocator>);
  measure_filling(who, fill_mixed<Allocator>);
  measure_at_sizes("fill and free each/" + who, fill_fixed<Allocator>);
}

template <bool locked>
void measure_pools(const std::string& suffix) {
  using Uniform = PoolOf<MM_POOL_UNIFORM, locked>;
  using Buddy = PoolOf<MM_POOL_BUDDY, locked>;
  using AllocOnly = PoolOf<MM_POOL_ALLOCONLY, locked>;
  measure_at_sizes("replace one/comnlib uniform" + suffix, replace_fixed<Uniform>);
  measure_at_sizes("replace one/comnlib buddy" + suffix, replace_fixed<Buddy>);
  measure("memory/replace one, mixed sizes/comnlib buddy" + suffix, replace_mixed<Buddy>);
  measure_filling("comnlib alloc-only" + suffix, fill_mixed<AllocOnly>);
  measure_at_sizes("fill and free each/comnlib uniform" + suffix,
                   fill_fixed<PoolOf<MM_POOL_UNIFORM, locked, 1 << 19>>);
}

const Registration registered([] {
  measure_general<Malloc>("malloc");
  measure_general<Calloc>("calloc");
  measure_general<Cleared>("malloc and memset");
  measure_general<Jemalloc>("jemalloc");
  measure_general<Mimalloc>("mimalloc");
  measure_filling("std::pmr::monotonic", fill_mixed<Monotonic>);
  measure_pools<false>("");
  measure_pools<true>(" locked");

  const std::string replaced = "replace one at random, 64 bytes/";
  curve_over_blocks(replaced + "malloc", replace_among<Malloc>);
  curve_over_blocks(replaced + "comnlib uniform", replace_among<PoolOf<MM_POOL_UNIFORM>>);
  curve_over_blocks(replaced + "comnlib uniform, 16 MB chunks",
                    replace_among<PoolOf<MM_POOL_UNIFORM, false, kLargeChunk>>);
  curve_over_blocks(replaced + "comnlib buddy", replace_among<PoolOf<MM_POOL_BUDDY>>);
  curve_over_blocks(replaced + "comnlib buddy, 16 MB chunks",
                    replace_among<PoolOf<MM_POOL_BUDDY, false, kLargeChunk>>);

  const std::string filled = "fill and drop, mixed sizes/";
  curve_over_blocks(filled + "malloc", fill_mixed<Malloc>);
  curve_over_blocks(filled + "std::pmr::monotonic", fill_mixed<Monotonic>);
  curve_over_blocks(filled + "comnlib alloc-only", fill_mixed<PoolOf<MM_POOL_ALLOCONLY>>);
  curve_over_blocks(filled + "comnlib alloc-only, 16 MB chunks",
                    fill_mixed<PoolOf<MM_POOL_ALLOCONLY, false, kLargeChunk>>);

  const std::string oldest = "replace the oldest/";
  curve_over_blocks<30'000>(oldest + "malloc", replace_oldest<Malloc, 200>);
  curve_over_blocks<30'000>(oldest + "comnlib uniform, a chunk each",
                            replace_oldest<PoolOf<MM_POOL_UNIFORM, false, 256>, 200>);
  curve_over_blocks<30'000>(oldest + "comnlib buddy, large blocks",
                            replace_oldest<PoolOf<MM_POOL_BUDDY, false, 1 << 28>, 5000>);
});

}  // namespace
