/**
 * @file
 * Threads and synchronisation: a thin layer over POSIX threads.
 *
 * Results are CS_SUCCEED and CS_FAIL, and CS_TIMED_OUT from event waits. Misuse stops the process:
 * a null or unstamped object, releasing a mutex that the caller does not own, deleting a mutex that
 * is held, and a failing POSIX call that can only fail through a mistake of the host. Objects come
 * from comn_malloc and go back through comn_free. Every routine may be called from any thread; the
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

/** `magic` of a mutex that lives. */
enum { COMN_MUTEX_MAGIC = (int)0xdeadbabeu };

/** `owner` of a free mutex. */
#define COMN_NO_OWNER ((pthread_t)-1)

/** A recursive mutex. owner and use_count belong to the thread that holds `mutex`. */
struct _comnmutex_ {
  pthread_t owner;       /**< holder, or COMN_NO_OWNER */
  pthread_mutex_t mutex; /**< locked by the first take, unlocked by the last release */
  CS_UINT magic;         /**< COMN_MUTEX_MAGIC while it lives, 0 once deleted */
  CS_UINT use_count;     /**< how many times the owner has taken it */
};

/** A flag to wait for; ev is guarded by pm. */
typedef struct _comnevent_ {
  CS_INT ar;          /**< 1: a satisfied wait clears the flag */
  CS_INT ev;          /**< 1 while signalled */
  pthread_cond_t pc;  /**< signalled when ev becomes 1 */
  pthread_mutex_t pm; /**< guards ev */
} COMN_EVENT;

/** A counting semaphore; ev is guarded by pm. */
typedef struct _comnsem_ {
  CS_INT ev;          /**< the count */
  pthread_cond_t pc;  /**< signalled when ev becomes 1 */
  pthread_mutex_t pm; /**< guards ev */
} COMN_SEM;

/** A condition. */
typedef pthread_cond_t COMN_COND;
/** The holder of a thread's id. */
typedef pthread_t COMN_THREAD;
/** What a thread runs. Its result is null: comn_join_thread stops the process at any other. */
typedef CS_VOID* (*COMN_START_FUNC)(CS_VOID* argument);

/**
 * The thread functions that a host installs in a context (ctxthread) for the library's own locks. A
 * null member switches that service off: without take_mutex_fn, for example, the library takes no
 * lock. The table outlives the context.
 */
struct _cs_thread {
  CS_RETCODE (*create_mutex_fn)(COMN_MUTEX** mutex); /**< as comn_create_mutex */
  CS_RETCODE (*delete_mutex_fn)(COMN_MUTEX* mutex);  /**< as comn_delete_mutex */
  CS_RETCODE (*take_mutex_fn)(COMN_MUTEX* mutex);    /**< as comn_take_mutex */
  CS_RETCODE (*release_mutex_fn)(COMN_MUTEX* mutex); /**< as comn_release_mutex */
  CS_RETCODE (*create_event_fn)(COMN_EVENT** event); /**< as comn_create_event */
  CS_RETCODE (*delete_event_fn)(COMN_EVENT* event);  /**< as comn_delete_event */
  CS_RETCODE (*signal_event_fn)(COMN_EVENT* event);  /**< as comn_signal_event */
  CS_RETCODE (*reset_event_fn)(COMN_EVENT* event);   /**< as comn_reset_event */

  /** As comn_waitfor_event. */
  CS_RETCODE (*waitfor_event_fn)(COMN_EVENT* event, CS_INT timeout);
  /** As comn_get_tid. */
  CS_RETCODE (*thread_id_fn)(CS_VOID* buffer, CS_INT buflen, CS_INT* outlen);
};

/**
 * The table filled with the routines below, never null. It is constant; a host points its context
 * at a copy of its own:
 *
 *     CS_THREAD threads = *comn_thread_table();
 *     context.ctxthread = &threads;
 */
COMN_API const CS_THREAD* comn_thread_table(CS_VOID);

/** @name Mutexes */
/**@{*/
/** Stores a new free mutex through `mutex`, null when that fails (CS_FAIL). */
COMN_API CS_RETCODE comn_create_mutex(COMN_MUTEX** mutex);

