// Memory pools: random operations against a shadow model, the fixed layouts and list orders, the
// properties and locks, failing memory, and every stop.
#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "comnlib/memory.h"
#include "comnlib/thread.h"
#include "runtime/commmgr.h"
#include "support/host_alloc.h"

namespace {

const auto aborted = testing::KilledBySignal(SIGABRT);

// A context that records the chunks it gives and fails on demand.
struct Host : CS_CONTEXT {
  Host() : CS_CONTEXT{} {
    ctxversion = 113;
    ctxmalloc = [](CS_CONTEXT* self, CS_INT size) { return static_cast<Host*>(self)->give(size); };
    ctxfree = [](CS_CONTEXT* self, CS_VOID* block) { static_cast<Host*>(self)->take(block); };
  }
  Host(const Host&) = delete;
  ~Host() { EXPECT_TRUE(live.empty()) << "everything is given back"; }

  void* give(CS_INT size) {
    requests.push_back(size);
    if (countdown != 0 && --countdown == 0) return nullptr;
    void* block = std::malloc(static_cast<std::size_t>(size));
    live[block] = size;
    return block;
  }
  void take(void* block) {
    EXPECT_EQ(1u, live.erase(block));
    std::free(block);
  }
  MmHandle* pool() {
    MmHandle* handle = nullptr;
    EXPECT_EQ(CS_SUCCEED, comn_mminit(this, &handle));
    return handle;
  }

  std::map<void*, CS_INT> live;
  std::vector<CS_INT> requests;
  int countdown = 0;  // the how-manieth request fails; 0: none
};

CS_RETCODE set(MmHandle* pool, CS_INT property, CS_INT value) {
  return comn_mmproperty(pool, CS_SET, property, &value, CS_UNUSED, nullptr);
}

template <class Value = CS_INT>
Value get(MmHandle* pool, CS_INT property, CS_INT buflen = CS_UNUSED) {
  Value value = {};
  CS_INT outlen = 0;
  EXPECT_EQ(CS_SUCCEED, comn_mmproperty(pool, CS_GET, property, &value, buflen, &outlen));
  EXPECT_EQ(4, outlen);
  return value;
}

MmHandle* subpool(MmHandle* pool, CS_INT tag) {
  return get<MmHandle*>(pool, MM_PROP_SUBPOOL, tag);
}

CS_BYTE* allocate(MmHandle* pool, CS_INT size) {
  void* memory = nullptr;
  EXPECT_EQ(CS_SUCCEED, comn_mmalloc(pool, size, &memory)) << size;
  return static_cast<CS_BYTE*>(memory);
}

CS_UINT header_of(const void* user) {
  return static_cast<const CS_UINT*>(user)[-1];
}

CS_UINT mark_of(const void* top) {
  return (static_cast<CS_UINT>(reinterpret_cast<std::uintptr_t>(top)) & 0x7fffc) << 2;
}

template <class Node>
int length(const Node* list, Node* Node::*next) {
  int count = 0;
  for (; list != nullptr; list = list->*next) ++count;
  return count;
}

// --- Random operations against a shadow model ----------------------------------------------------

class Shadow {
 public:
  Shadow(MmHandle* pool, CS_INT kind, unsigned seed) : pool_(pool), kind_(kind), random_(seed) {
    EXPECT_EQ(CS_SUCCEED, set(pool, MM_PROP_POOLTYPE, kind));
  }
  void step() {
    const int choice = draw(0, 9);
    if (choice < 5 || blocks_.empty()) return add();
    const auto block = std::next(blocks_.begin(), draw(0, static_cast<int>(blocks_.size()) - 1));
    if (choice < 8) return remove(block);
    resize(block);
  }
  void empty() {
    while (!blocks_.empty() && kind_ != MM_POOL_ALLOCONLY) remove(blocks_.begin());
    for (const auto& [start, block] : blocks_) expect_pattern(start, block);
  }

 private:
  struct Block {
    CS_INT size;
    CS_BYTE fill;
  };
  using Blocks = std::map<CS_BYTE*, Block>;

