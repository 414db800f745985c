// How a pool finds the chunk of an address, and how it adds chunks and blocks to their lists and
// removes them: by walks over the lists or, where the records have room, by a tree of the chunks
// and by links in both directions. The lists have the same order either way, newest first.
#pragma once

#include <cstdint>
#include <utility>

#include "runtime/commmgr.h"

namespace comnlib::mm {

// The item before `wanted` on a list that begins with `first`; null when `wanted` is the first.
// Stops the process when it is not on the list.
template <class Item, class Next>
Item* predecessor(Item* first, const Item* wanted, Next next, CallSite site = CallSite::current()) {
  Item* before = nullptr;
  for (Item* item = first; item != wanted; item = next(item)) {
    require(item != nullptr, site);
    before = item;
  }
  return before;
}

// Adds an item in front of a list, and removes an item from one. Each returns the new first item.
template <class Item>
Item* list_with(Item* first, Item* item) {
  item->next = first;
  return item;
}

// Stops the process when the item is not on the list.
template <class Item>
Item* list_without(Item* first, const Item* item) {
  Item* const before = predecessor(first, item, [](const Item* each) { return each->next; });
  if (before == nullptr) return item->next;
  before->next = item->next;
  return first;
}

// The same with links in both directions.
template <class Item>
Item* linked_list_with(Item* first, Item* item) {
  if (first != nullptr) first->index.previous = item;
  item->index.previous = nullptr;
  return list_with(first, item);
}

template <class Item>
Item* linked_list_without(Item* first, const Item* item) {
  Item* const before = item->index.previous;
  Item* const after = item->next;
  if (after != nullptr) after->index.previous = before;
  if (before == nullptr) return after;
  before->next = after;
  return first;
}

template <class Head, class Heap>
struct WalkedChunks {
  // The chunk that holds an address, or null.
  static Heap* find(const Head* head, const void* pointer) {
    Heap* heap = head->mph_heap;
    while (heap != nullptr && !contains(heap, pointer)) heap = heap->next;
    return heap;
  }

  static void add(Head* head, Heap* heap) { head->mph_heap = list_with(head->mph_heap, heap); }
  static void remove(Head* head, Heap* heap) {
    head->mph_heap = list_without(head->mph_heap, heap);
  }
};

// A treap: ordered by address from left to right, and by a hash of the address from top to bottom,
// which keeps the expected depth at about twice the logarithm of the number of chunks.
template <class Head, class Heap>
struct IndexedChunks {
  static Heap* find(const Head* head, const void* pointer) {
    Heap* below = nullptr;
    for (Heap* heap = head->index.root; heap != nullptr;) {
      const bool above = address(heap) <= address(pointer);
      if (above) below = heap;
      heap = heap->index.child[above];
    }
    return below != nullptr && contains(below, pointer) ? below : nullptr;
  }

  static void add(Head* head, Heap* heap) {
    heap->index = {};
    head->mph_heap = linked_list_with(head->mph_heap, heap);
    head->index.root = insert(head->index.root, heap);
  }

  static void remove(Head* head, Heap* heap) {
    head->mph_heap = linked_list_without(head->mph_heap, heap);
    head->index.root = erase(head->index.root, heap);
  }

 private:
  static std::uint64_t rank(const Heap* heap) {
    const std::uint64_t mixed = std::uint64_t{address(heap)} * 0x9e3779b97f4a7c15U;
    return (mixed ^ mixed >> 32) * 0xd6e8feb86659fd93U;
  }

  // Splits a tree into the chunks below an address and those above it.
  static std::pair<Heap*, Heap*> split(Heap* root, const Heap* at) {
    if (root == nullptr) return {nullptr, nullptr};
    const bool below = address(root) < address(at);
    auto [left, right] = split(root->index.child[below], at);
    root->index.child[below] = below ? left : right;
    (below ? left : right) = root;
    return {left, right};
  }

  static Heap* join(Heap* left, Heap* right) {
    if (left == nullptr || right == nullptr) return left == nullptr ? right : left;
    if (rank(left) > rank(right)) {
      left->index.child[1] = join(left->index.child[1], right);
      return left;
    }
    right->index.child[0] = join(left, right->index.child[0]);
    return right;
  }

  static Heap* insert(Heap* root, Heap* heap) {
    if (root == nullptr || rank(heap) > rank(root)) {
      const auto [left, right] = split(root, heap);
      heap->index.child[0] = left;
      heap->index.child[1] = right;
      return heap;
    }
    const bool above = address(root) < address(heap);
    root->index.child[above] = insert(root->index.child[above], heap);
    return root;
  }

  static Heap* erase(Heap* root, const Heap* heap) {
    require(root != nullptr);
    if (root == heap) return join(root->index.child[0], root->index.child[1]);
    const bool above = address(root) < address(heap);
    root->index.child[above] = erase(root->index.child[above], heap);
    return root;
  }
};

using Chunks = std::conditional_t<kMmIndexed, IndexedChunks<MmPoolHead, MmHeap>,
                                  WalkedChunks<MmPoolHead, MmHeap>>;

template <class Handle, class Block>
struct WalkedBlocks {
  static void add(Handle* handle, Block* block) {
    handle->mmh_blocks = list_with(handle->mmh_blocks, block);
  }
  static void remove(Handle* handle, Block* block) {
    handle->mmh_blocks = list_without(handle->mmh_blocks, block);
  }
};

template <class Handle, class Block>
struct LinkedBlocks {
  static void add(Handle* handle, Block* block) {
    handle->mmh_blocks = linked_list_with(handle->mmh_blocks, block);
  }

  // Stops the process when the block is not the handle's: then the block before it does not link to
  // it.
  static void remove(Handle* handle, Block* block) {
    const Block* const before = block->index.previous;
    if (before == nullptr) {
      require(handle->mmh_blocks == block);
    } else {
      const MmHeap* const heap = Chunks::find(handle->mmh_head, before);
      require(heap != nullptr && aligned(heap, before) && before->next == block);
    }
    handle->mmh_blocks = linked_list_without(handle->mmh_blocks, block);
  }
};

using Blocks = std::conditional_t<kMmIndexed, LinkedBlocks<MmHandle, MmBlock>,
                                  WalkedBlocks<MmHandle, MmBlock>>;

// The chunk that holds a user address; stops the process when there is none.
inline MmHeap* heap_of_user(const MmPoolHead* head, const void* ptr,
                            CallSite site = CallSite::current()) {
  MmHeap* const heap = Chunks::find(head, ptr);
  require(heap != nullptr && aligned(heap, ptr), site);
  require(address(ptr) - address(heap) >= kHeapOverhead + sizeof(MmBlock), site);
  return heap;
}

}  // namespace comnlib::mm
