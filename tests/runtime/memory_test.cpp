// Memory pools: random operations against a shadow model, the fixed layouts and list orders, the
// properties and locks, failing memory, and every stop.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <utility>
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
    ctxfree = [](CS_CONTEXT* self, CS_VOID* block) {
      EXPECT_EQ(1u, static_cast<Host*>(self)->live.erase(block));
      std::free(block);
    };
  }
  Host(const Host&) = delete;
  ~Host() { EXPECT_TRUE(live.empty()) << "everything is given back"; }
  void* give(CS_INT size) {
    requests.push_back(size);
    if (countdown != 0 && --countdown == 0) return nullptr;
    return *live.insert(std::malloc(static_cast<std::size_t>(size))).first;
  }

  std::set<void*> live;
  std::vector<CS_INT> requests;
  int countdown = 0;  // the how-manieth request fails; 0: none
};

// A pool on a context, dropped with all its subpools at the end.
struct Pool {
  explicit Pool(Host& host, CS_INT kind = MM_POOL_BUDDY, CS_INT blocksize = 4096);
  ~Pool() { EXPECT_TRUE(handle == nullptr || comn_mmdrop(handle, MM_FORCE_DROP) == CS_SUCCEED); }
  Pool(const Pool&) = delete;
  operator MmHandle*() const { return handle; }
  MmHandle* operator->() const { return handle; }
  MmHandle* release() { return std::exchange(handle, nullptr); }
  MmHandle* handle = nullptr;
};

CS_RETCODE set(MmHandle* pool, CS_INT property, CS_INT value) {
  return comn_mmproperty(pool, CS_SET, property, &value, CS_UNUSED, nullptr);
}

Pool::Pool(Host& host, CS_INT kind, CS_INT blocksize) {
  EXPECT_EQ(CS_SUCCEED, comn_mminit(&host, &handle));
  EXPECT_EQ(CS_SUCCEED, set(handle, MM_PROP_POOLTYPE, kind));
  EXPECT_EQ(CS_SUCCEED, set(handle, MM_PROP_BLOCKSIZE, blocksize));
}

