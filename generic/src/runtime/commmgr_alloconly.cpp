// The alloc-only discipline: regions that are handed out from front to back and given back only
// with their pool. `size` of a region counts the bytes from its cursor to its end.
#include <algorithm>

#include "runtime/commmgr.h"

using namespace comnlib;
using namespace comnlib::mm;

namespace {

struct Region {
  CS_INT size;
  Region* next;
  CS_BYTE* cursor;
} MM_OVERLAY;
static_assert(sizeof(Region) <= kRegionHeader);

Region* find_room(const MmAllocOnlyPool& pool, CS_INT size) {
  auto* region = static_cast<Region*>(pool.free);
  while (region != nullptr && region->size < size) region = region->next;
  return region;
}

CS_RETCODE add_region(MmHandle* handle, CS_INT size) {
  const CS_INT length = std::max(size + kRegionHeader, handle->mmh_blocksize);
  void* memory = nullptr;
  const CS_RETCODE result = com___getblock(handle, length, &memory);
  if (result != CS_SUCCEED) return result;
  auto* region = static_cast<Region*>(memory);
  region->size = length - kRegionHeader;
  region->next = static_cast<Region*>(handle->mmh_pool.alloconly.free);
  region->cursor = at<CS_BYTE>(region, kRegionHeader);
  handle->mmh_pool.alloconly.free = region;
  return CS_SUCCEED;
}

}  // namespace

CS_RETCODE mm::alloconly_allocate(MmHandle* handle, CS_INT size, CS_VOID** out) {
  MmAllocOnlyPool& pool = handle->mmh_pool.alloconly;
  if ((handle->mmh_status & kInUse) == 0) pool.free = nullptr;
  if (size > kMaxRequest) return CS_MEM_ERROR;
  const CS_INT rounded = round_to_word(size);
  Region* region = find_room(pool, rounded);
  if (region == nullptr) {
    const CS_RETCODE result = add_region(handle, rounded);
    if (result != CS_SUCCEED) return result;
    region = static_cast<Region*>(pool.free);
  }
  *out = region->cursor;
  region->cursor += rounded;
  region->size -= rounded;
  return CS_SUCCEED;
}