  int draw(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
  CS_INT draw_size() {
    if (kind_ == MM_POOL_UNIFORM) return 20;
    return draw(0, 9) == 0 ? draw(1, 9000) : draw(1, 300);
  }
  static void expect_pattern(const CS_BYTE* start, const Block& block, CS_INT size = -1) {
    const std::vector<CS_BYTE> expected(static_cast<std::size_t>(size < 0 ? block.size : size),
                                        block.fill);
    EXPECT_EQ(0, std::memcmp(expected.data(), start, expected.size()));
  }
  void insert(CS_BYTE* start, CS_INT size) {
    EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(start) % 4);
    const auto after = blocks_.upper_bound(start);
    EXPECT_TRUE(after == blocks_.end() || start + size <= after->first) << "overlap";
    EXPECT_TRUE(after == blocks_.begin() ||
                std::prev(after)->first + std::prev(after)->second.size <= start)
        << "overlap";
    const auto fill = static_cast<CS_BYTE>(draw(0, 255));
    std::memset(start, fill, static_cast<std::size_t>(size));
    blocks_[start] = {size, fill};
  }
  void add() {
    const CS_INT size = draw_size();
    void* memory = nullptr;
    const CS_RETCODE result = comn_mmalloc(pool_, size, &memory);
    if (memory == nullptr) {  // no room in caller memory, or a compaction that did not suffice
      EXPECT_TRUE(result == CS_MEM_ERROR || (result == CS_SUCCEED && kind_ == MM_POOL_BUDDY));
      return;
    }
    auto* start = static_cast<CS_BYTE*>(memory);
    EXPECT_TRUE(std::all_of(start, start + size, [](CS_BYTE byte) { return byte == 0; }));
    insert(start, size);
  }
  void remove(Blocks::iterator block) {
    expect_pattern(block->first, block->second);
    EXPECT_EQ(kind_ == MM_POOL_ALLOCONLY ? CS_FAIL : CS_SUCCEED, comn_mmfree(pool_, block->first));
    if (kind_ != MM_POOL_ALLOCONLY) blocks_.erase(block);
  }
  void resize(Blocks::iterator block) {
    const auto [start, old] = *block;
    void* memory = start;
    const CS_UINT header = header_of(start);
    const bool large = (header & comnlib::mm::kLarge) != 0;
    const CS_INT capacity = large ? old.size : 16 << (header & 15);
    CS_INT size = draw_size();
    // The capacity counts the header word: the last four bytes of it are not there.
    if (!large && size > capacity - 4 && size <= capacity) size = capacity - 4;
    const CS_RETCODE result = comn_mmrealloc(pool_, size, &memory);
    const bool moved = memory != start;
    EXPECT_EQ(kind_ == MM_POOL_BUDDY || result == CS_FAIL, true);
    EXPECT_EQ(moved, moved && kind_ == MM_POOL_BUDDY && result == CS_SUCCEED && size > capacity);
    expect_pattern(static_cast<CS_BYTE*>(memory), old, std::min(capacity, old.size));
    if (kind_ != MM_POOL_BUDDY || (!moved && size > capacity)) return;
    blocks_.erase(block);
    // A large block keeps its stored size.
    insert(static_cast<CS_BYTE*>(memory), large && !moved ? old.size : size);
  }

  MmHandle* pool_;
  CS_INT kind_;
  std::mt19937 random_;
  Blocks blocks_;
};

constexpr CS_INT kKinds[] = {MM_POOL_BUDDY, MM_POOL_ALLOCONLY, MM_POOL_UNIFORM};

void run_shadow(MmHandle* pool, CS_INT kind, unsigned seed, int steps) {
  Shadow shadow(pool, kind, seed);
  for (int i = 0; i < steps; ++i) {
    shadow.step();
    ASSERT_TRUE(i % 64 != 0 || com__mm_validate(pool) == CS_SUCCEED) << "step " << i;
  }
  shadow.empty();
  ASSERT_EQ(CS_SUCCEED, com__mm_validate(pool));
}

TEST(Pools, RandomOperationsOnAContext) {
  for (const CS_INT kind : kKinds) {
    for (const CS_INT blocksize : {64, 1000, 4096, 100'000}) {
      Host host;
      MmHandle* pool = host.pool();
      ASSERT_EQ(CS_SUCCEED, set(pool, MM_PROP_BLOCKSIZE, blocksize));
      run_shadow(pool, kind, static_cast<unsigned>(kind + blocksize), 3000);
      EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
    }
  }
}

TEST(Pools, RandomOperationsInCallerMemory) {
  for (const CS_INT kind : kKinds) {
    for (const CS_INT length : {2000, 30'001, 200'002}) {
      std::vector<CS_UINT> memory(static_cast<std::size_t>(length) / 4 + 3, 0xabababab);
      auto* buffer = reinterpret_cast<CS_BYTE*>(memory.data() + 1);  // aligned to 4 alone
      MmHandle* pool = nullptr;
      ASSERT_EQ(CS_SUCCEED, comn_mmmanage(buffer, length, &pool));
      EXPECT_EQ(length - 152, pool->mmh_head->mph_totalsize);
      run_shadow(pool, kind, static_cast<unsigned>(kind + length), 3000);
      EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
      EXPECT_EQ(0xab, buffer[length]) << "nothing behind the area is touched";
    }
  }
}

// Subpools of all kinds, filled and dropped in turn, leave nothing behind in the top pool.
TEST(Pools, DroppedSubpoolsGiveEverythingBack) {
  Host host;
  MmHandle* top = host.pool();
  for (unsigned round = 0; round < 20; ++round) {
    std::array<MmHandle*, 3> pools = {};
    for (CS_INT i = 0; i < 3; ++i) {
      pools[i] = subpool(top, i);
      run_shadow(pools[i], kKinds[(i + round) % 3], round, 200);
    }
    for (const std::size_t i : {1, 0, 2}) EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pools[i], CS_UNUSED));
    EXPECT_EQ(nullptr, top->mmh_head->mph_heap);
  }
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(top, CS_UNUSED));
}

// --- Heaps ---------------------------------------------------------------------------------------

TEST(Heap, SplitsFirstFitAndMergesOnFree) {
  alignas(4) CS_BYTE control[152];
  alignas(4) CS_BYTE memory[16 + 4 + 100];
  auto* pool = reinterpret_cast<MmHandle*>(control);
  ASSERT_EQ(CS_SUCCEED, comn_mmmanage(memory, sizeof memory, &pool));
  EXPECT_EQ(control + 48, reinterpret_cast<CS_BYTE*>(pool));
  MmHeap* heap = pool->mmh_head->mph_heap;
  std::array<void*, 5> blocks = {};
  const CS_INT sizes[] = {16, 5, 16, 20, 12};  // rounded, with headers: 20 + 12 + 20 + 24 + 16
  for (std::size_t i = 0; i < 5; ++i)
    ASSERT_EQ(CS_SUCCEED, com___getheap(pool, sizes[i], &blocks[i]));
  EXPECT_EQ(memory + 20, blocks[0]);
  EXPECT_EQ(memory + 20 + 32, blocks[2]);
  EXPECT_EQ(8, heap->free->size) << "100 less 92";
  EXPECT_EQ(CS_MEM_ERROR, com___getheap(pool, 9, &blocks[0]));

  com___putheap(pool, blocks[2]);
  com___putheap(pool, blocks[0]);
  EXPECT_EQ(3, length(heap->free, &MmList::link)) << "16, 16, 8";
  void* refused = nullptr;
  ASSERT_EQ(CS_SUCCEED, com___getheap(pool, 12, &refused));
  EXPECT_EQ(blocks[2], (com___putheap(pool, refused), blocks[2]));
  com___putheap(pool, blocks[1]);  // between two free ones
  EXPECT_EQ(2, length(heap->free, &MmList::link));
  EXPECT_EQ(16 + 12 + 20, heap->free->size);
  com___putheap(pool, blocks[4]);
  com___putheap(pool, blocks[3]);
  EXPECT_EQ(100, heap->free->size);
  EXPECT_EQ(nullptr, heap->free->link);
}

