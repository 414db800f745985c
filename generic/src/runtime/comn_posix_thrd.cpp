// Threads and synchronisation over POSIX threads.
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>

#include <pthread.h>
#include <sched.h>

#include "comnlib/thread.h"
#include "diag/diag.h"
#include "runtime/hostmemory.h"
#include "runtime/mutex.h"

using namespace comnlib;

namespace {

// The lock of coroutine mode, null while the mode is off.
COMN_MUTEX* coroutine_lock = nullptr;

constexpr CS_RETCODE result_of(int posix_status) {
  return posix_status == 0 ? CS_SUCCEED : CS_FAIL;
}

void unlock_cancelled(void* mutex) {
  pthread_mutex_unlock(static_cast<pthread_mutex_t*>(mutex));
}

// Waits once, until the deadline when there is one. Only here a cancellation takes effect, whatever
// the caller's own state is.
int wait_cancellable(pthread_cond_t* cond, pthread_mutex_t* mutex, const timespec* deadline) {
  int before = PTHREAD_CANCEL_DISABLE;
  int status = 0;
  pthread_cleanup_push(unlock_cancelled, mutex);
  pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &before);
  status = deadline == nullptr ? pthread_cond_wait(cond, mutex)
                               : pthread_cond_timedwait(cond, mutex, deadline);
  pthread_setcancelstate(before, nullptr);
  pthread_cleanup_pop(0);
  return status;
}

// Counts from the current whole second, since hosts set their timeouts for that.
timespec deadline_after(CS_INT milliseconds) {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  return {.tv_sec = now.tv_sec + milliseconds / 1000, .tv_nsec = milliseconds % 1000 * 1'000'000L};
}

// Waits for the flag, with the event's mutex held. The deadline is taken anew for each wait, so a
// wake-up without the flag restarts the whole timeout.
CS_RETCODE wait_for_flag(COMN_EVENT& event, CS_INT timeout) {
  if (event.ev == 0 && timeout == 0) return CS_TIMED_OUT;
  while (event.ev == 0) {
    const timespec deadline = timeout < 0 ? timespec{} : deadline_after(timeout);
    const int status = wait_cancellable(&event.pc, &event.pm, timeout < 0 ? nullptr : &deadline);
    if (status == ETIMEDOUT) return CS_TIMED_OUT;
    if (status != 0) return CS_FAIL;
  }
  if (event.ar == 1) event.ev = 0;
  return CS_SUCCEED;
}

// Makes the condition and the mutex of an event or a semaphore: both, or neither on a failure.
template <class Object>
bool init_guard(Object& object) {
  if (pthread_mutex_init(&object.pm, nullptr) != 0) return false;
  if (pthread_cond_init(&object.pc, nullptr) == 0) return true;
  pthread_mutex_destroy(&object.pm);
  return false;
}

template <class Object>
CS_RETCODE create_guarded(Object** out, Object initial) {
  *out = nullptr;
  auto* object = make_record<Object>();
  if (object == nullptr) return CS_FAIL;
  *object = initial;
  if (!init_guard(*object)) {
    comn_free(object);
    return CS_FAIL;
  }
  *out = object;
  return CS_SUCCEED;
}

template <class Object>
CS_RETCODE delete_guarded(Object* object) {
  if (pthread_cond_destroy(&object->pc) != 0 || pthread_mutex_destroy(&object->pm) != 0)
    return CS_FAIL;
  comn_free(object);
  return CS_SUCCEED;
}

// Waits once for a change of the count, with the semaphore's mutex held; a cancelled waiter
// releases the mutex.
int wait_for_change(COMN_SEM& sem) {
  int status = 0;
  pthread_cleanup_push(unlock_cancelled, &sem.pm);
  status = pthread_cond_wait(&sem.pc, &sem.pm);
  pthread_cleanup_pop(0);
  return status;
}

bool wait_for_count(COMN_SEM& sem) {
  while (sem.ev == 0)
    if (wait_for_change(sem) != 0) return false;
  return true;
}

// A thread's claim on a mutex, which it gives up while it waits on a condition.
struct Claim {
  COMN_MUTEX* mutex;
  pthread_t owner;
  CS_UINT use_count;
};

