// Threads and synchronisation: results, timing of event waits, cancellation, calls of POSIX threads
// that fail, and every stop.
#include <atomic>
#include <cerrno>
#include <climits>
#include <cmath>
#include <csignal>
#include <ctime>
#include <string_view>

#include "support/hosts.h"
#include "support/stops.h"
#include "threads.h"

namespace {

using namespace threads;

double now() {
  timespec time = {};
  clock_gettime(CLOCK_REALTIME, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// Until the current second is between `fraction` and a tenth more.
void await_fraction(double fraction) {
  await([=] { return std::abs(std::fmod(now(), 1) - fraction - 0.05) <= 0.05; });
}

// `work` does not end before `release` is called.
void expect_wait(const std::function<void()>& work, const std::function<CS_RETCODE()>& release) {
  std::atomic<bool> ended = false;
  const Thread waiter([&] { work(), ended = true; });
  usleep(5000);
  EXPECT_FALSE(ended);
  EXPECT_EQ(CS_SUCCEED, release());
}

// `work` begins, and ends only with its thread, which is killed.
void expect_cancelled(const std::function<void()>& work) {
  std::atomic<bool> started = false;
  bool returned = false;
  {
    const Thread worker([&] { comn_set_cancelstate(), started = true, work(), returned = true; });
    await([&] { return started.load(); });
    EXPECT_EQ(CS_SUCCEED, comn_kill_thread(worker.handle()));
  }
  EXPECT_FALSE(returned);
}

// `work` leaves cancellation disabled.
void expect_state_kept(const std::function<void()>& work) {
  const Thread worker([&] {
    int state = -1;
    comn_set_cancelstate(), work(), pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &state);
    EXPECT_EQ(PTHREAD_CANCEL_DISABLE, state);
  });
}

TEST(Mutex, CountsTheTakesOfItsOwner) {
  const Mutex mutex;
  EXPECT_EQ(0xdeadbabeu, mutex->magic);
  EXPECT_EQ(CS_FAIL, comn_check_mutex(mutex));
  EXPECT_EQ(CS_SUCCEED, comn_take_mutex(mutex));
  EXPECT_EQ(CS_SUCCEED, comn_try_mutex(mutex));
  EXPECT_EQ(2u, mutex->use_count);
  EXPECT_EQ(CS_SUCCEED, comn_check_mutex(mutex));
  Thread([&] { EXPECT_EQ(CS_FAIL, comn_check_mutex(mutex)); });
  for (int i = 0; i < 2; ++i) EXPECT_EQ(CS_SUCCEED, comn_release_mutex(mutex));
  EXPECT_EQ(COMN_NO_OWNER, mutex->owner);
}

TEST(Event, AutoAndManualReset) {
  for (const CS_INT autoreset : {1, 0, 2, -1}) {  // only 1 resets
    COMN_EVENT* event = nullptr;
    ASSERT_EQ(CS_SUCCEED, comn_create_event_ex(&event, autoreset));
    EXPECT_EQ(CS_TIMED_OUT, comn_waitfor_event(event, 0));
    for (const CS_INT timeout : {0, -1, 5000}) {
      EXPECT_EQ(CS_SUCCEED, comn_signal_event(event));
      EXPECT_EQ(CS_SUCCEED, comn_waitfor_event(event, timeout)) << timeout;
      EXPECT_EQ(autoreset == 1 ? 0 : 1, event->ev) << timeout;
    }
    EXPECT_EQ(CS_SUCCEED, comn_reset_event(event));
    EXPECT_EQ(CS_TIMED_OUT, comn_waitfor_event(event, 0));
    EXPECT_EQ(CS_SUCCEED, comn_delete_event(event));
  }
}

// The upper limits are what a time counted from the moment itself would give at the earliest, so
// that a busy machine may be late.
TEST(Event, DeadlineCountsFromTheWholeSecondOfTheLastWakeUp) {
  const Event event;
  await_fraction(0.4);
  double start = now();
  EXPECT_EQ(CS_TIMED_OUT, comn_waitfor_event(event, 300));
  EXPECT_LT(now(), start + 0.3) << "the deadline had passed";
  start = now();
  EXPECT_EQ(CS_TIMED_OUT, comn_waitfor_event(event, 1100));
  EXPECT_GE(now(), std::floor(start) + 1.1);
  EXPECT_LT(now(), start + 1.1);

  await_fraction(0.8);  // a spurious wake-up restarts the time
  start = now();
  double wake_up = 0, end = 0;
  {
    const Thread waiter([&] {
      EXPECT_EQ(CS_TIMED_OUT, comn_waitfor_event(event, 600 + 1000));
      end = now();
    });
    await([&] { return now() > std::floor(start) + 1.3; });
    pthread_mutex_lock(&event->pm);
    wake_up = now();
    pthread_cond_broadcast(&event->pc);
    pthread_mutex_unlock(&event->pm);
  }
  EXPECT_GE(end, std::floor(wake_up) + 1.6) << "from the second of the wake-up";
  EXPECT_LT(end, wake_up + 1.6);
}

// Those on events are cancelled whatever the thread's own state is, and leave that as it was. The
// cleanup unlocks.
TEST(Waits, AreCancellable) {
  const Event event;
  const Semaphore sem;
  EXPECT_EQ(1, event->ar);
  expect_state_kept([&] { comn_waitfor_event(event, 1); });
  expect_cancelled([&] { comn_waitfor_event(event, -1); });
  expect_cancelled([&] { comn_waitfor_event(event, 100'000); });
  expect_cancelled([&] {
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, nullptr);
    comn_waitfor_sem(sem, 0);
  });
  for (pthread_mutex_t* const mutex : {&event->pm, &sem->pm}) {
    ASSERT_EQ(0, pthread_mutex_trylock(mutex));
    pthread_mutex_unlock(mutex);
  }
}

// A waiter gives the mutex up at any depth; it has it back as it was when it returns, and in its
// cleanup when it is cancelled.
TEST(Condition, WaitGivesUpTheMutex) {
  const Condition cond;
  const Mutex mutex;
  for (const bool cancelled : {false, true}) {
    std::atomic<bool> waiting = false;
    bool go = false;
    {
      const Thread waiter([&] {
        comn_take_mutex(mutex);
        comn_take_mutex(mutex);
        pthread_cleanup_push(
            [](void* held) {
              for (int i = 0; i < 2; ++i) comn_release_mutex(static_cast<COMN_MUTEX*>(held));
            },
            mutex);
        waiting = true;
        while (!go) EXPECT_EQ(CS_SUCCEED, comn_wait_cond(cond, mutex));
        EXPECT_EQ(2u, mutex->use_count);
        pthread_cleanup_pop(1);
      });
      await([&] { return waiting.load(); });
      comn_take_mutex(mutex);
      EXPECT_EQ(1u, mutex->use_count);
      go = !cancelled;
      EXPECT_EQ(CS_SUCCEED, comn_signal_cond(cond));
      EXPECT_EQ(CS_SUCCEED, comn_broadcast_cond(cond));
      if (cancelled) comn_kill_thread(waiter.handle());
      comn_release_mutex(mutex);
    }
  }
}

TEST(Semaphore, CountsAndWaits) {
  const Semaphore sem;
  EXPECT_EQ(CS_FAIL, comn_waitfor_sem(sem, 1));
  for (int i = 0; i < 2; ++i) EXPECT_EQ(CS_SUCCEED, comn_release_sem(sem));
  EXPECT_EQ(2, sem->ev);
  EXPECT_EQ(CS_SUCCEED, comn_waitfor_sem(sem, 1));
  EXPECT_EQ(CS_SUCCEED, comn_waitfor_sem(sem, 0));
  for (const CS_INT nowait : {0, 2, -1})  // only 1 means not to wait
    expect_wait([&] { EXPECT_EQ(CS_SUCCEED, comn_waitfor_sem(sem, nowait)); },
                [&] { return comn_release_sem(sem); });
  sem->ev = INT_MAX;
  EXPECT_EQ(CS_SUCCEED, comn_release_sem(sem));
  EXPECT_EQ(CS_FAIL, comn_waitfor_sem(sem, 0)) << "negative";
  EXPECT_EQ(EBUSY, pthread_mutex_trylock(&sem->pm)) << "stays locked";
  pthread_mutex_unlock(&sem->pm);
}

TEST(Threads, EndAndAreJoined) {
  Thread([] { comn_exit_thread(); });
  expect_state_kept(comn_yield);
  expect_cancelled([] {
    for (;;) comn_yield();  // acts on a cancellation although that is disabled
  });
  const hosts::NothingLost nothing_lost;
  auto* holder = static_cast<COMN_THREAD*>(comn_malloc(sizeof(COMN_THREAD)));
  *holder = comn_threadid();
  EXPECT_EQ(CS_FAIL, comn_join_thread(holder)) << "of itself; the holder is kept";
  const COMN_START_FUNC start = [](void* argument) { return argument; };
  ASSERT_EQ(CS_SUCCEED, comn_create_thread_no_alloc(holder, start, nullptr));
  EXPECT_EQ(CS_SUCCEED, comn_join_thread(holder));
}

TEST(Threads, FixedResultsAndIds) {
  EXPECT_EQ(CS_FAIL, comn_detach_thread(nullptr));
  for (const auto none : {comn_lock_global, comn_unlock_global}) EXPECT_EQ(CS_FAIL, none());
  EXPECT_EQ(CS_SUCCEED, comn_start_thread(nullptr));
  EXPECT_EQ(CS_SUCCEED, comn_set_priority(nullptr, 1));
  pthread_t id[2] = {0, 42};
  CS_INT outlen = 0;
  EXPECT_EQ(CS_SUCCEED, comn_thread_table()->thread_id_fn(id, sizeof id, &outlen));
  EXPECT_EQ(static_cast<CS_INT>(sizeof(pthread_t)), outlen);
  EXPECT_EQ(comn_thread_id(), id[0]);
  EXPECT_EQ(42U, id[1]);
}

TEST(Threads, KeysAndSignals) {
  EXPECT_EQ(nullptr, comn_get_threaduserdata(static_cast<pthread_key_t>(CS_UNUSED)));
  pthread_key_t key = 0;
  int value = 0;
  ASSERT_EQ(CS_SUCCEED, comn_create_key(&key));
  EXPECT_EQ(CS_SUCCEED, comn_set_threaduserdata(key, &value));
  EXPECT_EQ(&value, comn_get_threaduserdata(key));
  Thread([&] { EXPECT_EQ(nullptr, comn_get_threaduserdata(key)); });
  EXPECT_EQ(CS_SUCCEED, comn_drop_key(key));
  EXPECT_EQ(CS_FAIL, comn_set_threaduserdata(key, &value));

  sigset_t before;
  sigset_t mask;
  ASSERT_EQ(CS_SUCCEED, comn_thread_sigmask(SIG_BLOCK, nullptr, &before));
  EXPECT_EQ(CS_SUCCEED, comn_thread_block_signal(SIGUSR1));
  comn_thread_sigmask(SIG_BLOCK, nullptr, &mask);
  EXPECT_EQ(1, sigismember(&mask, SIGUSR1));
  EXPECT_EQ(CS_SUCCEED, comn_signal_thread(comn_threadid(), SIGUSR1));
  std::signal(SIGUSR1, SIG_IGN);  // drops it
  EXPECT_EQ(CS_SUCCEED, comn_thread_unblock_signal(SIGUSR1));
  comn_thread_sigmask(SIG_SETMASK, &before, &mask);
  EXPECT_EQ(0, sigismember(&mask, SIGUSR1));
  EXPECT_EQ(CS_FAIL, comn_thread_block_signal(-1));
}

TEST(Threads, CoroutineMode) {
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(CS_SUCCEED, comn_take_coroutine_control());
    EXPECT_EQ(CS_SUCCEED, comn_release_coroutine_control());
    EXPECT_EQ(CS_SUCCEED, comn_end_coroutine_mode());
    ASSERT_EQ(CS_SUCCEED, comn_start_coroutine_mode());
    EXPECT_EQ(CS_FAIL, comn_start_coroutine_mode());
    EXPECT_EQ(CS_SUCCEED, comn_take_coroutine_control());
    expect_wait([] { comn_take_coroutine_control(), comn_release_coroutine_control(); },
                comn_release_coroutine_control);
    EXPECT_EQ(CS_SUCCEED, comn_take_coroutine_control());
    EXPECT_EQ(CS_SUCCEED, comn_end_coroutine_mode());
  }
}

// --- Calls of POSIX threads that fail, and memory that is short ----------------------------------

std::string_view refused;  // the one call that fails

template <class Function, class... Arguments>
int unless_refused(std::string_view name, Function function, Arguments... arguments) {
  return name == refused ? EAGAIN : function(arguments...);
}

}  // namespace

// The linker hands these over to this file, see the build file.
#define REFUSABLE(call, parameters, ...)                      \
  extern "C" int __real_##call parameters;                    \
  extern "C" int __wrap_##call parameters {                   \
    return unless_refused(#call, __real_##call, __VA_ARGS__); \
  }
REFUSABLE(pthread_mutex_init, (pthread_mutex_t * at, const pthread_mutexattr_t* with), at, with)
REFUSABLE(pthread_cond_init, (pthread_cond_t * at, const pthread_condattr_t* with), at, with)
REFUSABLE(pthread_mutex_lock, (pthread_mutex_t * mutex), mutex)
REFUSABLE(pthread_mutex_unlock, (pthread_mutex_t * mutex), mutex)
REFUSABLE(pthread_cond_broadcast, (pthread_cond_t * cond), cond)
REFUSABLE(pthread_cond_destroy, (pthread_cond_t * cond), cond)

namespace {

template <class Object>
CS_RETCODE make(CS_RETCODE (*create)(Object**)) {
  auto* made = reinterpret_cast<Object*>(-1);
  const CS_RETCODE code = create(&made);
  EXPECT_EQ(nullptr, made);
  return code;
}

// The routine says so, and gives back what it had made.
TEST(Failures, AreReported) {
  const Event event;
  const Semaphore sem;
  static const COMN_START_FUNC start = [](void* argument) { return argument; };
  const auto thread = [](COMN_THREAD** made) {
    return comn_create_thread_ex(made, start, nullptr);
  };
  const auto signal_and_stay = [&] {
    const CS_RETCODE code = comn_signal_event(event);
    refused = {};
    EXPECT_EQ(0, pthread_mutex_unlock(&event->pm));
    return code;
  };
  const struct {
    const char *call, *routine;
    std::function<CS_RETCODE()> run;
  } rows[] = {{"memory", "mutex", [] { return make(comn_create_mutex); }},
              {"memory", "event", [] { return make(comn_create_event); }},
              {"memory", "condition", [] { return make(comn_create_cond); }},
              {"memory", "semaphore", [] { return make(comn_create_sem); }},
              {"memory", "thread", [&] { return make<COMN_THREAD>(thread); }},
              {"memory", "coroutine mode", [] { return comn_start_coroutine_mode(); }},
              {"pthread_mutex_init", "mutex", [] { return make(comn_create_mutex); }},
              {"pthread_mutex_init", "event", [] { return make(comn_create_event); }},
              {"pthread_cond_init", "event", [] { return make(comn_create_event); }},
              {"pthread_cond_init", "semaphore", [] { return make(comn_create_sem); }},
              {"pthread_cond_init", "condition", [] { return make(comn_create_cond); }},
              {"pthread_mutex_lock", "signal", [&] { return comn_signal_event(event); }},
              {"pthread_mutex_lock", "reset", [&] { return comn_reset_event(event); }},
              {"pthread_mutex_lock", "wait", [&] { return comn_waitfor_event(event, 0); }},
              {"pthread_mutex_lock", "release", [&] { return comn_release_sem(sem); }},
              {"pthread_cond_broadcast", "signal", [&] { return comn_signal_event(event); }},
              {"pthread_mutex_unlock", "signal", signal_and_stay},
              {"pthread_cond_destroy", "event", [&] { return comn_delete_event(event); }}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.routine << ", " << row.call);
    const hosts::NothingLost nothing_lost;
    refused = row.call;
    const hosts::Failing failing(refused == "memory" ? 1 : SIZE_MAX / 2);
    const CS_RETCODE code = row.run();
    refused = {};
    EXPECT_EQ(CS_FAIL, code);
    EXPECT_EQ(0, event->ev);
    EXPECT_EQ(CS_TIMED_OUT, comn_waitfor_event(event, 0)) << "the event's mutex is free";
  }
}

// --- Calls that stop -----------------------------------------------------------------------------

TEST(ThreadsDeathTest, MisuseStops) {
  using stops::kAssertion, stops::kPointer;
  pthread_t id = 0;
  COMN_THREAD* handle = nullptr;
  COMN_COND* cond = nullptr;
  COMN_MUTEX* mutex = nullptr;
  CS_BYTE buffer[4];
  const auto made = [&] { comn_create_cond(&cond), comn_create_mutex(&mutex); };
  const auto held = [&] { made(), comn_take_mutex(mutex); };
  const auto held_elsewhere = [&] { const Thread other(held); };
  const COMN_START_FUNC start = [](void* argument) { return argument; };
  stops::expect({
      STOP(kPointer, comn_create_mutex(nullptr)),
      STOP(kAssertion, comn_take_mutex(nullptr)),
      STOP(kAssertion, made(), mutex->use_count = 1, comn_take_mutex(mutex)),
      STOP(kAssertion, held(), mutex->use_count = 0, comn_take_mutex(mutex)),
      STOP(kAssertion, made(), mutex->owner = 1, comn_take_mutex(mutex)),
      STOP(kAssertion, held(), mutex->magic = 0, comn_take_mutex(mutex)),
      STOP(kAssertion, made(), refused = "pthread_mutex_lock", comn_take_mutex(mutex)),
      STOP(kAssertion, held(), mutex->magic = 0, comn_try_mutex(mutex)),
      STOP(kAssertion, held_elsewhere(), comn_try_mutex(mutex)),
      STOP(kAssertion, held_elsewhere(), comn_release_mutex(mutex)),
      STOP(kAssertion, made(), comn_release_mutex(mutex)),
      STOP(kAssertion, held(), mutex->magic = 0, comn_release_mutex(mutex)),
      STOP(kAssertion, held(), mutex->use_count = 0, comn_release_mutex(mutex)),
      STOP(kAssertion, held(), refused = "pthread_mutex_unlock", comn_release_mutex(mutex)),
      STOP(kAssertion, held(), mutex->magic = 0, comn_check_mutex(mutex)),
      STOP(kAssertion, held(), comn_delete_mutex(mutex)),
      STOP(kAssertion, made(), mutex->use_count = 1, comn_delete_mutex(mutex)),
      STOP(kAssertion, made(), mutex->magic = 0, comn_delete_mutex(mutex)),
      STOP(kAssertion, held(), mutex->magic = 1, comn_wait_cond(cond, mutex)),
      STOP(kAssertion, made(), comn_wait_cond(cond, mutex)),
      STOP(kAssertion, comn_waitfor_event(nullptr, 0)),
      STOP(kAssertion, comn_waitfor_sem(nullptr, 1)),
      STOP(kAssertion, comn_create_thread(&handle, nullptr, nullptr)),
      STOP(kAssertion, comn_create_thread(nullptr, start, nullptr)),
      STOP(kAssertion, comn_join_thread(nullptr)),
      STOP(kAssertion, comn_create_thread(&handle, start, &id), comn_join_thread(handle)),
      STOP(kAssertion, comn_kill_thread(&id)),
      STOP(kAssertion, comn_signal_thread(0, SIGUSR1)),
      STOP(kAssertion, comn_get_tid(buffer, sizeof id - 1, nullptr)),
      STOP(kAssertion, comn_create_key(nullptr)),
      STOP(kAssertion, comn_thread_cleanup()),
      STOP(kAssertion, comn_start_coroutine_mode(), comn_end_coroutine_mode()),
  });
}

}  // namespace
