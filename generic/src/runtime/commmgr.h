// The memory manager's records and the routines that its files share.
//
// Layering, from the chunk to the caller:
//   heap   a chunk: MmHeap, then blocks side by side, each a size word and its bytes; the free ones
//          are on the heap's list, by address
//   block  what one handle took from the heaps: a link (MmBlock) and the bytes, on mmh_blocks
//   buddy block, uniform node, alloc-only region   what a discipline makes of a block
//
// The memory is header, link and user memory in turn and may start at any address: within a heap
// everything is a multiple of a word away from the heap's start. Other code reads these blocks too,
// so their layouts and the order of the lists are fixed.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "comnlib/memory.h"
#include "diag/diag.h"
#include "machine.h"

// The same bytes are header, link and user memory in turn, at any address.
#define MM_OVERLAY __attribute__((packed, may_alias))
// A number that takes a whole word, since a pointer or the user's bytes follow.
#define MM_WORD(type, name)                   \
  union {                                     \
    type name;                                \
    CS_BYTE name##_bytes[comnlib::kWordSize]; \
  }

struct MmHeap;
struct MmBlock;

// With words of 8 bytes the records have room for an index (commmgr_index.h): finding a chunk, and
// removing a chunk or a block from its list, does not depend on how many there are. With words of 4
// bytes their layouts leave no room, and the lists are walked.
inline constexpr bool kMmIndexed = comnlib::kWordSize == 8;

struct MmNoIndex {};

struct MmHeadIndex {
  MmHeap* root; /* of the tree of chunks, ordered by address */
} MM_OVERLAY;

struct MmHeapIndex {
  MmHeap* previous; /* on the list of the head */
  MmHeap* child[2]; /* below and above in the tree */
} MM_OVERLAY;

struct MmBlockIndex {
  MmBlock* previous;
} MM_OVERLAY;

template <class Index>
using MmIndex = std::conditional_t<kMmIndexed, Index, MmNoIndex>;

struct MmPoolHead {
  MM_SBREAK_FUNC mph_sbreak;
  MM_UNSBREAK_FUNC mph_unsbreak;
  CS_VOID* mph_param;
  MM_LOCK_FUNC mph_lock;
  MM_UNLOCK_FUNC mph_unlock;
  CS_VOID* mph_lockarg;
  CS_INT mph_chunksize;         /* least size of a chunk to obtain */
  CS_INT mph_totalsize;         /* of all chunks ever added; stays at the largest number */
  MM_WORD(CS_INT, mph_maxsize); /* limit of mph_totalsize, or MM_NO_LIMIT */
  MmHeap* mph_heap;             /* newest first */
  CS_CONTEXT* mph_ctx;          /* null for a pool in caller memory */
  MM_WORD(CS_INT, mph_status);
  [[no_unique_address]] MmIndex<MmHeadIndex> index;
} MM_OVERLAY;

// A free block of a heap. `size` counts the bytes after the size word. A block of less than a
// word has no room for the link; it can only be the last of its heap, where the link is null
// anyway.
struct MmList {
  MM_WORD(CS_INT, size);
  MmList* link;
} MM_OVERLAY;

struct MmHeap {
  CS_INT size; /* of the chunk, this header included */
  CS_INT status;
  MmHeap* next;
  MmList* free; /* by address */
  [[no_unique_address]] MmIndex<MmHeapIndex> index;
  CS_BYTE buffer[4];
} MM_OVERLAY;

struct MmBlock {
  MmBlock* next;
  [[no_unique_address]] MmIndex<MmBlockIndex> index;
} MM_OVERLAY;

// A buddy block: `size` is the header word (see mm::kLarge and below), the links are valid while it
// is free.
struct MmDList {
  MM_WORD(CS_UINT, size);
  MmDList* next;
  MmDList* prev;
} MM_OVERLAY;

struct MmBuddyPool {
  MM_WORD(CS_INT, bpmax); /* highest order; 16: see top_order */
  MmDList* free[16];
} MM_OVERLAY;

struct MmUniformPool {
  CS_INT uniform_size; /* as requested */
  CS_INT node_size;    /* header word included */
  CS_VOID* free;
} MM_OVERLAY;

struct MmAllocOnlyPool {
  CS_VOID* free; /* regions, newest first */
} MM_OVERLAY;

struct _mmhandle {
  MmPoolHead* mmh_head;
  CS_INT mmh_type;
  CS_INT mmh_blocksize;
  CS_INT mmh_status;
  CS_INT mmh_tagid;
  MmBlock* mmh_blocks; /* newest first */
  MmHandle* mmh_parent;
  MmHandle* mmh_child;   /* newest first */
  MmHandle* mmh_sibling; /* next child of the same parent */
  union MM_OVERLAY {
    MmBuddyPool buddy;
    MmUniformPool uniform;
    MmAllocOnlyPool alloconly;
  } mmh_pool;
} MM_OVERLAY;

