// The key hash, chained and open-addressing tables, and their rebuilding. A table's elements lie
// where the hash of their keys puts them, and handle_load counts them.
#include "runtime/lmhash.h"

#include <algorithm>

#include "runtime/lmlistop.h"

namespace comnlib {
namespace {

constexpr CS_UINT kFactor = 37;
constexpr CS_UINT kIncrementFactor = 7;
constexpr CS_BYTE kTailFill = 0x5a;
constexpr std::size_t kGroup = 4;

constexpr CS_UINT widen(CS_BYTE byte) {
  return static_cast<CS_UINT>(static_cast<CS_INT>(static_cast<signed char>(byte)));
}

// One group as a number. A byte of 0x80 or more sets every bit above its own place as well.
CS_UINT word_of(const CS_BYTE* bytes, std::size_t count) {
  CS_UINT word = 0;
  for (std::size_t i = 0; i < kGroup; ++i)
    word = word << 8 | (i < count ? widen(bytes[i]) : kTailFill);
  return word;
}

CS_UINT word_of(const CS_BYTE* bytes) {
  CS_UINT plain;
  std::memcpy(&plain, bytes, sizeof plain);
  if ((plain & 0x80808080U) == 0) [[likely]]
    return __builtin_bswap32(plain);
  return word_of(bytes, kGroup);
}

inline CS_UINT number_of(const CS_BYTE* bytes, std::size_t left) {
  CS_UINT number = 0;
  CS_UINT pending = 0;  // the group that waits for the next one; a group of zero does not wait
  for (; left >= kGroup; left -= kGroup, bytes += kGroup) {
    const CS_UINT word = word_of(bytes);
    if (pending == 0) {
      pending = word;
    } else {
      number = word + (pending + number * kFactor) * kFactor;
      pending = 0;
    }
  }
  if (pending != 0) number = pending + number * kFactor;
  if (left == 0) return number;

  const CS_UINT tail = word_of(bytes, left);
  require(tail != 0);
  return tail + number * kFactor;
}

// Hidden from the optimiser: for a table of one slot the division must really trap.
inline CS_UINT increment_of(CS_UINT number, CS_UINT table_size) {
  CS_UINT divisor = table_size - 1;
  asm("" : "+r"(divisor));
  return number * kIncrementFactor % divisor + 1;
}

CS_UINT checked_number(const CS_VOID* key, CS_INT key_size) {
  require(key_size >= 0);
  if (key_size == 0) return 0;
  check_pointer(key);
  return number_of(static_cast<const CS_BYTE*>(key), static_cast<std::size_t>(key_size));
}

CS_UINT number_of(const Key& key) {
  return number_of(static_cast<const CS_BYTE*>(key.bytes), key.length());
}

// What a table's hash function says. It may be a host's, so the result is not taken on trust.
CS_UINT ask(LM_HASH_FUNC hash, const Key& key, CS_INT table_size) {
  const CS_INT place = hash(key.bytes, key.size, table_size);
  require(place >= 0 && place < table_size);
  return static_cast<CS_UINT>(place);
}

// The record of a table with the table itself, zeroed; null when memory is out.
template <class Info>
Info* build_info(const LM_HANDLE& handle) {
  auto* info = build_record<Info>();
  if (info == nullptr) return nullptr;
  info->table_size = handle.hdlprop->max_tablesize;
  info->table = allocate_table<std::remove_pointer_t<decltype(info->table)>>(info->table_size);
  info->home_addr_hfunc = lm__api_key_to_hash;
  if (info->table != nullptr) return info;
  drop_record(info);
  return nullptr;
}

// Chained hash table. New elements go to the head of their chain.
struct CHash {
  using Info = CHashInfo;
  using Node = DLinkNode;

  static CS_RETCODE build(LM_HANDLE& handle) {
    auto* info = build_info<CHashInfo>(handle);
    if (info == nullptr) return CS_MEM_ERROR;
    info->state = LM_STATE_READY;
    handle.list_state = info;
    return CS_SUCCEED;
  }

  static CS_RETCODE build_with_pool(LM_HANDLE& handle) {
    const CS_RETCODE built = build(handle);
    if (built != CS_SUCCEED || handle.hdlprop->max_poolsize < 1) return built;
    const CS_RETCODE filled = fill_pool(handle);
    if (filled != CS_SUCCEED) {
      trim_pool(handle, 0);
      drop(handle);
    }
    return filled;
  }

  static void drop(LM_HANDLE& handle) {
    auto& info = info_of<CHashInfo>(handle);
    for (CS_INT chain = 0; chain < info.table_size; ++chain)
      give_back_chain(handle, info.table[chain]);
    comn_free(info.table);
    drop_record(&info);
  }

  static DLinkNode*& chain_of(const CHashInfo& info, const Key& key) {
    require(info.table_size >= 1);
    // The usual function is inlined.
    const CS_UINT home = info.home_addr_hfunc == lm__api_key_to_hash
                             ? number_of(key) % static_cast<CS_UINT>(info.table_size)
                             : ask(info.home_addr_hfunc, key, info.table_size);
    return info.table[home];
  }

