/*
 * Threads and synchronisation: a thin layer over POSIX threads.
 *
 * Results are CS_SUCCEED and CS_FAIL, and CS_TIMED_OUT from event waits. Misuse stops the process:
 * a null or unstamped object, releasing a mutex that one does not own, deleting one that is held,
 * and every POSIX call that fails where no correct program can make it fail. Objects come from
 * comn_malloc and go back through comn_free. Every routine may be called from any thread; the
 * exceptions are named with their routines.
 */
#ifndef COMNLIB_THREAD_H
#define COMNLIB_THREAD_H

#include <pthread.h>
#include <sys/select.h> /* sigset_t, also in strict C11, where <signal.h> hides it */

#include "context.h"
#include "result.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { COMN_MUTEX_MAGIC = (int)0xdeadbabeu };

/* `owner` of a free mutex. */
#define COMN_NO_OWNER ((pthread_t)-1)

/* A recursive mutex. owner and use_count belong to the thread that holds `mutex`. */
struct _comnmutex_ {
  pthread_t owner; /* holder, or COMN_NO_OWNER */
  pthread_mutex_t mutex;
  CS_UINT magic;     /* COMN_MUTEX_MAGIC while it lives, 0 once deleted */
  CS_UINT use_count; /* how many times the owner has taken it */
};

/* A flag to wait for; ev is guarded by pm. */
typedef struct _comnevent_ {
  CS_INT ar; /* 1: a satisfied wait clears the flag */
  CS_INT ev; /* 1 while signalled */
  pthread_cond_t pc;
  pthread_mutex_t pm;
} COMN_EVENT;

/* A counting semaphore; ev is guarded by pm. */
typedef struct _comnsem_ {
  CS_INT ev; /* the count */
  pthread_cond_t pc;
  pthread_mutex_t pm;
} COMN_SEM;

typedef pthread_cond_t COMN_COND;
typedef pthread_t COMN_THREAD;
typedef CS_VOID* (*COMN_START_FUNC)(CS_VOID* argument);

/* The thread functions that a host installs in a context (ctxthread) for the library's own locks.
   A member may be null: what needs it is then left out. The table outlives the context. */
struct _cs_thread {
  CS_RETCODE (*create_mutex_fn)(COMN_MUTEX** mutex);
  CS_RETCODE (*delete_mutex_fn)(COMN_MUTEX* mutex);
  CS_RETCODE (*take_mutex_fn)(COMN_MUTEX* mutex);
  CS_RETCODE (*release_mutex_fn)(COMN_MUTEX* mutex);
  CS_RETCODE (*create_event_fn)(COMN_EVENT** event);
  CS_RETCODE (*delete_event_fn)(COMN_EVENT* event);
  CS_RETCODE (*signal_event_fn)(COMN_EVENT* event);
  CS_RETCODE (*reset_event_fn)(COMN_EVENT* event);
  CS_RETCODE (*waitfor_event_fn)(COMN_EVENT* event, CS_INT timeout);
  CS_RETCODE (*thread_id_fn)(CS_VOID* buffer, CS_INT buflen, CS_INT* outlen);
};

/* comn_thread_table: the table filled with the routines below. It is constant; a host takes a copy
   of its own: `CS_THREAD threads = *comn_thread_table(); context->ctxthread = &threads;`. */
COMN_API const CS_THREAD* comn_thread_table(CS_VOID);

/*
 * Mutexes.
 *
 * comn_create_mutex: stores a new free mutex through `mutex`, null when that fails (CS_FAIL).
 * comn_delete_mutex: frees a mutex that nobody holds; one that is held stops the process.
 * comn_take_mutex: waits for the mutex; a thread that owns it already takes it once more.
 * comn_try_mutex: takes it without waiting. That the mutex is free, or the caller's own, is the
 *   caller's promise: when another thread holds it, the process stops.
 * comn_release_mutex: undoes one take; the last one frees the mutex. Any thread but the owner stops
 *   the process.
 * comn_check_mutex: CS_SUCCEED when the caller owns the mutex, else CS_FAIL.
 */
COMN_API CS_RETCODE comn_create_mutex(COMN_MUTEX** mutex);
COMN_API CS_RETCODE comn_delete_mutex(COMN_MUTEX* mutex);
COMN_API CS_RETCODE comn_take_mutex(COMN_MUTEX* mutex);
COMN_API CS_RETCODE comn_try_mutex(COMN_MUTEX* mutex);
COMN_API CS_RETCODE comn_release_mutex(COMN_MUTEX* mutex);
COMN_API CS_RETCODE comn_check_mutex(const COMN_MUTEX* mutex);

