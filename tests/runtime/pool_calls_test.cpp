// The calls on pools: properties and locks, subpools, memory that is short, and every stop.
#include <cstring>

#include "comnlib/diag.h"
#include "pools.h"
#include "support/stops.h"

namespace {

using namespace pools;
namespace mm = comnlib::mm;

TEST(Properties, AreFixedByTheFirstAllocation) {
  PoolContext host;
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
  for (const CS_INT none : {MM_PROP_SBREAKARG, MM_PROP_LOCKARG, MM_PROP_LOCK})
    EXPECT_EQ(nullptr, get<void*>(pool, none)) << "no argument is given out, no function is there";
  void* nothing = nullptr;
  EXPECT_EQ(CS_FAIL, comn_mmrealloc(pool, 100, &nothing)) << "not of this kind";
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
}

// A pool in caller memory that gets more of it and borrows a context's chunk functions.
TEST(Properties, ManagedPoolCanGrow) {
  PoolContext host;
  const Pool source(host);
  CS_BYTE memory[400], more[400];
  const Pool pool(memory, sizeof memory);
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
}

// --- Locks ---------------------------------------------------------------------------------------

struct HostLock {
  int depth = 0, taken = 0;
  CS_RETCODE result = CS_SUCCEED;
  static CS_RETCODE take(MmHandle*, CS_VOID* arg) {
    auto* lock = static_cast<HostLock*>(arg);
    if (lock->result != CS_SUCCEED) return lock->result;
    ++lock->taken;
    EXPECT_EQ(1, ++lock->depth);
    return CS_SUCCEED;
  }
  static CS_RETCODE release(MmHandle*, CS_VOID* arg) {
    EXPECT_EQ(0, --static_cast<HostLock*>(arg)->depth);
    return CS_BUSY;
  }
  void install(MmHandle* pool) {
    put_function(pool, MM_PROP_UNLOCK, release);
    put(pool, MM_PROP_LOCKARG, this);
    EXPECT_EQ(CS_SUCCEED, put_function(pool, MM_PROP_LOCK, take));
  }
};

TEST(Locks, EveryCallTakesAndReleases) {
  PoolContext host;
  MmHandle* const pool = Pool(host).release();
  HostLock lock;
  lock.install(pool);
  MmHandle* sub = subpool(pool, 1);
  void* block = allocate(sub, 5);
  comn_mmrealloc(sub, 50, &block);
  comn_mmfree(sub, block);
  EXPECT_EQ(CS_FAIL, put_function(pool, MM_PROP_LOCK, HostLock::take));
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
    EXPECT_EQ(CS_BUSY, clear(pool, property));
    EXPECT_EQ(nullptr, get<void*>(pool, MM_PROP_UNLOCK)) << "one clears all three";
    EXPECT_EQ(nullptr, pool->mmh_head->mph_lockarg) << property;
    lock.install(pool);
  }
  clear(pool, MM_PROP_LOCK);
  lock.taken = 0;
  put(pool, MM_PROP_LOCKARG, &lock);
  put_function(pool, MM_PROP_LOCK, HostLock::take);
  comn_mmfree(pool, allocate(pool, 5));
  EXPECT_EQ(CS_SUCCEED, clear(pool, MM_PROP_LOCK));
  EXPECT_EQ(0, lock.taken) << "not without an unlock function";
  lock.depth = 1;  // which is called by itself too
  put_function(pool, MM_PROP_UNLOCK, HostLock::release);
  put(pool, MM_PROP_LOCKARG, &lock);
  EXPECT_EQ(CS_BUSY, clear(pool, MM_PROP_LOCK));
  EXPECT_EQ(CS_SUCCEED, clear(pool, MM_PROP_LOCK));
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
  EXPECT_EQ(0, lock.depth);
}

