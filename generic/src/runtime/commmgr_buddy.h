// The buddy discipline's fast paths, defined here so that the entry points inline them, and what
// they share with the slow ones.
#pragma once

#include <algorithm>
#include <bit>

#include "runtime/commmgr.h"

namespace comnlib::mm {

constexpr CS_INT floor_log2(CS_UINT value) {
  return static_cast<CS_INT>(std::bit_width(value)) - 1;
}

// The smallest order whose block holds `size` bytes and the header word; beyond every pool's
// highest order for large ones.
constexpr CS_INT order_for(CS_INT size) {
  const CS_INT held = std::max(size, span_of(0) - kWord);
  return floor_log2(static_cast<CS_UINT>(held) + kWord - 1) - (kMinShift - 1);
}
static_assert(order_for(0) == 0 && order_for(3 * kWord) == 0);
static_assert(order_for(3 * kWord + 1) == 1 && order_for(7 * kWord) == 1);
static_assert(order_for(7 * kWord + 1) == 2 && order_for(15 * kWord) == 2);

inline void push(MmBuddyPool& pool, MmDList* block, CS_INT order) {
  MmDList* const first = pool.free[order];
  block->next = first;
  block->prev = nullptr;
  if (first != nullptr) first->prev = block;
  pool.free[order] = block;
}

inline MmDList* pop(MmBuddyPool& pool, CS_INT order) {
  MmDList* const block = pool.free[order];
  require((block->size & (kLarge | kFree | kOrderMask)) == (kFree | static_cast<CS_UINT>(order)));
  pool.free[order] = block->next;
  if (block->next != nullptr) block->next->prev = nullptr;
  return block;
}

inline void* pop_for_user(MmBuddyPool& pool, CS_INT order) {
  MmDList* const block = pop(pool, order);
  block->size &= ~kFree;
  return at<void>(block, kWord);
}

// Whether a header that is not of a large block can belong to a block at this address.
inline bool plausible(const MmBuddyPool& pool, const MmDList* block, CS_UINT header) {
  const CS_UINT offset = offset_in_top(block, header);
  const CS_INT order = order_of(header);
  return (header & ~(kFree | kMarkMask | kOrderMask)) == 0 && order <= pool.bpmax &&
         offset < static_cast<CS_UINT>(span_of(top_order(pool))) &&
         (offset & static_cast<CS_UINT>(span_of(order) - 1)) == 0;
}

// A block from the list of its order; null when the slow path has to decide.
inline void* buddy_take(MmHandle* handle, CS_INT size) {
  if ((handle->mmh_status & kInUse) == 0) [[unlikely]]
    return nullptr;
  MmBuddyPool& pool = handle->mmh_pool.buddy;
  const CS_INT order = order_for(size);
  if (order > top_order(pool) || pool.free[order] == nullptr) return nullptr;
  return pop_for_user(pool, order);
}

// The slow paths. `buddy_allocate` does not change `out` when it hands out nothing.
CS_RETCODE buddy_allocate(MmHandle* handle, CS_INT size, CS_VOID** out);
CS_RETCODE buddy_free_large(MmHandle* handle, MmDList* block);
CS_RETCODE buddy_reallocate(MmHandle* handle, const MmHeap* heap, CS_INT new_size,
                            CS_VOID** ptr_inout);

inline CS_RETCODE buddy_free(MmHandle* handle, CS_VOID* ptr) {
  MmBuddyPool& pool = handle->mmh_pool.buddy;
  auto* block = at<MmDList>(ptr, -kWord);
  const CS_UINT header = block->size;
  if ((header & kLarge) != 0) return buddy_free_large(handle, block);
  // A block that is free already was freed twice.
  require((header & kFree) == 0 && plausible(pool, block, header));
  block->size = header | kFree;
  push(pool, block, order_of(header));
  return CS_SUCCEED;
}

}  // namespace comnlib::mm