  static DLinkNode* find(LM_HANDLE& handle, const Key& key) {
    DLinkNode* node = chain_of(info_of<CHashInfo>(handle), key);
    while (node != nullptr && !matches(*handle.hdlprop, *node, key)) node = node->next;
    return node;
  }

  static CS_RETCODE insert(LM_HANDLE& handle, const Key& key, CS_VOID* data) {
    require(key.given());
    DLinkNode*& head = chain_of(info_of<CHashInfo>(handle), key);
    DLinkNode* node = take_node(handle);
    if (node == nullptr) return CS_MEM_ERROR;
    place_element(*node, key, data);
    node->next = head;
    if (head != nullptr) head->previous = node;
    head = node;
    ++handle.hdlprop->handle_load;
    return CS_SUCCEED;
  }

  static void remove(LM_HANDLE& handle, DLinkNode* node) {
    if (node->next != nullptr) node->next->previous = node->previous;
    if (node->previous != nullptr) {
      node->previous->next = node->next;
    } else {
      chain_of(info_of<CHashInfo>(handle), key_of(*node)) = node->next;
    }
    --handle.hdlprop->handle_load;
    give_back_node(handle, node);
  }

  static bool holds(const LM_HANDLE&, CS_INT) { return true; }
  static CS_INT chains(const CHashInfo& info) { return info.table_size; }
  static DLinkNode* first(const CHashInfo& info, CS_INT chain) { return info.table[chain]; }
  static DLinkNode* next(const CHashInfo&, const DLinkNode* node) { return node->next; }
};

// Open-addressing table. A search looks at every slot if it must, so a deletion may leave a hole.
struct DHash {
  using Info = DHashInfo;
  using Node = LHashNode;

  static CS_RETCODE build(LM_HANDLE& handle) {
    auto* info = build_info<DHashInfo>(handle);
    if (info == nullptr) return CS_MEM_ERROR;
    for (CS_INT slot = 0; slot < info->table_size; ++slot) info->table[slot].state = LM_STATE_READY;
    info->incr_hfunc = lm__api_key_to_hash2;
    info->state = LM_STATE_READY;
    handle.list_state = info;
    return CS_SUCCEED;
  }

  static void drop(LM_HANDLE& handle) {
    auto& info = info_of<DHashInfo>(handle);
    for (CS_INT slot = 0; slot < info.table_size; ++slot) stamp_dropped(info.table[slot]);
    comn_free(info.table);
    drop_record(&info);
  }

  // Where a search begins. The increment counts only for the first probe, which is therefore never
  // at the home address itself. Other code relies on where elements lie.
  static CS_UINT start_of(const DHashInfo& info, const Key& key) {
    require(info.table_size >= 1);
    const auto size = static_cast<CS_UINT>(info.table_size);
    CS_UINT home;
    CS_UINT increment;
    if (info.home_addr_hfunc == lm__api_key_to_hash && info.incr_hfunc == lm__api_key_to_hash2) {
      const CS_UINT number = number_of(key);
      home = number % size;
      increment = increment_of(number, size);
    } else {
      home = ask(info.home_addr_hfunc, key, info.table_size);
      increment = ask(info.incr_hfunc, key, info.table_size);
    }
    const CS_UINT sum = home + increment;
    return sum - (sum >= size) * size;  // branch-free: the outcome is unpredictable
  }

  // The first slot, in probe order, for which `wanted` holds; null when none does.
  template <class Wanted>
  static LHashNode* probe(const DHashInfo& info, const Key& key, Wanted wanted) {
    const auto size = static_cast<CS_UINT>(info.table_size);
    const CS_UINT start = start_of(info, key);
    for (CS_UINT slot = start; slot < size; ++slot) {
      if (wanted(info.table[slot])) return &info.table[slot];
    }
    for (CS_UINT slot = 0; slot < start; ++slot) {
      if (wanted(info.table[slot])) return &info.table[slot];
    }
    return nullptr;
  }

  static LHashNode* find(LM_HANDLE& handle, const Key& key) {
    return probe(info_of<DHashInfo>(handle), key, [&key](const LHashNode& slot) {
      return slot.state == LM_STATE_IN_USE && begins_with(key_of(slot), key);
    });
  }

  // The size of the stored key does not count: callers store keys without a NUL and look them up
  // with it, and the other way round. Bytes after that size are compared one by one, up to the
  // first that differs: no library call promises to read no further.
  static bool begins_with(const Key& stored, const Key& sought) {
    const std::size_t common = std::min(stored.length(), sought.length());
    if (!same_bytes(stored.bytes, sought.bytes, common)) return false;
    const auto* left = static_cast<const CS_BYTE*>(stored.bytes);
    const auto* right = static_cast<const CS_BYTE*>(sought.bytes);
    std::size_t at = common;
    while (at < sought.length() && left[at] == right[at]) ++at;
    return at == sought.length();
  }

