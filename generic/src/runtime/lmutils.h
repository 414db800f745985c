// What the list manager's modules share: life of its records, keys, names, the free-node pool of a
// handle, property values, and the table of a kind's operations.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "comnlib/list.h"
#include "comnlib/memory.h"
#include "diag/diag.h"

namespace comnlib {

// Stops the process when a record is dropped, damaged or half built.
template <class Record>
void check_ready(const Record* record, CallSite site = CallSite::current()) {
  check_pointer(record, site);
  require(record->state == LM_STATE_READY, site);
}

// A zeroed record in state building, or null.
template <class Record>
Record* build_record() {
  auto* record = static_cast<Record*>(comn_calloc(1, sizeof(Record)));
  if (record != nullptr) record->state = LM_STATE_BUILDING;
  return record;
}

// Erases and stamps a record, so that a use after the drop finds the stamp.
template <class Record>
void stamp_dropped(Record& record) {
  record = Record{};
  record.state = LM_STATE_DROPPED;
}

template <class Record>
void drop_record(Record* record) {
  stamp_dropped(*record);
  comn_free(record);
}

// A zeroed table; null when there is no memory or the size is beyond the address space.
template <class Entry>
Entry* allocate_table(CS_INT size) {
  require(size >= 1);
  const auto count = static_cast<std::size_t>(size);
  if (count > PTRDIFF_MAX / sizeof(Entry)) return nullptr;
  return static_cast<Entry*>(comn_calloc(count, sizeof(Entry)));
}

// A key as a caller gives it; also that of an element that was inserted without one.
struct Key {
  CS_VOID* bytes;
  CS_INT size;

  bool given() const { return bytes != nullptr && size != CS_UNUSED; }
  std::size_t length() const { return static_cast<std::size_t>(size); }
};

template <class Node>
Key key_of(const Node& node) {
  return {node.key, node.key_size};
}

template <class Node>
void place_element(Node& node, const Key& key, CS_VOID* data) {
  node.key = key.bytes;
  node.key_size = key.size;
  node.data = data;
  node.state = LM_STATE_IN_USE;
}

// Copies a name into an allocation of the library's; false when there is no memory.
bool copy_name(const CS_CHAR* name, CS_INT namelen, CS_CHAR*& copy, CS_INT& length);

// Nodes of linked kinds and chains. A node that is given back is parked while the handle's pool has
// room and dropped otherwise.
DLinkNode* take_node(LM_HANDLE& handle);
void give_back_node(LM_HANDLE& handle, DLinkNode* node);
void give_back_chain(LM_HANDLE& handle, DLinkNode* head);
CS_RETCODE fill_pool(LM_HANDLE& handle);
void trim_pool(LM_HANDLE& handle, CS_INT limit);

// Keys are short, and most comparisons find them equal: comparing words inline beats a call.
inline bool same_bytes(const CS_VOID* left, const CS_VOID* right, std::size_t size) {
  const auto* a = static_cast<const CS_BYTE*>(left);
  const auto* b = static_cast<const CS_BYTE*>(right);
  CS_UINT word_a;
  CS_UINT word_b;
  for (; size >= sizeof word_a; size -= sizeof word_a, a += sizeof word_a, b += sizeof word_b) {
    std::memcpy(&word_a, a, sizeof word_a);
    std::memcpy(&word_b, b, sizeof word_b);
    if (word_a != word_b) return false;
  }
  for (; size != 0; --size) {
    if (*a++ != *b++) return false;
  }
  return true;
}

// Whether an element of a linked kind or chain has the sought key.
inline bool matches(const LmHdlProp& properties, const DLinkNode& node, const Key& key) {
  require(node.state == LM_STATE_IN_USE);
  if (properties.comp_func != nullptr)
    return key_of(node).given() && properties.comp_func(node.key, key.bytes, key.size) == 0;
  return node.key_size == key.size && key_of(node).given() &&
         same_bytes(node.key, key.bytes, key.length());
}

// The argument of an operation, and where it returns data.
struct Request {
  Key key;
  CS_VOID* data_inout;
  CS_INT* outlen;

  CS_RETCODE returns(CS_VOID* data) const {
    if (data_inout != nullptr) std::memcpy(data_inout, &data, sizeof data);
    if (outlen != nullptr) *outlen = sizeof data;
    return CS_SUCCEED;
  }
};

using Operation = CS_RETCODE (*)(LM_HANDLE& handle, const Request& request);

inline constexpr CS_INT kFirstOp = LM_OP_INSERT;
inline constexpr std::size_t kOps = LM_OP_INSERT_AFTER - LM_OP_INSERT + 1;

// What a list type does. An operation that it lacks is null.
struct KindOps {
  CS_RETCODE(*build)
  (LM_HANDLE& handle);              // makes list_state; CS_MEM_ERROR: list_state is unchanged
  void (*drop)(LM_HANDLE& handle);  // frees list_state with its elements
  CS_RETCODE (*rebuild)(LM_HANDLE& handle, CS_INT table_size);  // null where there is no table
  std::array<Operation, kOps> operations;
};

// Stops the process for a number that is not a list type.
const KindOps& kind_of(CS_INT list_type);

// A property of a record, and the function that gets it.
template <class Record>
struct Property {
  CS_INT number;
  CS_RETCODE (*get)(const Record& record, CS_VOID* buffer, CS_INT buflen, CS_INT* outlen);
};

template <auto kMember>
CS_RETCODE get_member(const auto& record, CS_VOID* buffer, CS_INT /*buflen*/, CS_INT* outlen) {
  const auto value = record.*kMember;
  static_assert(sizeof value == sizeof(CS_INT) || sizeof value == sizeof(CS_VOID*));
  check_pointer(buffer);
  std::memcpy(buffer, &value, sizeof value);
  if (outlen != nullptr) *outlen = sizeof value;
  return CS_SUCCEED;
}

CS_RETCODE give_name(const CS_CHAR* name, CS_INT length, CS_VOID* buffer, CS_INT buflen,
                     CS_INT* outlen);

// Stops the process for a number that is not in the table.
template <class Record, std::size_t kCount>
const Property<Record>& property_of(const std::array<Property<Record>, kCount>& table,
                                    CS_INT number, CallSite site = CallSite::current()) {
  const auto* found = std::ranges::find(table, number, &Property<Record>::number);
  require(found != table.end(), site);
  return *found;
}

// The integer at `buffer` that a set passes.
inline CS_INT integer_at(const CS_VOID* buffer) {
  check_pointer(buffer);
  CS_INT value;
  std::memcpy(&value, buffer, sizeof value);
  return value;
}

inline void check_action(CS_INT action) {
  require(action == CS_GET || action == CS_SET || action == CS_CLEAR);
}

}  // namespace comnlib