CS_RETCODE put(MmHandle* pool, CS_INT property, void* value, CS_INT size = 0) {
  return comn_mmproperty(pool, CS_SET, property, value, size, nullptr);
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

template <class Node>
int length(const Node* list, Node* Node::*next) {
  int count = 0;
  for (; list != nullptr; list = list->*next) ++count;
  return count;
}

// --- Random operations against a shadow model ----------------------------------------------------

// What a pool has handed out, with a pattern in each block.
class Shadow {
 public:
  Shadow(MmHandle* pool, CS_INT kind, unsigned run) : pool_(pool), kind_(kind), random_(run) {
    EXPECT_EQ(CS_SUCCEED, set(pool, MM_PROP_POOLTYPE, kind));
  }
  void step() {
    const int choice = draw(0, 9);
    if (choice < 5 || blocks_.empty()) return add();
    const auto block = std::next(blocks_.begin(), draw(0, static_cast<int>(blocks_.size()) - 1));
    choice < 8 ? remove(block) : resize(block);
  }
  void empty() {
    while (!blocks_.empty() && kind_ != MM_POOL_ALLOCONLY) remove(blocks_.begin());
    for (const auto& [start, block] : blocks_) expect_pattern(start, block, block.size);
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
  static void expect_pattern(const CS_BYTE* start, const Block& block, CS_INT size) {
    EXPECT_TRUE(std::all_of(start, start + size, [&](CS_BYTE b) { return b == block.fill; }));
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
    auto* start = static_cast<CS_BYTE*>(memory);
    if (start == nullptr) {  // no room in caller memory, or a compaction that did not suffice
      EXPECT_TRUE(result == CS_MEM_ERROR || (result == CS_SUCCEED && kind_ == MM_POOL_BUDDY));
      return;
    }
    expect_pattern(start, {.size = size, .fill = 0}, size);
    insert(start, size);
  }
  void remove(Blocks::iterator block) {
    expect_pattern(block->first, block->second, block->second.size);
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
    EXPECT_TRUE(kind_ == MM_POOL_BUDDY || result == CS_FAIL);
    EXPECT_TRUE(!moved || (result == CS_SUCCEED && size > capacity));
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

void run_shadow(MmHandle* pool, CS_INT kind, unsigned run, int steps) {
  Shadow shadow(pool, kind, run);
  for (int i = 0; i < steps; ++i) {
    shadow.step();
    ASSERT_TRUE(i % 64 != 0 || com__mm_validate(pool) == CS_SUCCEED) << "step " << i;
  }
  shadow.empty();
  ASSERT_EQ(CS_SUCCEED, com__mm_validate(pool));
}

// Subpools of all kinds, filled and dropped in turn, leave nothing behind in the top pool.
TEST(Pools, RandomOperationsOnAContext) {
  Host host;
  const Pool top(host);
  unsigned round = 0;
  for (const CS_INT blocksize : {64, 1000, 4096, 100'000}) {
    std::array<MmHandle*, 3> pools = {};
    for (CS_INT i = 0; i < 3; ++i) {
      pools[i] = subpool(top, i);
      ASSERT_EQ(CS_SUCCEED, set(pools[i], MM_PROP_BLOCKSIZE, blocksize));
      run_shadow(pools[i], kKinds[(i + round) % 3], round, 3000);
    }
    for (const std::size_t i : {1, 0, 2}) EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pools[i], CS_UNUSED));
    EXPECT_EQ(nullptr, top->mmh_head->mph_heap);
    ++round;
  }
}

TEST(Pools, RandomOperationsInCallerMemory) {
  for (const CS_INT kind : kKinds) {
    for (const CS_INT length : {2000, 30'001, 200'002}) {
      std::vector<CS_UINT> memory(static_cast<std::size_t>(length) / 4 + 3, 0xabababab);
      auto* buffer = reinterpret_cast<CS_BYTE*>(memory.data() + 1);  // aligned to 4 alone
      MmHandle* pool = nullptr;
      ASSERT_EQ(CS_SUCCEED, comn_mmmanage(buffer, length, &pool));
      run_shadow(pool, kind, static_cast<unsigned>(kind + length), 3000);
      EXPECT_EQ(0xab, buffer[length]) << "nothing behind the area is touched";
    }
  }
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
    alignas(4) CS_BYTE control[152];
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
  EXPECT_EQ(8u, header_of(allocate(pool, 4092)) & 15);
  CS_BYTE* large = allocate(pool, 4093);
  EXPECT_EQ(4093u | 0x80000000u, header_of(large));
  EXPECT_EQ(4104u, header_of(large - 8)) << "link, header and bytes, rounded";
  EXPECT_EQ(4100, get(pool, MM_PROP_BLOCKSIZE)) << "that of a top-level block and a word";
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

TEST(Uniform, SlabsOfOneSize) {
  const struct {
    CS_INT size, blocksize, node, slab;
  } rows[] = {{10, 4096, 16, 4096}, {13, 4096, 20, 4080}, {5000, 4096, 5004, 5004}, {0, 10, 8, 8}};
  for (const auto& row : rows) {
    Host host;
    const Pool pool(host, MM_POOL_UNIFORM, row.blocksize);
    CS_BYTE* one = allocate(pool, row.size);
    EXPECT_EQ(row.slab, get(pool, MM_PROP_BLOCKSIZE));
    void* other = nullptr;
    while (pool->mmh_pool.uniform.free != nullptr) other = allocate(pool, row.size);
    for (const CS_INT size : {row.size + 1, 0x7fffffff})
      EXPECT_EQ(CS_FAIL, comn_mmalloc(pool, size, &other)) << size;
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
  EXPECT_EQ(first + 8, allocate(pool, 60));
  CS_BYTE* other = allocate(pool, 40);  // 32 are left: a new region
  EXPECT_EQ(other + 40, allocate(pool, 60)) << "newest first";
  EXPECT_EQ(first + 68, allocate(pool, 32));
}

// --- Properties, locks, subpools -----------------------------------------------------------------

TEST(Properties, AreFixedByTheFirstAllocation) {
  Host host;
  MmHandle* const pool = Pool(host).release();
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
  EXPECT_EQ(0, get(pool, MM_PROP_LOCKARG)) << "an argument is not told";
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
}

// A pool in caller memory that gets more of it and borrows a context's chunk functions.
TEST(Properties, ManagedPoolCanGrow) {
  Host host;
  const Pool source(host);
  CS_UINT memory[100];
  CS_UINT more[100];
  MmHandle* pool = nullptr;
  ASSERT_EQ(CS_SUCCEED, comn_mmmanage(memory, sizeof memory, &pool));
  set(pool, MM_PROP_BLOCKSIZE, 16);
  void* out = nullptr;
  EXPECT_EQ(CS_MEM_ERROR, comn_mmalloc(pool, 300, &out));
  EXPECT_EQ(CS_SUCCEED, put(pool, MM_PROP_ADDMEMORY, more, sizeof more));
  allocate(pool, 300);
  put(pool, MM_PROP_SBREAK, get<void*>(source, MM_PROP_SBREAK));
  put(pool, MM_PROP_SBREAKARG, static_cast<CS_CONTEXT*>(&host));
  EXPECT_EQ(CS_SUCCEED, comn_mmfree(pool, allocate(pool, 300))) << "nothing takes the chunk back";
  EXPECT_EQ(3u, host.live.size());
  put(pool, MM_PROP_UNSBREAK, get<void*>(source, MM_PROP_UNSBREAK));
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
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
    put(pool, MM_PROP_UNLOCK, reinterpret_cast<void*>(release));
    put(pool, MM_PROP_LOCKARG, this);
    EXPECT_EQ(CS_SUCCEED, put(pool, MM_PROP_LOCK, reinterpret_cast<void*>(take)));
  }
};

TEST(Locks, EveryCallTakesAndReleases) {
  Host host;
  MmHandle* const pool = Pool(host).release();
  Lock lock;
  lock.install(pool);
  MmHandle* sub = subpool(pool, 1);
  void* block = allocate(sub, 5);
  comn_mmrealloc(sub, 50, &block);
  comn_mmfree(sub, block);
  EXPECT_EQ(CS_FAIL, put(pool, MM_PROP_LOCK, reinterpret_cast<void*>(Lock::take)));
  EXPECT_EQ(CS_BUSY, comn_mmdrop(pool, CS_UNUSED));
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(sub, CS_UNUSED));
  get(pool, MM_PROP_CTLSIZE);
  EXPECT_EQ(7, lock.taken);

  lock.result = CS_INTERRUPT;
  EXPECT_EQ(CS_INTERRUPT, comn_mmalloc(pool, 5, &block));
  EXPECT_EQ(CS_INTERRUPT, comn_mmdrop(pool, CS_UNUSED));
  lock.result = CS_SUCCEED;
  EXPECT_EQ(CS_BUSY, comn_mmproperty(pool, CS_CLEAR, MM_PROP_LOCKARG, nullptr, 0, nullptr));
  EXPECT_EQ(nullptr, get<void*>(pool, MM_PROP_UNLOCK)) << "one clears all three";
  lock.install(pool);
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
  EXPECT_EQ(0, lock.depth);
}

TEST(Locks, MutexOfTheContextsThreadTable) {
  CS_THREAD table = *comn_thread_table();
  Host host;
  host.ctxthread = &table;
  const std::size_t before = host_alloc::live_blocks();
  for (const bool clear : {false, true}) {
    {
      const Pool pool(host);
      auto* mutex = static_cast<COMN_MUTEX*>(pool->mmh_head->mph_lockarg);
      EXPECT_EQ(17, pool->mmh_head->mph_status);
      comn_mmfree(pool, allocate(pool, 1));
      EXPECT_EQ(CS_FAIL, comn_check_mutex(mutex)) << "released";
      if (clear) comn_mmproperty(pool, CS_CLEAR, MM_PROP_LOCK, nullptr, 0, nullptr);
    }
    EXPECT_EQ(before, host_alloc::live_blocks());
  }
  table.create_mutex_fn = [](COMN_MUTEX**) -> CS_RETCODE { return CS_BUSY; };
  MmHandle* pool = nullptr;
  EXPECT_EQ(CS_BUSY, comn_mminit(&host, &pool));
}

TEST(Subpools, FormATreeThatForceRemovesFromItsTop) {
  Host host;
  MmHandle* const top = Pool(host, MM_POOL_UNIFORM).release();
  MmHandle* one = subpool(top, 1);
  MmHandle* two = subpool(top, 2);
  EXPECT_EQ(one, subpool(top, 1));
  EXPECT_EQ(two, top->mmh_child) << "newest first";
  EXPECT_EQ(MM_POOL_UNIFORM, get(one, MM_PROP_POOLTYPE));
  MmHandle* below = subpool(one, 1);
  EXPECT_EQ(CS_BUSY, comn_mmdrop(one, CS_UNUSED));
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(two, CS_UNUSED));
  EXPECT_EQ(one, top->mmh_child);
  allocate(below, 8);
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(below, MM_FORCE_DROP));
}

TEST(Pools, EveryAllocationFailsOnce) {
  int failing = 0;
  for (bool reached = true; reached;) {
    Host host;
    host.countdown = ++failing;
    MmHandle* pool = nullptr;
    if (comn_mminit(&host, &pool) != CS_SUCCEED) {
      EXPECT_TRUE(failing <= 2 && host.live.empty());
      continue;
    }
    int failures = 0;
    const auto note = [&failures](CS_RETCODE result) {
      EXPECT_TRUE(result == CS_SUCCEED || result == CS_MEM_ERROR);
      if (result != CS_SUCCEED) ++failures;
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
      for (const CS_INT size : {0x7fffffff, 0x7fffffff - 20, 0x7fffffff - 64})
        EXPECT_TRUE(kind == MM_POOL_UNIFORM || comn_mmalloc(sub, size, &block) == CS_MEM_ERROR);
    }
    EXPECT_EQ(CS_SUCCEED, com__mm_validate(pool));
    reached = host.countdown == 0;
    EXPECT_EQ(reached ? 1 : 0, failures);
    EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, MM_FORCE_DROP));
  }
}