TEST(Heap, RestsWithoutRoomForALink) {
  for (const CS_INT tail : {0, 1, 2, 3}) {
    std::vector<CS_BYTE> raw(static_cast<std::size_t>(16 + 4 + 40 + 4 + tail));
    auto* memory = raw.data();  // malloc's, so an access behind it is seen
    alignas(4) CS_BYTE control[152];
    auto* pool = reinterpret_cast<MmHandle*>(control);
    ASSERT_EQ(CS_SUCCEED, comn_mmmanage(memory, static_cast<CS_INT>(raw.size()), &pool));
    MmHeap* heap = pool->mmh_head->mph_heap;
    void* whole = nullptr;
    ASSERT_EQ(CS_SUCCEED, com___getheap(pool, 40, &whole));
    ASSERT_NE(nullptr, heap->free) << "at the end of a heap it stays on the list";
    EXPECT_EQ(tail, heap->free->size);
    EXPECT_EQ(CS_SUCCEED, com__mm_validate(pool));
    com___putheap(pool, whole);
    EXPECT_EQ(44 + tail, heap->free->size);

    void* first = nullptr;
    void* second = nullptr;
    com___getheap(pool, 20, &first);
    com___getheap(pool, 20, &second);
    com___putheap(pool, first);
    void* shorter = nullptr;
    com___getheap(pool, 16, &shorter);  // in front of a block no such rest is made
    EXPECT_EQ(first, shorter);
    EXPECT_EQ(20u, header_of(shorter));
    com___putheap(pool, shorter);
    com___putheap(pool, second);
    EXPECT_EQ(44 + tail, heap->free->size);
  }
}

TEST(Heap, ChunksHaveTheStatedSizesAndGoBackWhole) {
  Host host;
  MmHandle* pool = host.pool();
  EXPECT_EQ((std::vector<CS_INT>{48, 104}), host.requests);
  void* small = nullptr;
  void* exact = nullptr;
  com___getheap(pool, 10, &small);
  com___getheap(pool, 4101, &exact);
  EXPECT_EQ((std::vector<CS_INT>{48, 104, 4120, 4104 + 20}), host.requests);
  EXPECT_EQ(8244, get(pool, MM_PROP_CHUNKSIZE) + 4124);
  EXPECT_EQ(4124, pool->mmh_head->mph_heap->size) << "newest first";
  com___putheap(pool, small);
  EXPECT_EQ(3u, host.live.size());
  com___putheap(pool, exact);
  EXPECT_EQ(2u, host.live.size());
  EXPECT_EQ(8244, pool->mmh_head->mph_totalsize) << "never decreased";

  set(pool, MM_PROP_MAXSIZE, 8244 + 4119);
  EXPECT_EQ(CS_MEM_ERROR, com___getheap(pool, 10, &small));
  set(pool, MM_PROP_MAXSIZE, 8244 + 4120);
  EXPECT_EQ(CS_SUCCEED, com___getheap(pool, 10, &small));
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
}

TEST(Heap, LengthsOfManagedMemory) {
  const struct {
    CS_INT length;
    CS_RETCODE result;
    CS_INT free;  // usable bytes, -1: no free block, -2: no heap
  } rows[] = {{0, CS_FAIL, 0},       {103, CS_FAIL, 0},     {152, CS_SUCCEED, -2},
              {161, CS_SUCCEED, -2}, {167, CS_SUCCEED, -2}, {168, CS_SUCCEED, -1},
              {175, CS_SUCCEED, -1}, {176, CS_SUCCEED, 4},  {300, CS_SUCCEED, 128}};
  for (const auto& row : rows) {
    auto* memory = static_cast<CS_BYTE*>(std::malloc(static_cast<std::size_t>(row.length)));
    MmHandle* pool = nullptr;
    ASSERT_EQ(row.result, comn_mmmanage(memory, row.length, &pool)) << row.length;
    if (row.result == CS_SUCCEED) {
      const MmHeap* heap = pool->mmh_head->mph_heap;
      const CS_INT free = heap == nullptr ? -2 : heap->free == nullptr ? -1 : heap->free->size;
      EXPECT_EQ(row.free, free) << row.length;
      EXPECT_EQ(row.length - 152, pool->mmh_head->mph_totalsize);
      void* out = memory;
      EXPECT_EQ(CS_MEM_ERROR, comn_mmalloc(pool, 200, &out));
      EXPECT_EQ(memory, out);
      EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
    }
    std::free(memory);
  }
}

// --- Disciplines ---------------------------------------------------------------------------------