void lay_down(Claim& claim) {
  claim.use_count = claim.mutex->use_count;
  claim.owner = owner_of(*claim.mutex);
  claim.mutex->use_count = 0;
  set_owner(*claim.mutex, COMN_NO_OWNER);
}

void take_up(void* laid_down) {
  const Claim& claim = *static_cast<Claim*>(laid_down);
  claim.mutex->use_count = claim.use_count;
  set_owner(*claim.mutex, claim.owner);
}

CS_RETCODE change_mask(int how, CS_INT signo) {
  sigset_t signals;
  if (sigemptyset(&signals) != 0 || sigaddset(&signals, signo) != 0) return CS_FAIL;
  return result_of(pthread_sigmask(how, &signals, nullptr));
}

constexpr CS_THREAD kThreadTable = {
    .create_mutex_fn = comn_create_mutex,
    .delete_mutex_fn = comn_delete_mutex,
    .take_mutex_fn = comn_take_mutex,
    .release_mutex_fn = comn_release_mutex,
    .create_event_fn = comn_create_event,
    .delete_event_fn = comn_delete_event,
    .signal_event_fn = comn_signal_event,
    .reset_event_fn = comn_reset_event,
    .waitfor_event_fn = comn_waitfor_event,
    .thread_id_fn = comn_get_tid,
};

}  // namespace

const CS_THREAD* comn_thread_table() {
  return &kThreadTable;
}

