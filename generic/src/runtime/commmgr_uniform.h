// The uniform discipline: slabs cut into nodes of one size. A node is its size word, which never
// changes, and the user's bytes, in which a free node has its link. Per-block fast paths, defined
// here so that the entry points inline them.
#pragma once

#include "runtime/commmgr.h"

namespace comnlib::mm {

struct UniformNode {
  MM_WORD(CS_INT, size);  // node_size, in use and free alike
  UniformNode* next;      // while free
  CS_UINT key;            // while free, in nodes that have room for it: kFreeKey
} MM_OVERLAY;

// Marks free nodes, so that freeing a node twice is noticed without a walk over the list.
// Allocation zeroes the mark, and user data that looks like it only costs a walk. Nodes too short
// for a mark are looked for on the list when their word looks like a link. The last node of the
// list, whose link is null like fresh data, is noticed only while it is also the first.
inline constexpr CS_UINT kFreeKey = 0xdeadf4ee;

// The slow path: fixes the sizes, on the first request, and gets a slab when no node is free.
CS_RETCODE uniform_allocate(MmHandle* handle, CS_INT size, CS_VOID** out);
// Whether a node is on the free list. Its contents must look like those of a free node.
bool uniform_is_free(const MmHandle* handle, const UniformNode* node);

inline bool uniform_has_key(const MmUniformPool& pool) {
  return pool.node_size >= static_cast<CS_INT>(sizeof(UniformNode));
}

inline void uniform_push(MmUniformPool& pool, UniformNode* node) {
  node->next = static_cast<UniformNode*>(pool.free);
  if (uniform_has_key(pool)) node->key = kFreeKey;
  pool.free = node;
}

// A node from the list; null when the slow path has to decide.
inline void* uniform_take(MmHandle* handle, CS_INT size) {
  MmUniformPool& pool = handle->mmh_pool.uniform;
  if ((handle->mmh_status & kInUse) == 0 || pool.free == nullptr || size != pool.uniform_size)
      [[unlikely]]
    return nullptr;
  auto* node = static_cast<UniformNode*>(pool.free);
  pool.free = node->next;
  return at<void>(node, kWord);
}

inline CS_RETCODE uniform_free(MmHandle* handle, CS_VOID* ptr) {
  MmUniformPool& pool = handle->mmh_pool.uniform;
  auto* node = at<UniformNode>(ptr, -kWord);
  require(node->size == pool.node_size);
  if (!uniform_has_key(pool) || node->key == kFreeKey) require(!uniform_is_free(handle, node));
  uniform_push(pool, node);
  return CS_SUCCEED;
}

}  // namespace comnlib::mm