TEST(Buddy, OrdersAndHeaders) {
  Host host;
  MmHandle* pool = host.pool();
  const struct {
    CS_INT size;
    CS_UINT order;
  } rows[] = {{0, 0}, {12, 0}, {13, 1}, {28, 1}, {29, 2}, {60, 2}, {2044, 7}, {2045, 8}, {4092, 8}};
  CS_BYTE* first = allocate(pool, 0);
  EXPECT_EQ((std::vector<CS_INT>{48, 104, 4124}), host.requests);
  EXPECT_EQ(4100, get(pool, MM_PROP_BLOCKSIZE));
  EXPECT_EQ(8, pool->mmh_pool.buddy.bpmax);
  for (int order = 0; order < 8; ++order)
    EXPECT_EQ(1, length(pool->mmh_pool.buddy.free[order], &MmDList::next)) << order;
  EXPECT_EQ(reinterpret_cast<MmDList*>(-1), pool->mmh_pool.buddy.free[9]);
  EXPECT_EQ(mark_of(first - 4), header_of(first));
  EXPECT_EQ(first + 12, allocate(pool, 5) - 4) << "the lower half first, then its other half";
  for (const auto& row : rows) EXPECT_EQ(row.order, header_of(allocate(pool, row.size)) & 15);
  EXPECT_EQ(4093u | 0x80000000u, header_of(allocate(pool, 4093)));
  EXPECT_EQ(4104u, header_of(allocate(pool, 4093) - 8)) << "link, header and bytes, rounded";
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
}

