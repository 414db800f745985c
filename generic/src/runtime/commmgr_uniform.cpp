// The uniform discipline: slabs cut into nodes of one size. A node is its size word, which stays,
// and the user's bytes; a free node links to the next one behind that word.
#include <algorithm>

#include "runtime/commmgr.h"

using namespace comnlib;
using namespace comnlib::mm;

namespace {

struct Node {
  CS_INT size;  // node_size, in use and free alike
  Node* next;   // while free
} MM_OVERLAY;

// Free nodes with room for a third word carry this there, so that freeing one twice is noticed
// without a walk over the list. Allocation zeroes it; data that looks like it costs a walk.
constexpr CS_UINT kFreeKey = 0xdeadf4ee;
constexpr CS_INT kKeyOffset = sizeof(Node);

bool has_key(const MmUniformPool& pool) {
  return pool.node_size >= kKeyOffset + kWord;
}

void push(MmUniformPool& pool, Node* node) {
  node->next = static_cast<Node*>(pool.free);
  if (has_key(pool)) *at<CS_UINT>(node, kKeyOffset) = kFreeKey;
  pool.free = node;
}

bool is_free(const MmUniformPool& pool, const Node* node) {
  if (has_key(pool) && *at<CS_UINT>(node, kKeyOffset) != kFreeKey) return false;
  const auto* free = static_cast<const Node*>(pool.free);
  while (free != nullptr && free != node) free = free->next;
  return free != nullptr;
}

void set_up(MmHandle* handle, CS_INT size) {
  MmUniformPool& pool = handle->mmh_pool.uniform;
  pool.uniform_size = size;
  // A free node has to hold its link, also when the requests are for nothing.
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
    auto* node = at<Node>(slab, end - pool.node_size);
    node->size = pool.node_size;
    push(pool, node);
  }
  return CS_SUCCEED;
}

}  // namespace

CS_RETCODE mm::uniform_allocate(MmHandle* handle, CS_INT size, CS_VOID** out) {
  MmUniformPool& pool = handle->mmh_pool.uniform;
  if ((handle->mmh_status & kInUse) == 0) {
    if (size > kMaxRequest) return CS_MEM_ERROR;
    set_up(handle, size);
  }
  if (size != pool.uniform_size) return CS_FAIL;
  if (pool.free == nullptr) {
    const CS_RETCODE result = add_slab(handle);
    if (result != CS_SUCCEED) return result;
  }
  auto* node = static_cast<Node*>(pool.free);
  pool.free = node->next;
  *out = &node->next;
  return CS_SUCCEED;
}

CS_RETCODE mm::uniform_free(MmHandle* handle, CS_VOID* ptr) {
  MmUniformPool& pool = handle->mmh_pool.uniform;
  auto* node = at<Node>(ptr, -kWord);
  require(node->size == pool.node_size);
  require(!is_free(pool, node));
  push(pool, node);
  return CS_SUCCEED;
}