// A source that asks the pool while it gives back chunks of a pool that is removed does not wait
// for the lock that the removal holds.
TEST(Locks, AreNotTakenDuringRemoval) {
  PoolContext host;
  MmHandle* const pool = Pool(host).release();
  static int taken;
  taken = 0;
  const MM_LOCK_FUNC take = [](MmHandle*, CS_VOID*) { return ++taken, CS_RETCODE{CS_SUCCEED}; };
  const MM_LOCK_FUNC release = [](MmHandle*, CS_VOID*) { return CS_RETCODE{CS_SUCCEED}; };
  const MM_UNSBREAK_FUNC less = [](MmHandle* handle, CS_VOID* context, CS_VOID* chunk) {
    get(handle, MM_PROP_CHUNKSIZE);
    EXPECT_EQ(1, taken) << "by the drop alone";
    static_cast<PoolContext*>(context)->ctxfree(static_cast<PoolContext*>(context), chunk);
  };
  allocate(pool, 5);
  put_function(pool, MM_PROP_UNSBREAK, less);
  put_function(pool, MM_PROP_UNLOCK, release);
  put_function(pool, MM_PROP_LOCK, take);
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, CS_UNUSED));
  EXPECT_EQ(1, taken);
}

// The mutex that a pool makes by its context's thread table.
TEST(Locks, MutexOfTheContextsThreadTable) {
  const hosts::NothingLost nothing_lost;
  PoolContext host;
  host.ctxthread = &host.threads;
  for (const bool cleared : {false, true}) {
    Pool pool(host);
    auto* mutex = static_cast<COMN_MUTEX*>(pool->mmh_head->mph_lockarg);
    EXPECT_EQ(17, pool->mmh_head->mph_status);
    comn_mmfree(pool, allocate(pool, 1));
    EXPECT_EQ(CS_FAIL, comn_check_mutex(mutex)) << "released";
    if (cleared) clear(pool, MM_PROP_LOCK);
    EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool.release(), CS_UNUSED));
    EXPECT_TRUE(!cleared || comn_delete_mutex(mutex) == CS_SUCCEED) << "its creator's";
  }
  MmHandle* pool = nullptr;
  for (std::size_t n = 1; n <= 3; ++n) {
    const hosts::Failing failing(n);
    EXPECT_EQ(CS_FAIL, comn_mminit(&host, &pool)) << "head, handle, mutex";
  }
  host.threads.create_mutex_fn = [](COMN_MUTEX**) -> CS_RETCODE { return CS_BUSY; };
  EXPECT_EQ(CS_BUSY, comn_mminit(&host, &pool));
}

// The functions of the table are asked, whichever of them it has.
TEST(Locks, FunctionsOfTheThreadTable) {
  static int held, calls;
  const auto take = [](COMN_MUTEX* mutex) { return ++calls, ++held, comn_take_mutex(mutex); };
  const auto release = [](COMN_MUTEX* mutex) { return --held, comn_release_mutex(mutex); };
  for (const int own : {0, 1, 2, 3}) {
    PoolContext host;
    host.ctxthread = &host.threads;
    if ((own & 1) != 0) host.threads.take_mutex_fn = take;
    if ((own & 2) != 0) host.threads.release_mutex_fn = release;
    const Pool pool(host);
    held = calls = 0;
    comn_mmfree(pool, allocate(pool, 1));
    EXPECT_EQ((own & 1) != 0 ? 2 : 0, calls) << own;
    EXPECT_EQ(own == 1 ? 2 : own == 2 ? -2 : 0, held) << own;
    testing::internal::CaptureStdout();
    com_errset(COM_TRACE_ALL);
    allocate(pool, 1);
    com_errset(COM_TRACE_NONE);
    const std::string trace = testing::internal::GetCapturedStdout();
    EXPECT_EQ(3, std::ranges::count(trace, '\n')) << "of the mutex's two routines too: " << trace;
  }
  PoolContext bare;  // a table without functions locks nothing
  bare.threads = {};
  bare.ctxthread = &bare.threads;
  const Pool unlocked(bare);
  comn_mmfree(unlocked, allocate(unlocked, 1));
}

// --- Subpools and sizes --------------------------------------------------------------------------