TEST(Buddy, HighestOrderFollowsTheBlockSize) {
  const struct {
    CS_INT blocksize;
    CS_INT bpmax;
  } rows[] = {{1, 0},    {16, 0},       {17, 1},       {32, 1},       {4096, 8},
              {4097, 9}, {262'145, 15}, {524'288, 15}, {524'289, 15}, {1 << 30, 15}};
  for (const auto& row : rows) {
    Host host;
    MmHandle* pool = host.pool();
    set(pool, MM_PROP_BLOCKSIZE, row.blocksize);
    allocate(pool, 1);
    EXPECT_EQ(row.bpmax, pool->mmh_pool.buddy.bpmax) << row.blocksize;
    EXPECT_EQ((16 << row.bpmax) + 4, get(pool, MM_PROP_BLOCKSIZE)) << row.blocksize;
    EXPECT_EQ(CS_SUCCEED, com__mm_validate(pool));
    EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
  }
}

TEST(Buddy, MergesOnlyWhenItRunsOut) {
  Host host;
  MmHandle* pool = host.pool();
  set(pool, MM_PROP_BLOCKSIZE, 64);
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
  quarters[2][11] = 9;
  EXPECT_EQ(CS_SUCCEED, comn_mmrealloc(pool, 60, &grown)) << "a second top-level block";
  EXPECT_NE(quarters[2], grown);
  EXPECT_EQ(9, static_cast<CS_BYTE*>(grown)[11]);
  EXPECT_EQ(quarters[0], allocate(pool, 28));
  EXPECT_EQ(CS_SUCCEED, com__mm_validate(pool));
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
}

// Chunks spread over addresses whose marks wrap around: the top-level blocks cross the boundary.
TEST(Buddy, MarksWrapAround) {
  std::vector<CS_BYTE> memory(std::size_t{3} << 19);
  MmHandle* pool = nullptr;
  ASSERT_EQ(CS_SUCCEED, comn_mmmanage(memory.data(), static_cast<CS_INT>(memory.size()), &pool));
  set(pool, MM_PROP_BLOCKSIZE, 1 << 18);
  std::vector<CS_BYTE*> blocks;
  for (void* out = nullptr; comn_mmalloc(pool, 1000, &out) == CS_SUCCEED; out = nullptr)
    blocks.push_back(static_cast<CS_BYTE*>(out));
  for (CS_BYTE* block : blocks) comn_mmfree(pool, block);
  EXPECT_EQ(CS_SUCCEED, com__mm_validate(pool));
  EXPECT_NE(nullptr, allocate(pool, (1 << 18) - 4)) << "merged up to a top-level block";
  EXPECT_EQ(CS_SUCCEED, com__mm_validate(pool));
}

TEST(Buddy, ReallocationCountsTheHeader) {
  Host host;
  MmHandle* pool = host.pool();
  void* block = allocate(pool, 12);
  void* const before = block;
  EXPECT_EQ(CS_SUCCEED, comn_mmrealloc(pool, 16, &block));
  EXPECT_EQ(before, block);
  std::memset(block, 7, 12);
  EXPECT_EQ(CS_SUCCEED, comn_mmrealloc(pool, 17, &block));
  EXPECT_NE(before, block);
  EXPECT_EQ(7, static_cast<CS_BYTE*>(block)[11]);
  EXPECT_NE(0u, header_of(before) & 0x40000000u) << "the old block is free";

  EXPECT_EQ(CS_SUCCEED, comn_mmrealloc(pool, 5000, &block));
  void* const large = block;
  EXPECT_EQ(CS_SUCCEED, comn_mmrealloc(pool, 5000, &block));
  EXPECT_EQ(large, block);
  host.countdown = 1;
  EXPECT_EQ(CS_MEM_ERROR, comn_mmrealloc(pool, 9001, &block));
  EXPECT_EQ(large, block);
  EXPECT_EQ(CS_SUCCEED, comn_mmrealloc(pool, 9001, &block));
  EXPECT_EQ(7, static_cast<CS_BYTE*>(block)[0]);
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
}

TEST(Uniform, SlabsOfOneSize) {
  const struct {
    CS_INT size, blocksize, node, slab;
  } rows[] = {{10, 4096, 16, 4096}, {13, 4096, 20, 4080}, {5000, 4096, 5004, 5004}, {0, 10, 8, 8}};
  for (const auto& row : rows) {
    Host host;
    MmHandle* pool = host.pool();
    set(pool, MM_PROP_POOLTYPE, MM_POOL_UNIFORM);
    set(pool, MM_PROP_BLOCKSIZE, row.blocksize);
    CS_BYTE* one = allocate(pool, row.size);
    EXPECT_EQ(row.node, static_cast<CS_INT>(header_of(one)));
    EXPECT_EQ(row.slab, get(pool, MM_PROP_BLOCKSIZE));
    EXPECT_EQ(row.size, pool->mmh_pool.uniform.uniform_size);
    void* other = nullptr;
    EXPECT_EQ(CS_FAIL, comn_mmalloc(pool, row.size + 1, &other));
    EXPECT_EQ(CS_SUCCEED, comn_mmfree(pool, one));
    EXPECT_EQ(one - 4, pool->mmh_pool.uniform.free);
    EXPECT_EQ(one, allocate(pool, row.size)) << "last freed first";
    EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
  }
}

TEST(AllocOnly, BumpsThroughRegions) {
  Host host;
  MmHandle* pool = host.pool();
  set(pool, MM_PROP_POOLTYPE, MM_POOL_ALLOCONLY);
  set(pool, MM_PROP_BLOCKSIZE, 124);
  CS_BYTE* first = allocate(pool, 5);
  EXPECT_EQ(first + 8, allocate(pool, 60));
  EXPECT_EQ(reinterpret_cast<CS_BYTE*>(pool->mmh_blocks) + 4 + 24, first);
  CS_BYTE* other = allocate(pool, 40);  // 32 are left: a new region
  EXPECT_EQ(other + 40, allocate(pool, 60)) << "newest first";
  EXPECT_EQ(first + 68, allocate(pool, 32));
  allocate(pool, 1000);
  EXPECT_EQ(3, length(pool->mmh_blocks, &MmBlock::next));
  EXPECT_EQ(CS_FAIL, comn_mmfree(pool, first));
  void* moved = first;
  EXPECT_EQ(CS_FAIL, comn_mmrealloc(pool, 100, &moved));
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
}

// --- Properties, locks, subpools
// -------------------------------------------------------------------

TEST(Properties, AreFixedByTheFirstAllocation) {
  Host host;
  MmHandle* pool = host.pool();
  const struct {
    CS_INT property, initial, value;
    bool fixed;
  } rows[] = {{MM_PROP_POOLTYPE, MM_POOL_BUDDY, MM_POOL_ALLOCONLY, true},
              {MM_PROP_BLOCKSIZE, 4096, 512, true},
              {MM_PROP_CHUNKSIZE, 4120, 1, false},
              {MM_PROP_MAXSIZE, -9999, 1'000'000, false}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.initial, get(pool, row.property));
    EXPECT_EQ(CS_SUCCEED, set(pool, row.property, row.value));
    EXPECT_EQ(row.value, get(pool, row.property));
  }
  allocate(pool, 1);
  for (const auto& row : rows)
    EXPECT_EQ(row.fixed ? CS_FAIL : CS_SUCCEED, set(pool, row.property, row.value));
  EXPECT_EQ(152, get(pool, MM_PROP_CTLSIZE));
  EXPECT_EQ(CS_FAIL, set(pool, MM_PROP_CTLSIZE, 160));
  EXPECT_EQ(CS_FAIL, set(pool, MM_PROP_SUBPOOL, 1));
  CS_INT untouched = 77;
  for (const CS_INT argument : {MM_PROP_SBREAKARG, MM_PROP_LOCKARG}) {
    CS_INT outlen = 0;
    EXPECT_EQ(CS_SUCCEED, comn_mmproperty(pool, CS_GET, argument, &untouched, 4, &outlen));
    EXPECT_EQ(77, untouched);
    EXPECT_EQ(4, outlen);
  }
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
}

// A pool in caller memory that borrows a context's chunk functions, and more of the caller's
// memory.
TEST(Properties, ManagedPoolCanGrow) {
  Host host;
  MmHandle* source = host.pool();
  CS_UINT memory[100];
  CS_UINT more[100];
  MmHandle* pool = nullptr;
  ASSERT_EQ(CS_SUCCEED, comn_mmmanage(memory, sizeof memory, &pool));
  set(pool, MM_PROP_BLOCKSIZE, 16);
  void* out = nullptr;
  EXPECT_EQ(CS_MEM_ERROR, comn_mmalloc(pool, 300, &out));
  EXPECT_EQ(CS_SUCCEED,
            comn_mmproperty(pool, CS_SET, MM_PROP_ADDMEMORY, more, sizeof more, nullptr));
  EXPECT_EQ(CS_SUCCEED, comn_mmalloc(pool, 300, &out));
  EXPECT_EQ(CS_MEM_ERROR, comn_mmalloc(pool, 300, &out));
  comn_mmproperty(pool, CS_SET, MM_PROP_SBREAK, get<void*>(source, MM_PROP_SBREAK), 0, nullptr);
  comn_mmproperty(pool, CS_SET, MM_PROP_SBREAKARG, static_cast<CS_CONTEXT*>(&host), 0, nullptr);
  EXPECT_EQ(CS_SUCCEED, comn_mmalloc(pool, 300, &out));
  EXPECT_EQ(CS_SUCCEED, comn_mmfree(pool, out)) << "nothing takes the chunk back yet";
  comn_mmproperty(pool, CS_SET, MM_PROP_UNSBREAK, get<void*>(source, MM_PROP_UNSBREAK), 0, nullptr);
  EXPECT_EQ(3u, host.live.size());
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
  EXPECT_EQ(2u, host.live.size());
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(source, CS_UNUSED));
}

