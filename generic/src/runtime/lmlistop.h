// The operations that all kinds of list share, over what a kind supplies:
//
//   Info, Node                    its record and its element find(handle, key)             the
//   first element with the key, or null insert(handle, key, data)     adds an element and counts it
//   remove(handle, node)          removes an element, uncounts and releases it chains(info)
//   how many chains its elements form first(info, chain), next(info, node)   walk one chain; null
//   at its end
#pragma once

#include "runtime/lmutils.h"

namespace comnlib {

template <class Info>
Info& info_of(LM_HANDLE& handle) {
  auto* info = static_cast<Info*>(handle.list_state);
  check_ready(info);
  return *info;
}

template <class Node>
Node* cursor_of(const LM_HANDLE& handle) {
  auto* node = static_cast<Node*>(handle.cur_ptr);
  require(node == nullptr || node->state == LM_STATE_IN_USE);
  return node;
}

// The key's element, or the cursor's when no key is given; null when there is none.
template <class Kind>
typename Kind::Node* choose(LM_HANDLE& handle, const Key& key) {
  return key.given() ? Kind::find(handle, key) : cursor_of<typename Kind::Node>(handle);
}

template <class Kind>
CS_RETCODE remove_element(LM_HANDLE& handle, const Request& request, typename Kind::Node* node) {
  if (node == nullptr) return LM_NOTFOUND;
  CS_VOID* data = node->data;
  if (handle.cur_ptr == node) handle.cur_ptr = nullptr;
  Kind::remove(handle, node);
  return request.returns(data);
}

template <class Kind>
CS_RETCODE op_insert(LM_HANDLE& handle, const Request& request) {
  return Kind::insert(handle, request.key, request.data_inout);
}

template <class Kind>
CS_RETCODE op_delete(LM_HANDLE& handle, const Request& request) {
  return remove_element<Kind>(handle, request, choose<Kind>(handle, request.key));
}

template <class Kind>
CS_RETCODE op_find(LM_HANDLE& handle, const Request& request) {
  auto* node = choose<Kind>(handle, request.key);
  if (node == nullptr) return LM_NOTFOUND;
  handle.cur_ptr = node;
  return request.returns(node->data);
}

template <class Kind>
CS_RETCODE op_replace(LM_HANDLE& handle, const Request& request) {
  auto* node = choose<Kind>(handle, request.key);
  if (node == nullptr) return LM_NOTFOUND;
  handle.cur_ptr = node;
  node->data = request.data_inout;
  return CS_SUCCEED;
}

inline CS_RETCODE op_none(LM_HANDLE&, const Request&) {
  return CS_SUCCEED;
}

template <class Kind>
CS_RETCODE op_print(LM_HANDLE& handle, const Request& request) {
  const LM_PRINT_FUNC print = handle.hdlprop->print_func;
  if (print == nullptr) return CS_FAIL;
  auto* node = choose<Kind>(handle, request.key);
  if (node == nullptr) {
    if (!request.key.given()) comn_debug_print("\nNULL\n");
    return LM_NOTFOUND;
  }
  handle.cur_ptr = node;
  print(node->data);
  return CS_SUCCEED;
}

// Hands the data of one chain to `print`; false when that stopped the walk.
template <class Kind>
bool print_chain_data(const typename Kind::Info& info, typename Kind::Node* head,
                      LM_PRINT_FUNC print) {
  for (auto* node = head; node != nullptr; node = Kind::next(info, node)) {
    if (print(node->data) == 0) return false;
  }
  return true;
}

template <class Kind>
void print_chain_keys(const typename Kind::Info& info, typename Kind::Node* head) {
  for (auto* node = head; node != nullptr; node = Kind::next(info, node)) {
    if (node != head) comn_debug_print("\n");
    const Key key = key_of(*node);
    if (key.given())
      comn_debug_print("%.*s", static_cast<int>(key.size), static_cast<char*>(key.bytes));
  }
}

template <class Kind>
CS_RETCODE op_print_all(LM_HANDLE& handle, const Request&) {
  const LM_PRINT_FUNC print = handle.hdlprop->print_func;
  if (print == nullptr) return CS_FAIL;
  const auto& info = info_of<typename Kind::Info>(handle);
  for (CS_INT chain = 0; chain < Kind::chains(info); ++chain) {
    auto* head = Kind::first(info, chain);
    if (head == nullptr) {
      comn_debug_print("\n***Chain empty***\n");
      continue;
    }
    comn_debug_print("\nKeys:\n");
    print_chain_keys<Kind>(info, head);
    comn_debug_print("\nData:\n");
    if (!print_chain_data<Kind>(info, head, print)) return CS_SUCCEED;
  }
  return CS_SUCCEED;
}

template <class Kind>
CS_RETCODE op_print_data(LM_HANDLE& handle, const Request& request) {
  check_pointer(request.data_inout);
  const auto print = reinterpret_cast<LM_PRINT_FUNC>(request.data_inout);
  const auto& info = info_of<typename Kind::Info>(handle);
  for (CS_INT chain = 0; chain < Kind::chains(info); ++chain) {
    if (!print_chain_data<Kind>(info, Kind::first(info, chain), print)) break;
  }
  return CS_SUCCEED;
}

}  // namespace comnlib
