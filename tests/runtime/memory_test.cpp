// Memory pools: use at random, the fixed layouts and list orders.
#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <random>
#include <span>

#include "pools.h"
#include "support/stops.h"

namespace {

using namespace pools;

template <class Node>
int length(const Node* list, Node* Node::*next) {
  int count = 0;
  for (; list != nullptr; list = list->*next) ++count;
  return count;
}

// Allocates, reallocates and frees at random, each block filled with a byte of its own: blocks that
// overlap spoil it. At times the host has no memory.
void use_at_random(MmHandle* pool, CS_INT kind, unsigned run, std::uintptr_t shift,
                   unsigned least = 1) {
  std::vector<std::pair<std::span<CS_BYTE>, CS_BYTE>> blocks;
  std::mt19937 random(run);
  const auto expect_fill = [](std::span<CS_BYTE> block, CS_BYTE fill) {
    EXPECT_EQ(std::ranges::count(block, fill), std::ssize(block));
  };
  const auto keep = [&](void* memory, std::size_t size) {
    blocks.emplace_back(std::span(static_cast<CS_BYTE*>(memory), size), random());
    std::ranges::fill(blocks.back().first, blocks.back().second);
  };
  EXPECT_EQ(CS_SUCCEED, set(pool, MM_PROP_POOLTYPE, kind));
  for (int step = 0; step < 3000 || !blocks.empty(); ++step) {
    ASSERT_TRUE(step % 64 != 0 || com__mm_validate(pool) == CS_SUCCEED) << "step " << step;
    const hosts::Failing failing(random() % 8 == 0 ? 1 : SIZE_MAX / 2);
    const auto most = random() % 10 == 0 ? 9000U : 300U;
    const std::size_t size = kind == MM_POOL_UNIFORM ? 20 : least + random() % most;
    if (step < 3000 && (blocks.empty() || random() % 10 < 6)) {
      void* memory = nullptr;
      const CS_RETCODE result = comn_mmalloc(pool, static_cast<CS_INT>(size), &memory);
      if (memory == nullptr) {  // no memory, or a compaction that did not suffice
        const bool may_succeed = kind == MM_POOL_BUDDY && !failing.reached();
        EXPECT_EQ(may_succeed && result == CS_SUCCEED ? CS_SUCCEED : CS_MEM_ERROR, result);
        continue;
      }
      EXPECT_FALSE(failing.reached());
      EXPECT_EQ(shift, reinterpret_cast<std::uintptr_t>(memory) % kWord);
      expect_fill({static_cast<CS_BYTE*>(memory), size}, 0);
      keep(memory, size);
      continue;
    }
    std::swap(blocks.back(), blocks[random() % blocks.size()]);
    const auto [block, fill] = blocks.back();
    void* moved = block.data();
    if (kind == MM_POOL_BUDDY && random() % 4 == 0) {
      const CS_RETCODE result = comn_mmrealloc(pool, static_cast<CS_INT>(size), &moved);
      EXPECT_EQ(failing.reached()       ? CS_MEM_ERROR
                : moved == block.data() ? result
                                        : CS_SUCCEED,
                result);
      EXPECT_EQ(failing.reached() ? block.data() : moved, moved);
      expect_fill({static_cast<CS_BYTE*>(moved), block.size()}, fill);
      if (moved != block.data()) {
        blocks.pop_back();
        keep(moved, size);
      }
    } else {  // a block that cannot be freed is only forgotten
      expect_fill(block, fill);
      EXPECT_EQ(kind == MM_POOL_ALLOCONLY ? CS_FAIL : CS_SUCCEED, comn_mmfree(pool, moved));
      blocks.pop_back();
    }
  }
  ASSERT_EQ(CS_SUCCEED, com__mm_validate(pool));
}

// Subpools of all kinds, filled and dropped in turn, leave nothing behind in the top pool.
TEST(Pools, RandomOperationsOnAContext) {
  for (unsigned round = 0; round < 4; ++round) {
    PoolContext host(static_cast<int>(round));  // chunks start at any address
    host.ctxthread = &host.threads;
    const Pool top(host);
    for (CS_INT i = 0; i < 3; ++i) {
      const CS_INT blocksizes[] = {64, 1000, 4096, 100'000};
      ASSERT_EQ(CS_SUCCEED, set(subpool(top, i), MM_PROP_BLOCKSIZE, blocksizes[round]));
      use_at_random(subpool(top, i), kKinds[(i + round) % 3], round, round);
    }
    for (const CS_INT i : {1, 0, 2}) EXPECT_EQ(CS_SUCCEED, comn_mmdrop(subpool(top, i), CS_UNUSED));
    EXPECT_EQ(nullptr, top->mmh_head->mph_heap);
  }
}

TEST(Pools, RandomOperationsInCallerMemory) {
  for (const CS_INT kind : kKinds) {
    for (const CS_INT length : {2000, 30'001, 200'002, 500'003}) {
      const auto shift = static_cast<std::size_t>(length % 4);
      std::vector<CS_BYTE> memory(static_cast<std::size_t>(length) + shift + 1, 0xab);
      CS_BYTE* const buffer = memory.data() + shift;
      const CS_INT half = length / 16 * 8;
      const Pool pool(buffer, static_cast<std::size_t>(half));
      put(pool, MM_PROP_ADDMEMORY, buffer + half, length - half);
      use_at_random(pool, kind, static_cast<unsigned>(kind + length), shift);
      EXPECT_EQ(0xab, buffer[length]) << "nothing after the area is touched";
      for (std::size_t i = 0; i < shift; ++i) EXPECT_EQ(0xab, memory[i]) << "nor before it";
    }
  }
}

// Blocks that each have a chunk of their own, which goes back with them.
TEST(Pools, FindManyChunks) {
  PoolContext host;
  const Pool pool(host);
  use_at_random(pool, MM_POOL_BUDDY, 1, 0, 5000);
  EXPECT_EQ(2U, host.live.size()) << "the control records";
}

// --- Heaps ---------------------------------------------------------------------------------------

TEST(Heap, SplitsFirstFitAndMergesOnFree) {
  alignas(kWord) CS_BYTE control[1 + kControlSize], memory[kOverhead + 25 * kWord];
  const Pool pool(memory, sizeof memory, control + 1);
  EXPECT_EQ(control + 1 + kHeadSize, reinterpret_cast<CS_BYTE*>(pool.handle));
  const MmHeap* heap = pool->mmh_head->mph_heap;
  std::array<void*, 5> blocks = {};
  const CS_INT sizes[] = {4 * kWord, 2 * kWord - 3, 4 * kWord, 5 * kWord, 3 * kWord};
  const CS_INT offsets[] = {0, 5, 8, 13, 19};  // words: rounded, a size word before each
  for (std::size_t i = 0; i < 5; ++i) {
    ASSERT_EQ(CS_SUCCEED, com___getheap(pool, sizes[i], &blocks[i]));
    EXPECT_EQ(memory + kOverhead + offsets[i] * kWord, blocks[i]);
  }
  void* none = nullptr;
  EXPECT_EQ(CS_MEM_ERROR, com___getheap(pool, 2 * kWord + 1, &none));
  const struct {
    std::size_t freed;
    int blocks;
    CS_INT first;  // words
  } rows[] = {{2, 2, 4}, {0, 3, 4}, {1, 2, 12}, {4, 2, 12}, {3, 1, 25}};
  for (const auto& row : rows) {
    com___putheap(pool, blocks[row.freed]);
    EXPECT_EQ(row.blocks, length(heap->free, &MmList::link)) << row.freed;
    EXPECT_EQ(row.first * kWord, heap->free->size) << row.freed;
  }
}

TEST(Heap, RestsWithoutRoomForALink) {
  for (CS_INT tail = 0; tail < kWord; ++tail) {
    std::vector<CS_BYTE> memory(static_cast<std::size_t>(kOverhead + 11 * kWord + tail));
    CS_BYTE control[kControlSize];
    const Pool pool(memory.data(), memory.size(), control);
    const MmHeap* heap = pool->mmh_head->mph_heap;
    void *whole = nullptr, *first = nullptr, *second = nullptr;
    ASSERT_EQ(CS_SUCCEED, com___getheap(pool, 10 * kWord, &whole));
    ASSERT_NE(nullptr, heap->free) << "at the end of a heap it stays on the list";
    EXPECT_EQ(tail, heap->free->size);
    com___putheap(pool, whole);
    EXPECT_EQ(11 * kWord + tail, heap->free->size);
    for (void** out : {&first, &second}) com___getheap(pool, 5 * kWord, out);
    com___putheap(pool, first);
    com___getheap(pool, 4 * kWord, &first);  // in front of a block no such rest is made
    EXPECT_EQ(5U * kWord, header_of(first));
  }
}

TEST(Heap, ChunksHaveTheStatedSizesAndGoBackWhole) {
  PoolContext host;
  const Pool pool(host);
  void *small = nullptr, *exact = nullptr;
  com___getheap(pool, 10, &small);
  com___getheap(pool, 4101, &exact);
  constexpr CS_INT kSecond = 4104 + kOverhead;
  EXPECT_EQ((std::vector<CS_INT>{kHeadSize, kHandleSize, 4120, kSecond}), host.requests);
  EXPECT_EQ(kSecond, pool->mmh_head->mph_heap->size) << "newest first";
  for (void* block : {small, exact}) com___putheap(pool, block);
  EXPECT_EQ(2u, host.live.size());
  EXPECT_EQ(4120 + kSecond, pool->mmh_head->mph_totalsize) << "never decreased";
  set(pool, MM_PROP_MAXSIZE, 4120 + kSecond + 4119);
  EXPECT_EQ(CS_MEM_ERROR, com___getheap(pool, 10, &small));
  set(pool, MM_PROP_MAXSIZE, 4120 + kSecond + 4120);
  EXPECT_EQ(CS_SUCCEED, com___getheap(pool, 10, &small));
}

TEST(Heap, LengthsOfManagedMemory) {
  const struct {
    CS_INT length;
    CS_RETCODE result;
    CS_INT free;  // usable bytes, -1: no free block, -2: no heap
  } rows[] = {{-1, CS_FAIL, 0},
              {kHandleSize - 1, CS_FAIL, 0},
              {kControlSize, CS_SUCCEED, -2},
              {kControlSize + 2 * kWord + 1, CS_SUCCEED, -2},
              {kControlSize + kOverhead + kWord - 1, CS_SUCCEED, -1},
              {kControlSize + kOverhead + kWord, CS_SUCCEED, kWord}};
  for (const auto& row : rows) {
    std::vector<CS_BYTE> memory(static_cast<std::size_t>(std::max(row.length, 1)));
    MmHandle* pool = nullptr;
    ASSERT_EQ(row.result, comn_mmmanage(memory.data(), row.length, &pool)) << row.length;
    if (row.result != CS_SUCCEED) continue;
    const MmHeap* heap = pool->mmh_head->mph_heap;
    EXPECT_EQ(row.free, heap == nullptr ? -2 : heap->free == nullptr ? -1 : heap->free->size);
    EXPECT_EQ(row.length - kControlSize, pool->mmh_head->mph_totalsize);
  }
}

// --- Disciplines ---------------------------------------------------------------------------------

TEST(Buddy, OrdersAndHeaders) {
  PoolContext host;
  const Pool pool(host);
  CS_BYTE* first = allocate(pool, 0);
  const CS_INT top_level = rounded(4096 + kWord + kLink) + kOverhead;
  EXPECT_EQ((std::vector<CS_INT>{kHeadSize, kHandleSize, top_level}), host.requests);
  constexpr int kTop = kWord == 4 ? 8 : 7;  // 4096 bytes
  for (int order = 0; order < kTop; ++order)
    EXPECT_EQ(1, length(pool->mmh_pool.buddy.free[order], &MmDList::next)) << order;
  EXPECT_EQ(reinterpret_cast<MmDList*>(-1), pool->mmh_pool.buddy.free[kTop + 1]);
  const auto top = static_cast<CS_UINT>(reinterpret_cast<std::uintptr_t>(first - kWord));
  EXPECT_EQ(kWord == 4 ? (top & 0x7fffc) << 2 : (top & 0xffff8) << 1, header_of(first));
  EXPECT_EQ(first + 4 * kWord, allocate(pool, 5)) << "the lower half first, then its other half";
  const std::pair<CS_INT, CS_UINT> orders[] = {{3 * kWord, 0},
                                               {3 * kWord + 1, 1},
                                               {7 * kWord, 1},
                                               {7 * kWord + 1, 2},
                                               {15 * kWord, 2},
                                               {most(kTop - 1), kTop - 1},
                                               {most(kTop - 1) + 1, kTop},
                                               {most(kTop), kTop}};
  for (const auto& [size, order] : orders)
    EXPECT_EQ(order, header_of(allocate(pool, size)) & 15) << size;
  CS_BYTE* large = allocate(pool, most(kTop) + 1);
  EXPECT_EQ(static_cast<CS_UINT>(most(kTop) + 1) | 0x80000000U, header_of(large));
  EXPECT_EQ(static_cast<CS_UINT>(rounded(most(kTop) + 1 + kWord + kLink)),
            header_of(large - kWord - kLink))
      << "link, header and bytes, rounded";
  const std::pair<CS_INT, CS_INT> highest[] = {
      {span(0), 0},   {span(0) + 1, 1},   {span(8), 8}, {span(8) + 1, 9},
      {span(15), 15}, {span(15) + 1, 16}, {1 << 30, 16}};
  for (const auto& [blocksize, bpmax] : highest) {
    const Pool other(host, MM_POOL_BUDDY, blocksize);
    allocate(other, 1);
    EXPECT_EQ(bpmax, other->mmh_pool.buddy.bpmax) << blocksize;
    EXPECT_EQ(span(bpmax) + kWord, get(other, MM_PROP_BLOCKSIZE)) << "a top-level block and a word";
  }
}

TEST(Buddy, MergesOnlyWhenItRunsOut) {
  PoolContext host;
  const Pool pool(host, MM_POOL_BUDDY, span(2));
  std::array<CS_BYTE*, 4> quarters = {};
  for (CS_BYTE*& quarter : quarters) quarter = allocate(pool, most(0));
  comn_mmfree(pool, quarters[0]);
  comn_mmfree(pool, quarters[1]);
  EXPECT_EQ(2, length(pool->mmh_pool.buddy.free[0], &MmDList::next));

  // One pair becomes an order 1; order 2 was needed: success, and nothing is handed out.
  void* out = &host;
  EXPECT_EQ(CS_SUCCEED, comn_mmalloc(pool, most(2), &out));
  EXPECT_EQ(&host, out);
  void* grown = quarters[2];
  EXPECT_EQ(CS_SUCCEED, comn_mmrealloc(pool, span(0), &grown)) << "counts the header";
  EXPECT_EQ(quarters[2], grown);
  EXPECT_EQ(CS_SUCCEED, comn_mmrealloc(pool, most(2), &grown)) << "a second top-level block";
  EXPECT_NE(quarters[2], grown);
  EXPECT_NE(0u, header_of(quarters[2]) & 0x40000000u) << "the old block is free";
  EXPECT_EQ(quarters[0], allocate(pool, most(1)));
}

// Addresses whose marks wrap around: the top-level blocks cross the boundary.
TEST(Buddy, MarksWrapAround) {
  std::vector<CS_BYTE> memory(std::size_t{3} * span(15));
  const Pool pool(memory.data(), memory.size());
  set(pool, MM_PROP_BLOCKSIZE, span(14));
  std::vector<void*> blocks;
  for (void* out = nullptr; comn_mmalloc(pool, 1000, &out) == CS_SUCCEED; out = nullptr)
    blocks.push_back(out);
  for (void* block : blocks) comn_mmfree(pool, block);
  EXPECT_NE(nullptr, allocate(pool, most(14))) << "merged up to a top-level block";
  EXPECT_EQ(CS_SUCCEED, com__mm_validate(pool));
}

// Headers and lists end at order 15: a top-level block of order 16 enters as two of those.
TEST(Buddy, HasNoBlockOfOrder16) {
  PoolContext host;
  const Pool pool(host, MM_POOL_BUDDY, span(15) + 1);
  constexpr CS_INT kLargest = most(15);
  CS_BYTE* const lower = allocate(pool, kLargest);
  EXPECT_EQ(15U, header_of(lower) & 15);
  EXPECT_EQ(span(16) + kWord + kLink + kOverhead, host.requests.back());
  EXPECT_EQ(lower + span(15), allocate(pool, most(0) + 1));
  for (CS_INT order = 1; order < 15; ++order)
    EXPECT_EQ(1, length(pool->mmh_pool.buddy.free[order], &MmDList::next)) << order;
  EXPECT_EQ(0x80000000U | (kLargest + 1), header_of(allocate(pool, kLargest + 1))) << "large";
  EXPECT_EQ(CS_SUCCEED, com__mm_validate(pool));
  EXPECT_EQ(CS_SUCCEED, comn_mmfree(pool, lower));
  EXPECT_EQ(lower, allocate(pool, kLargest));
  allocate(pool, kLargest);  // a second top-level block
  EXPECT_EQ(span(16) + kWord, get(pool, MM_PROP_BLOCKSIZE));
  EXPECT_EQ(CS_SUCCEED, com__mm_validate(pool));
}

TEST(Uniform, SlabsOfOneSize) {
  const struct {
    CS_INT size, blocksize, node, slab;
  } rows[] = {{3 * kWord - 2, 4096, 4 * kWord, 4096},
              {3 * kWord + 1, 4096, 5 * kWord, 4096 / (5 * kWord) * 5 * kWord},
              {5000, 4096, 5000 + kWord, 5000 + kWord},
              {0, 10, 2 * kWord, 2 * kWord}};
  for (const auto& row : rows) {
    PoolContext host;
    const Pool pool(host, MM_POOL_UNIFORM, row.blocksize);
    CS_BYTE* one = allocate(pool, row.size);
    EXPECT_EQ(row.slab, get(pool, MM_PROP_BLOCKSIZE));
    void* other = one;
    for (const bool used_up : {false, true}) {
      while (used_up && pool->mmh_pool.uniform.free != nullptr) other = allocate(pool, row.size);
      for (const CS_INT size : {row.size + 1, 0x7fffffff})
        EXPECT_EQ(CS_FAIL, comn_mmalloc(pool, size, &other)) << size;
    }
    // Data that looks like a free node's.
    reinterpret_cast<void**>(one)[0] = one;
    if (row.node > 2 * kWord) *reinterpret_cast<CS_UINT*>(one + kWord) = 0xdeadf4ee;
    if (other != one) comn_mmfree(pool, other);  // so that there is a free one
    EXPECT_EQ(CS_SUCCEED, comn_mmfree(pool, one));
    EXPECT_EQ(one - kWord, pool->mmh_pool.uniform.free);
    EXPECT_EQ(row.node, static_cast<CS_INT>(header_of(one)));
    EXPECT_EQ(one, allocate(pool, row.size)) << "last freed first";
  }
}

TEST(AllocOnly, BumpsThroughRegions) {
  PoolContext host;
  const Pool pool(host, MM_POOL_ALLOCONLY, 128);
  CS_BYTE* first = allocate(pool, 5);
  EXPECT_EQ(reinterpret_cast<CS_BYTE*>(pool->mmh_blocks) + kLink + 24, first) << "link and header";
  EXPECT_EQ(first + 8, allocate(pool, 64));
  CS_BYTE* other = allocate(pool, 40);  // 32 are left: a new region
  EXPECT_EQ(other + 40, allocate(pool, 64)) << "newest first";
  EXPECT_EQ(first + 72, allocate(pool, 32));
}

// Chunks across the borders of 4 GiB, many of which differ only above the low half of their
// addresses; and a block of none of them, which differs so too.
TEST(Pools, AddressesAreComparedWhole) {
  if (kWord == 4) GTEST_SKIP() << "addresses have 32 bits";
  constexpr std::size_t kSize = 600'000, kBack = 75 * 4096;
  constexpr std::uint64_t kBorder = std::uint64_t{1} << 32;
  // Where checkers leave memory to programs.
#ifdef __SANITIZE_THREAD__
  constexpr std::uint64_t kBase = 16 * kBorder;
#else
  constexpr std::uint64_t kBase = 8192 * kBorder;
#endif
  std::vector<CS_BYTE*> areas;
  const auto map = [&](std::uint64_t border, std::uint64_t back) {
    const std::uint64_t start = kBase + border * kBorder - back;
    auto* const wanted = reinterpret_cast<void*>(static_cast<std::uintptr_t>(start));
    void* const area = mmap(wanted, kSize, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    if (area == wanted) areas.push_back(static_cast<CS_BYTE*>(area));
  };
  for (const std::uint64_t border : {2, 1, 5, 3, 8, 4, 7, 6}) {
    map(border, kBack);
    map(border, 2 << 20);
  }
  map(9, kBack);
  if (areas.size() < 17) GTEST_SKIP() << "a checker has these addresses";
  for (const CS_INT kind : kKinds) {
    const Pool pool(areas[0], kSize);
    for (std::size_t i = 1; i < 16; ++i)
      ASSERT_EQ(CS_SUCCEED, put(pool, MM_PROP_ADDMEMORY, areas[i], kSize));
    EXPECT_EQ(CS_SUCCEED, com__mm_validate(pool));
    use_at_random(pool, kind, static_cast<unsigned>(kind), 0);
    if (kind != MM_POOL_UNIFORM) continue;
    header_of(areas[16] + 64) = header_of(allocate(pool, 20));
    stops::expect({STOP(stops::kAssertion, comn_mmfree(pool, areas[16] + 64))});
  }
  for (CS_BYTE* area : areas) munmap(area, kSize);
}

}  // namespace
