// The calls on pools: properties and locks, subpools, memory that is short, and every stop.
#include <csignal>

#include "comnlib/thread.h"
#include "pools.h"
#include "support/host_alloc.h"

namespace {

using namespace pools;

TEST(Properties, AreFixedByTheFirstAllocation) {
  Host host;
  CS_BYTE control[kControlSize];
  auto* pool = reinterpret_cast<MmHandle*>(control);
  ASSERT_EQ(CS_SUCCEED, comn_mminit(&host, &pool));
  EXPECT_EQ(0U, host.requests.size());
  EXPECT_EQ(control + kHeadSize, reinterpret_cast<CS_BYTE*>(pool));
  EXPECT_EQ(2, pool->mmh_status);
  EXPECT_EQ(2, pool->mmh_head->mph_status);
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
  EXPECT_EQ(kControlSize, get(pool, MM_PROP_CTLSIZE));
  for (const CS_INT refused : {MM_PROP_CTLSIZE, MM_PROP_SUBPOOL})
    EXPECT_EQ(CS_FAIL, set(pool, refused, 160));
  for (const CS_INT untold : {MM_PROP_SBREAKARG, MM_PROP_LOCKARG, MM_PROP_LOCK})
    EXPECT_EQ(nullptr, get<void*>(pool, untold))
        << "an argument is not told, a function is not there";
  void* nothing = nullptr;
  EXPECT_EQ(CS_FAIL, comn_mmrealloc(pool, 100, &nothing)) << "not of this kind";
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
  CS_BYTE* const block = allocate(pool, 300);
  put(pool, MM_PROP_SBREAK, get<void*>(source, MM_PROP_SBREAK));
  put(pool, MM_PROP_SBREAKARG, static_cast<CS_CONTEXT*>(&host));
  EXPECT_EQ(CS_SUCCEED, comn_mmfree(pool, allocate(pool, 300))) << "nothing takes the chunk back";
  EXPECT_EQ(3u, host.live.size());
  put(pool, MM_PROP_UNSBREAK, get<void*>(source, MM_PROP_UNSBREAK));
  EXPECT_EQ(CS_SUCCEED, comn_mmfree(pool, block)) << "the caller's memory is not given back";
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
  for (const CS_RETCODE result : {comn_mmalloc(pool, 5, &block), comn_mmrealloc(pool, 5, &block),
                                  set(pool, MM_PROP_CHUNKSIZE, 50), comn_mmdrop(pool, CS_UNUSED)})
    EXPECT_EQ(CS_INTERRUPT, result);
  lock.result = CS_SUCCEED;
  for (const CS_INT property : {MM_PROP_LOCK, MM_PROP_LOCKARG, MM_PROP_UNLOCK}) {
    EXPECT_EQ(CS_BUSY, comn_mmproperty(pool, CS_CLEAR, property, nullptr, 0, nullptr));
    EXPECT_EQ(nullptr, get<void*>(pool, MM_PROP_UNLOCK)) << "one clears all three";
    EXPECT_EQ(nullptr, pool->mmh_head->mph_lockarg) << property;
    lock.install(pool);
  }
  comn_mmproperty(pool, CS_CLEAR, MM_PROP_LOCK, nullptr, 0, nullptr);
  lock.depth = 1;  // an unlock function alone is called too
  put(pool, MM_PROP_UNLOCK, reinterpret_cast<void*>(Lock::release));
  put(pool, MM_PROP_LOCKARG, &lock);
  EXPECT_EQ(CS_BUSY, comn_mmproperty(pool, CS_CLEAR, MM_PROP_LOCK, nullptr, 0, nullptr));
  EXPECT_EQ(CS_SUCCEED, comn_mmproperty(pool, CS_CLEAR, MM_PROP_LOCK, nullptr, 0, nullptr));
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
  EXPECT_EQ(0, lock.depth);
}

// A source that asks the pool while it gives back chunks of a pool that is removed does not wait
// for the lock that the removal holds.
TEST(Locks, AreNotTakenDuringRemoval) {
  Host host;
  MmHandle* const pool = Pool(host).release();
  static int taken;
  taken = 0;
  const MM_LOCK_FUNC take = [](MmHandle*, CS_VOID*) { return ++taken, CS_RETCODE{CS_SUCCEED}; };
  const MM_LOCK_FUNC release = [](MmHandle*, CS_VOID*) { return CS_RETCODE{CS_SUCCEED}; };
  const MM_UNSBREAK_FUNC less = [](MmHandle* handle, CS_VOID* context, CS_VOID* chunk) {
    get(handle, MM_PROP_CHUNKSIZE);
    EXPECT_EQ(1, taken) << "by the drop alone";
    static_cast<Host*>(context)->ctxfree(static_cast<Host*>(context), chunk);
  };
  allocate(pool, 5);
  put(pool, MM_PROP_UNSBREAK, reinterpret_cast<void*>(less));
  put(pool, MM_PROP_UNLOCK, reinterpret_cast<void*>(release));
  put(pool, MM_PROP_LOCK, reinterpret_cast<void*>(take));
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
  EXPECT_EQ(1, taken);
}

TEST(Locks, MutexOfTheContextsThreadTable) {
  CS_THREAD table = *comn_thread_table();
  Host host;
  host.ctxthread = &table;
  const std::size_t before = host_alloc::live_blocks();
  for (const bool clear : {false, true}) {
    Pool pool(host);
    auto* mutex = static_cast<COMN_MUTEX*>(pool->mmh_head->mph_lockarg);
    EXPECT_EQ(17, pool->mmh_head->mph_status);
    comn_mmfree(pool, allocate(pool, 1));
    EXPECT_EQ(CS_FAIL, comn_check_mutex(mutex)) << "released";
    if (clear) comn_mmproperty(pool, CS_CLEAR, MM_PROP_LOCK, nullptr, 0, nullptr);
    EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool.release(), CS_UNUSED));
    if (clear) {
      EXPECT_EQ(CS_SUCCEED, comn_delete_mutex(mutex)) << "its creator's";
    }
    EXPECT_EQ(before, host_alloc::live_blocks());
  }
  table.create_mutex_fn = [](COMN_MUTEX**) -> CS_RETCODE { return CS_BUSY; };
  MmHandle* pool = nullptr;
  EXPECT_EQ(CS_BUSY, comn_mminit(&host, &pool));
  table = {};  // a table without functions locks nothing
  const Pool unlocked(host);
  comn_mmfree(unlocked, allocate(unlocked, 1));
}

