// Heaps: chunks with address-ordered free lists, first fit, merged on free; and the list of blocks
// that each handle took from them. Free blocks of a heap never touch one another.
#include <algorithm>

#include "runtime/commmgr_index.h"

using namespace comnlib;
using namespace comnlib::mm;

namespace {

MmList* end_of(MmList* block) {
  return at<MmList>(block, kWord + block->size);
}

// What stays on the free list in place of `block` when its first `size` bytes are handed out: the
// rest, or its successor when there is no rest. A rest too short for a link is made only at the
// end of its heap, where nothing follows; elsewhere the caller gets it along with the block.
MmList* split(const MmHeap* heap, MmList* block, CS_INT size) {
  MmList* const next = link_of(block);
  const CS_INT rest_size = block->size - size - kWord;
  if (rest_size < 0) return next;
  const bool last = address(end_of(block)) == address(heap) + static_cast<CS_UINT>(heap->size);
  if (rest_size < kWord && !last) return next;

  auto* rest = at<MmList>(block, kWord + size);
  rest->size = rest_size;
  if (rest_size >= kWord) rest->link = next;
  block->size = size;
  return rest;
}

// Makes `block` the successor of `before`, or the first when that is null.
void set_successor(MmHeap* heap, MmList* before, MmList* block) {
  if (before == nullptr) {
    heap->free = block;
  } else {
    before->link = block;
  }
}

// First fit in one heap; null when nothing fits.
void* take_from(MmHeap* heap, CS_INT size) {
  MmList* before = nullptr;
  for (MmList* block = heap->free; block != nullptr; before = block, block = link_of(block)) {
    if (block->size < size) continue;
    set_successor(heap, before, split(heap, block, size));
    return at<void>(block, kWord);
  }
  return nullptr;
}

void* take_from_any(const MmPoolHead* head, CS_INT size) {
  for (MmHeap* heap = head->mph_heap; heap != nullptr; heap = heap->next) {
    if (heap->size < size) continue;
    if (void* user = take_from(heap, size)) return user;
  }
  return nullptr;
}

bool within_limit(const MmPoolHead* head, CS_INT size) {
  return head->mph_maxsize == MM_NO_LIMIT ||
         std::int64_t{head->mph_totalsize} + size <= head->mph_maxsize;
}

bool wholly_free(const MmHeap* heap) {
  return heap->free != nullptr && heap->free->size == heap->size - kHeapOverhead;
}

void give_back(MmHandle* handle, MmHeap* heap) {
  MmPoolHead* const head = handle->mmh_head;
  Chunks::remove(head, heap);
  head->mph_unsbreak(handle, head->mph_param, heap);
}

// Lets `block` absorb its successor on the list when it ends where that starts.
void merge_with_next(MmList* block) {
  MmList* const next = link_of(block);
  if (next == nullptr || end_of(block) != next) return;
  MmList* const after = link_of(next);
  block->size += kWord + next->size;
  block->link = after;
}

}  // namespace

CS_RETCODE com___addheap(MmHandle* handle, CS_VOID* memory, CS_INT length, CS_INT status) {
  require(length >= kLeastHeap);
  MmPoolHead* const head = handle->mmh_head;
  // The sum only ever grows; at the largest number it stays.
  head->mph_totalsize = static_cast<CS_INT>(std::min<std::int64_t>(
      std::int64_t{head->mph_totalsize} + length, std::numeric_limits<CS_INT>::max()));
  if (length < kHeapHeader) return trace(CS_SUCCEED);  // counted, but of no use

  auto* heap = static_cast<MmHeap*>(memory);
  heap->size = length;
  heap->status = status;
  heap->free = nullptr;
  Chunks::add(head, heap);
  if (length < kHeapOverhead + kWord) return trace(CS_SUCCEED);  // no room for a linkable block

  heap->free = at<MmList>(heap, kHeapHeader);
  heap->free->size = length - kHeapOverhead;
  heap->free->link = nullptr;
  return trace(CS_SUCCEED);
}

CS_RETCODE com___sbreak(MmHandle* handle, CS_INT size) {
  const MmPoolHead* const head = handle->mmh_head;
  if (head->mph_sbreak == nullptr || !within_limit(head, size)) return trace(CS_FAIL);
  void* const chunk = head->mph_sbreak(handle, head->mph_param, size);
  if (chunk == nullptr) return trace(CS_FAIL);
  return trace(com___addheap(handle, chunk, size, kHeapObtained));
}

CS_RETCODE com___getheap(MmHandle* handle, CS_INT size, CS_VOID** out) {
  require(size >= 0);
  if (size > kMaxRequest) return trace(CS_MEM_ERROR);
  // A block needs room for its link once it is free.
  const CS_INT rounded = std::max(round_to_word(size), kWord);
  const MmPoolHead* const head = handle->mmh_head;
  void* user = take_from_any(head, rounded);
  if (user == nullptr) {
    const CS_INT chunk = std::max(rounded + kHeapOverhead, head->mph_chunksize);
    if (com___sbreak(handle, chunk) != CS_SUCCEED) return trace(CS_MEM_ERROR);
    user = take_from_any(head, rounded);
  }
  *out = user;
  return trace(CS_SUCCEED);
}

CS_RETCODE com___insert_block(MmHeap* heap, MmList* block) {
  MmList* before = nullptr;
  MmList* next = heap->free;
  while (next != nullptr && address(next) < address(block)) {
    before = next;
    next = link_of(next);
  }
  require(next != block);  // freed twice
  require(next == nullptr || address(end_of(block)) <= address(next));
  require(before == nullptr || address(end_of(before)) <= address(block));

  set_successor(heap, before, block);
  block->link = next;
  merge_with_next(block);
  if (before != nullptr) merge_with_next(before);
  return trace(CS_SUCCEED);
}

CS_RETCODE com___putheap(MmHandle* handle, CS_VOID* ptr) {
  auto* block = at<MmList>(ptr, -kWord);
  MmHeap* const heap = Chunks::find(handle->mmh_head, block);
  require(heap != nullptr);
  const auto offset = static_cast<CS_INT>(address(block) - address(heap));
  require(offset >= kHeapHeader && offset % kWord == 0);
  require(block->size >= kWord && block->size <= heap->size - offset - kWord);
  com___insert_block(heap, block);
  // Without a routine that takes it back the chunk stays, although all of it is free.
  if (heap->status == kHeapObtained && wholly_free(heap) &&
      handle->mmh_head->mph_unsbreak != nullptr)
    give_back(handle, heap);
  return trace(CS_SUCCEED);
}

CS_RETCODE com___getblock(MmHandle* handle, CS_INT size, CS_VOID** out) {
  require(size >= 0);
  if (size > kMaxRequest) return trace(CS_MEM_ERROR);
  void* memory = nullptr;
  const CS_RETCODE result = com___getheap(handle, size + kBlockLink, &memory);
  if (result != CS_SUCCEED) return trace(result);
  auto* block = static_cast<MmBlock*>(memory);
  Blocks::add(handle, block);
  *out = block + 1;
  return trace(CS_SUCCEED);
}

CS_RETCODE com___putblock(MmHandle* handle, CS_VOID* ptr) {
  MmBlock* const block = static_cast<MmBlock*>(ptr) - 1;
  Blocks::remove(handle, block);
  return trace(com___putheap(handle, block));
}
