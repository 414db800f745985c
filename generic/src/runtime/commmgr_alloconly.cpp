// The alloc-only discipline's slow path: a further region.
#include "runtime/commmgr_alloconly.h"

#include <algorithm>

using namespace comnlib;
using namespace comnlib::mm;

CS_RETCODE mm::alloconly_allocate(MmHandle* handle, CS_INT size, CS_VOID** out) {
  MmAllocOnlyPool& pool = handle->mmh_pool.alloconly;
  if ((handle->mmh_status & kInUse) == 0) pool.free = nullptr;
  if (size > kMaxRequest) return CS_MEM_ERROR;
  const CS_INT rounded = round_to_word(size);
  const CS_INT length = std::max(rounded + kRegionHeader, handle->mmh_blocksize);
  void* memory = nullptr;
  const CS_RETCODE result = com___getblock(handle, length, &memory);
  if (result != CS_SUCCEED) return result;
  auto* region = static_cast<AllocOnlyRegion*>(memory);
  region->size = length - kRegionHeader;
  region->next = static_cast<AllocOnlyRegion*>(pool.free);
  region->cursor = at<CS_BYTE>(region, kRegionHeader);
  pool.free = region;
  *out = alloconly_cut(region, rounded);
  return CS_SUCCEED;
}