TEST(Subpools, FormATreeThatForceRemovesFromItsTop) {
  Host host;
  MmHandle* const top = Pool(host, MM_POOL_UNIFORM, 1000).release();
  MmHandle* one = subpool(top, 1);
  MmHandle* two = subpool(top, 2);
  EXPECT_EQ(one, subpool(top, 1));
  EXPECT_EQ(two, top->mmh_child) << "newest first";
  EXPECT_EQ(MM_POOL_UNIFORM, get(one, MM_PROP_POOLTYPE));
  EXPECT_EQ(1000, get(one, MM_PROP_BLOCKSIZE));
  MmHandle* below = subpool(one, 1);
  EXPECT_EQ(CS_BUSY, comn_mmdrop(one, CS_UNUSED));
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(two, CS_UNUSED));
  EXPECT_EQ(one, top->mmh_child);
  allocate(below, 8);
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(below, MM_FORCE_DROP));
}

TEST(Pools, RequestsThatNoMemoryMeets) {
  for (const CS_INT kind : kKinds) {
    Host host;
    const Pool pool(host, kind);
    void* block = nullptr;
    for (const CS_INT size : {0x7fffffff, 0x7fffffff - 20, 0x7fffffff - 16 * kWord})
      EXPECT_EQ(CS_MEM_ERROR, comn_mmalloc(pool, size, &block)) << kind << ' ' << size;
    EXPECT_EQ(nullptr, block);
    EXPECT_EQ(4096, get(pool, MM_PROP_BLOCKSIZE)) << "the first allocation is still to come";
    CS_BYTE* const first = allocate(pool, 8);
    block = first;
    EXPECT_NE(CS_SUCCEED, comn_mmrealloc(pool, 0x7fffffff, &block));
    EXPECT_EQ(first, block) << kind;
  }
}

// Calls that stop the process.
#define EXPECT_STOP(...) \
  EXPECT_EXIT((__VA_ARGS__), testing::KilledBySignal(SIGABRT), "assertion failed|Invalid pointer")

