// Several threads on one mutex, event, semaphore and condition, on one family of pools, and on
// lists. Also run under the thread checkers by tools/valgrind.
#include <array>
#include <cstring>
#include <deque>

#include "comnlib/list.h"
#include "pools.h"
#include "threads.h"

namespace {

using namespace pools;

constexpr int kThreads = 4;
constexpr int kRounds = 400;

void run_in_threads(const std::function<void(int)>& work) {
  std::deque<threads::Thread> running;
  for (int i = 0; i < kThreads; ++i) running.emplace_back([&work, i] { work(i); });
}

// An auto-reset event is a lock too when each holder signals it at the end. Half of the threads
// release the semaphore, half take it; the condition lets all of them go together.
TEST(Load, Synchronisation) {
  const threads::Mutex mutex;
  const threads::Event event;
  const threads::Semaphore sem;
  const threads::Condition ended;
  int by_mutex = 0, by_event = 0, finished = 0;
  comn_signal_event(event);
  run_in_threads([&](int index) {
    const bool produces = index % 2 == 0;
    for (int i = 0; i < kRounds; ++i) {
      for (int depth = 0; depth < 2; ++depth) comn_take_mutex(mutex);
      ++by_mutex;
      for (int depth = 0; depth < 2; ++depth) ++by_mutex, comn_release_mutex(mutex);
      while (comn_waitfor_event(event, produces ? -1 : 2000) != CS_SUCCEED) continue;
      ++by_event;
      comn_signal_event(event);
      EXPECT_EQ(CS_SUCCEED, produces ? comn_release_sem(sem) : comn_waitfor_sem(sem, 0));
    }
    comn_take_mutex(mutex);
    if (++finished == kThreads) comn_broadcast_cond(ended);
    while (finished < kThreads) comn_wait_cond(ended, mutex);
    comn_release_mutex(mutex);
  });
  EXPECT_EQ(3 * kThreads * kRounds, by_mutex);
  EXPECT_EQ(kThreads * kRounds, by_event);
  EXPECT_EQ(0, sem->ev);
}

// Each thread works on a subpool of its own and on the shared top pool.
TEST(Load, PoolsOfOneFamily) {
  PoolContext context;
  context.ctxthread = &context.threads;
  const Pool top(context);
  run_in_threads([&](int index) {
    MmHandle* const own = subpool(top, index);
    const CS_INT kind = index % 2 == 0 ? MM_POOL_UNIFORM : MM_POOL_ALLOCONLY;
    set(own, MM_PROP_POOLTYPE, kind);
    for (int i = 0; i < kRounds; ++i) {
      const CS_INT size = 16 * (index + 1);
      void *from_top = nullptr, *from_own = nullptr;
      while (from_top == nullptr) ASSERT_EQ(CS_SUCCEED, comn_mmalloc(top, size, &from_top));
      ASSERT_EQ(CS_SUCCEED, comn_mmalloc(own, 64, &from_own));
      std::memset(from_top, index, static_cast<std::size_t>(size));
      std::memset(from_own, index, 64);
      EXPECT_EQ(index, static_cast<unsigned char*>(from_top)[size - 1]);
      EXPECT_EQ(CS_SUCCEED, comn_mmfree(top, from_top));
      EXPECT_EQ(kind == MM_POOL_UNIFORM ? CS_SUCCEED : CS_FAIL, comn_mmfree(own, from_own));
    }
    EXPECT_EQ(CS_SUCCEED, comn_mmdrop(own, CS_UNUSED));
  });
}

// A list that all threads fill in turn, and one in a context of each thread's own.
TEST(Load, Lists) {
  LM_CONTEXT* context = nullptr;
  LM_HANDLE* shared = nullptr;
  ASSERT_EQ(CS_SUCCEED, lm_initlm(LM_MIN_VERSION, "shared", CS_NULLTERM, &context));
  ASSERT_EQ(CS_SUCCEED, lm_list_alloc(context, LM_CHASH, "shared", CS_NULLTERM, &shared));
  std::array<std::array<int, kRounds>, kThreads> keys{};
  const threads::Mutex mutex;
  const auto insert = [](LM_HANDLE* list, int& key) {
    EXPECT_EQ(CS_SUCCEED, lm_list_op(list, LM_OP_INSERT, &key, sizeof key, &key, nullptr));
  };
  run_in_threads([&](int index) {
    LM_CONTEXT* own = nullptr;
    LM_HANDLE* list = nullptr;
    ASSERT_EQ(CS_SUCCEED, lm_initlm(LM_MIN_VERSION, "own", CS_NULLTERM, &own));
    ASSERT_EQ(CS_SUCCEED, lm_list_alloc(own, LM_DLINK, "own", CS_NULLTERM, &list));
    for (int i = 0; i < kRounds; ++i) {
      int& key = keys[static_cast<std::size_t>(index)][static_cast<std::size_t>(i)];
      key = index * kRounds + i;
      insert(list, key);
      comn_take_mutex(mutex);
      insert(shared, key);
      comn_release_mutex(mutex);
    }
    EXPECT_EQ(CS_SUCCEED, lm_exit(own));
  });
  for (auto& row : keys)
    for (int& key : row) {
      void* found = nullptr;
      EXPECT_EQ(CS_SUCCEED, lm_list_op(shared, LM_OP_FIND, &key, sizeof key, &found, nullptr));
      EXPECT_EQ(&key, found);
    }
  EXPECT_EQ(CS_SUCCEED, lm_exit(context));
}

}  // namespace
