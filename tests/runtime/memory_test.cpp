// Memory pools: use at random, the fixed layouts and list orders.
#include <algorithm>
#include <array>
#include <random>
#include <span>

#include "pools.h"

namespace {

using namespace pools;

template <class Node>
int length(const Node* list, Node* Node::*next) {
  int count = 0;
  for (; list != nullptr; list = list->*next) ++count;
  return count;
}

// Allocates and frees at random, each block filled with a byte of its own: blocks that overlap
// spoil it.
void use_at_random(MmHandle* pool, CS_INT kind, unsigned run, std::uintptr_t shift) {
  std::vector<std::pair<std::span<CS_BYTE>, CS_BYTE>> blocks;
  std::mt19937 random(run);
  const auto expect_fill = [](std::span<CS_BYTE> block, CS_BYTE fill) {
    EXPECT_EQ(std::ranges::count(block, fill), std::ssize(block));
  };
  EXPECT_EQ(CS_SUCCEED, set(pool, MM_PROP_POOLTYPE, kind));
  for (int step = 0; step < 3000 || !blocks.empty(); ++step) {
    ASSERT_TRUE(step % 64 != 0 || com__mm_validate(pool) == CS_SUCCEED) << "step " << step;
    if (step < 3000 && (blocks.empty() || random() % 10 < 6)) {
      const auto most = random() % 10 == 0 ? 9000U : 300U;
      const auto size = kind == MM_POOL_UNIFORM ? 20 : static_cast<CS_INT>(1 + random() % most);
      void* memory = nullptr;
      const CS_RETCODE result = comn_mmalloc(pool, size, &memory);
      if (memory == nullptr) {  // no room in caller memory, or a compaction that did not suffice
        EXPECT_TRUE(result == CS_MEM_ERROR || (result == CS_SUCCEED && kind == MM_POOL_BUDDY));
        continue;
      }
      EXPECT_EQ(shift, reinterpret_cast<std::uintptr_t>(memory) % 4);
      const std::span block(static_cast<CS_BYTE*>(memory), static_cast<std::size_t>(size));
      expect_fill(block, 0);
      blocks.emplace_back(block, static_cast<CS_BYTE>(random()));
      std::ranges::fill(block, blocks.back().second);
    } else {  // a block that cannot be freed is only forgotten
      std::swap(blocks.back(), blocks[random() % blocks.size()]);
      const auto [block, fill] = blocks.back();
      expect_fill(block, fill);
      EXPECT_EQ(kind == MM_POOL_ALLOCONLY ? CS_FAIL : CS_SUCCEED, comn_mmfree(pool, block.data()));
      blocks.pop_back();
    }
  }
  ASSERT_EQ(CS_SUCCEED, com__mm_validate(pool));
}

// Subpools of all kinds, filled and dropped in turn, leave nothing behind in the top pool.
TEST(Pools, RandomOperationsOnAContext) {
  for (unsigned round = 0; round < 4; ++round) {
    Host host(static_cast<int>(round));  // chunks start at any address
    const Pool top(host);
    std::array<MmHandle*, 3> pools = {};
    for (CS_INT i = 0; i < 3; ++i) {
      pools[i] = subpool(top, i);
      const CS_INT blocksizes[] = {64, 1000, 4096, 100'000};
      ASSERT_EQ(CS_SUCCEED, set(pools[i], MM_PROP_BLOCKSIZE, blocksizes[round]));
      use_at_random(pools[i], kKinds[(i + round) % 3], round, round);
    }
    for (const std::size_t i : {1, 0, 2}) EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pools[i], CS_UNUSED));
    EXPECT_EQ(nullptr, top->mmh_head->mph_heap);
  }
}

