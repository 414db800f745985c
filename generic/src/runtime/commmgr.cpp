// The memory manager's public routines: pools, their locks and properties, subpools and removal.
// Each call takes the lock of the family on entry and releases it on exit; the heaps and
// disciplines in between know nothing of locks.
#include <cassert>
#include <cstring>
#include <type_traits>

#include "runtime/commmgr.h"

#include "comnlib/thread.h"
#include "runtime/commmgr_alloconly.h"
#include "runtime/commmgr_buddy.h"
#include "runtime/commmgr_index.h"
#include "runtime/commmgr_uniform.h"
#include "runtime/mutex.h"

using namespace comnlib;
using namespace comnlib::mm;

namespace {

constexpr CS_INT kContextVersion = 113;
constexpr CS_INT kDefaultChunkSize = 4120;
constexpr CS_INT kDefaultBlockSize = 4096;
// The least length of a buffer that must hold its control area too. The area is longer than that:
// shorter buffers are refused, and buffers in between stop the process.
constexpr CS_INT kLeastManaged = sizeof(MmHandle);

// The default functions of a pool on a context: `param` is the context.
CS_VOID* context_sbreak(MmHandle* /*handle*/, CS_VOID* param, CS_INT size) {
  auto* ctx = static_cast<CS_CONTEXT*>(param);
  return ctx->ctxmalloc(ctx, size);
}

CS_VOID context_unsbreak(MmHandle* /*handle*/, CS_VOID* param, CS_VOID* chunk) {
  auto* ctx = static_cast<CS_CONTEXT*>(param);
  ctx->ctxfree(ctx, chunk);
}

const CS_THREAD* threads_of(const MmHandle* handle) {
  return handle->mmh_head->mph_ctx->ctxthread;
}

CS_RETCODE context_lock(MmHandle* handle, CS_VOID* lockarg) {
  const CS_THREAD* threads = threads_of(handle);
  if (threads == nullptr || threads->take_mutex_fn == nullptr) return CS_SUCCEED;
  return threads->take_mutex_fn(static_cast<COMN_MUTEX*>(lockarg));
}

CS_RETCODE context_unlock(MmHandle* handle, CS_VOID* lockarg) {
  const CS_THREAD* threads = threads_of(handle);
  if (threads == nullptr || threads->release_mutex_fn == nullptr) return CS_SUCCEED;
  return threads->release_mutex_fn(static_cast<COMN_MUTEX*>(lockarg));
}

bool has_lock(const MmPoolHead* head) {
  return head->mph_lock != nullptr && head->mph_unlock != nullptr;
}

[[gnu::always_inline]] inline CS_RETCODE lock(MmHandle* handle) {
  MmPoolHead* const head = handle->mmh_head;
  if (!has_lock(head) || (head->mph_status & kRemoving) != 0) return CS_SUCCEED;
  return head->mph_lock(handle, head->mph_lockarg);
}

[[gnu::always_inline]] inline CS_RETCODE unlock(MmHandle* handle) {
  MmPoolHead* const head = handle->mmh_head;
  return has_lock(head) ? head->mph_unlock(handle, head->mph_lockarg) : CS_SUCCEED;
}

// The lock of a call that hosts make for every block. Where the context locks with this library's
// own routines, and no trace shows their codes, the mutex is taken and released inline.
class Lock {
 public:
  [[gnu::always_inline]] explicit Lock(MmHandle* handle) : mutex_(mutex_of(handle->mmh_head)) {
    if (mutex_ != nullptr) [[likely]] {
      require(take_mutex<pthread_mutex_lock>(mutex_));
    } else {
      result_ = lock(handle);
    }
  }

  [[gnu::always_inline]] void release(MmHandle* handle) const {
    if (mutex_ != nullptr) [[likely]] {
      require(give_up_mutex(mutex_));
    } else {
      unlock(handle);
    }
  }

  CS_RETCODE result() const { return result_; }