/*
 * Events.
 *
 * comn_create_event_ex: stores a new unsignalled event through `event`, null when that fails
 *   (CS_FAIL). With `autoreset` 1 each wait that succeeds clears the event, so one signal releases
 *   one waiter; with 0 it stays signalled until comn_reset_event.
 * comn_create_event: the same with auto reset.
 * comn_delete_event: no thread may wait on the event. CS_FAIL when the system refuses (the event is
 *   then kept).
 * comn_signal_event: sets the event and wakes the waiters. CS_FAIL leaves it cleared.
 * comn_reset_event: clears it.
 * comn_waitfor_event: waits until the event is set. `timeout` is in milliseconds: 0 polls, a
 *   negative value waits without limit. CS_TIMED_OUT when the time is over, CS_FAIL on a failure of
 *   the system.
 *   The deadline is the current whole second plus the timeout, so a wait lasts up to a second less
 *   than asked, and a wake-up that finds the event cleared starts the timeout again.
 *   The wait is a cancellation point even for a thread that has cancellation disabled; a cancelled
 *   waiter leaves the event usable.
 */
COMN_API CS_RETCODE comn_create_event_ex(COMN_EVENT** event, CS_INT autoreset);
COMN_API CS_RETCODE comn_create_event(COMN_EVENT** event);
COMN_API CS_RETCODE comn_delete_event(COMN_EVENT* event);
COMN_API CS_RETCODE comn_signal_event(COMN_EVENT* event);
COMN_API CS_RETCODE comn_reset_event(COMN_EVENT* event);
COMN_API CS_RETCODE comn_waitfor_event(COMN_EVENT* event, CS_INT timeout);

/*
 * Conditions.
 *
 * comn_create_cond, comn_delete_cond: as for events.
 * comn_signal_cond, comn_broadcast_cond: wake one waiter, or all.
 * comn_wait_cond: gives up `mutex`, which the caller holds, however often it was taken, waits on
 * the condition, and holds the mutex as before when it returns. Wake-ups may be spurious. A waiter
 *   that is cancelled holds the mutex in its cleanup handlers, which release it.
 */
COMN_API CS_RETCODE comn_create_cond(COMN_COND** cond);
COMN_API CS_RETCODE comn_delete_cond(COMN_COND* cond);
COMN_API CS_RETCODE comn_signal_cond(COMN_COND* cond);
COMN_API CS_RETCODE comn_broadcast_cond(COMN_COND* cond);
COMN_API CS_RETCODE comn_wait_cond(COMN_COND* cond, COMN_MUTEX* mutex);

/*
 * Semaphores.
 *
 * comn_create_sem: a new semaphore with count 0. comn_delete_sem: as for events.
 * comn_release_sem: increases the count.
 * comn_waitfor_sem: decreases the count, waiting while it is 0. With `nowait` exactly 1 a count of
 * 0 gives CS_FAIL at once. A negative count, which only a damaged semaphore has, gives CS_FAIL and
 *   leaves the semaphore locked for good.
 */
COMN_API CS_RETCODE comn_create_sem(COMN_SEM** sem);
COMN_API CS_RETCODE comn_delete_sem(COMN_SEM* sem);
COMN_API CS_RETCODE comn_release_sem(COMN_SEM* sem);
COMN_API CS_RETCODE comn_waitfor_sem(COMN_SEM* sem, CS_INT nowait);

/*
 * Threads.
 *
 * comn_create_thread_no_alloc: starts a joinable thread at `start_routine` and stores its id; a
 *   thread that cannot be started stops the process. `argument` is handed on, null included.
 * comn_create_thread, comn_create_thread_ex: the same with a holder of the id, which
 *   comn_join_thread frees. Null and CS_FAIL when the holder cannot be allocated.
 * comn_join_thread: waits for the thread's end and frees the holder. The thread must have ended
 * with a null result or by cancellation, else the process stops. CS_FAIL when the system refuses
 * (the holder is then kept). comn_kill_thread: asks the thread to cancel itself; it is still to be
 * joined. comn_exit_thread: ends the calling thread with a null result. comn_start_thread,
 * comn_set_priority: nothing; CS_SUCCEED. comn_detach_thread, comn_lock_global, comn_unlock_global:
 * nothing; CS_FAIL. comn_threadid, comn_thread_id: the caller's id. comn_get_tid: copies the
 * caller's id into the first 4 bytes of `buffer`; `buflen` is at least 4; `outlen`, when not null,
 * becomes 4. comn_yield: acts on a pending cancellation, even where cancellation is disabled, and
 * yields. comn_set_cancelstate: disables cancellation of the calling thread. comn_thread_cleanup:
 * stops the process.
 */
COMN_API CS_RETCODE comn_create_thread_no_alloc(pthread_t* threadid, COMN_START_FUNC start_routine,
                                                CS_VOID* argument);
