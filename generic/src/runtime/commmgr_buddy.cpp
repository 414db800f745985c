// The buddy discipline, in three rules: a request takes a block of the smallest order that holds it
// and its header word; a block of order k is half of one of order k + 1 and is made by splitting
// that; freed blocks are merged with their other half only when splitting finds none.
//
// Every buddy block starts with its header word. The list of order k holds the free blocks of that
// order, last freed first.
#include <algorithm>
#include <cstring>

#include "runtime/commmgr_buddy.h"

using namespace comnlib;
using namespace comnlib::mm;

namespace {

constexpr CS_INT highest_order(CS_INT blocksize) {
  return std::clamp(floor_log2(static_cast<CS_UINT>(std::max(blocksize, 2)) - 1) - (kMinShift - 1),
                    0, kMaxOrder + 1);
}
static_assert(highest_order(span_of(8)) == 8 && highest_order(span_of(8) + 2) == 9);
static_assert(highest_order(span_of(0)) == 0 && highest_order(span_of(kMaxOrder)) == kMaxOrder);
static_assert(highest_order(span_of(kMaxOrder) + 1) == 16 && highest_order(1 << 30) == 16);

// What the lists of orders that the pool does not have hold.
MmDList* no_list() {
  return reinterpret_cast<MmDList*>(~std::uintptr_t{0});
}

// The block size becomes that of a top-level block plus a word: a reallocation copies as many bytes
// as the capacity says, and for the last buddy these end a word after it.
void set_up(MmHandle* handle) {
  MmBuddyPool& pool = handle->mmh_pool.buddy;
  pool.bpmax = highest_order(handle->mmh_blocksize);
  handle->mmh_blocksize = span_of(pool.bpmax) + kWord;
  for (CS_INT order = 0; order <= kMaxOrder; ++order)
    pool.free[order] = order <= pool.bpmax ? nullptr : no_list();
}

void unlink(MmBuddyPool& pool, MmDList* block, CS_INT order) {
  if (block->prev == nullptr) {
    pool.free[order] = block->next;
  } else {
    block->prev->next = block->next;
  }
  if (block->next != nullptr) block->next->prev = block->prev;
}

CS_UINT with_order(CS_UINT header, CS_INT order) {
  return (header & ~kOrderMask) | static_cast<CS_UINT>(order);
}

// The requested size of a large block. The heap gave hardly more than that, after the handle's
// link; anything else is not a large block.
CS_INT size_of_large(const MmDList* block) {
  const auto size = static_cast<CS_INT>(block->size & ~kLarge);
  const auto* in_heap = at<MmList>(block, -kBlockLink - kWord);
  const std::int64_t room = std::int64_t{in_heap->size} - kBlockLink - kWord;
  require(size <= room && room - size < 3 * kWord);
  return size;
}

MmDList* buddy_of(MmDList* block) {
  const CS_INT order = order_of(block->size);
  const CS_UINT index = offset_in_top(block, block->size) >> (order + kMinShift);
  return at<MmDList>(block, index % 2 == 1 ? -span_of(order) : span_of(order));
}

// Merges the free pairs of one order; returns whether there was any.
bool merge_pairs(MmBuddyPool& pool, CS_INT order) {
  constexpr CS_UINT kSameTop = ~(kFree | kOrderMask);
  bool merged = false;
  for (MmDList *block = pool.free[order], *next = nullptr; block != nullptr; block = next) {
    next = block->next;
    require(plausible(pool, block, block->size) && order_of(block->size) == order);
    MmDList* const buddy = buddy_of(block);
    require((buddy->size & kSameTop) == (block->size & kSameTop));
    require(order_of(buddy->size) <= order_of(block->size));
    if (buddy->size != block->size) continue;

    if (next == buddy) next = buddy->next;
    unlink(pool, block, order);
    unlink(pool, buddy, order);
    MmDList* const lower = std::min(block, buddy);
    lower->size = with_order(lower->size, order + 1);
    push(pool, lower, order + 1);
    merged = true;
  }
  return merged;
}

bool compact(MmBuddyPool& pool, CS_INT order) {
  bool merged = false;
  for (CS_INT j = 0; j < order; ++j) merged |= merge_pairs(pool, j);
  return merged;
}

CS_RETCODE add_top_level(MmHandle* handle) {
  MmBuddyPool& pool = handle->mmh_pool.buddy;
  void* memory = nullptr;
  const CS_RETCODE result = com___getblock(handle, handle->mmh_blocksize, &memory);
  if (result != CS_SUCCEED) return result;
  const CS_INT order = top_order(pool);
  // The lowest block enters last, to be taken first.
  for (CS_INT offset = span_of(pool.bpmax); offset > 0;) {
    offset -= span_of(order);
    auto* top = at<MmDList>(memory, offset);
    const CS_UINT mark = (static_cast<CS_UINT>(address(top)) & kAddressMask) << kMarkShift;
    top->size = with_order(mark | kFree, order);
    push(pool, top, order);
  }
  return CS_SUCCEED;
}

// Tries to put a block on the empty list of `order`. Compaction may succeed without one: it
// succeeds with any merged pair.
CS_RETCODE replenish(MmHandle* handle, CS_INT order) {
  MmBuddyPool& pool = handle->mmh_pool.buddy;
  if (com___buddy_split(handle, order) == CS_SUCCEED) return CS_SUCCEED;
  if (compact(pool, order)) return CS_SUCCEED;
  const CS_RETCODE result = add_top_level(handle);
  if (result == CS_SUCCEED && order < top_order(pool))
    require(com___buddy_split(handle, order) == CS_SUCCEED);
  return result;
}

CS_RETCODE allocate_large(MmHandle* handle, CS_INT size, CS_VOID** out) {
  if (size > kMaxRequest) return CS_MEM_ERROR;
  void* memory = nullptr;
  const CS_RETCODE result = com___getblock(handle, size + kWord, &memory);
  if (result != CS_SUCCEED) return result;
  auto* block = static_cast<MmDList*>(memory);
  block->size = static_cast<CS_UINT>(size) | kLarge;
  *out = at<void>(block, kWord);
  return CS_SUCCEED;
}

}  // namespace

