// The memory manager's invariants, checked by walking everything that a family owns.
#include "runtime/commmgr_buddy.h"
#include "runtime/commmgr_index.h"

using namespace comnlib;
using namespace comnlib::mm;

namespace {

// Free blocks ascend, do not touch, and lie inside the heap; only the last may be too short to
// link.
bool valid_heap(const MmHeap* heap) {
  const std::uintptr_t end = address(heap) + static_cast<CS_UINT>(heap->size);
  std::uintptr_t before = address(heap) + kHeapHeader - 1;
  for (const MmList* block = heap->free; block != nullptr; block = link_of(block)) {
    if (!aligned(heap, block) || address(block) <= before || block->size < 0) return false;
    before = address(block) + kWord + static_cast<CS_UINT>(block->size);
    if (before > end || (block->size < kWord && before != end)) return false;
  }
  return true;
}

bool valid_heaps(const MmPoolHead* head) {
  std::int64_t total = 0;
  for (const MmHeap* heap = head->mph_heap; heap != nullptr; heap = heap->next) {
    if (!valid_heap(heap) || Chunks::find(head, heap->buffer) != heap) return false;
    total += heap->size;
  }
  return total <= head->mph_totalsize;
}

// The heap block that a handle's block came in, or null when it is not one.
const MmList* heap_block_of(const MmPoolHead* head, const MmBlock* block) {
  const MmHeap* const heap = Chunks::find(head, block);
  if (heap == nullptr || !aligned(heap, block)) return nullptr;
  const auto* in_heap = at<MmList>(block, -kWord);
  const auto offset = static_cast<CS_INT>(address(in_heap) - address(heap));
  const bool fits = offset >= kHeapHeader && in_heap->size >= kWord &&
                    in_heap->size <= heap->size - offset - kWord;
  return fits ? in_heap : nullptr;
}

// The buddies of a top-level block follow one another and fill it; counts the free ones by order.
bool valid_top_level(const MmBuddyPool& pool, const MmDList* top, CS_INT (&free_blocks)[16]) {
  const CS_INT span = span_of(pool.bpmax);
  for (CS_INT offset = 0; offset < span;) {
    const CS_UINT header = at<MmDList>(top, offset)->size;
    const CS_INT order = order_of(header);
    const bool valid = (header & ~(kFree | kMarkMask | kOrderMask)) == 0 && order <= pool.bpmax &&
                       offset % span_of(order) == 0 &&
                       offset_in_top(at<MmDList>(top, offset), header) ==
                           static_cast<CS_UINT>(offset % span_of(top_order(pool)));
    if (!valid) return false;
    if ((header & kFree) != 0) ++free_blocks[order];
    offset += span_of(order);
  }
  return true;
}

bool valid_free_list(const MmBuddyPool& pool, CS_INT order, CS_INT expected) {
  const MmDList* before = nullptr;
  for (const MmDList* block = pool.free[order]; block != nullptr; block = block->next) {
    const bool valid = (block->size & (kLarge | kFree)) == kFree &&
                       order_of(block->size) == order && block->prev == before;
    if (!valid || --expected < 0) return false;
    before = block;
  }
  return expected == 0;
}

bool valid_buddies(const MmHandle* handle) {
  const MmBuddyPool& pool = handle->mmh_pool.buddy;
  if (pool.bpmax < 0 || pool.bpmax > kMaxOrder + 1) return false;
  CS_INT free_blocks[16] = {};
  for (const MmBlock* block = handle->mmh_blocks; block != nullptr; block = block->next) {
    const auto* top = at<MmDList>(block, sizeof(MmBlock));
    if ((top->size & kLarge) == 0 && !valid_top_level(pool, top, free_blocks)) return false;
  }
  for (CS_INT order = 0; order <= top_order(pool); ++order)
    if (!valid_free_list(pool, order, free_blocks[order])) return false;
  return true;
}

bool valid_handle(const MmHandle* handle, const MmHandle* parent) {
  if (handle->mmh_parent != parent) return false;
  if (parent != nullptr && handle->mmh_head != parent->mmh_head) return false;
  for (const MmBlock* block = handle->mmh_blocks; block != nullptr; block = block->next)
    if (heap_block_of(handle->mmh_head, block) == nullptr) return false;
  const bool buddies = handle->mmh_type == MM_POOL_BUDDY && (handle->mmh_status & kInUse) != 0;
  if (buddies && !valid_buddies(handle)) return false;
  for (const MmHandle* child = handle->mmh_child; child != nullptr; child = child->mmh_sibling)
    if (!valid_handle(child, handle)) return false;
  return true;
}

}  // namespace

CS_RETCODE com__mm_validate(const MmHandle* handle) {
  while (handle->mmh_parent != nullptr) handle = handle->mmh_parent;
  const bool valid = valid_heaps(handle->mmh_head) && valid_handle(handle, nullptr);
  return valid ? CS_SUCCEED : CS_FAIL;
}