COMN_API CS_RETCODE comn_create_thread(COMN_THREAD** handle, COMN_START_FUNC start_routine,
                                       CS_VOID* argument);
COMN_API CS_RETCODE comn_create_thread_ex(COMN_THREAD** handle, COMN_START_FUNC start_routine,
                                          CS_VOID* argument);
COMN_API CS_RETCODE comn_join_thread(COMN_THREAD* handle);
COMN_API CS_RETCODE comn_kill_thread(COMN_THREAD* handle);
COMN_API CS_VOID comn_exit_thread(CS_VOID);
COMN_API CS_RETCODE comn_start_thread(COMN_THREAD* handle);
COMN_API CS_RETCODE comn_set_priority(COMN_THREAD* handle, CS_INT priority);
COMN_API CS_RETCODE comn_detach_thread(COMN_THREAD* handle);
COMN_API CS_RETCODE comn_lock_global(CS_VOID);
COMN_API CS_RETCODE comn_unlock_global(CS_VOID);
COMN_API pthread_t comn_threadid(CS_VOID);
COMN_API pthread_t comn_thread_id(CS_VOID);
COMN_API CS_RETCODE comn_get_tid(CS_VOID* buffer, CS_INT buflen, CS_INT* outlen);
COMN_API CS_VOID comn_yield(CS_VOID);
COMN_API CS_RETCODE comn_set_cancelstate(CS_VOID);
COMN_API CS_VOID comn_thread_cleanup(CS_VOID);

/*
 * Thread-specific data and signals: CS_FAIL when the system refuses.
 *
 * comn_create_key: a key without destructor.
 * comn_get_threaduserdata: the calling thread's value, null without one. The key CS_UNUSED yields
 *   null.
 * comn_thread_block_signal, comn_thread_unblock_signal: change one signal of the caller's mask.
 * comn_thread_sigmask: pthread_sigmask.
 * comn_signal_thread: sends `signo` to a thread; an id of 0 stops the process.
 */
COMN_API CS_RETCODE comn_create_key(pthread_key_t* key);
COMN_API CS_RETCODE comn_drop_key(pthread_key_t key);
COMN_API CS_VOID* comn_get_threaduserdata(pthread_key_t key);
COMN_API CS_RETCODE comn_set_threaduserdata(pthread_key_t key, CS_VOID* value);
COMN_API CS_RETCODE comn_thread_block_signal(CS_INT signo);
COMN_API CS_RETCODE comn_thread_unblock_signal(CS_INT signo);
COMN_API CS_RETCODE comn_thread_sigmask(CS_INT how, const sigset_t* newmask, sigset_t* oldmask);
COMN_API CS_RETCODE comn_signal_thread(pthread_t threadid, CS_INT signo);

/*
 * Coroutine mode: one lock for the process that lets cooperating threads run one at a time.
 * Starting and ending the mode is for one thread while no other uses the lock.
 *
 * comn_start_coroutine_mode: CS_FAIL when the mode is on already or the lock cannot be made.
 * comn_take_coroutine_control, comn_release_coroutine_control: take and release the lock; nothing
 *   when the mode is off.
 * comn_end_coroutine_mode: releases the lock, which the caller holds once, and ends the mode;
 *   nothing when it is off.
 */
COMN_API CS_RETCODE comn_start_coroutine_mode(CS_VOID);
COMN_API CS_RETCODE comn_take_coroutine_control(CS_VOID);
COMN_API CS_RETCODE comn_release_coroutine_control(CS_VOID);
COMN_API CS_RETCODE comn_end_coroutine_mode(CS_VOID);

COMN_STATIC_ASSERT(sizeof(pthread_t) == 4);
COMN_STATIC_ASSERT(sizeof(COMN_MUTEX) == 36);
COMN_STATIC_ASSERT(offsetof(COMN_MUTEX, mutex) == 4);
COMN_STATIC_ASSERT(offsetof(COMN_MUTEX, magic) == 28);
COMN_STATIC_ASSERT(offsetof(COMN_MUTEX, use_count) == 32);
COMN_STATIC_ASSERT(sizeof(COMN_EVENT) == 80);
COMN_STATIC_ASSERT(offsetof(COMN_EVENT, ev) == 4);
COMN_STATIC_ASSERT(offsetof(COMN_EVENT, pc) == 8);
COMN_STATIC_ASSERT(offsetof(COMN_EVENT, pm) == 56);
COMN_STATIC_ASSERT(sizeof(COMN_SEM) == 76);
COMN_STATIC_ASSERT(offsetof(COMN_SEM, pc) == 4);
COMN_STATIC_ASSERT(offsetof(COMN_SEM, pm) == 52);
COMN_STATIC_ASSERT(sizeof(CS_THREAD) == 40);

#ifdef __cplusplus
}
#endif

#endif
