// Several threads on one mutex, event, semaphore and condition, and on one family of pools. Also
// run under the thread checkers by tools/valgrind.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

#include "comnlib/memory.h"
#include "comnlib/thread.h"

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 400;

void run_in_threads(const std::function<void(int)>& work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back(work, i);
  for (std::thread& thread : threads) thread.join();
}

// An auto-reset event is a lock too when each holder signals it at the end.
TEST(Load, MutexAndAutoResetEventExclude) {
  COMN_MUTEX* mutex = nullptr;
  COMN_EVENT* event = nullptr;
  ASSERT_EQ(CS_SUCCEED, comn_create_mutex(&mutex));
  ASSERT_EQ(CS_SUCCEED, comn_create_event(&event));
  int by_mutex = 0;
  int by_event = 0;
  comn_signal_event(event);
  run_in_threads([&](int index) {
    for (int i = 0; i < kRounds; ++i) {
      comn_take_mutex(mutex);
      comn_take_mutex(mutex);
      ++by_mutex;
      comn_release_mutex(mutex);
      ++by_mutex;
      comn_release_mutex(mutex);
      while (comn_waitfor_event(event, index % 2 == 0 ? -1 : 2000) != CS_SUCCEED) {
      }
      ++by_event;
      comn_signal_event(event);
    }
  });
  EXPECT_EQ(2 * kThreads * kRounds, by_mutex);
  EXPECT_EQ(kThreads * kRounds, by_event);
  EXPECT_EQ(CS_SUCCEED, comn_delete_mutex(mutex));
  EXPECT_EQ(CS_SUCCEED, comn_delete_event(event));
}

// Half of the threads produce, half consume; the semaphore counts, the condition announces the end.
TEST(Load, SemaphoreAndCondition) {
  COMN_SEM* sem = nullptr;
  COMN_MUTEX* mutex = nullptr;
  COMN_COND* ended = nullptr;
  ASSERT_EQ(CS_SUCCEED, comn_create_sem(&sem));
  ASSERT_EQ(CS_SUCCEED, comn_create_mutex(&mutex));
  ASSERT_EQ(CS_SUCCEED, comn_create_cond(&ended));
  int consumed = 0;
  run_in_threads([&](int index) {
    for (int i = 0; i < kRounds; ++i) {
      if (index % 2 == 0) {
        EXPECT_EQ(CS_SUCCEED, comn_release_sem(sem));
        continue;
      }
      EXPECT_EQ(CS_SUCCEED, comn_waitfor_sem(sem, 0));
      comn_take_mutex(mutex);
      if (++consumed == kThreads / 2 * kRounds) comn_broadcast_cond(ended);
      comn_release_mutex(mutex);
    }
    comn_take_mutex(mutex);
    while (consumed < kThreads / 2 * kRounds) comn_wait_cond(ended, mutex);
    comn_release_mutex(mutex);
  });
  EXPECT_EQ(0, sem->ev);
  EXPECT_EQ(CS_SUCCEED, comn_delete_sem(sem));
  EXPECT_EQ(CS_SUCCEED, comn_delete_mutex(mutex));
  EXPECT_EQ(CS_SUCCEED, comn_delete_cond(ended));
}

// Each thread works on a subpool of its own and on the shared top pool.
TEST(Load, PoolsOfOneFamily) {
  CS_THREAD threads = *comn_thread_table();
  CS_CONTEXT context = {};
  context.ctxversion = 113;
  context.ctxthread = &threads;
  context.ctxmalloc = [](CS_CONTEXT*, CS_INT size) {
    return std::malloc(static_cast<std::size_t>(size));
  };
  context.ctxfree = [](CS_CONTEXT*, CS_VOID* block) { std::free(block); };
  MmHandle* top = nullptr;
  ASSERT_EQ(CS_SUCCEED, comn_mminit(&context, &top));

  run_in_threads([&](int index) {
    MmHandle* own = nullptr;
    ASSERT_EQ(CS_SUCCEED, comn_mmproperty(top, CS_GET, MM_PROP_SUBPOOL, &own, index, nullptr));
    CS_INT kind = index % 2 == 0 ? MM_POOL_UNIFORM : MM_POOL_ALLOCONLY;
    comn_mmproperty(own, CS_SET, MM_PROP_POOLTYPE, &kind, 0, nullptr);
    for (int i = 0; i < kRounds; ++i) {
      const CS_INT size = 16 * (index + 1);
      void* from_top = nullptr;
      void* from_own = nullptr;
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
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(top, CS_UNUSED));
}

}  // namespace
