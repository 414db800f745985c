// The uniform discipline's slow paths: the first request, a further slab, a doubtful free.
#include "runtime/commmgr_uniform.h"

#include <algorithm>

#include "runtime/commmgr_index.h"

using namespace comnlib;
using namespace comnlib::mm;

namespace {

void set_up(MmHandle* handle, CS_INT size) {
  MmUniformPool& pool = handle->mmh_pool.uniform;
  pool.uniform_size = size;
  // A free node must hold its link, even when the requests are for 0 bytes.
  pool.node_size = std::max(round_to_word(size), kWord) + kWord;
  pool.free = nullptr;
  handle->mmh_blocksize =
      std::max(handle->mmh_blocksize - handle->mmh_blocksize % pool.node_size, pool.node_size);
}

CS_RETCODE add_slab(MmHandle* handle) {
  MmUniformPool& pool = handle->mmh_pool.uniform;
  void* slab = nullptr;
  const CS_RETCODE result = com___getblock(handle, handle->mmh_blocksize, &slab);
  if (result != CS_SUCCEED) return result;
  // From the back, so that nodes are handed out by ascending address.
  for (CS_INT end = handle->mmh_blocksize; end > 0; end -= pool.node_size) {
    auto* node = at<UniformNode>(slab, end - pool.node_size);
    node->size = pool.node_size;
    uniform_push(pool, node);
  }
  return CS_SUCCEED;
}

}  // namespace

CS_RETCODE mm::uniform_allocate(MmHandle* handle, CS_INT size, CS_VOID** out) {
  const bool first = (handle->mmh_status & kInUse) == 0;
  if (!first && size != handle->mmh_pool.uniform.uniform_size) return CS_FAIL;
  if (size > kMaxRequest) return CS_MEM_ERROR;
  if (first) set_up(handle, size);
  const CS_RETCODE result = add_slab(handle);
  if (result != CS_SUCCEED) return result;
  MmUniformPool& pool = handle->mmh_pool.uniform;
  auto* node = static_cast<UniformNode*>(pool.free);
  pool.free = node->next;
  *out = at<void>(node, kWord);
  return CS_SUCCEED;
}

bool mm::uniform_is_free(const MmHandle* handle, const UniformNode* node) {
  const MmUniformPool& pool = handle->mmh_pool.uniform;
  const auto* free = static_cast<const UniformNode*>(pool.free);
  if (free == node) return true;
  if (!uniform_has_key(pool)) {
    const UniformNode* const next = node->next;
    const MmHeap* const heap = Chunks::find(handle->mmh_head, next);
    if (heap == nullptr || !aligned(heap, next)) return false;
  }
  while (free != nullptr && free != node) free = free->next;
  return free != nullptr;
}