struct Lock {
  int depth = 0;
  int taken = 0;
  CS_RETCODE result = CS_SUCCEED;
  static CS_RETCODE take(MmHandle*, CS_VOID* arg) {
    auto* lock = static_cast<Lock*>(arg);
    if (lock->result != CS_SUCCEED) return lock->result;
    ++lock->taken;
    EXPECT_EQ(1, ++lock->depth);
    return CS_SUCCEED;
  }
  static CS_RETCODE release(MmHandle*, CS_VOID* arg) {
    EXPECT_EQ(0, --static_cast<Lock*>(arg)->depth);
    return CS_BUSY;
  }
  void install(MmHandle* pool) {
    const auto put = [pool](CS_INT property, void* value) {
      EXPECT_EQ(CS_SUCCEED, comn_mmproperty(pool, CS_SET, property, value, 0, nullptr));
    };
    put(MM_PROP_UNLOCK, reinterpret_cast<void*>(release));
    put(MM_PROP_LOCKARG, this);
    put(MM_PROP_LOCK, reinterpret_cast<void*>(take));
  }
};

TEST(Locks, EveryCallTakesAndReleases) {
  Host host;
  MmHandle* pool = host.pool();
  Lock lock;
  lock.install(pool);
  EXPECT_EQ(0, lock.taken);
  MmHandle* sub = subpool(pool, 1);
  void* block = allocate(sub, 5);
  comn_mmrealloc(sub, 50, &block);
  comn_mmfree(sub, block);
  EXPECT_EQ(CS_FAIL, comn_mmproperty(pool, CS_SET, MM_PROP_LOCK,
                                     reinterpret_cast<void*>(Lock::take), 0, nullptr));
  EXPECT_EQ(CS_BUSY, comn_mmdrop(pool, CS_UNUSED));
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(sub, CS_UNUSED));
  EXPECT_EQ(7, lock.taken);
  get(pool, MM_PROP_CTLSIZE);
  EXPECT_EQ(7, lock.taken);

  lock.result = CS_INTERRUPT;
  EXPECT_EQ(CS_INTERRUPT, comn_mmalloc(pool, 5, &block));
  EXPECT_EQ(CS_INTERRUPT, comn_mmrealloc(pool, 5, &block));
  EXPECT_EQ(CS_INTERRUPT, set(pool, MM_PROP_CHUNKSIZE, 50));
  EXPECT_EQ(CS_INTERRUPT, comn_mmdrop(pool, CS_UNUSED));
  lock.result = CS_SUCCEED;
  for (const CS_INT property : {MM_PROP_LOCK, MM_PROP_LOCKARG, MM_PROP_UNLOCK}) {
    EXPECT_EQ(CS_BUSY, comn_mmproperty(pool, CS_CLEAR, property, nullptr, 0, nullptr));
    EXPECT_EQ(0, lock.depth);
    EXPECT_EQ(nullptr, get<void*>(pool, MM_PROP_UNLOCK));
    EXPECT_EQ(nullptr, pool->mmh_head->mph_lockarg);
    lock.install(pool);
  }
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
  EXPECT_EQ(0, lock.depth);
}

TEST(Locks, MutexOfTheContextsThreadTable) {
  CS_THREAD table = *comn_thread_table();
  Host host;
  host.ctxthread = &table;
  const std::size_t before = host_alloc::live_blocks();
  for (const bool clear : {false, true}) {
    MmHandle* pool = host.pool();
    auto* mutex = static_cast<COMN_MUTEX*>(pool->mmh_head->mph_lockarg);
    EXPECT_EQ(17, pool->mmh_head->mph_status);
    comn_mmfree(pool, allocate(pool, 1));
    EXPECT_EQ(CS_FAIL, comn_check_mutex(mutex)) << "released";
    if (clear) comn_mmproperty(pool, CS_CLEAR, MM_PROP_LOCK, nullptr, 0, nullptr);
    EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
    EXPECT_EQ(before, host_alloc::live_blocks());
  }
  table.create_mutex_fn = [](COMN_MUTEX**) -> CS_RETCODE { return CS_BUSY; };
  MmHandle* pool = nullptr;
  EXPECT_EQ(CS_BUSY, comn_mminit(&host, &pool));
  EXPECT_EQ(nullptr, pool);
  table = {};  // a table without functions locks nothing
  pool = host.pool();
  comn_mmfree(pool, allocate(pool, 1));
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
}

TEST(Subpools, FormATreeThatForceRemovesFromItsTop) {
  Host host;
  MmHandle* top = host.pool();
  set(top, MM_PROP_POOLTYPE, MM_POOL_UNIFORM);
  MmHandle* one = subpool(top, 1);
  MmHandle* two = subpool(top, 2);
  EXPECT_EQ(one, subpool(top, 1));
  EXPECT_EQ(two, top->mmh_child) << "newest first";
  EXPECT_EQ(one, two->mmh_sibling);
  EXPECT_EQ(MM_POOL_UNIFORM, get(one, MM_PROP_POOLTYPE));
  MmHandle* below = subpool(one, 1);
  EXPECT_NE(one, below);
  EXPECT_EQ(CS_BUSY, comn_mmdrop(one, CS_UNUSED));
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(two, CS_UNUSED));
  EXPECT_EQ(one, top->mmh_child);
  allocate(below, 8);
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(below, MM_FORCE_DROP));
  EXPECT_TRUE(host.live.empty());
}