CS_RETCODE com___buddy_split(MmHandle* handle, CS_INT order) {
  MmBuddyPool& pool = handle->mmh_pool.buddy;
  CS_INT from = order + 1;
  while (from <= top_order(pool) && pool.free[from] == nullptr) ++from;
  if (from > top_order(pool)) return trace(CS_FAIL);
  for (; from > order; --from) {
    MmDList* const lower = pop(pool, from);
    auto* upper = at<MmDList>(lower, span_of(from - 1));
    lower->size = with_order(lower->size, from - 1);
    upper->size = lower->size;
    push(pool, upper, from - 1);
    push(pool, lower, from - 1);
  }
  return trace(CS_SUCCEED);
}

CS_RETCODE mm::buddy_allocate(MmHandle* handle, CS_INT size, CS_VOID** out) {
  if ((handle->mmh_status & kInUse) == 0) set_up(handle);
  MmBuddyPool& pool = handle->mmh_pool.buddy;
  const CS_INT order = order_for(size);
  if (order > top_order(pool)) return allocate_large(handle, size, out);
  if (pool.free[order] == nullptr) {
    const CS_RETCODE result = replenish(handle, order);
    if (pool.free[order] == nullptr) return result;
  }
  *out = pop_for_user(pool, order);
  return CS_SUCCEED;
}

CS_RETCODE mm::buddy_free_large(MmHandle* handle, MmDList* block) {
  // No longer large; the free bit makes freeing it again stop.
  block->size = static_cast<CS_UINT>(size_of_large(block)) | kFree;
  return com___putblock(handle, block);
}

CS_RETCODE mm::buddy_reallocate(MmHandle* handle, const MmHeap* heap, CS_INT new_size,
                                CS_VOID** ptr_inout) {
  const auto* block = at<MmDList>(*ptr_inout, -kWord);
  const bool large = (block->size & kLarge) != 0;
  require(large ||
          ((block->size & kFree) == 0 && plausible(handle->mmh_pool.buddy, block, block->size)));
  // For a buddy block the header word counts as capacity too; callers depend on when a block moves.
  const CS_INT capacity = large ? size_of_large(block) : span_of(order_of(block->size));
  if (new_size <= capacity) return CS_SUCCEED;

  require(capacity <= heap->size - static_cast<CS_INT>(address(*ptr_inout) - address(heap)));
  void* moved = nullptr;
  const CS_RETCODE result = buddy_allocate(handle, new_size, &moved);
  if (moved == nullptr) return result;
  std::memcpy(moved, *ptr_inout, static_cast<std::size_t>(capacity));
  const CS_RETCODE freed = buddy_free(handle, *ptr_inout);
  *ptr_inout = moved;
  return freed;
}