TEST(Subpools, FormATreeThatForceRemovesFromItsTop) {
  PoolContext host;
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
    PoolContext host;
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

// --- Calls that stop -----------------------------------------------------------------------------

TEST(PoolsDeathTest, MisuseStops) {
  using stops::kAssertion, stops::kPointer;
  PoolContext host;
  alignas(16) CS_BYTE outside[800] = {};
  void* out = nullptr;
  MmHandle *none = nullptr, *managed = nullptr;
  const Pool buddy(host), fresh(host), undecided(host, MM_POOL_NONE);
  const Pool uniform(host, MM_POOL_UNIFORM), tiny(host, MM_POOL_UNIFORM);
  const Pool alloconly(host, MM_POOL_ALLOCONLY);
  CS_BYTE *const block = allocate(buddy, 24), *const other = allocate(buddy, 24);
  CS_BYTE *const large = allocate(buddy, 50'000), *const node = allocate(uniform, 24);
  allocate(alloconly, 24);
  comn_mmmanage(outside, sizeof outside, &managed);
  MmHandle *const dropped = subpool(managed, 1), *const gone = subpool(buddy, 1);
  subpool(buddy, 2);  // keeps the chunk of the one that is gone
  comn_mmdrop(managed, MM_FORCE_DROP);
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(gone, CS_UNUSED));
  HostLock lock;
  const auto realloc = [&](MmHandle* pool, void* from, CS_INT size) {
    comn_mmrealloc(pool, size, &from);
  };
  const auto free_twice = [](MmHandle* pool, CS_INT size, bool another_between) {
    CS_BYTE* const blocks[] = {allocate(pool, size), allocate(pool, size)};
    for (const int i : {0, 1, 0})
      if (i == 0 || another_between) comn_mmfree(pool, blocks[i]);
  };
  const auto put_heap = [&](CS_UINT size) {
    com___getheap(fresh, 16, &out), header_of(out) = size, com___putheap(fresh, out);
  };
  const auto put_heap_twice = [&] {
    for (int i = 0; i < 2; ++i) com___getheap(fresh, 16, &out);
    for (int i = 0; i < 2; ++i) com___putheap(fresh, out);
  };
  // Memory that looks like a buddy block in use: outside every pool, or in a pool that has handed
  // out none.
  const auto forged = [](CS_BYTE* at) {
    header_of(at) = static_cast<CS_UINT>(mm::address(at - kWord) & mm::kAddressMask)
                    << mm::kMarkShift;
    return at;
  };
  const auto forged_in_fresh = [&] {
    com___getheap(fresh, 200, &out);
    return forged(static_cast<CS_BYTE*>(out) + 8 * kWord);
  };
  const auto compact = [&] {
    for (;;) comn_mmalloc(buddy, 60, &out);
  };
  stops::expect({
      STOP(kAssertion, host.ctxversion = 112, comn_mminit(&host, &none)),
      STOP(kPointer, comn_mminit(&host, nullptr)),
      STOP(kPointer, comn_mmmanage(nullptr, 1000, &none)),
      STOP(kAssertion, comn_mmmanage(outside, kHandleSize, &none)),
      STOP(kAssertion, comn_mmmanage(outside, kControlSize - 1, &none)),
      STOP(kAssertion, comn_mmmanage(outside, kControlSize + 2 * kWord, &none)),
      STOP(kAssertion, comn_mmalloc(buddy, -1, &out)),
      STOP(kPointer, comn_mmalloc(nullptr, 1, &out)),
      STOP(kPointer, comn_mmalloc(buddy, 1, nullptr)),
      STOP(kAssertion, comn_mmalloc(undecided, 1, &out)),
      STOP(kAssertion, comn_mmalloc(managed, 1, &out)),
      STOP(kAssertion, comn_mmdrop(dropped, CS_UNUSED)),
      STOP(kAssertion, comn_mmdrop(gone, CS_UNUSED)),
      STOP(kAssertion, comn_mmdrop(fresh, 0)),
      STOP(kAssertion, comn_mmfree(fresh, forged_in_fresh())),
      STOP(kAssertion, comn_mmfree(buddy, forged(outside + 64))),
      STOP(kAssertion, header_of(outside + 64) = header_of(node),
           comn_mmfree(uniform, outside + 64)),
      STOP(kAssertion, comn_mmfree(alloconly, block)),
      STOP(kAssertion, lock.install(buddy), lock.result = CS_FAIL, comn_mmfree(buddy, block)),
      STOP(kAssertion, free_twice(buddy, 24, false)),
      STOP(kAssertion, free_twice(buddy, 50'000, false)),
      STOP(kAssertion, free_twice(uniform, 24, false)),
      STOP(kAssertion, free_twice(uniform, 24, true)),
      STOP(kAssertion, free_twice(tiny, 4, false)),
      STOP(kAssertion, free_twice(tiny, 4, true)),
      STOP(kAssertion, header_of(block + 8) = header_of(block), comn_mmfree(buddy, block + 8)),
      STOP(kAssertion, header_of(block) |= 15, comn_mmfree(buddy, block)),
      STOP(kAssertion, header_of(block) ^= 0x100000, comn_mmfree(buddy, block)),
      STOP(kAssertion, header_of(block) |= 0x80000000, comn_mmfree(buddy, block)),
      STOP(kAssertion, header_of(large) += 1U * kWord, comn_mmfree(buddy, large)),
      STOP(kAssertion, header_of(large) += 3U * kWord, comn_mmfree(buddy, large)),
      STOP(kAssertion, header_of(large) -= 3U * kWord, comn_mmfree(buddy, large)),
      STOP(kAssertion, header_of(node) = 20, comn_mmfree(uniform, node)),
      STOP(kAssertion, std::memmove(node + 2 - kWord, node - kWord, kWord),
           comn_mmfree(uniform, node + 2)),
      STOP(kAssertion, comn_mmfree(buddy, block), header_of(other) ^= 0x10000, compact()),
      STOP(kAssertion, comn_mmfree(buddy, block), header_of(block) ^= 1, compact()),
      STOP(kAssertion, comn_mmfree(buddy, block), header_of(block) = 0x20202020,
           allocate(buddy, 24)),
      STOP(kAssertion, realloc(buddy, block, -5)),
      STOP(kAssertion, realloc(buddy, nullptr, 5)),
      STOP(kAssertion, comn_mmfree(buddy, block), realloc(buddy, block, 500)),
      STOP(kAssertion, realloc(fresh, forged_in_fresh(), 500)),
      STOP(kAssertion, realloc(undecided, block, 500)),
      STOP(kAssertion, comn_mmproperty(buddy, 36, MM_PROP_CHUNKSIZE, &out, 0, nullptr)),
      STOP(kAssertion, clear(buddy, MM_PROP_CHUNKSIZE)),
      STOP(kAssertion, get(buddy, MM_PROP_POOLTYPE - 1)),
      STOP(kAssertion, get(buddy, MM_PROP_BLOCKSIZE + 1)),
      STOP(kAssertion, get(buddy, MM_PROP_ADDMEMORY)),
      STOP(kAssertion, set(fresh, MM_PROP_POOLTYPE, 2239)),
      STOP(kAssertion, set(fresh, MM_PROP_CHUNKSIZE, 0)),
      STOP(kPointer, put(fresh, MM_PROP_SBREAK, nullptr)),
      STOP(kAssertion, put(fresh, MM_PROP_ADDMEMORY, outside, 2 * kWord)),
      STOP(kAssertion, com___putblock(buddy, block)),
      STOP(kAssertion, com___putblock(subpool(uniform, 1), uniform->mmh_blocks + 1)),
      STOP(kAssertion, put_heap_twice()),
      STOP(kAssertion, put_heap(0)),
      STOP(kAssertion, put_heap(100'000)),
      STOP(kAssertion, com___getheap(fresh, 5000, &out), header_of(out) += kWord,
           com___putheap(fresh, out)),
      STOP(kAssertion, com___remove_subpool(fresh)),
      STOP(kAssertion, comn_mmdiag()),
  });
}

}  // namespace