TEST(Pools, EveryAllocationFailsOnce) {
  for (int failing = 1;; ++failing) {
    Host host;
    host.countdown = failing;
    MmHandle* pool = nullptr;
    if (comn_mminit(&host, &pool) != CS_SUCCEED) {
      EXPECT_LE(failing, 2);
      EXPECT_TRUE(host.live.empty());
      continue;
    }
    int failures = 0;
    const auto note = [&failures](CS_RETCODE result) {
      if (result == CS_SUCCEED) return;
      EXPECT_EQ(CS_MEM_ERROR, result);
      ++failures;
    };
    void* block = nullptr;
    for (const CS_INT size : {10, 4000, 9000}) note(comn_mmalloc(pool, size, &block));
    if (block != nullptr) note(comn_mmrealloc(pool, 20'000, &block));
    for (CS_INT kind : kKinds) {
      MmHandle* sub = nullptr;
      note(comn_mmproperty(pool, CS_GET, MM_PROP_SUBPOOL, &sub, kind, nullptr));
      if (sub == nullptr) continue;
      set(sub, MM_PROP_POOLTYPE, kind);
      note(comn_mmalloc(sub, 6000, &block));
    }
    EXPECT_EQ(CS_SUCCEED, com__mm_validate(pool));
    EXPECT_EQ(host.countdown == 0 ? 1 : 0, failures);
    EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, MM_FORCE_DROP));
    if (host.countdown != 0) break;
  }
  Host host;
  MmHandle* pool = host.pool();
  void* block = nullptr;
  for (const CS_INT size : {0x7fffffff, 0x7fffffff - 20, 0x7fffffff - 64, 0x7fffffff - 70}) {
    host.countdown = 1;
    EXPECT_EQ(CS_MEM_ERROR, comn_mmalloc(pool, size, &block)) << size;
  }
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
}

// --- Stops ---------------------------------------------------------------------------------------

class PoolsDeathTest : public testing::Test {
 protected:
  void SetUp() override {
    for (std::size_t i = 0; i < 3; ++i) {
      pools_[i] = host_.pool();
      set(pools_[i], MM_PROP_POOLTYPE, kKinds[i]);
      for (CS_BYTE*& block : blocks_[i]) block = allocate(pools_[i], 24);
    }
  }
  void TearDown() override {
    for (MmHandle* pool : pools_) comn_mmdrop(pool, MM_FORCE_DROP);
  }
  MmHandle* buddy() { return pools_[0]; }
  MmHandle* uniform() { return pools_[2]; }
  CS_BYTE* block(std::size_t kind, std::size_t i) { return blocks_[kind][i]; }
  CS_UINT& header(std::size_t kind, std::size_t i) {
    return reinterpret_cast<CS_UINT*>(blocks_[kind][i])[-1];
  }
  static void property(MmHandle* pool, CS_INT action, CS_INT code, CS_INT value) {
    comn_mmproperty(pool, action, code, &value, 0, nullptr);
  }

  Host host_;
  std::array<MmHandle*, 3> pools_ = {};
  std::array<std::array<CS_BYTE*, 4>, 3> blocks_ = {};
  void* out_ = nullptr;
};