/** Frees a mutex that nobody holds; one that is held stops the process. CS_SUCCEED. */
COMN_API CS_RETCODE comn_delete_mutex(COMN_MUTEX* mutex);

/** Waits for the mutex; a thread that owns it already takes it once more. CS_SUCCEED. */
COMN_API CS_RETCODE comn_take_mutex(COMN_MUTEX* mutex);

/**
 * Takes the mutex without waiting. Call it only when no other thread can hold the mutex: if another
 * thread does, the process stops. CS_SUCCEED.
 */
COMN_API CS_RETCODE comn_try_mutex(COMN_MUTEX* mutex);

/**
 * Undoes one take; the last one frees the mutex. Any thread but the owner stops the process.
 * CS_SUCCEED.
 */
COMN_API CS_RETCODE comn_release_mutex(COMN_MUTEX* mutex);

/** CS_SUCCEED when the caller owns the mutex, else CS_FAIL. */
COMN_API CS_RETCODE comn_check_mutex(const COMN_MUTEX* mutex);
/**@}*/

/** @name Events */
/**@{*/
/**
 * Stores a new unsignalled event through `event`, null when that fails (CS_FAIL). With `autoreset`
 * 1 each wait that succeeds clears the event, so one signal releases one waiter; with any other
 * value it stays signalled until comn_reset_event.
 */
COMN_API CS_RETCODE comn_create_event_ex(COMN_EVENT** event, CS_INT autoreset);

/** Stores a new event with auto reset: comn_create_event_ex with `autoreset` 1. */
COMN_API CS_RETCODE comn_create_event(COMN_EVENT** event);

/**
 * Frees an event on which no thread waits. CS_FAIL when the system refuses (the event is then
 * kept).
 */
COMN_API CS_RETCODE comn_delete_event(COMN_EVENT* event);

/**
 * Sets the event and wakes the waiters. CS_FAIL when the system refuses: the event is then cleared.
 */
COMN_API CS_RETCODE comn_signal_event(COMN_EVENT* event);

/** Clears the event. CS_FAIL when the system refuses. */
COMN_API CS_RETCODE comn_reset_event(COMN_EVENT* event);

/**
 * Waits until the event is set. `timeout` is in milliseconds: 0 polls, a negative value waits
 * without limit. CS_TIMED_OUT when the time is over, CS_FAIL on a failure of the system.
 *
 * The timeout is counted from the start of the current second, so a wait may end up to one second
 * early. If the thread is woken but another thread has taken the signal, the full timeout starts
 * anew. The wait is a cancellation point even for a thread that has cancellation disabled; a
 * cancelled waiter leaves the event usable.
 */
COMN_API CS_RETCODE comn_waitfor_event(COMN_EVENT* event, CS_INT timeout);
/**@}*/

/** @name Conditions */
/**@{*/
/** Stores a new condition through `cond`, null when that fails (CS_FAIL). */
COMN_API CS_RETCODE comn_create_cond(COMN_COND** cond);

/**
 * Frees a condition on which no thread waits. CS_FAIL when the system refuses (it is then kept).
 */
COMN_API CS_RETCODE comn_delete_cond(COMN_COND* cond);

/** Wakes one waiter. CS_FAIL when the system refuses. */
COMN_API CS_RETCODE comn_signal_cond(COMN_COND* cond);

/** Wakes all waiters. CS_FAIL when the system refuses. */
COMN_API CS_RETCODE comn_broadcast_cond(COMN_COND* cond);

/**
 * The caller holds `mutex`. Releases it completely (even if taken several times), waits, then takes
 * it again the same number of times. Wake-ups may be spurious. When a waiter is cancelled, its own
 * cleanup handlers run with the mutex held and must release it. CS_SUCCEED.
 */
COMN_API CS_RETCODE comn_wait_cond(COMN_COND* cond, COMN_MUTEX* mutex);
/**@}*/

