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

// Cuts bytes off the front of a region, which must have that many.
inline void* alloconly_cut(AllocOnlyRegion* region, CS_INT size) {
  CS_BYTE* const bytes = region->cursor;
  region->cursor = bytes + size;
  region->size -= size;
  return bytes;
}

// Bytes from the first region that has enough; null when the slow path has to decide.
inline void* alloconly_take(MmHandle* handle, CS_INT size) {
  if ((handle->mmh_status & kInUse) == 0 || size > kMaxRequest) return nullptr;
  const CS_INT rounded = round_to_word(size);
  auto* region = static_cast<AllocOnlyRegion*>(handle->mmh_pool.alloconly.free);
  while (region != nullptr && region->size < rounded) region = region->next;
  return region == nullptr ? nullptr : alloconly_cut(region, rounded);
}

// The slow path: a further region, in front of the others.
CS_RETCODE alloconly_allocate(MmHandle* handle, CS_INT size, CS_VOID** out);

}  // namespace comnlib::mm