TEST(PoolsDeathTest, MisuseStops) {
  Host host;
  CS_UINT outside[200] = {};
  void* out = nullptr;
  MmHandle* none = nullptr;
  MmHandle* managed = nullptr;
  const Pool buddy(host), fresh(host), undecided(host, MM_POOL_NONE);
  const Pool uniform(host, MM_POOL_UNIFORM), tiny(host, MM_POOL_UNIFORM);
  const Pool alloconly(host, MM_POOL_ALLOCONLY);
  CS_BYTE* const block = allocate(buddy, 24);
  CS_BYTE* const other = allocate(buddy, 24);
  CS_BYTE* const large = allocate(buddy, 50'000);
  CS_BYTE* const node = allocate(uniform, 24);
  allocate(alloconly, 24);
  comn_mmmanage(outside, sizeof outside, &managed);
  MmHandle* const dropped = subpool(managed, 1);
  comn_mmdrop(managed, MM_FORCE_DROP);
  Lock lock;
  const auto realloc = [&](MmHandle* pool, void* from, CS_INT size) {
    comn_mmrealloc(pool, size, &from);
  };
  const auto free_twice = [](MmHandle* pool, CS_INT size, bool another_between) {
    CS_BYTE* const blocks[] = {allocate(pool, size), allocate(pool, size)};
    for (const int i : {0, 1, 0})
      if (i == 0 || another_between) comn_mmfree(pool, blocks[i]);
  };
  const auto put_twice = [&] {
    for (int i = 0; i < 2; ++i) com___getheap(fresh, 16, &out);
    for (int i = 0; i < 2; ++i) com___putheap(fresh, out);
  };
  const auto compact = [&] {
    for (;;) comn_mmalloc(buddy, 60, &out);
  };
  EXPECT_STOP(host.ctxversion = 112, comn_mminit(&host, &none));
  EXPECT_STOP(comn_mminit(&host, nullptr));
  EXPECT_STOP(comn_mmmanage(nullptr, 1000, &none));
  EXPECT_STOP(comn_mmalloc(buddy, -1, &out));
  EXPECT_STOP(comn_mmalloc(nullptr, 1, &out));
  EXPECT_STOP(comn_mmalloc(buddy, 1, nullptr));
  EXPECT_STOP(comn_mmalloc(undecided, 1, &out));
  EXPECT_STOP(comn_mmalloc(managed, 1, &out));
  EXPECT_STOP(comn_mmdrop(dropped, CS_UNUSED));
  EXPECT_STOP(comn_mmfree(fresh, block));
  EXPECT_STOP(comn_mmfree(buddy, outside + 8));
  EXPECT_STOP(comn_mmfree(alloconly, block));
  EXPECT_STOP(free_twice(buddy, 24, false));
  EXPECT_STOP(free_twice(buddy, 50'000, false));
  for (const bool another_between : {false, true}) {
    EXPECT_STOP(free_twice(uniform, 24, another_between));
    EXPECT_STOP(free_twice(tiny, 4, another_between));
  }
  EXPECT_STOP(header_of(block + 8) = header_of(block), comn_mmfree(buddy, block + 8));
  EXPECT_STOP(header_of(block) |= 15, comn_mmfree(buddy, block));
  EXPECT_STOP(header_of(block) ^= 0x100000, comn_mmfree(buddy, block));
  EXPECT_STOP(header_of(block) |= 0x80000000, comn_mmfree(buddy, block));
  for (const CS_UINT damage :
       {1U * kWord, 3U * kWord, 0U - 3U * kWord})  // a size that the heap did not give
    EXPECT_STOP(header_of(large) += damage, comn_mmfree(buddy, large)) << damage;
  EXPECT_STOP(comn_mmfree(buddy, block), header_of(other) ^= 0x10000, compact());
  EXPECT_STOP(comn_mmfree(buddy, block), header_of(block) ^= 1, compact());
  EXPECT_STOP(comn_mmfree(buddy, block), header_of(block) = 0x20202020, allocate(buddy, 24));
  EXPECT_STOP(header_of(node) = 20, comn_mmfree(uniform, node));
  EXPECT_STOP(realloc(buddy, block, -5));
  EXPECT_STOP(realloc(buddy, nullptr, 5));
  EXPECT_STOP(comn_mmfree(buddy, block), realloc(buddy, block, 500));
  EXPECT_STOP(realloc(fresh, block, 500));
  EXPECT_STOP(realloc(undecided, block, 500));
  EXPECT_STOP(comn_mmproperty(buddy, 36, MM_PROP_CHUNKSIZE, &out, 0, nullptr));
  EXPECT_STOP(comn_mmproperty(buddy, CS_CLEAR, MM_PROP_CHUNKSIZE, &out, 0, nullptr));
  EXPECT_STOP(set(fresh, MM_PROP_POOLTYPE, 2239));
  EXPECT_STOP(set(fresh, MM_PROP_CHUNKSIZE, 0));
  EXPECT_STOP(put(fresh, MM_PROP_SBREAK, nullptr));
  EXPECT_STOP(put(fresh, MM_PROP_ADDMEMORY, outside, 2 * kWord));
  EXPECT_STOP(com___putblock(buddy, block));
  EXPECT_STOP(com___remove_subpool(fresh));
  EXPECT_STOP(comn_mmdiag());
  EXPECT_STOP(comn_mmdrop(fresh, 0));
  EXPECT_STOP(put_twice());
  EXPECT_STOP(com___getheap(fresh, 16, &out), header_of(out) = 0, com___putheap(fresh, out));
  EXPECT_STOP(com___getheap(fresh, 16, &out), header_of(out) = 100'000, com___putheap(fresh, out));
  EXPECT_STOP(lock.install(buddy), lock.result = CS_FAIL, comn_mmfree(buddy, block));
  for (const CS_INT size : {kHandleSize, kControlSize - 1, kControlSize + 2 * kWord})
    EXPECT_STOP(comn_mmmanage(outside, size, &none)) << size;
  for (const CS_INT code : {MM_PROP_POOLTYPE - 1, +MM_PROP_ADDMEMORY, MM_PROP_BLOCKSIZE + 1})
    EXPECT_STOP(comn_mmproperty(buddy, CS_GET, code, &out, 0, nullptr)) << code;
}

}  // namespace