/** @name Semaphores */
/**@{*/
/** Stores a new semaphore with count 0 through `sem`, null when that fails (CS_FAIL). */
COMN_API CS_RETCODE comn_create_sem(COMN_SEM** sem);

/**
 * Frees a semaphore on which no thread waits. CS_FAIL when the system refuses (it is then kept).
 */
COMN_API CS_RETCODE comn_delete_sem(COMN_SEM* sem);

/** Increases the count and wakes the waiters. CS_FAIL when the system refuses. */
COMN_API CS_RETCODE comn_release_sem(COMN_SEM* sem);

/**
 * Decreases the count, waiting while it is 0. With `nowait` exactly 1 a count of 0 gives CS_FAIL at
 * once. A negative count, which only a damaged semaphore has, gives CS_FAIL and leaves the
 * semaphore locked for good.
 */
COMN_API CS_RETCODE comn_waitfor_sem(COMN_SEM* sem, CS_INT nowait);
/**@}*/

/** @name Threads */
/**@{*/
/**
 * Starts a joinable thread at `start_routine` and stores its id; a thread that cannot be started
 * stops the process. `argument` is passed to it and may be null.
 */
COMN_API CS_RETCODE comn_create_thread_no_alloc(pthread_t* threadid, COMN_START_FUNC start_routine,
                                                CS_VOID* argument);

/**
 * Starts a joinable thread as comn_create_thread_no_alloc does and stores a holder of its id, which
 * comn_join_thread frees, through `handle`: null, with CS_FAIL, when it cannot be allocated.
 */
COMN_API CS_RETCODE comn_create_thread(COMN_THREAD** handle, COMN_START_FUNC start_routine,
                                       CS_VOID* argument);

/** The same as comn_create_thread. */
COMN_API CS_RETCODE comn_create_thread_ex(COMN_THREAD** handle, COMN_START_FUNC start_routine,
                                          CS_VOID* argument);

/**
 * Waits for the thread's end and frees the holder. The thread must have ended with a null result or
 * by cancellation, else the process stops. CS_FAIL when the system refuses (the holder is then
 * kept).
 */
COMN_API CS_RETCODE comn_join_thread(COMN_THREAD* handle);

/**
 * Asks the thread to cancel itself; it is still to be joined. CS_FAIL when the system refuses.
 */
COMN_API CS_RETCODE comn_kill_thread(COMN_THREAD* handle);

/** Ends the calling thread with a null result. */
COMN_API CS_VOID comn_exit_thread(CS_VOID);

/** Does nothing: a thread runs from its creation on. CS_SUCCEED. */
COMN_API CS_RETCODE comn_start_thread(COMN_THREAD* handle);

/** Does nothing. CS_SUCCEED. */
COMN_API CS_RETCODE comn_set_priority(COMN_THREAD* handle, CS_INT priority);

/** Does nothing: threads are joined. CS_FAIL. */
COMN_API CS_RETCODE comn_detach_thread(COMN_THREAD* handle);

/** Does nothing: there is no global lock. CS_FAIL. */
COMN_API CS_RETCODE comn_lock_global(CS_VOID);

/** Does nothing: there is no global lock. CS_FAIL. */
COMN_API CS_RETCODE comn_unlock_global(CS_VOID);

/** The calling thread's id. */
COMN_API pthread_t comn_threadid(CS_VOID);

/** The calling thread's id. */
COMN_API pthread_t comn_thread_id(CS_VOID);

/**
 * Copies the caller's id, a pthread_t, into the first 4 bytes of `buffer`, 8 in a 64-bit host; a
 * lower `buflen` stops the process. `outlen`, when not null, becomes the number of bytes.
 * CS_SUCCEED.
 */
COMN_API CS_RETCODE comn_get_tid(CS_VOID* buffer, CS_INT buflen, CS_INT* outlen);

/** Acts on a pending cancellation, even where cancellation is disabled, and yields. */
COMN_API CS_VOID comn_yield(CS_VOID);

/**
 * Disables cancellation of the calling thread; nothing in this library enables it again. CS_FAIL
 * when the system refuses.
 */
COMN_API CS_RETCODE comn_set_cancelstate(CS_VOID);