static_assert(sizeof(MmPoolHead) == COMN_BY_HOST(48, 96));
static_assert(offsetof(MmPoolHead, mph_unsbreak) == COMN_BY_HOST(4, 8));
static_assert(offsetof(MmPoolHead, mph_param) == COMN_BY_HOST(8, 16));
static_assert(offsetof(MmPoolHead, mph_lock) == COMN_BY_HOST(12, 24));
static_assert(offsetof(MmPoolHead, mph_unlock) == COMN_BY_HOST(16, 32));
static_assert(offsetof(MmPoolHead, mph_lockarg) == COMN_BY_HOST(20, 40));
static_assert(offsetof(MmPoolHead, mph_chunksize) == COMN_BY_HOST(24, 48));
static_assert(offsetof(MmPoolHead, mph_totalsize) == COMN_BY_HOST(28, 52));
static_assert(offsetof(MmPoolHead, mph_maxsize) == COMN_BY_HOST(32, 56));
static_assert(offsetof(MmPoolHead, mph_heap) == COMN_BY_HOST(36, 64));
static_assert(offsetof(MmPoolHead, mph_ctx) == COMN_BY_HOST(40, 72));
static_assert(offsetof(MmPoolHead, mph_status) == COMN_BY_HOST(44, 80));
static_assert(sizeof(MmHandle) == COMN_BY_HOST(104, 192));
static_assert(offsetof(MmHandle, mmh_type) == COMN_BY_HOST(4, 8));
static_assert(offsetof(MmHandle, mmh_blocksize) == COMN_BY_HOST(8, 12));
static_assert(offsetof(MmHandle, mmh_status) == COMN_BY_HOST(12, 16));
static_assert(offsetof(MmHandle, mmh_tagid) == COMN_BY_HOST(16, 20));
static_assert(offsetof(MmHandle, mmh_blocks) == COMN_BY_HOST(20, 24));
static_assert(offsetof(MmHandle, mmh_parent) == COMN_BY_HOST(24, 32));
static_assert(offsetof(MmHandle, mmh_child) == COMN_BY_HOST(28, 40));
static_assert(offsetof(MmHandle, mmh_sibling) == COMN_BY_HOST(32, 48));
static_assert(offsetof(MmHandle, mmh_pool) == COMN_BY_HOST(36, 56));
static_assert(sizeof(MmBuddyPool) == COMN_BY_HOST(68, 136));
static_assert(offsetof(MmBuddyPool, free) == COMN_BY_HOST(4, 8));
static_assert(sizeof(MmUniformPool) == COMN_BY_HOST(12, 16));
static_assert(offsetof(MmUniformPool, node_size) == 4);
static_assert(offsetof(MmUniformPool, free) == 8);
static_assert(sizeof(MmAllocOnlyPool) == COMN_BY_HOST(4, 8));
static_assert(sizeof(MmList) == COMN_BY_HOST(8, 16));
static_assert(offsetof(MmList, link) == COMN_BY_HOST(4, 8));
static_assert(offsetof(MmHeap, status) == 4);
static_assert(offsetof(MmHeap, next) == 8);
static_assert(offsetof(MmHeap, free) == COMN_BY_HOST(12, 16));
static_assert(offsetof(MmHeap, buffer) == COMN_BY_HOST(16, 48));
static_assert(sizeof(MmBlock) == COMN_BY_HOST(4, 16));
static_assert(sizeof(MmDList) == COMN_BY_HOST(12, 24));
static_assert(offsetof(MmDList, next) == COMN_BY_HOST(4, 8));
static_assert(offsetof(MmDList, prev) == COMN_BY_HOST(8, 16));
static_assert(sizeof(MmPoolHead) + sizeof(MmHandle) == MM_CTL_SIZE);

extern "C" {

// Heaps (commmgr_heap.cpp). Sizes are at least 0.

// Takes a block of `size` bytes from the first heap that has one, or from a new chunk.
CS_RETCODE com___getheap(MmHandle* handle, CS_INT size, CS_VOID** out);
// Obtains a chunk of exactly `size` bytes and adds it. CS_FAIL without a source, beyond the limit
// and when the source has none.
CS_RETCODE com___sbreak(MmHandle* handle, CS_INT size);
// Adds memory of at least kLeastHeap bytes as a heap.
CS_RETCODE com___addheap(MmHandle* handle, CS_VOID* memory, CS_INT length, CS_INT status);
// Takes back what com___getheap handed out; gives the chunk back when all of it is free then.
CS_RETCODE com___putheap(MmHandle* handle, CS_VOID* ptr);
// Puts a block on its heap's list and merges it with its neighbours.
CS_RETCODE com___insert_block(MmHeap* heap, MmList* block);
// The same as com___getheap and com___putheap, for a block on the handle's own list.
CS_RETCODE com___getblock(MmHandle* handle, CS_INT size, CS_VOID** out);
CS_RETCODE com___putblock(MmHandle* handle, CS_VOID* ptr);

// Pools (commmgr.cpp). The caller holds the lock.
CS_RETCODE com___subpool(MmHandle* parent, CS_INT tag, MmHandle** subpool);
CS_RETCODE com___remove_subpool(MmHandle* handle);
// Removes the family of a top pool and unlocks.
CS_RETCODE com___remove_pool(MmHandle* handle);

// Buddy blocks (commmgr_buddy.cpp): halves a block of a higher order until there is one of `order`.
// CS_FAIL when there is none to halve.
CS_RETCODE com___buddy_split(MmHandle* handle, CS_INT order);

// Invariants (commmgr_check.cpp): CS_SUCCEED when the heaps and all handles of the family are
// consistent, else CS_FAIL. Walks everything; for tests and debug builds.
CS_RETCODE com__mm_validate(const MmHandle* handle);
}