// --- Stops ---------------------------------------------------------------------------------------

TEST(PoolsDeathTest, MisuseStops) {
  Host host;
  CS_UINT outside[200] = {};
  void* out = nullptr;
  MmHandle* none = nullptr;
  const Pool buddy(host);
  const Pool uniform(host, MM_POOL_UNIFORM);
  const Pool fresh(host);
  CS_BYTE* const block = allocate(buddy, 24);
  CS_BYTE* const other = allocate(buddy, 24);
  CS_BYTE* const node = allocate(uniform, 24);
  MmHandle* managed = nullptr;
  comn_mmmanage(outside, sizeof outside, &managed);
  MmHandle* const dropped = subpool(managed, 1);
  comn_mmdrop(managed, MM_FORCE_DROP);
  const auto header = [](void* user) -> CS_UINT& { return static_cast<CS_UINT*>(user)[-1]; };
  const auto property = [](MmHandle* pool, CS_INT action, CS_INT code, CS_INT value) {
    comn_mmproperty(pool, action, code, &value, 0, nullptr);
  };
  const auto free_twice = [](MmHandle* pool, CS_INT size, bool another_between = false) {
    CS_BYTE* first = allocate(pool, size);
    CS_BYTE* second = allocate(pool, size);
    comn_mmfree(pool, first);
    if (another_between) comn_mmfree(pool, second);
    comn_mmfree(pool, first);
  };
  const struct {
    const char* what;
    std::function<void()> misuse;
  } rows[] = {
      {"init version", [&] { host.ctxversion = 112, comn_mminit(&host, &none); }},
      {"manage 104", [&] { comn_mmmanage(outside, 104, &none); }},
      {"manage 151", [&] { comn_mmmanage(outside, 151, &none); }},
      {"manage 160", [&] { comn_mmmanage(outside, 160, &none); }},
      {"alloc negative", [&] { comn_mmalloc(buddy, -1, &out); }},
      {"alloc null", [&] { comn_mmalloc(nullptr, 1, &out); }},
      {"alloc from none",
       [&] { set(fresh, MM_PROP_POOLTYPE, MM_POOL_NONE), comn_mmalloc(fresh, 1, &out); }},
      {"alloc from dropped", [&] { comn_mmalloc(managed, 1, &out); }},
      {"drop with the family dropped", [&] { comn_mmdrop(dropped, CS_UNUSED); }},
      {"free before any allocation", [&] { comn_mmfree(fresh, block); }},
      {"free foreign", [&] { comn_mmfree(buddy, outside + 8); }},
      {"free buddy twice", [&] { free_twice(buddy, 24); }},
      {"free uniform twice", [&] { free_twice(uniform, 24, true); }},
      {"free tiny uniform twice",
       [&] { set(fresh, MM_PROP_POOLTYPE, MM_POOL_UNIFORM), free_twice(fresh, 4, true); }},
      {"free large twice", [&] { free_twice(buddy, 50'000); }},
      {"free inside a block",
       [&] { header(block + 8) = header(block), comn_mmfree(buddy, block + 8); }},
      {"order too high", [&] { header(block) |= 15, comn_mmfree(buddy, block); }},
      {"damaged base mark", [&] { header(block) ^= 0x100000, comn_mmfree(buddy, block); }},
      {"damaged to large", [&] { header(block) |= 0x80000000, comn_mmfree(buddy, block); }},
      {"damaged buddy",
       [&] {
         comn_mmfree(buddy, block), header(other) ^= 0x10000;
         for (;;) comn_mmalloc(buddy, 60, &out);
       }},
      {"damaged free block",
       [&] { comn_mmfree(buddy, block), header(block) = 0x20202020, allocate(buddy, 24); }},
      {"damaged node", [&] { header(node) = 20, comn_mmfree(uniform, node); }},
      {"realloc negative", [&] { out = block, comn_mmrealloc(buddy, -5, &out); }},
      {"realloc null", [&] { comn_mmrealloc(buddy, 5, &out); }},
      {"realloc freed",
       [&] { out = block, comn_mmfree(buddy, out), comn_mmrealloc(buddy, 500, &out); }},
      {"bad action", [&] { property(buddy, 36, MM_PROP_CHUNKSIZE, 1); }},
      {"property below", [&] { property(buddy, CS_GET, 1234, 1); }},
      {"get added memory", [&] { property(fresh, CS_GET, MM_PROP_ADDMEMORY, 0); }},
      {"property above", [&] { property(buddy, CS_GET, 1248, 1); }},
      {"unknown kind", [&] { property(fresh, CS_SET, MM_PROP_POOLTYPE, 2239); }},
      {"chunk size 0", [&] { property(fresh, CS_SET, MM_PROP_CHUNKSIZE, 0); }},
      {"add 8 bytes", [&] { put(fresh, MM_PROP_ADDMEMORY, outside, 8); }},
      {"clear a size", [&] { property(fresh, CS_CLEAR, MM_PROP_CHUNKSIZE, 0); }},
      {"clear the control size", [&] { property(fresh, CS_CLEAR, MM_PROP_CTLSIZE, 0); }},
      {"putblock foreign", [&] { com___putblock(buddy, block); }},
      {"remove a top pool as a subpool", [&] { com___remove_subpool(fresh); }},
      {"diagnose", [] { comn_mmdiag(); }},
      {"drop option", [&] { comn_mmdrop(fresh, 0); }},
      {"heap block freed twice",
       [&] {
         for (int i = 0; i < 2; ++i) com___getheap(fresh, 16, &out);
         for (int i = 0; i < 2; ++i) com___putheap(fresh, out);
       }},
      {"heap block overrun",
       [&] { com___getheap(fresh, 16, &out), header(out) = 100'000, com___putheap(fresh, out); }},
      {"free when the lock fails",
       [&] {
         Lock lock;
         lock.install(buddy);
         lock.result = CS_FAIL;
         comn_mmfree(buddy, block);
       }},
  };
  for (const auto& row : rows)
    EXPECT_EXIT(row.misuse(), aborted, "assertion failed|Invalid pointer") << row.what;
}

}  // namespace
