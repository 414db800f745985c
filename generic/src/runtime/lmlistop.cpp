// The operation call, and the kinds that are one chain: linked list, queue and stack. A chain is
// linked both ways, and handle_load counts its nodes.
#include "runtime/lmlistop.h"

#include "runtime/lmhash.h"

namespace comnlib {
namespace {

CS_RETCODE build_chain(LM_HANDLE& handle) {
  auto* info = build_record<DLinkInfo>();
  if (info == nullptr) return CS_MEM_ERROR;
  info->state = LM_STATE_READY;
  handle.list_state = info;
  return CS_SUCCEED;
}

void drop_chain(LM_HANDLE& handle) {
  auto& info = info_of<DLinkInfo>(handle);
  give_back_chain(handle, info.head);
  drop_record(&info);
}

// Links a new element in front of `next`; null means at the tail.
CS_RETCODE insert_in_front(LM_HANDLE& handle, DLinkNode* next, const Key& key, CS_VOID* data) {
  auto& info = info_of<DLinkInfo>(handle);
  DLinkNode* node = take_node(handle);
  if (node == nullptr) return CS_MEM_ERROR;
  place_element(*node, key, data);

  DLinkNode*& from_behind = next == nullptr ? info.tail : next->previous;
  node->next = next;
  node->previous = from_behind;
  DLinkNode*& from_ahead = node->previous == nullptr ? info.head : node->previous->next;
  from_behind = node;
  from_ahead = node;
  ++handle.hdlprop->handle_load;
  return CS_SUCCEED;
}

// What linked list, queue and stack have in common; they differ in where an insert goes.
struct Chain {
  using Info = DLinkInfo;
  using Node = DLinkNode;

  static DLinkNode* find(LM_HANDLE& handle, const Key& key) {
    DLinkNode* node = info_of<DLinkInfo>(handle).head;
    while (node != nullptr && !matches(*handle.hdlprop, *node, key)) node = node->next;
    return node;
  }

  static void remove(LM_HANDLE& handle, DLinkNode* node) {
    auto& info = info_of<DLinkInfo>(handle);
    (node->previous == nullptr ? info.head : node->previous->next) = node->next;
    (node->next == nullptr ? info.tail : node->next->previous) = node->previous;
    --handle.hdlprop->handle_load;
    give_back_node(handle, node);
  }

  static CS_INT chains(const DLinkInfo&) { return 1; }
  static DLinkNode* first(const DLinkInfo& info, CS_INT) { return info.head; }
  static DLinkNode* next(const DLinkInfo&, const DLinkNode* node) { return node->next; }
};

struct AtTail : Chain {
  static CS_RETCODE insert(LM_HANDLE& handle, const Key& key, CS_VOID* data) {
    return insert_in_front(handle, nullptr, key, data);
  }
};

struct AtHead : Chain {
  static CS_RETCODE insert(LM_HANDLE& handle, const Key& key, CS_VOID* data) {
    return insert_in_front(handle, info_of<DLinkInfo>(handle).head, key, data);
  }
};

CS_RETCODE op_remove_head(LM_HANDLE& handle, const Request& request) {
  return remove_element<Chain>(handle, request, info_of<DLinkInfo>(handle).head);
}

// Moves the cursor, which stays where it is when there is no element to move to.
CS_RETCODE move_to(LM_HANDLE& handle, const Request& request, DLinkNode* node) {
  if (node == nullptr) return LM_NOTFOUND;
  handle.cur_ptr = node;
  return request.returns(node->data);
}

CS_RETCODE op_first(LM_HANDLE& handle, const Request& request) {
  return move_to(handle, request, info_of<DLinkInfo>(handle).head);
}

CS_RETCODE op_last(LM_HANDLE& handle, const Request& request) {
  return move_to(handle, request, info_of<DLinkInfo>(handle).tail);
}

CS_RETCODE op_next(LM_HANDLE& handle, const Request& request) {
  const auto* cursor = cursor_of<DLinkNode>(handle);
  return cursor == nullptr ? op_first(handle, request) : move_to(handle, request, cursor->next);
}

CS_RETCODE op_previous(LM_HANDLE& handle, const Request& request) {
  const auto* cursor = cursor_of<DLinkNode>(handle);
  return cursor == nullptr ? op_last(handle, request) : move_to(handle, request, cursor->previous);
}

CS_RETCODE op_insert_before(LM_HANDLE& handle, const Request& request) {
  auto* cursor = cursor_of<DLinkNode>(handle);
  DLinkNode* next = cursor == nullptr ? info_of<DLinkInfo>(handle).head : cursor;
  return insert_in_front(handle, next, request.key, request.data_inout);
}

CS_RETCODE op_insert_after(LM_HANDLE& handle, const Request& request) {
  const auto* cursor = cursor_of<DLinkNode>(handle);
  DLinkNode* next = cursor == nullptr ? nullptr : cursor->next;
  return insert_in_front(handle, next, request.key, request.data_inout);
}

// Null: the kind has no inserts at the cursor.
template <class Kind>
constexpr KindOps chain_ops(Operation remove, Operation insert_before, Operation insert_after) {
  return {build_chain,
          drop_chain,
          nullptr,
          {op_insert<Kind>, remove, op_find<Kind>, op_replace<Kind>, op_first, op_last, op_none,
           op_next, op_previous, op_print<Kind>, op_print_all<Kind>, op_print_data<Kind>,
           insert_before, insert_after}};
}

constexpr KindOps kDLinkOps =
    chain_ops<AtTail>(op_delete<AtTail>, op_insert_before, op_insert_after);
constexpr KindOps kQueueOps = chain_ops<AtTail>(op_remove_head, nullptr, nullptr);
constexpr KindOps kStackOps = chain_ops<AtHead>(op_remove_head, nullptr, nullptr);

}  // namespace

const KindOps& kind_of(CS_INT list_type) {
  switch (list_type) {
    case LM_DLINK:
      return kDLinkOps;
    case LM_CHASH:
      return chash_ops;
    case LM_DHASH:
      return dhash_ops;
    case LM_QUEUE:
      return kQueueOps;
    case LM_STACK:
      return kStackOps;
    default:
      stop();
  }
}

}  // namespace comnlib

using namespace comnlib;

CS_RETCODE lm_list_op(LM_HANDLE* handle, CS_INT op, const CS_VOID* key, CS_INT key_size,
                      CS_VOID* data_inout, CS_INT* outlen) {
  if (handle == nullptr) return trace(CS_FAIL);
  check_ready(handle);
  check_ready(handle->hdlprop);
  require(op >= kFirstOp && op < kFirstOp + static_cast<CS_INT>(kOps));
  // The elements' keys are the caller's own pointers, so they are kept as they came, unqualified.
  const Request request{{const_cast<CS_VOID*>(key), key_size}, data_inout, outlen};
  require(!request.key.given() || key_size >= 0);

  const KindOps& kind = kind_of(handle->hdlprop->list_type);
  const Operation operation = kind.operations[static_cast<std::size_t>(op - kFirstOp)];
  require(operation != nullptr);
  return trace(operation(*handle, request));
}