namespace comnlib::mm {

// mph_status
inline constexpr CS_INT kHeadAllocated = 1;
inline constexpr CS_INT kHeadOfCaller = 2;
inline constexpr CS_INT kOwnMutex = 16;
inline constexpr CS_INT kRemoving = 32;  // no more locking

// mmh_status
inline constexpr CS_INT kHandleAllocated = 1;
inline constexpr CS_INT kHandleOfCaller = 2;
inline constexpr CS_INT kInUse = 8;  // discipline and block size are fixed

// MmHeap.status
inline constexpr CS_INT kHeapObtained = 1;
inline constexpr CS_INT kHeapOfCaller = 2;

inline constexpr CS_INT kWord = static_cast<CS_INT>(kWordSize);
inline constexpr CS_INT kHeapHeader = offsetof(MmHeap, buffer);
// A heap of one free block: the heap's header and the block's size word.
inline constexpr CS_INT kHeapOverhead = kHeapHeader + kWord;
inline constexpr CS_INT kLeastHeap = 2 * kWord + 1;
// The link of a handle's block.
inline constexpr CS_INT kBlockLink = sizeof(MmBlock);
inline constexpr CS_INT kRegionHeader = 24;
// Larger requests cannot be met; below it no sum of a size and its overheads overflows.
inline constexpr CS_INT kMaxRequest = std::numeric_limits<CS_INT>::max() - 16 * kWord;

// The header word of a buddy block.
inline constexpr CS_UINT kLarge = 0x80000000;     // from the heap directly; the rest is the size
inline constexpr CS_UINT kFree = 0x40000000;      // on a free list
inline constexpr CS_UINT kMarkMask = 0x001ffff0;  // base mark: address bits of the top-level block
inline constexpr CS_UINT kOrderMask = 0x0000000f;
inline constexpr CS_INT kMaxOrder = 15;  // of a block: its header has four bits for it
// A block of order k spans 2^(k + kMinShift) bytes; that of order 0 is four words.
inline constexpr CS_INT kMinShift = kWord == 4 ? 4 : 5;
// The address bits that a base mark holds, as many as the offsets in the largest block have.
inline constexpr CS_UINT kAddressMask = (CS_UINT{1} << (kMaxOrder + kMinShift)) - kWord;
inline constexpr CS_INT kMarkShift = 6 - kMinShift;
static_assert(kAddressMask << kMarkShift == kMarkMask);

constexpr CS_INT span_of(CS_INT order) {
  return CS_INT{1} << (order + kMinShift);
}

// The order in which a pool's top-level blocks enter. A pool whose highest order is 16 has no list
// for it: its top-level blocks enter as two of order 15.
inline CS_INT top_order(const MmBuddyPool& pool) {
  return std::min(pool.bpmax, kMaxOrder);
}

constexpr CS_INT order_of(CS_UINT header) {
  return static_cast<CS_INT>(header & kOrderMask);
}

constexpr CS_INT round_to_word(CS_INT size) {
  return (size + kWord - 1) & ~(kWord - 1);
}

inline std::uintptr_t address(const void* pointer) {
  return reinterpret_cast<std::uintptr_t>(pointer);
}

// Whether a pointer into a heap is a multiple of a word away from the heap's start.
inline bool aligned(const MmHeap* heap, const void* pointer) {
  return (address(pointer) - address(heap)) % kWord == 0;
}

// The record `offset` bytes after another one, or before it when that is negative.
template <class Record>
Record* at(void* base, CS_INT offset) {
  return reinterpret_cast<Record*>(static_cast<CS_BYTE*>(base) + offset);
}
template <class Record>
const Record* at(const void* base, CS_INT offset) {
  return reinterpret_cast<const Record*>(static_cast<const CS_BYTE*>(base) + offset);
}

// How far a block is from the start of its top-level block, by the base mark. Marks and addresses
// are taken modulo the largest span, so a top-level block may cross a boundary of that size.
inline CS_UINT offset_in_top(const void* block, CS_UINT header) {
  return (static_cast<CS_UINT>(address(block)) - ((header & kMarkMask) >> kMarkShift)) &
         kAddressMask;
}

// The link of a free block of a heap; a block without room for it is the last one.
inline MmList* link_of(const MmList* block) {
  return block->size < kWord ? nullptr : block->link;
}

// The end counts as inside: an alloc-only pool hands it out for an empty request.
inline bool contains(const MmHeap* heap, const void* pointer) {
  return address(pointer) - address(heap) <= static_cast<CS_UINT>(heap->size);
}

}  // namespace comnlib::mm