TEST(Pools, RandomOperationsInCallerMemory) {
  for (const CS_INT kind : kKinds) {
    for (const CS_INT length : {2000, 30'001, 200'002, 500'003}) {
      const auto shift = static_cast<std::size_t>(length % 4);
      std::vector<CS_BYTE> memory(static_cast<std::size_t>(length) + shift + 1, 0xab);
      CS_BYTE* const buffer = memory.data() + shift;
      MmHandle* pool = nullptr;
      const CS_INT half = length / 8 * 4;
      ASSERT_EQ(CS_SUCCEED, comn_mmmanage(buffer, half, &pool));
      put(pool, MM_PROP_ADDMEMORY, buffer + half, length - half);
      use_at_random(pool, kind, static_cast<unsigned>(kind + length), shift);
      EXPECT_EQ(0xab, buffer[length]) << "nothing after the area is touched";
      for (std::size_t i = 0; i < shift; ++i) EXPECT_EQ(0xab, memory[i]) << "nor before it";
    }
  }
}

// --- Heaps ---------------------------------------------------------------------------------------

TEST(Heap, SplitsFirstFitAndMergesOnFree) {
  alignas(4) CS_BYTE area[1 + 152];
  CS_BYTE* const control = area + 1;
  CS_BYTE memory[16 + 4 + 100];
  auto* pool = reinterpret_cast<MmHandle*>(control);
  ASSERT_EQ(CS_SUCCEED, comn_mmmanage(memory, sizeof memory, &pool));
  EXPECT_EQ(control + 48, reinterpret_cast<CS_BYTE*>(pool));
  MmHeap* heap = pool->mmh_head->mph_heap;
  std::array<void*, 5> blocks = {};
  const CS_INT sizes[] = {16, 5, 16, 20, 12};
  const CS_INT offsets[] = {0, 20, 32, 52, 76};  // rounded, a size word before each
  for (std::size_t i = 0; i < 5; ++i) {
    ASSERT_EQ(CS_SUCCEED, com___getheap(pool, sizes[i], &blocks[i]));
    EXPECT_EQ(memory + 20 + offsets[i], blocks[i]);
  }
  void* none = nullptr;
  EXPECT_EQ(CS_MEM_ERROR, com___getheap(pool, 9, &none));
  const struct {
    std::size_t freed;
    int blocks;
    CS_INT first;
  } rows[] = {{2, 2, 16}, {0, 3, 16}, {1, 2, 48}, {4, 2, 48}, {3, 1, 100}};
  for (const auto& row : rows) {
    com___putheap(pool, blocks[row.freed]);
    EXPECT_EQ(row.blocks, length(heap->free, &MmList::link)) << row.freed;
    EXPECT_EQ(row.first, heap->free->size) << row.freed;
  }
}

TEST(Heap, RestsWithoutRoomForALink) {
  for (const CS_INT tail : {0, 1, 2, 3}) {
    std::vector<CS_BYTE> memory(static_cast<std::size_t>(16 + 4 + 40 + 4 + tail));
    CS_BYTE control[152];
    auto* pool = reinterpret_cast<MmHandle*>(control);
    ASSERT_EQ(CS_SUCCEED, comn_mmmanage(memory.data(), static_cast<CS_INT>(memory.size()), &pool));
    MmHeap* heap = pool->mmh_head->mph_heap;
    void* whole = nullptr;
    ASSERT_EQ(CS_SUCCEED, com___getheap(pool, 40, &whole));
    ASSERT_NE(nullptr, heap->free) << "at the end of a heap it stays on the list";
    EXPECT_EQ(tail, heap->free->size);
    com___putheap(pool, whole);
    EXPECT_EQ(44 + tail, heap->free->size);
    void* first = nullptr;
    void* second = nullptr;
    com___getheap(pool, 20, &first);
    com___getheap(pool, 20, &second);
    com___putheap(pool, first);
    com___getheap(pool, 16, &first);  // in front of a block no such rest is made
    EXPECT_EQ(20u, header_of(first));
  }
}

TEST(Heap, ChunksHaveTheStatedSizesAndGoBackWhole) {
  Host host;
  const Pool pool(host);
  void* small = nullptr;
  void* exact = nullptr;
  com___getheap(pool, 10, &small);
  com___getheap(pool, 4101, &exact);
  EXPECT_EQ((std::vector<CS_INT>{48, 104, 4120, 4104 + 20}), host.requests);
  EXPECT_EQ(4124, pool->mmh_head->mph_heap->size) << "newest first";
  com___putheap(pool, small);
  com___putheap(pool, exact);
  EXPECT_EQ(2u, host.live.size());
  EXPECT_EQ(8244, pool->mmh_head->mph_totalsize) << "never decreased";
  set(pool, MM_PROP_MAXSIZE, 8244 + 4119);
  EXPECT_EQ(CS_MEM_ERROR, com___getheap(pool, 10, &small));
  set(pool, MM_PROP_MAXSIZE, 8244 + 4120);
  EXPECT_EQ(CS_SUCCEED, com___getheap(pool, 10, &small));
}

TEST(Heap, LengthsOfManagedMemory) {
  const struct {
    CS_INT length;
    CS_RETCODE result;
    CS_INT free;  // usable bytes, -1: no free block, -2: no heap
  } rows[] = {{-1, CS_FAIL, 0},      {103, CS_FAIL, 0},     {152, CS_SUCCEED, -2},
              {161, CS_SUCCEED, -2}, {175, CS_SUCCEED, -1}, {176, CS_SUCCEED, 4}};
  for (const auto& row : rows) {
    std::vector<CS_BYTE> memory(static_cast<std::size_t>(std::max(row.length, 1)));
    MmHandle* pool = nullptr;
    ASSERT_EQ(row.result, comn_mmmanage(memory.data(), row.length, &pool)) << row.length;
    if (row.result != CS_SUCCEED) continue;
    const MmHeap* heap = pool->mmh_head->mph_heap;
    EXPECT_EQ(row.free, heap == nullptr ? -2 : heap->free == nullptr ? -1 : heap->free->size);
    EXPECT_EQ(row.length - 152, pool->mmh_head->mph_totalsize);
  }
}

// --- Disciplines ---------------------------------------------------------------------------------

TEST(Buddy, OrdersAndHeaders) {
  Host host;
  const Pool pool(host);
  CS_BYTE* first = allocate(pool, 0);
  EXPECT_EQ((std::vector<CS_INT>{48, 104, 4124}), host.requests);
  for (int order = 0; order < 8; ++order)
    EXPECT_EQ(1, length(pool->mmh_pool.buddy.free[order], &MmDList::next)) << order;
  EXPECT_EQ(reinterpret_cast<MmDList*>(-1), pool->mmh_pool.buddy.free[9]);
  const auto top = static_cast<CS_UINT>(reinterpret_cast<std::uintptr_t>(first - 4));
  EXPECT_EQ((top & 0x7fffc) << 2, header_of(first));
  EXPECT_EQ(first + 16, allocate(pool, 5)) << "the lower half first, then its other half";
  const std::pair<CS_INT, CS_UINT> orders[] = {{12, 0}, {13, 1},   {28, 1},   {29, 2},
                                               {60, 2}, {2044, 7}, {2045, 8}, {4092, 8}};
  for (const auto& [size, order] : orders)
    EXPECT_EQ(order, header_of(allocate(pool, size)) & 15) << size;
  CS_BYTE* large = allocate(pool, 4093);
  EXPECT_EQ(4093u | 0x80000000u, header_of(large));
  EXPECT_EQ(4104u, header_of(large - 8)) << "link, header and bytes, rounded";
  const std::pair<CS_INT, CS_INT> highest[] = {
      {16, 0}, {17, 1}, {4096, 8}, {4097, 9}, {524'288, 15}, {524'289, 16}, {1 << 30, 16}};
  for (const auto& [blocksize, bpmax] : highest) {
    const Pool other(host, MM_POOL_BUDDY, blocksize);
    allocate(other, 1);
    EXPECT_EQ(bpmax, other->mmh_pool.buddy.bpmax) << blocksize;
    EXPECT_EQ((16 << bpmax) + 4, get(other, MM_PROP_BLOCKSIZE)) << "a top-level block and a word";
  }
}

TEST(Buddy, MergesOnlyWhenItRunsOut) {
  Host host;
  const Pool pool(host, MM_POOL_BUDDY, 64);
  std::array<CS_BYTE*, 4> quarters = {};
  for (CS_BYTE*& quarter : quarters) quarter = allocate(pool, 12);
  comn_mmfree(pool, quarters[0]);
  comn_mmfree(pool, quarters[1]);
  EXPECT_EQ(2, length(pool->mmh_pool.buddy.free[0], &MmDList::next));

  // One pair becomes an order 1; order 2 was needed: success, and nothing is handed out.
  void* out = &host;
  EXPECT_EQ(CS_SUCCEED, comn_mmalloc(pool, 60, &out));
  EXPECT_EQ(&host, out);
  void* grown = quarters[2];
  EXPECT_EQ(CS_SUCCEED, comn_mmrealloc(pool, 16, &grown)) << "counts the header";
  EXPECT_EQ(quarters[2], grown);
  EXPECT_EQ(CS_SUCCEED, comn_mmrealloc(pool, 60, &grown)) << "a second top-level block";
  EXPECT_NE(quarters[2], grown);
  EXPECT_NE(0u, header_of(quarters[2]) & 0x40000000u) << "the old block is free";
  EXPECT_EQ(quarters[0], allocate(pool, 28));
}

// Addresses whose marks wrap around: the top-level blocks cross the boundary.
TEST(Buddy, MarksWrapAround) {
  std::vector<CS_BYTE> memory(std::size_t{3} << 19);
  MmHandle* pool = nullptr;
  ASSERT_EQ(CS_SUCCEED, comn_mmmanage(memory.data(), static_cast<CS_INT>(memory.size()), &pool));
  set(pool, MM_PROP_BLOCKSIZE, 1 << 18);
  std::vector<void*> blocks;
  for (void* out = nullptr; comn_mmalloc(pool, 1000, &out) == CS_SUCCEED; out = nullptr)
    blocks.push_back(out);
  for (void* block : blocks) comn_mmfree(pool, block);
  EXPECT_NE(nullptr, allocate(pool, (1 << 18) - 4)) << "merged up to a top-level block";
  EXPECT_EQ(CS_SUCCEED, com__mm_validate(pool));
}

// Headers and lists end at order 15: a top-level block of order 16 enters as two of those.
TEST(Buddy, HasNoBlockOfOrder16) {
  Host host(1);
  const Pool pool(host, MM_POOL_BUDDY, 524'289);
  constexpr CS_INT kLargest = (1 << 19) - 4;
  CS_BYTE* const lower = allocate(pool, kLargest);
  EXPECT_EQ(15U, header_of(lower) & 15);
  EXPECT_EQ(1'048'580 + 8 + 20 - 4, host.requests.back());
  EXPECT_EQ(lower + (1 << 19), allocate(pool, 20));
  for (CS_INT order = 1; order < 15; ++order)
    EXPECT_EQ(1, length(pool->mmh_pool.buddy.free[order], &MmDList::next)) << order;
  EXPECT_EQ(0x80000000U | (kLargest + 1), header_of(allocate(pool, kLargest + 1))) << "large";
  EXPECT_EQ(CS_SUCCEED, com__mm_validate(pool));
  EXPECT_EQ(CS_SUCCEED, comn_mmfree(pool, lower));
  EXPECT_EQ(lower, allocate(pool, kLargest));
  allocate(pool, kLargest);  // a second top-level block
  EXPECT_EQ(1'048'580, get(pool, MM_PROP_BLOCKSIZE));
  EXPECT_EQ(CS_SUCCEED, com__mm_validate(pool));
}

TEST(Uniform, SlabsOfOneSize) {
  const struct {
    CS_INT size, blocksize, node, slab;
  } rows[] = {{10, 4096, 16, 4096}, {13, 4096, 20, 4080}, {5000, 4096, 5004, 5004}, {0, 10, 8, 8}};
  for (const auto& row : rows) {
    Host host;
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
    if (row.node >= 12) reinterpret_cast<CS_UINT*>(one)[1] = 0xdeadf4ee;
    if (other != one) comn_mmfree(pool, other);  // so that there is a free one
    EXPECT_EQ(CS_SUCCEED, comn_mmfree(pool, one));
    EXPECT_EQ(one - 4, pool->mmh_pool.uniform.free);
    EXPECT_EQ(row.node, static_cast<CS_INT>(header_of(one)));
    EXPECT_EQ(one, allocate(pool, row.size)) << "last freed first";
  }
}

TEST(AllocOnly, BumpsThroughRegions) {
  Host host;
  const Pool pool(host, MM_POOL_ALLOCONLY, 124);
  CS_BYTE* first = allocate(pool, 5);
  EXPECT_EQ(reinterpret_cast<CS_BYTE*>(pool->mmh_blocks) + 4 + 24, first) << "link and header";
  EXPECT_EQ(first + 8, allocate(pool, 60));
  CS_BYTE* other = allocate(pool, 40);  // 32 are left: a new region
  EXPECT_EQ(other + 40, allocate(pool, 60)) << "newest first";
  EXPECT_EQ(first + 68, allocate(pool, 32));
}

}  // namespace