CS_RETCODE comn_create_mutex(COMN_MUTEX** mutex) {
  check_pointer(mutex);
  *mutex = nullptr;
  auto* made = make_record<COMN_MUTEX>();
  if (made == nullptr) return trace(CS_FAIL);
  if (pthread_mutex_init(&made->mutex, nullptr) != 0) {
    comn_free(made);
    return trace(CS_FAIL);
  }
  made->magic = static_cast<CS_UINT>(COMN_MUTEX_MAGIC);
  made->use_count = 0;
  set_owner(*made, COMN_NO_OWNER);
  *mutex = made;
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_delete_mutex(COMN_MUTEX* mutex) {
  require(is_stamped(mutex));
  require(is_free(*mutex));
  require(pthread_mutex_destroy(&mutex->mutex) == 0);
  mutex->magic = 0;
  comn_free(mutex);
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_take_mutex(COMN_MUTEX* mutex) {
  require(take_mutex<pthread_mutex_lock>(mutex));
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_try_mutex(COMN_MUTEX* mutex) {
  require(take_mutex<pthread_mutex_trylock>(mutex));
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_release_mutex(COMN_MUTEX* mutex) {
  require(release_mutex(mutex));
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_check_mutex(const COMN_MUTEX* mutex) {
  require(is_stamped(mutex));
  return trace(owned_by_caller(*mutex) ? CS_SUCCEED : CS_FAIL);
}

CS_RETCODE comn_create_event_ex(COMN_EVENT** event, CS_INT autoreset) {
  check_pointer(event);
  return trace(create_guarded(event, COMN_EVENT{.ar = autoreset, .ev = 0, .pc = {}, .pm = {}}));
}

CS_RETCODE comn_create_event(COMN_EVENT** event) {
  return comn_create_event_ex(event, 1);
}

CS_RETCODE comn_delete_event(COMN_EVENT* event) {
  require(event != nullptr);
  return trace(delete_guarded(event));
}

CS_RETCODE comn_signal_event(COMN_EVENT* event) {
  require(event != nullptr);
  if (pthread_mutex_lock(&event->pm) != 0) return trace(CS_FAIL);
  event->ev = 1;
  const int broadcast = pthread_cond_broadcast(&event->pc);
  if (broadcast != 0) event->ev = 0;
  if (pthread_mutex_unlock(&event->pm) != 0) {
    event->ev = 0;
    return trace(CS_FAIL);
  }
  return trace(result_of(broadcast));
}

CS_RETCODE comn_reset_event(COMN_EVENT* event) {
  require(event != nullptr);
  if (pthread_mutex_lock(&event->pm) != 0) return trace(CS_FAIL);
  event->ev = 0;
  return trace(result_of(pthread_mutex_unlock(&event->pm)));
}

CS_RETCODE comn_waitfor_event(COMN_EVENT* event, CS_INT timeout) {
  require(event != nullptr);
  if (pthread_mutex_lock(&event->pm) != 0) return trace(CS_FAIL);
  const CS_RETCODE result = wait_for_flag(*event, timeout);
  pthread_mutex_unlock(&event->pm);
  return trace(result);
}

CS_RETCODE comn_create_cond(COMN_COND** cond) {
  check_pointer(cond);
  *cond = nullptr;
  auto* made = make_record<COMN_COND>();
  if (made == nullptr) return trace(CS_FAIL);
  if (pthread_cond_init(made, nullptr) != 0) {
    comn_free(made);
    return trace(CS_FAIL);
  }
  *cond = made;
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_delete_cond(COMN_COND* cond) {
  check_pointer(cond);
  if (pthread_cond_destroy(cond) != 0) return trace(CS_FAIL);
  comn_free(cond);
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_signal_cond(COMN_COND* cond) {
  require(cond != nullptr);
  return trace(result_of(pthread_cond_signal(cond)));
}

CS_RETCODE comn_broadcast_cond(COMN_COND* cond) {
  require(cond != nullptr);
  return trace(result_of(pthread_cond_broadcast(cond)));
}

CS_RETCODE comn_wait_cond(COMN_COND* cond, COMN_MUTEX* mutex) {
  require(cond != nullptr);
  require(is_stamped(mutex));
  require(owned_by_caller(*mutex));
  Claim claim = {.mutex = mutex, .owner = COMN_NO_OWNER, .use_count = 0};
  lay_down(claim);
  pthread_cleanup_push(take_up, &claim);
  require(pthread_cond_wait(cond, &mutex->mutex) == 0);
  pthread_cleanup_pop(1);
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_create_sem(COMN_SEM** sem) {
  check_pointer(sem);
  return trace(create_guarded(sem, COMN_SEM{.ev = 0, .pc = {}, .pm = {}}));
}

CS_RETCODE comn_delete_sem(COMN_SEM* sem) {
  check_pointer(sem);
  return trace(delete_guarded(sem));
}

CS_RETCODE comn_release_sem(COMN_SEM* sem) {
  require(sem != nullptr);
  if (pthread_mutex_lock(&sem->pm) != 0) return trace(CS_FAIL);
  sem->ev = static_cast<CS_INT>(static_cast<CS_UINT>(sem->ev) + 1);
  const int broadcast = sem->ev == 1 ? pthread_cond_broadcast(&sem->pc) : 0;
  const int unlock = pthread_mutex_unlock(&sem->pm);
  return trace(result_of(broadcast != 0 ? broadcast : unlock));
}

CS_RETCODE comn_waitfor_sem(COMN_SEM* sem, CS_INT nowait) {
  require(sem != nullptr);
  if (pthread_mutex_lock(&sem->pm) != 0) return trace(CS_FAIL);
  // The mutex stays locked: a damaged semaphore must not be used any more.
  if (sem->ev < 0) return trace(CS_FAIL);
  const bool ready = sem->ev != 0 || (nowait != 1 && wait_for_count(*sem));
  if (ready) --sem->ev;
  const int unlock = pthread_mutex_unlock(&sem->pm);
  return trace(ready ? result_of(unlock) : CS_FAIL);
}

CS_RETCODE comn_create_thread_no_alloc(pthread_t* threadid, COMN_START_FUNC start_routine,
                                       CS_VOID* argument) {
  require(threadid != nullptr && start_routine != nullptr);
  pthread_attr_t attributes;
  require(pthread_attr_init(&attributes) == 0);
  require(pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_JOINABLE) == 0);
  require(pthread_attr_setscope(&attributes, PTHREAD_SCOPE_SYSTEM) == 0);
  require(pthread_create(threadid, &attributes, start_routine, argument) == 0);
  require(pthread_attr_destroy(&attributes) == 0);
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_create_thread(COMN_THREAD** handle, COMN_START_FUNC start_routine,
                              CS_VOID* argument) {
  require(handle != nullptr && start_routine != nullptr);
  *handle = nullptr;
  auto* holder = make_record<COMN_THREAD>();
  if (holder == nullptr) return trace(CS_FAIL);
  const CS_RETCODE result = comn_create_thread_no_alloc(holder, start_routine, argument);
  *handle = holder;
  return result;
}

CS_RETCODE comn_create_thread_ex(COMN_THREAD** handle, COMN_START_FUNC start_routine,
                                 CS_VOID* argument) {
  return comn_create_thread(handle, start_routine, argument);
}

CS_RETCODE comn_join_thread(COMN_THREAD* handle) {
  require(handle != nullptr);
  void* ended_with = nullptr;
  if (pthread_join(*handle, &ended_with) != 0) return trace(CS_FAIL);
  require(ended_with == nullptr || ended_with == PTHREAD_CANCELED);
  comn_free(handle);
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_kill_thread(COMN_THREAD* handle) {
  require(handle != nullptr && *handle != 0);
  return trace(result_of(pthread_cancel(*handle)));
}

CS_VOID comn_exit_thread() {
  pthread_exit(nullptr);
}

CS_RETCODE comn_start_thread(COMN_THREAD* /*handle*/) {
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_set_priority(COMN_THREAD* /*handle*/, CS_INT /*priority*/) {
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_detach_thread(COMN_THREAD* /*handle*/) {
  return trace(CS_FAIL);
}

CS_RETCODE comn_lock_global() {
  return trace(CS_FAIL);
}

CS_RETCODE comn_unlock_global() {
  return trace(CS_FAIL);
}

pthread_t comn_threadid() {
  return pthread_self();
}

pthread_t comn_thread_id() {
  return pthread_self();
}

CS_RETCODE comn_get_tid(CS_VOID* buffer, CS_INT buflen, CS_INT* outlen) {
  const pthread_t id = pthread_self();
  require(buflen >= static_cast<CS_INT>(sizeof id));
  check_pointer(buffer);
  if (outlen != nullptr) *outlen = sizeof id;
  std::memcpy(buffer, &id, sizeof id);
  return trace(CS_SUCCEED);
}

CS_VOID comn_yield() {
  int before = PTHREAD_CANCEL_DISABLE;
  pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &before);
  pthread_testcancel();
  sched_yield();
  pthread_setcancelstate(before, nullptr);
}

CS_RETCODE comn_set_cancelstate() {
  return trace(result_of(pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr)));
}

CS_VOID comn_thread_cleanup() {
  stop();
}

CS_RETCODE comn_create_key(pthread_key_t* key) {
  require(key != nullptr);
  return trace(result_of(pthread_key_create(key, nullptr)));
}

CS_RETCODE comn_drop_key(pthread_key_t key) {
  return trace(result_of(pthread_key_delete(key)));
}

CS_VOID* comn_get_threaduserdata(pthread_key_t key) {
  if (key == static_cast<pthread_key_t>(CS_UNUSED)) return nullptr;
  return pthread_getspecific(key);
}

CS_RETCODE comn_set_threaduserdata(pthread_key_t key, CS_VOID* value) {
  return trace(result_of(pthread_setspecific(key, value)));
}

CS_RETCODE comn_thread_block_signal(CS_INT signo) {
  return trace(change_mask(SIG_BLOCK, signo));
}

CS_RETCODE comn_thread_unblock_signal(CS_INT signo) {
  return trace(change_mask(SIG_UNBLOCK, signo));
}

CS_RETCODE comn_thread_sigmask(CS_INT how, const sigset_t* newmask, sigset_t* oldmask) {
  return trace(result_of(pthread_sigmask(how, newmask, oldmask)));
}

CS_RETCODE comn_signal_thread(pthread_t threadid, CS_INT signo) {
  require(threadid != 0);
  return trace(result_of(pthread_kill(threadid, signo)));
}

CS_RETCODE comn_start_coroutine_mode() {
  if (coroutine_lock != nullptr) return trace(CS_FAIL);
  return comn_create_mutex(&coroutine_lock);
}

CS_RETCODE comn_take_coroutine_control() {
  return coroutine_lock == nullptr ? trace(CS_SUCCEED) : comn_take_mutex(coroutine_lock);
}

CS_RETCODE comn_release_coroutine_control() {
  return coroutine_lock == nullptr ? trace(CS_SUCCEED) : comn_release_mutex(coroutine_lock);
}

CS_RETCODE comn_end_coroutine_mode() {
  if (coroutine_lock == nullptr) return trace(CS_SUCCEED);
  CS_RETCODE result = comn_release_mutex(coroutine_lock);
  if (result != CS_SUCCEED) return result;
  result = comn_delete_mutex(coroutine_lock);
  if (result == CS_SUCCEED) coroutine_lock = nullptr;
  return result;
}