  static CS_RETCODE insert(LM_HANDLE& handle, const Key& key, CS_VOID* data) {
    require(key.given());
    LHashNode* slot = probe(info_of<DHashInfo>(handle), key, [](const LHashNode& candidate) {
      return candidate.state == LM_STATE_READY;
    });
    if (slot == nullptr) return CS_FAIL;
    place_element(*slot, key, data);
    ++handle.hdlprop->handle_load;
    return CS_SUCCEED;
  }

  static void remove(LM_HANDLE& handle, LHashNode* slot) {
    *slot = LHashNode{};
    slot->state = LM_STATE_READY;
    --handle.hdlprop->handle_load;
  }

  static bool holds(const LM_HANDLE& handle, CS_INT table_size) {
    return table_size >= handle.hdlprop->handle_load;
  }

  static CS_INT chains(const DHashInfo&) { return 1; }

  static LHashNode* used_from(const DHashInfo& info, LHashNode* slot) {
    LHashNode* end = info.table + info.table_size;
    while (slot != end && slot->state != LM_STATE_IN_USE) ++slot;
    return slot == end ? nullptr : slot;
  }

  static LHashNode* first(const DHashInfo& info, CS_INT) { return used_from(info, info.table); }
  static LHashNode* next(const DHashInfo& info, LHashNode* slot) {
    return used_from(info, slot + 1);
  }
};

template <class Kind>
CS_RETCODE insert_all(LM_HANDLE& handle, const typename Kind::Info& from) {
  for (CS_INT chain = 0; chain < Kind::chains(from); ++chain) {
    for (auto* node = Kind::first(from, chain); node != nullptr; node = Kind::next(from, node)) {
      const CS_RETCODE inserted = Kind::insert(handle, key_of(*node), node->data);
      if (inserted != CS_SUCCEED) return inserted;
    }
  }
  return CS_SUCCEED;
}

// Moves the elements into a table of another size. The old table stays whole until the new one
// holds everything; a failure puts it back with its size and load.
template <class Kind>
CS_RETCODE rebuild(LM_HANDLE& handle, CS_INT table_size) {
  LmHdlProp& properties = *handle.hdlprop;
  if (!Kind::holds(handle, table_size)) return CS_FAIL;
  auto& old_info = info_of<typename Kind::Info>(handle);
  const CS_INT old_size = properties.max_tablesize;
  const CS_INT old_load = properties.handle_load;

  properties.max_tablesize = table_size;
  CS_RETCODE result = Kind::build(handle);
  if (result == CS_SUCCEED) {
    properties.handle_load = 0;
    result = insert_all<Kind>(handle, old_info);
    if (result == CS_SUCCEED) {
      require(properties.handle_load == old_load);
      CS_VOID* new_info = handle.list_state;
      handle.list_state = &old_info;
      Kind::drop(handle);
      handle.list_state = new_info;
      handle.cur_ptr = nullptr;
      return CS_SUCCEED;
    }
    Kind::drop(handle);
  }
  handle.list_state = &old_info;
  properties.max_tablesize = old_size;
  properties.handle_load = old_load;
  return result;
}

template <class Kind>
constexpr KindOps table_ops(CS_RETCODE (*build)(LM_HANDLE&)) {
  return {build,
          Kind::drop,
          rebuild<Kind>,
          {op_insert<Kind>, op_delete<Kind>, op_find<Kind>, op_replace<Kind>, nullptr, nullptr,
           op_none, nullptr, nullptr, op_print<Kind>, op_print_all<Kind>, op_print_data<Kind>,
           nullptr, nullptr}};
}

}  // namespace

constinit const KindOps chash_ops = table_ops<CHash>(CHash::build_with_pool);
constinit const KindOps dhash_ops = table_ops<DHash>(DHash::build);

}  // namespace comnlib

using namespace comnlib;

CS_UINT lm___api_key_to_uint(const CS_VOID* key, CS_INT key_size) {
  return checked_number(key, key_size);
}

CS_INT lm__api_key_to_hash(const CS_VOID* key, CS_INT key_size, CS_INT table_size) {
  require(table_size >= 1);
  return static_cast<CS_INT>(checked_number(key, key_size) % static_cast<CS_UINT>(table_size));
}

CS_INT lm__api_key_to_hash2(const CS_VOID* key, CS_INT key_size, CS_INT table_size) {
  require(table_size >= 1);
  return static_cast<CS_INT>(
      increment_of(checked_number(key, key_size), static_cast<CS_UINT>(table_size)));
}

CS_RETCODE lm___dhash_rehash(LM_HANDLE* handle, CS_INT table_size) {
  check_ready(handle);
  check_ready(handle->hdlprop);
  require(handle->hdlprop->list_type == LM_DHASH);
  return trace(rebuild<DHash>(*handle, table_size));
}