/** Stops the process. */
COMN_API CS_VOID comn_thread_cleanup(CS_VOID);
/**@}*/

/** @name Thread-specific data
 * CS_FAIL when the system refuses. */
/**@{*/
/** Makes a key without a destructor: the host frees the values. */
COMN_API CS_RETCODE comn_create_key(pthread_key_t* key);

/** Deletes a key. The values are not freed. */
COMN_API CS_RETCODE comn_drop_key(pthread_key_t key);

/** The calling thread's value; null when there is none, and for the key CS_UNUSED. */
COMN_API CS_VOID* comn_get_threaduserdata(pthread_key_t key);

/** Sets the calling thread's value. */
COMN_API CS_RETCODE comn_set_threaduserdata(pthread_key_t key, CS_VOID* value);
/**@}*/

/** @name Signals
 * CS_FAIL when the system refuses. */
/**@{*/
/** Blocks one signal in the calling thread. */
COMN_API CS_RETCODE comn_thread_block_signal(CS_INT signo);

/** Unblocks one signal in the calling thread. */
COMN_API CS_RETCODE comn_thread_unblock_signal(CS_INT signo);

/** As pthread_sigmask. */
COMN_API CS_RETCODE comn_thread_sigmask(CS_INT how, const sigset_t* newmask, sigset_t* oldmask);

/** Sends `signo` to a thread; an id of 0 stops the process. */
COMN_API CS_RETCODE comn_signal_thread(pthread_t threadid, CS_INT signo);
/**@}*/

/** @name Coroutine mode
 * One lock for the process that lets cooperating threads run one at a time. Starting and ending the
 * mode is for one thread while no other uses the lock. */
/**@{*/
/**
 * Starts the mode, without taking the lock. CS_FAIL when it is on already or the lock cannot be
 * made.
 */
COMN_API CS_RETCODE comn_start_coroutine_mode(CS_VOID);

/** Takes the lock; does nothing when the mode is off. CS_SUCCEED. */
COMN_API CS_RETCODE comn_take_coroutine_control(CS_VOID);

/** Releases the lock; does nothing when the mode is off. CS_SUCCEED. */
COMN_API CS_RETCODE comn_release_coroutine_control(CS_VOID);

/**
 * Ends the mode. The caller must have taken the lock exactly once (otherwise the process stops); it
 * is released. Does nothing when the mode is off. CS_SUCCEED.
 */
COMN_API CS_RETCODE comn_end_coroutine_mode(CS_VOID);
/**@}*/

COMN_STATIC_ASSERT(sizeof(pthread_t) == COMN_BY_HOST(4, 8));
COMN_STATIC_ASSERT(sizeof(COMN_MUTEX) == COMN_BY_HOST(36, 56));
COMN_STATIC_ASSERT(offsetof(COMN_MUTEX, mutex) == COMN_BY_HOST(4, 8));
COMN_STATIC_ASSERT(offsetof(COMN_MUTEX, magic) == COMN_BY_HOST(28, 48));
COMN_STATIC_ASSERT(offsetof(COMN_MUTEX, use_count) == COMN_BY_HOST(32, 52));
COMN_STATIC_ASSERT(sizeof(COMN_EVENT) == COMN_BY_HOST(80, 96));
COMN_STATIC_ASSERT(offsetof(COMN_EVENT, ev) == 4);
COMN_STATIC_ASSERT(offsetof(COMN_EVENT, pc) == 8);
COMN_STATIC_ASSERT(offsetof(COMN_EVENT, pm) == 56);
COMN_STATIC_ASSERT(sizeof(COMN_SEM) == COMN_BY_HOST(76, 96));
COMN_STATIC_ASSERT(offsetof(COMN_SEM, pc) == COMN_BY_HOST(4, 8));
COMN_STATIC_ASSERT(offsetof(COMN_SEM, pm) == COMN_BY_HOST(52, 56));
COMN_STATIC_ASSERT(sizeof(CS_THREAD) == COMN_BY_HOST(40, 80));

#ifdef __cplusplus
}
#endif

#endif
