// The alloc-only discipline's slow path: a further region.
#include "runtime/commmgr_alloconly.h"

#include <algorithm>

using namespace comnlib;
using namespace comnlib::mm;

CS_RETCODE mm::alloconly_add_region(MmHandle* handle, CS_INT size) {
  const CS_INT length = std::max(size + kRegionHeader, handle->mmh_blocksize);
  void* memory = nullptr;
  const CS_RETCODE result = com___getblock(handle, length, &memory);
  if (result != CS_SUCCEED) return result;
  auto* region = static_cast<AllocOnlyRegion*>(memory);
  region->size = length - kRegionHeader;
  region->next = static_cast<AllocOnlyRegion*>(handle->mmh_pool.alloconly.free);
  region->cursor = at<CS_BYTE>(region, kRegionHeader);
  handle->mmh_pool.alloconly.free = region;
  return CS_SUCCEED;
}