 private:
  [[gnu::always_inline]] static COMN_MUTEX* mutex_of(const MmPoolHead* head) {
    if (head->mph_lock != context_lock || head->mph_unlock != context_unlock ||
        (head->mph_status & kRemoving) != 0)
      return nullptr;
    const CS_THREAD* const threads = head->mph_ctx->ctxthread;
    const bool own = threads != nullptr && threads->take_mutex_fn == comn_take_mutex &&
                     threads->release_mutex_fn == comn_release_mutex &&
                     internal::trace_level.load(std::memory_order_relaxed) == COM_TRACE_NONE;
    return own ? static_cast<COMN_MUTEX*>(head->mph_lockarg) : nullptr;
  }

  COMN_MUTEX* mutex_;  // held by the inline path
  CS_RETCODE result_ = CS_SUCCEED;
};

// Read before the lock is taken, so that a dropped handle, which is zeroed, is noticed before its
// head is used. Another thread's first allocation may set kInUse meanwhile, but the bits that count
// here do not change while the handle lives. All of them are in the lowest byte, which is aligned
// at any address.
CS_BYTE status_of(const MmHandle* handle) {
  return __atomic_load_n(at<CS_BYTE>(handle, offsetof(MmHandle, mmh_status)), __ATOMIC_RELAXED);
}

void set_in_use(MmHandle* handle) {
  const CS_BYTE status = status_of(handle);
  if ((status & kInUse) == 0)
    __atomic_store_n(at<CS_BYTE>(handle, offsetof(MmHandle, mmh_status)),
                     static_cast<CS_BYTE>(status | kInUse), __ATOMIC_RELAXED);
}

[[gnu::always_inline]] inline CS_BYTE check_handle(const MmHandle* handle,
                                                   CallSite site = CallSite::current()) {
  check_pointer(handle, site);
  const CS_BYTE status = status_of(handle);
  require((status & (kHandleAllocated | kHandleOfCaller)) != 0, site);
  require((handle->mmh_head->mph_status & (kHeadAllocated | kHeadOfCaller)) != 0, site);
  return status;
}

struct ControlArea {
  MmPoolHead head;
  MmHandle handle;
} MM_OVERLAY;
static_assert(sizeof(ControlArea) == MM_CTL_SIZE);

void set_defaults(MmPoolHead* head, MmHandle* handle, CS_INT head_status, CS_INT handle_status) {
  *head = {};
  head->mph_chunksize = kDefaultChunkSize;
  head->mph_maxsize = MM_NO_LIMIT;
  head->mph_status = head_status;
  std::memset(static_cast<void*>(handle), 0, sizeof *handle);
  handle->mmh_head = head;
  handle->mmh_type = MM_POOL_BUDDY;
  handle->mmh_blocksize = kDefaultBlockSize;
  handle->mmh_status = handle_status;
}

// Head and handle of a new pool on a context; null when the context has no memory.
MmHandle* new_pool(CS_CONTEXT* ctx, MmHandle* control) {
  if (control != nullptr) {
    auto* area = reinterpret_cast<ControlArea*>(control);
    set_defaults(&area->head, &area->handle, kHeadOfCaller, kHandleOfCaller);
    return &area->handle;
  }
  void* const head = ctx->ctxmalloc(ctx, sizeof(MmPoolHead));
  if (head == nullptr) return nullptr;
  void* const handle = ctx->ctxmalloc(ctx, sizeof(MmHandle));
  if (handle == nullptr) {
    ctx->ctxfree(ctx, head);
    return nullptr;
  }
  set_defaults(static_cast<MmPoolHead*>(head), static_cast<MmHandle*>(handle), kHeadAllocated,
               kHandleAllocated);
  return static_cast<MmHandle*>(handle);
}

// Zeroes the control records and gives back those that came from the context.
void release_control(MmHandle* handle) {
  MmPoolHead* const head = handle->mmh_head;
  CS_CONTEXT* const ctx = head->mph_ctx;
  const bool free_head = ctx != nullptr && (head->mph_status & kHeadAllocated) != 0;
  const bool free_handle = ctx != nullptr && (handle->mmh_status & kHandleAllocated) != 0;
  std::memset(static_cast<void*>(handle), 0, sizeof *handle);
  *head = {};
  if (free_handle) ctx->ctxfree(ctx, handle);
  if (free_head) ctx->ctxfree(ctx, head);
}

CS_RETCODE install_context_lock(MmPoolHead* head) {
  const CS_THREAD* const threads = head->mph_ctx->ctxthread;
  if (threads == nullptr) return CS_SUCCEED;
  if (threads->create_mutex_fn != nullptr) {
    COMN_MUTEX* mutex = nullptr;
    const CS_RETCODE result = threads->create_mutex_fn(&mutex);
    if (result != CS_SUCCEED) return result;
    head->mph_lockarg = mutex;
    head->mph_status |= kOwnMutex;
  }
  head->mph_lock = context_lock;
  head->mph_unlock = context_unlock;
  return CS_SUCCEED;
}

void delete_own_mutex(const MmPoolHead* head) {
  if ((head->mph_status & kOwnMutex) == 0) return;
  const CS_THREAD* const threads = head->mph_ctx->ctxthread;
  if (threads != nullptr && threads->delete_mutex_fn != nullptr)
    threads->delete_mutex_fn(static_cast<COMN_MUTEX*>(head->mph_lockarg));
}

// Zeroes `size` bytes. Small blocks, which are most of them, take no call; the stores may overlap.
inline void clear(void* memory, CS_INT size) {
  constexpr CS_INT kStep = 64;
  auto* bytes = static_cast<CS_BYTE*>(memory);
  if (size < kStep / 4) {
    // The room of a block is a multiple of a word.
    for (CS_INT i = 0; i < size; i += kWord) std::memset(bytes + i, 0, kWord);
  } else if (size <= kStep / 2) {
    std::memset(bytes, 0, kStep / 4);
    std::memset(bytes + size - kStep / 4, 0, kStep / 4);
  } else if (size <= kStep) {
    std::memset(bytes, 0, kStep / 2);
    std::memset(bytes + size - kStep / 2, 0, kStep / 2);
  } else if (size <= 8 * kStep) {
    for (CS_INT i = 0; i < size - kStep; i += kStep) std::memset(bytes + i, 0, kStep);
    std::memset(bytes + size - kStep, 0, kStep);
  } else {
    std::memset(memory, 0, static_cast<std::size_t>(size));
  }
}

[[gnu::always_inline]] inline CS_RETCODE hand_out(void* memory, CS_INT size, CS_VOID** out_ptr) {
  clear(memory, size);
  *out_ptr = memory;
  return trace(CS_SUCCEED);
}

// A block by the discipline's fast path, or null.
[[gnu::always_inline]] inline void* take(MmHandle* handle, CS_INT size) {
  switch (handle->mmh_type) {
    case MM_POOL_BUDDY:
      return buddy_take(handle, size);
    case MM_POOL_ALLOCONLY:
      return alloconly_take(handle, size);
    case MM_POOL_UNIFORM:
      return uniform_take(handle, size);
    default:
      return nullptr;
  }
}

CS_RETCODE allocate(MmHandle* handle, CS_INT size, CS_VOID** out) {
  switch (handle->mmh_type) {
    case MM_POOL_BUDDY:
      return buddy_allocate(handle, size, out);
    case MM_POOL_ALLOCONLY:
      return alloconly_allocate(handle, size, out);
    case MM_POOL_UNIFORM:
      return uniform_allocate(handle, size, out);
    default:
      stop();
  }
}

[[gnu::noinline]] CS_RETCODE allocate_and_unlock(MmHandle* handle, CS_INT size, CS_VOID** out) {
  void* memory = nullptr;
  const CS_INT blocksize = handle->mmh_blocksize;
  const CS_RETCODE result = allocate(handle, size, &memory);
  if (result == CS_SUCCEED) {
    set_in_use(handle);
  } else if ((handle->mmh_status & kInUse) == 0) {
    // The next allocation is the first one again, and adapts the block size anew.
    handle->mmh_blocksize = blocksize;
  }
  unlock(handle);
  if (memory != nullptr) {
    clear(memory, size);
    *out = memory;
  }
  return result;
}

[[gnu::always_inline]] inline CS_RETCODE free_one(MmHandle* handle, CS_VOID* ptr) {
  switch (handle->mmh_type) {
    case MM_POOL_BUDDY:
      heap_of_user(handle->mmh_head, ptr);
      return buddy_free(handle, ptr);
    case MM_POOL_ALLOCONLY:
      require(Chunks::find(handle->mmh_head, ptr) != nullptr);
      return CS_FAIL;
    case MM_POOL_UNIFORM:
      heap_of_user(handle->mmh_head, ptr);
      return uniform_free(handle, ptr);
    default:
      stop();
  }
}

// The calls that hosts make for every block, in a pool with a lock.
[[gnu::always_inline]] inline CS_RETCODE allocate_locked(MmHandle* handle, CS_INT size,
                                                         CS_VOID** out_ptr) {
  const Lock lock(handle);
  if (lock.result() != CS_SUCCEED) return trace(lock.result());
  if (void* const memory = take(handle, size)) {
    lock.release(handle);
    return hand_out(memory, size, out_ptr);
  }
  return trace(allocate_and_unlock(handle, size, out_ptr));
}

[[gnu::always_inline]] inline CS_RETCODE free_locked(MmHandle* handle, CS_VOID* ptr) {
  const Lock lock(handle);
  require(lock.result() == CS_SUCCEED);
  const CS_RETCODE result = free_one(handle, ptr);
  lock.release(handle);
  return trace(result);
}

// In 64-bit code they are apart, so that a pool without a lock needs no frame. In 32-bit code a
// further routine costs more than that, since it has to find out its own address first.
constexpr bool kLockedApart = kWordSize == 8;

template <auto call, class... Arguments>
[[gnu::noinline]] CS_RETCODE apart(Arguments... arguments) {
  return call(arguments...);
}

CS_RETCODE reallocate(MmHandle* handle, CS_INT new_size, CS_VOID** ptr_inout) {
  switch (handle->mmh_type) {
    case MM_POOL_BUDDY:
      require((handle->mmh_status & kInUse) != 0);
      return buddy_reallocate(handle, heap_of_user(handle->mmh_head, *ptr_inout), new_size,
                              ptr_inout);
    case MM_POOL_ALLOCONLY:
    case MM_POOL_UNIFORM:
      return CS_FAIL;
    default:
      stop();
  }
}

MmHandle* find_subpool(const MmHandle* parent, CS_INT tag) {
  MmHandle* child = parent->mmh_child;
  while (child != nullptr && child->mmh_tagid != tag) child = child->mmh_sibling;
  return child;
}

CS_RETCODE get_subpool(MmHandle* parent, CS_INT tag, MmHandle** subpool) {
  MmHandle* const found = find_subpool(parent, tag);
  if (found == nullptr) return com___subpool(parent, tag, subpool);
  *subpool = found;
  return CS_SUCCEED;
}

template <class Value>
CS_RETCODE store(CS_VOID* buffer, Value value) {
  static_assert(sizeof value == sizeof(CS_INT) || std::is_pointer_v<Value>);
  check_pointer(buffer);
  std::memcpy(buffer, &value, sizeof value);
  return CS_SUCCEED;
}

CS_RETCODE get_property(MmHandle* handle, CS_INT property, CS_VOID* buffer, CS_INT buflen) {
  const MmPoolHead* const head = handle->mmh_head;
  switch (property) {
    case MM_PROP_POOLTYPE:
      return store(buffer, handle->mmh_type);
    case MM_PROP_BLOCKSIZE:
      return store(buffer, handle->mmh_blocksize);
    case MM_PROP_SBREAK:
      return store(buffer, head->mph_sbreak);
    case MM_PROP_UNSBREAK:
      return store(buffer, head->mph_unsbreak);
    case MM_PROP_LOCK:
      return store(buffer, head->mph_lock);
    case MM_PROP_UNLOCK:
      return store(buffer, head->mph_unlock);
    case MM_PROP_SBREAKARG:
    case MM_PROP_LOCKARG:
      return CS_SUCCEED;  // a get of an argument writes nothing
    case MM_PROP_CHUNKSIZE:
      return store(buffer, head->mph_chunksize);
    case MM_PROP_MAXSIZE:
      return store(buffer, head->mph_maxsize);
    case MM_PROP_SUBPOOL: {
      check_pointer(buffer);
      MmHandle* subpool = nullptr;
      const CS_RETCODE result = get_subpool(handle, buflen, &subpool);
      return result == CS_SUCCEED ? store(buffer, subpool) : result;
    }
    default:  // MM_PROP_ADDMEMORY
      stop();
  }
}

CS_INT number_at(const CS_VOID* buffer) {
  check_pointer(buffer);
  CS_INT value = 0;
  std::memcpy(&value, buffer, sizeof value);
  return value;
}

CS_INT size_at(const CS_VOID* buffer) {
  const CS_INT size = number_at(buffer);
  require(size >= 1);
  return size;
}

CS_INT discipline_at(const CS_VOID* buffer) {
  const CS_INT type = number_at(buffer);
  require(type >= MM_POOL_NONE && type <= MM_POOL_UNIFORM);
  return type;
}

CS_RETCODE set_discipline(MmHandle* handle, CS_INT type) {
  if ((handle->mmh_status & kInUse) != 0) return CS_FAIL;
  handle->mmh_type = type;
  return CS_SUCCEED;
}

CS_RETCODE set_blocksize(MmHandle* handle, CS_INT size) {
  if ((handle->mmh_status & kInUse) != 0) return CS_FAIL;
  handle->mmh_blocksize = size;
  return CS_SUCCEED;
}

CS_RETCODE set_lock(MmPoolHead* head, MM_LOCK_FUNC lock) {
  if (head->mph_lock != nullptr) return CS_FAIL;
  head->mph_lock = lock;
  return CS_SUCCEED;
}

// A function is passed as the buffer itself.
template <class Function>
Function function_in(CS_VOID* buffer, CallSite site = CallSite::current()) {
  check_pointer(buffer, site);
  return reinterpret_cast<Function>(buffer);
}

CS_RETCODE set_property(MmHandle* handle, CS_INT property, CS_VOID* buffer, CS_INT buflen) {
  MmPoolHead* const head = handle->mmh_head;
  switch (property) {
    case MM_PROP_POOLTYPE:
      return set_discipline(handle, discipline_at(buffer));
    case MM_PROP_BLOCKSIZE:
      return set_blocksize(handle, size_at(buffer));
    case MM_PROP_LOCK:
      return set_lock(head, function_in<MM_LOCK_FUNC>(buffer));
    case MM_PROP_SBREAK:
      head->mph_sbreak = function_in<MM_SBREAK_FUNC>(buffer);
      return CS_SUCCEED;
    case MM_PROP_UNSBREAK:
      head->mph_unsbreak = function_in<MM_UNSBREAK_FUNC>(buffer);
      return CS_SUCCEED;
    case MM_PROP_UNLOCK:
      head->mph_unlock = function_in<MM_UNLOCK_FUNC>(buffer);
      return CS_SUCCEED;
    case MM_PROP_SBREAKARG:
      head->mph_param = buffer;
      return CS_SUCCEED;
    case MM_PROP_LOCKARG:
      head->mph_lockarg = buffer;
      return CS_SUCCEED;
    case MM_PROP_CHUNKSIZE:
      head->mph_chunksize = size_at(buffer);
      return CS_SUCCEED;
    case MM_PROP_MAXSIZE:
      head->mph_maxsize = size_at(buffer);
      return CS_SUCCEED;
    case MM_PROP_ADDMEMORY:
      check_pointer(buffer);
      return com___addheap(handle, buffer, buflen, kHeapOfCaller);
    default:  // MM_PROP_SUBPOOL
      return CS_FAIL;
  }
}

// Clears the whole lock. The unlock function is called even where there was no lock function. A
// mutex that the pool made belongs to its create_mutex_fn from here on.
CS_RETCODE clear_lock(MmHandle* handle) {
  MmPoolHead* const head = handle->mmh_head;
  head->mph_lock = nullptr;
  const CS_RETCODE result =
      head->mph_unlock == nullptr ? CS_SUCCEED : head->mph_unlock(handle, head->mph_lockarg);
  head->mph_unlock = nullptr;
  head->mph_lockarg = nullptr;
  head->mph_status &= ~kOwnMutex;
  return result;
}

// Bytes of a property's value: those of a number or of an address.
constexpr CS_INT length_of(CS_INT property) {
  const bool number = property == MM_PROP_POOLTYPE || property == MM_PROP_CHUNKSIZE ||
                      property == MM_PROP_MAXSIZE || property == MM_PROP_CTLSIZE ||
                      property == MM_PROP_BLOCKSIZE;
  return number ? sizeof(CS_INT) : sizeof(CS_VOID*);
}

CS_RETCODE control_size(CS_INT action, CS_VOID* buffer) {
  require(action != CS_CLEAR);
  return action == CS_GET ? store(buffer, CS_INT{MM_CTL_SIZE}) : CS_FAIL;
}

CS_RETCODE property_under_lock(MmHandle* mmh, CS_INT action, CS_INT property, CS_VOID* buffer,
                               CS_INT buflen) {
  const CS_RETCODE locked = lock(mmh);
  if (locked != CS_SUCCEED) return locked;
  if (action == CS_CLEAR) {
    require(property >= MM_PROP_LOCK && property <= MM_PROP_UNLOCK);
    return clear_lock(mmh);
  }
  const CS_RETCODE result = action == CS_GET ? get_property(mmh, property, buffer, buflen)
                                             : set_property(mmh, property, buffer, buflen);
  // The lock that has just been set is not taken.
  const bool lock_set = action == CS_SET && property == MM_PROP_LOCK && result == CS_SUCCEED;
  if (!lock_set) unlock(mmh);
  return result;
}

MmHandle* top_of(MmHandle* handle) {
  while (handle->mmh_parent != nullptr) handle = handle->mmh_parent;
  return handle;
}

}  // namespace

