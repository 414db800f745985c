// Taking and releasing a mutex, in line: pools do both for every call. A mutex is free exactly when
// its owner is COMN_NO_OWNER and its use count 0; both change only in the thread that holds the
// pthread mutex.
#pragma once

#include <pthread.h>

#include "comnlib/thread.h"
#include "diag/diag.h"

namespace comnlib {

// A thread may ask without the lock whether it is the owner, since no other thread can change the
// answer. The accesses are atomic, so that asking is not a data race.
inline pthread_t owner_of(const COMN_MUTEX& mutex) {
  return __atomic_load_n(&mutex.owner, __ATOMIC_RELAXED);
}

inline void set_owner(COMN_MUTEX& mutex, pthread_t owner) {
  __atomic_store_n(&mutex.owner, owner, __ATOMIC_RELAXED);
}

// The caller's id. In glibc it is the address of the thread's control block, which needs no call;
// every lock asks for it.
inline pthread_t self() {
#if defined(__GLIBC__) && __has_builtin(__builtin_thread_pointer)
  return reinterpret_cast<pthread_t>(__builtin_thread_pointer());
#else
  return pthread_self();
#endif
}

inline bool owned_by_caller(const COMN_MUTEX& mutex) {
  return owner_of(mutex) == self();
}

// For the thread that holds the pthread mutex, or the last one that knows the mutex.
inline bool is_free(const COMN_MUTEX& mutex) {
  return mutex.owner == COMN_NO_OWNER && mutex.use_count == 0;
}

inline bool is_stamped(const COMN_MUTEX* mutex) {
  return mutex != nullptr && mutex->magic == static_cast<CS_UINT>(COMN_MUTEX_MAGIC);
}

// Taking and releasing return false at misuse, for the caller to stop: one place for all reasons
// keeps the usual path short.
template <int (*Lock)(pthread_mutex_t*)>
[[gnu::always_inline, nodiscard]] inline bool take_mutex(COMN_MUTEX* mutex) {
  if (!is_stamped(mutex)) [[unlikely]]
    return false;
  if (owned_by_caller(*mutex)) [[unlikely]]
    return mutex->use_count++ != 0;
  if (Lock(&mutex->mutex) != 0 || !is_free(*mutex)) [[unlikely]]
    return false;
  set_owner(*mutex, self());
  mutex->use_count = 1;
  return true;
}

// For a mutex that the caller is known to own.
[[gnu::always_inline, nodiscard]] inline bool give_up_mutex(COMN_MUTEX* mutex) {
  if (--mutex->use_count != 0) [[unlikely]]
    return true;
  set_owner(*mutex, COMN_NO_OWNER);
  return pthread_mutex_unlock(&mutex->mutex) == 0;
}

[[gnu::always_inline, nodiscard]] inline bool release_mutex(COMN_MUTEX* mutex) {
  return is_stamped(mutex) && owned_by_caller(*mutex) && mutex->use_count != 0 &&
         give_up_mutex(mutex);
}

}  // namespace comnlib
