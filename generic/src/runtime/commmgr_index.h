// How a pool finds the chunk of an address, and how chunks and blocks come onto their lists and off
// them: by walks over the lists, or, where the records have room for it, by a tree of the chunks
// and by links in both directions. The lists have the same order either way, newest first.
#pragma once

#include <cstdint>
#include <utility>

#include "runtime/commmgr.h"

namespace comnlib::mm {

// The item in front of `wanted` on a list that begins with `first`; null when it is the first
// itself. Stops when it is not on the list.
template <class Item, class Next>
Item* predecessor(Item* first, const Item* wanted, Next next, CallSite site = CallSite::current()) {
  Item* before = nullptr;
  for (Item* item = first; item != wanted; item = next(item)) {
    require(item != nullptr, site);
    before = item;
  }
  return before;
}

template <class Head, class Heap>
struct WalkedChunks {
  // The chunk that holds an address, or null.
  static Heap* find(const Head* head, const void* pointer) {
    Heap* heap = head->mph_heap;
    while (heap != nullptr && !contains(heap, pointer)) heap = heap->next;
    return heap;
  }

  static void add(Head* head, Heap* heap) {
    heap->next = head->mph_heap;
    head->mph_heap = heap;
  }

  static void remove(Head* head, Heap* heap) {
    Heap* const before =
        predecessor(head->mph_heap, heap, [](const Heap* item) { return item->next; });
    (before == nullptr ? void(head->mph_heap = heap->next) : void(before->next = heap->next));
  }
};

// A treap: ordered by address from left to right, and by a hash of the address from top to bottom,
// which keeps the expected depth at some twice the logarithm of the number of chunks.
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
    Heap* const first = head->mph_heap;
    heap->next = first;
    heap->index = {};
    if (first != nullptr) first->index.previous = heap;
    head->mph_heap = heap;
    head->index.root = insert(head->index.root, heap);
  }

  static void remove(Head* head, Heap* heap) {
    Heap* const before = heap->index.previous;
    (before == nullptr ? void(head->mph_heap = heap->next) : void(before->next = heap->next));
    if (heap->next != nullptr) heap->next->index.previous = before;
    head->index.root = erase(head->index.root, heap);
  }

 private:
  static std::uint64_t rank(const Heap* heap) {
    const std::uint64_t mixed = std::uint64_t{address(heap)} * 0x9e3779b97f4a7c15U;
    return (mixed ^ mixed >> 32) * 0xd6e8feb86659fd93U;
  }

  // The chunks of a tree below an address, and those above it.
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
    block->next = handle->mmh_blocks;
    handle->mmh_blocks = block;
  }

  // Stops when the block is not the handle's.
  static void remove(Handle* handle, Block* block) {
    Block* const before =
        predecessor(handle->mmh_blocks, block, [](const Block* item) { return item->next; });
    (before == nullptr ? void(handle->mmh_blocks = block->next) : void(before->next = block->next));
  }
};

template <class Handle, class Block>
struct LinkedBlocks {
  static void add(Handle* handle, Block* block) {
    Block* const first = handle->mmh_blocks;
    block->next = first;
    block->index.previous = nullptr;
    if (first != nullptr) first->index.previous = block;
    handle->mmh_blocks = block;
  }

  // Stops when the block is not the handle's: the one in front of it says so.
  static void remove(Handle* handle, Block* block) {
    Block* const before = block->index.previous;
    if (before == nullptr) {
      require(handle->mmh_blocks == block);
      handle->mmh_blocks = block->next;
    } else {
      const MmHeap* const heap = Chunks::find(handle->mmh_head, before);
      require(heap != nullptr && aligned(heap, before) && before->next == block);
      before->next = block->next;
    }
    if (block->next != nullptr) block->next->index.previous = before;
  }
};

using Blocks = std::conditional_t<kMmIndexed, LinkedBlocks<MmHandle, MmBlock>,
                                  WalkedBlocks<MmHandle, MmBlock>>;

// The chunk that holds a user address; stops when there is none.
inline MmHeap* heap_of_user(const MmPoolHead* head, const void* ptr,
                            CallSite site = CallSite::current()) {
  MmHeap* const heap = Chunks::find(head, ptr);
  require(heap != nullptr && aligned(heap, ptr), site);
  require(address(ptr) - address(heap) >= kHeapOverhead + sizeof(MmBlock), site);
  return heap;
}

}  // namespace comnlib::mm