CS_RETCODE comn_mminit(CS_CONTEXT* ctx, MmHandle** mmh) {
  check_pointer(ctx);
  check_pointer(mmh);
  require(ctx->ctxversion >= kContextVersion);
  MmHandle* const handle = new_pool(ctx, *mmh);
  if (handle == nullptr) return trace(CS_FAIL);
  MmPoolHead* const head = handle->mmh_head;
  head->mph_ctx = ctx;
  head->mph_param = ctx;
  head->mph_sbreak = context_sbreak;
  head->mph_unsbreak = context_unsbreak;
  const CS_RETCODE result = install_context_lock(head);
  if (result != CS_SUCCEED) {
    release_control(handle);
    return trace(result);
  }
  *mmh = handle;
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_mmmanage(CS_VOID* buffer, CS_INT buflen, MmHandle** mmh) {
  check_pointer(buffer);
  check_pointer(mmh);
  auto* area = reinterpret_cast<ControlArea*>(*mmh);
  if (area != nullptr) {
    set_defaults(&area->head, &area->handle, kHeadOfCaller, kHandleOfCaller);
    com___addheap(&area->handle, buffer, buflen, kHeapOfCaller);
    *mmh = &area->handle;
    return trace(CS_SUCCEED);
  }
  if (buflen < kLeastManaged) return trace(CS_FAIL);
  const CS_INT rest = buflen - MM_CTL_SIZE;
  require(rest == 0 || rest >= kLeastHeap);  // before anything is written beyond a short buffer
  area = static_cast<ControlArea*>(buffer);
  set_defaults(&area->head, &area->handle, kHeadAllocated, kHandleAllocated);
  if (rest != 0) com___addheap(&area->handle, area + 1, rest, kHeapOfCaller);
  *mmh = &area->handle;
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_mmalloc(MmHandle* handle, CS_INT size, CS_VOID** out_ptr) {
  check_handle(handle);
  check_pointer(out_ptr);
  require(size >= 0);
  if (handle->mmh_head->mph_lock != nullptr)
    return kLockedApart ? apart<allocate_locked>(handle, size, out_ptr)
                        : allocate_locked(handle, size, out_ptr);
  if (void* const memory = take(handle, size)) return hand_out(memory, size, out_ptr);
  return trace(allocate_and_unlock(handle, size, out_ptr));
}

CS_RETCODE comn_mmfree(MmHandle* handle, CS_VOID* ptr) {
  const CS_BYTE status = check_handle(handle);
  check_pointer(ptr);
  require((status & kInUse) != 0);
  if (handle->mmh_head->mph_lock != nullptr)
    return kLockedApart ? apart<free_locked>(handle, ptr) : free_locked(handle, ptr);
  return trace(free_one(handle, ptr));
}

CS_RETCODE comn_mmrealloc(MmHandle* handle, CS_INT new_size, CS_VOID** ptr_inout) {
  check_handle(handle);
  check_pointer(ptr_inout);
  require(new_size >= 0);
  const CS_RETCODE locked = lock(handle);
  if (locked != CS_SUCCEED) return trace(locked);
  const CS_RETCODE result = reallocate(handle, new_size, ptr_inout);
  unlock(handle);
  return trace(result);
}

CS_RETCODE comn_mmproperty(MmHandle* mmh, CS_INT action, CS_INT property, CS_VOID* buffer,
                           CS_INT buflen, CS_INT* outlen) {
  check_handle(mmh);
  require(action == CS_GET || action == CS_SET || action == CS_CLEAR);
  require(property >= MM_PROP_POOLTYPE && property <= MM_PROP_BLOCKSIZE);
  const CS_RETCODE result = property == MM_PROP_CTLSIZE
                                ? control_size(action, buffer)
                                : property_under_lock(mmh, action, property, buffer, buflen);
  if (action == CS_GET && result == CS_SUCCEED && outlen != nullptr) *outlen = length_of(property);
  return trace(result);
}

CS_RETCODE comn_mmdrop(MmHandle* mmh, CS_INT option) {
  check_handle(mmh);
  require(option == MM_FORCE_DROP || option == CS_UNUSED);
  const CS_RETCODE locked = lock(mmh);
  if (locked != CS_SUCCEED) return trace(locked);
  assert(com__mm_validate(mmh) == CS_SUCCEED);
  if (option == MM_FORCE_DROP) return trace(com___remove_pool(top_of(mmh)));
  if (mmh->mmh_child != nullptr) {
    unlock(mmh);
    return trace(CS_BUSY);
  }
  MmHandle* const parent = mmh->mmh_parent;
  if (parent == nullptr) return trace(com___remove_pool(mmh));
  const CS_RETCODE result = com___remove_subpool(mmh);
  unlock(parent);
  return trace(result);
}

CS_RETCODE comn_mmdiag() {
  stop();
}

CS_RETCODE com___subpool(MmHandle* parent, CS_INT tag, MmHandle** subpool) {
  void* memory = nullptr;
  const CS_RETCODE result = com___getheap(parent, sizeof(MmHandle), &memory);
  if (result != CS_SUCCEED) return trace(result);
  std::memset(memory, 0, sizeof(MmHandle));
  auto* child = static_cast<MmHandle*>(memory);
  child->mmh_head = parent->mmh_head;
  child->mmh_type = parent->mmh_type;
  child->mmh_blocksize = parent->mmh_blocksize;
  child->mmh_status = kHandleAllocated;
  child->mmh_tagid = tag;
  child->mmh_parent = parent;
  child->mmh_sibling = parent->mmh_child;
  parent->mmh_child = child;
  *subpool = child;
  return trace(CS_SUCCEED);
}

CS_RETCODE com___remove_subpool(MmHandle* handle) {
  require(handle->mmh_parent != nullptr && handle->mmh_child == nullptr);
  MmHandle* const parent = handle->mmh_parent;
  MmHandle* const before = predecessor(parent->mmh_child, handle,
                                       [](const MmHandle* item) { return item->mmh_sibling; });
  if (before == nullptr) {
    parent->mmh_child = handle->mmh_sibling;
  } else {
    before->mmh_sibling = handle->mmh_sibling;
  }

  for (MmBlock *block = handle->mmh_blocks, *next = nullptr; block != nullptr; block = next) {
    next = block->next;
    com___putheap(parent, block);
  }
  std::memset(static_cast<void*>(handle), 0, sizeof *handle);
  return trace(com___putheap(parent, handle));
}

CS_RETCODE com___remove_pool(MmHandle* handle) {
  MmPoolHead* const head = handle->mmh_head;
  head->mph_status |= kRemoving;
  for (MmHeap *heap = head->mph_heap, *next = nullptr; heap != nullptr; heap = next) {
    next = heap->next;
    if (heap->status == kHeapObtained && head->mph_unsbreak != nullptr)
      head->mph_unsbreak(handle, head->mph_param, heap);
  }
  unlock(handle);
  delete_own_mutex(head);
  release_control(handle);
  return trace(CS_SUCCEED);
}
