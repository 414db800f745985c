// Names, property values and the free-node pool. The pool's count and its chain always agree, and
// every parked node is zero except its state and link.
#include "runtime/lmutils.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace comnlib {
namespace {

void park(LM_HANDLE& handle, DLinkNode* node) {
  *node = DLinkNode{};
  node->state = LM_STATE_POOLED;
  node->next = handle.free_DLN_list;
  handle.free_DLN_list = node;
  ++handle.free_nodes;
}

DLinkNode* unpark(LM_HANDLE& handle) {
  require((handle.free_nodes == 0) == (handle.free_DLN_list == nullptr));
  DLinkNode* node = handle.free_DLN_list;
  if (node == nullptr) return nullptr;
  require(node->state == LM_STATE_POOLED);
  handle.free_DLN_list = node->next;
  --handle.free_nodes;
  node->next = nullptr;
  node->state = LM_STATE_BUILDING;
  return node;
}

}  // namespace

bool copy_name(const CS_CHAR* name, CS_INT namelen, CS_CHAR*& copy, CS_INT& length) {
  check_pointer(name);
  require(namelen >= 0 || namelen == CS_NULLTERM);
  const std::size_t size =
      namelen == CS_NULLTERM ? std::strlen(name) + 1 : static_cast<std::size_t>(namelen);
  require(size <= std::numeric_limits<CS_INT>::max());
  // At least one byte, so that an empty name does not fail.
  copy = static_cast<CS_CHAR*>(comn_malloc(std::max<std::size_t>(size, 1)));
  if (copy == nullptr) return false;
  std::memcpy(copy, name, size);
  length = static_cast<CS_INT>(size);
  return true;
}

DLinkNode* take_node(LM_HANDLE& handle) {
  DLinkNode* node = unpark(handle);
  return node != nullptr ? node : build_record<DLinkNode>();
}

void give_back_node(LM_HANDLE& handle, DLinkNode* node) {
  require(node->state == LM_STATE_IN_USE);
  if (handle.free_nodes < handle.hdlprop->max_poolsize) {
    park(handle, node);
  } else {
    drop_record(node);
  }
}

void give_back_chain(LM_HANDLE& handle, DLinkNode* head) {
  for (DLinkNode *node = head, *next = nullptr; node != nullptr; node = next) {
    next = node->next;
    give_back_node(handle, node);
  }
}

CS_RETCODE fill_pool(LM_HANDLE& handle) {
  const CS_INT size = handle.hdlprop->max_poolsize;
  require(size >= 1);
  while (handle.free_nodes < size) {
    auto* node = build_record<DLinkNode>();
    if (node == nullptr) return CS_MEM_ERROR;
    park(handle, node);
  }
  return CS_SUCCEED;
}

void trim_pool(LM_HANDLE& handle, CS_INT limit) {
  const CS_INT kept = std::max<CS_INT>(limit, 0);
  while (handle.free_nodes > kept) {
    DLinkNode* node = unpark(handle);
    check_pointer(node);
    drop_record(node);
  }
}

CS_RETCODE give_name(const CS_CHAR* name, CS_INT length, CS_VOID* buffer, CS_INT buflen,
                     CS_INT* outlen) {
  check_pointer(buffer);
  if (buflen < length) return CS_FAIL;
  if (length > 0) std::memcpy(buffer, name, static_cast<std::size_t>(length));
  if (outlen != nullptr) *outlen = length;
  return CS_SUCCEED;
}

}  // namespace comnlib
