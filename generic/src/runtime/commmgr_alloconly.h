// The alloc-only discipline: regions that are handed out from front to back and given back only
// with their pool. The per-block fast path is defined here so that the entry point inlines it.
#pragma once

#include "runtime/commmgr.h"

namespace comnlib::mm {

struct AllocOnlyRegion {
  MM_WORD(CS_INT, size);  // from the cursor to the region's end
  AllocOnlyRegion* next;
  CS_BYTE* cursor;
} MM_OVERLAY;
static_assert(sizeof(AllocOnlyRegion) <= kRegionHeader);

// Puts a new region with room for `size` bytes in front of the others.
CS_RETCODE alloconly_add_region(MmHandle* handle, CS_INT size);

inline CS_RETCODE alloconly_allocate(MmHandle* handle, CS_INT size, CS_VOID** out) {
  MmAllocOnlyPool& pool = handle->mmh_pool.alloconly;
  if ((handle->mmh_status & kInUse) == 0) pool.free = nullptr;
  if (size > kMaxRequest) return CS_MEM_ERROR;
  const CS_INT rounded = round_to_word(size);
  auto* region = static_cast<AllocOnlyRegion*>(pool.free);
  while (region != nullptr && region->size < rounded) region = region->next;
  if (region == nullptr) [[unlikely]] {
    const CS_RETCODE result = alloconly_add_region(handle, rounded);
    if (result != CS_SUCCEED) return result;
    region = static_cast<AllocOnlyRegion*>(pool.free);
  }
  *out = region->cursor;
  region->cursor += rounded;
  region->size -= rounded;
  return CS_SUCCEED;
}

}  // namespace comnlib::mm