TEST_F(PoolsDeathTest, MisuseStops) {
  CS_UINT outside[64] = {};
  MmHandle* fresh = host_.pool();
  MmHandle* null_handle = nullptr;
  const auto free_twice = [&](std::size_t kind, MmHandle* pool) {
    comn_mmfree(pool, block(kind, 0));
    comn_mmfree(pool, block(kind, 1));
    comn_mmfree(pool, block(kind, 0));
  };
  const struct {
    const char* what;
    std::function<void()> misuse;
  } rows[] = {
      {"init null", [&] { comn_mminit(nullptr, &fresh); }},
      {"init version", [&] { host_.ctxversion = 112, comn_mminit(&host_, &null_handle); }},
      {"manage null", [&] { comn_mmmanage(nullptr, 200, &null_handle); }},
      {"manage 104", [&] { comn_mmmanage(outside, 104, &null_handle); }},
      {"manage 151", [&] { comn_mmmanage(outside, 151, &null_handle); }},
      {"manage 153", [&] { comn_mmmanage(outside, 153, &null_handle); }},
      {"manage 160", [&] { comn_mmmanage(outside, 160, &null_handle); }},
      {"manage negative", [&] { comn_mmmanage(outside, -1, &null_handle); }},
      {"alloc null handle", [&] { comn_mmalloc(nullptr, 1, &out_); }},
      {"alloc null out", [&] { comn_mmalloc(buddy(), 1, nullptr); }},
      {"alloc negative", [&] { comn_mmalloc(buddy(), -1, &out_); }},
      {"alloc from none",
       [&] { set(fresh, MM_PROP_POOLTYPE, MM_POOL_NONE), comn_mmalloc(fresh, 1, &out_); }},
      {"free null", [&] { comn_mmfree(buddy(), nullptr); }},
      {"free before any allocation", [&] { comn_mmfree(fresh, outside); }},
      {"free foreign", [&] { comn_mmfree(buddy(), outside + 8); }},
      {"free odd", [&] { comn_mmfree(buddy(), block(0, 0) + 1); }},
      {"free alloc-only foreign", [&] { comn_mmfree(pools_[1], outside + 8); }},
      {"free buddy twice", [&] { free_twice(0, buddy()); }},
      {"free uniform twice", [&] { free_twice(2, uniform()); }},
      {"free large twice",
       [&] {
         out_ = allocate(buddy(), 50'000);
         comn_mmfree(buddy(), out_), comn_mmfree(buddy(), out_);
       }},
      {"free inside a block", [&] { comn_mmfree(buddy(), block(0, 0) + 8); }},
      {"free inside a node", [&] { comn_mmfree(uniform(), block(2, 0) + 8); }},
      {"order too high", [&] { header(0, 0) |= 15, comn_mmfree(buddy(), block(0, 0)); }},
      {"damaged base mark", [&] { header(0, 0) ^= 0x100000, comn_mmfree(buddy(), block(0, 0)); }},
      {"damaged to large", [&] { header(0, 0) |= 0x80000000, comn_mmfree(buddy(), block(0, 0)); }},
      {"damaged buddy of a free block",
       [&] {
         comn_mmfree(buddy(), block(0, 0));
         header(0, 1) ^= 0x10000;
         for (;;) comn_mmalloc(buddy(), 60, &out_);
       }},
      {"damaged free block",
       [&] {
         comn_mmfree(buddy(), block(0, 0));
         header(0, 0) = 0x20202020;
         comn_mmalloc(buddy(), 24, &out_);
       }},
      {"damaged node", [&] { header(2, 0) = 20, comn_mmfree(uniform(), block(2, 0)); }},
      {"realloc null", [&] { comn_mmrealloc(buddy(), 5, nullptr); }},
      {"realloc negative", [&] { out_ = block(0, 0), comn_mmrealloc(buddy(), -5, &out_); }},
      {"realloc foreign", [&] { out_ = outside + 8, comn_mmrealloc(buddy(), 5, &out_); }},
      {"realloc freed",
       [&] {
         out_ = block(0, 0);
         comn_mmfree(buddy(), out_), comn_mmrealloc(buddy(), 500, &out_);
       }},
      {"bad action", [&] { property(buddy(), 36, MM_PROP_CHUNKSIZE, 1); }},
      {"bad property", [&] { property(buddy(), CS_GET, 1234, 1); }},
      {"bad property above", [&] { property(buddy(), CS_GET, 1248, 1); }},
      {"unknown kind", [&] { property(fresh, CS_SET, MM_PROP_POOLTYPE, 2239); }},
      {"chunk size 0", [&] { property(fresh, CS_SET, MM_PROP_CHUNKSIZE, 0); }},
      {"limit 0", [&] { property(fresh, CS_SET, MM_PROP_MAXSIZE, 0); }},
      {"block size 0", [&] { property(fresh, CS_SET, MM_PROP_BLOCKSIZE, 0); }},
      {"null function",
       [&] { comn_mmproperty(fresh, CS_SET, MM_PROP_SBREAK, nullptr, 0, nullptr); }},
      {"get added memory", [&] { property(fresh, CS_GET, MM_PROP_ADDMEMORY, 0); }},
      {"add 8 bytes",
       [&] { comn_mmproperty(fresh, CS_SET, MM_PROP_ADDMEMORY, outside, 8, nullptr); }},
      {"clear a size", [&] { property(fresh, CS_CLEAR, MM_PROP_CHUNKSIZE, 0); }},
      {"clear the control size", [&] { property(fresh, CS_CLEAR, MM_PROP_CTLSIZE, 0); }},
      {"drop option", [&] { comn_mmdrop(fresh, 0); }},
      {"diagnose", [] { comn_mmdiag(); }},
      {"putheap foreign", [&] { com___putheap(buddy(), outside + 8); }},
      {"putblock foreign", [&] { com___putblock(buddy(), block(0, 0)); }},
      {"heap block freed twice",
       [&] {
         void* other = nullptr;
         com___getheap(fresh, 16, &out_), com___getheap(fresh, 16, &other);
         com___putheap(fresh, out_), com___putheap(fresh, out_);
       }},
      {"heap block overrun",
       [&] {
         com___getheap(fresh, 16, &out_);
         static_cast<CS_INT*>(out_)[-1] = 100'000;
         com___putheap(fresh, out_);
       }},
      {"remove a top pool as a subpool", [&] { com___remove_subpool(fresh); }},
      {"free when the lock fails",
       [&] {
         Lock lock;
         lock.install(buddy());
         lock.result = CS_FAIL;
         comn_mmfree(buddy(), block(0, 0));
       }},
  };
  for (const auto& row : rows)
    EXPECT_EXIT(row.misuse(), aborted, "assertion failed|Invalid pointer") << row.what;
  comn_mmdrop(fresh, CS_UNUSED);
}

TEST(DroppedDeathTest, HandlesInCallerMemoryStop) {
  CS_UINT memory[200];
  MmHandle* pool = nullptr;
  ASSERT_EQ(CS_SUCCEED, comn_mmmanage(memory, sizeof memory, &pool));
  MmHandle* sub = subpool(pool, 1);
  MmHandle* dropped = subpool(pool, 2);
  ASSERT_EQ(CS_SUCCEED, comn_mmdrop(dropped, CS_UNUSED));
  void* out = nullptr;
  EXPECT_EXIT(comn_mmalloc(dropped, 1, &out), aborted, "assertion failed");
  ASSERT_EQ(CS_SUCCEED, comn_mmdrop(pool, MM_FORCE_DROP));
  EXPECT_EXIT(comn_mmalloc(pool, 1, &out), aborted, "assertion failed");
  EXPECT_EXIT(comn_mmalloc(sub, 1, &out), aborted, "assertion failed");
  EXPECT_EXIT(comn_mmdrop(pool, CS_UNUSED), aborted, "assertion failed");
}

}  // namespace
