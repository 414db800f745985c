/**
 * @file
 * Memory: the host allocator that library records come from, and memory pools.
 */
#ifndef COMNLIB_MEMORY_H
#define COMNLIB_MEMORY_H

#include <stddef.h>

#include "context.h"
#include "result.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name The host's allocator
 * The library brings weak defaults over the C library's; a host that defines one of them defines
 * all four, and they replace the defaults in the static archive and in the shared object. Sizes are
 * in bytes; null means failure. Called from any thread that calls the library. */
/**@{*/
/** A block of `size` bytes, aligned for every record of the library, or null. */
COMN_API CS_VOID* comn_malloc(size_t size);

/** A zero-filled block for `count` elements of `size` bytes, or null. */
COMN_API CS_VOID* comn_calloc(size_t count, size_t size);

/** Changes the size of a block, which may move with its contents; null: it is unchanged. */
COMN_API CS_VOID* comn_realloc(CS_VOID* block, size_t size);

/** Gives a block back; does nothing when it is null. */
COMN_API CS_VOID comn_free(CS_VOID* block);
/**@}*/

/**
 * A memory pool.
 *
 * A pool hands out memory that it carves out of large chunks. The chunks come from a context
 * (comn_mminit) or are one area of the caller's (comn_mmmanage). A pool works by one of three
 * disciplines, fixed by its first allocation. A pool can have subpools, each with a discipline and
 * blocks of its own, that share the chunks: a subpool's memory goes back all at once when it is
 * dropped. A pool and its subpools are a family.
 *
 * A new pool is a buddy pool with a block size of 4096, a chunk size of 4120 and no limit; a
 * subpool takes discipline and block size from its parent.
 *
 * Sizes are in bytes. Chunks and areas of the caller's may start at any address; every address
 * handed out is a multiple of a word away from the start of its chunk. A word has the size of a
 * pointer, 4 or 8 bytes; of the numbers that follow from it those of a 64-bit host are in brackets.
 * A null pointer or a negative size stops the process, and so does any other misuse that is
 * noticed: a dropped handle, a pointer that the pool did not hand out or has already taken back, a
 * damaged block header.
 *
 * Thread safety: with a lock installed, each call on any handle of the family runs under it.
 * comn_mminit installs one by itself when the context has a thread table. Without a lock the host
 * serialises the calls on a family. Installing and clearing the lock, and dropping a family, are
 * for one thread, when no other uses it.
 */
typedef struct _mmhandle MmHandle;

/** Obtains a chunk of `size` bytes; null when there is none. */
typedef CS_VOID* (*MM_SBREAK_FUNC)(MmHandle* handle, CS_VOID* param, CS_INT size);
/** Gives a chunk back. */
typedef CS_VOID (*MM_UNSBREAK_FUNC)(MmHandle* handle, CS_VOID* param, CS_VOID* chunk);
/**
 * Takes the lock of a family. The handle is that of the call, or the family's top. Any result but
 * CS_SUCCEED is a failure: the call returns it and does nothing.
 */
typedef CS_RETCODE (*MM_LOCK_FUNC)(MmHandle* handle, CS_VOID* lockarg);
/** Releases the lock of a family. Only clearing the lock looks at the result, and returns it. */
typedef CS_RETCODE (*MM_UNLOCK_FUNC)(MmHandle* handle, CS_VOID* lockarg);

/** Disciplines. */
enum {
  MM_POOL_NONE = 2235,      /**< not chosen yet: allocating stops the process */
  MM_POOL_BUDDY = 2236,     /**< power-of-two blocks; the default */
  MM_POOL_ALLOCONLY = 2237, /**< no single block is given back, only the whole pool */
  MM_POOL_UNIFORM = 2238    /**< all blocks of one size, that of the first request */
};

/** Properties of comn_mmproperty. */
enum {
  MM_PROP_POOLTYPE = 1235,
  MM_PROP_SBREAK = 1236,
  MM_PROP_SBREAKARG = 1237,
  MM_PROP_UNSBREAK = 1238,
  MM_PROP_LOCK = 1239,
  MM_PROP_LOCKARG = 1240,
  MM_PROP_UNLOCK = 1241,
  MM_PROP_CHUNKSIZE = 1242,
  MM_PROP_MAXSIZE = 1243,
  MM_PROP_ADDMEMORY = 1244,
  MM_PROP_CTLSIZE = 1245,
  MM_PROP_SUBPOOL = 1246,
  MM_PROP_BLOCKSIZE = 1247
};

/** Sizes and arguments. */
enum {
  MM_CTL_SIZE = COMN_BY_HOST(152, 288), /**< bytes of a control area: head and handle */
  MM_NO_LIMIT = -9999, /**< what MM_PROP_MAXSIZE reads without a limit; cannot be set */
  MM_FORCE_DROP = 300  /**< option of comn_mmdrop */
};

/**
 * Creates a pool on a context whose ctxmalloc and ctxfree give and take the chunks; both must be
 * set, which is not checked. A ctxversion below 113 stops the process. When `*mmh` is not null it
 * is a control area of MM_CTL_SIZE bytes that outlives the pool; else the pool allocates one from
 * the context. The handle is stored through `mmh`. When the context has a thread table the pool
 * makes a mutex with its create_mutex_fn and locks with it. CS_FAIL when the context has no memory;
 * otherwise what creating the mutex returned. `*mmh` is then as before.
 */
COMN_API CS_RETCODE comn_mminit(CS_CONTEXT* ctx, MmHandle** mmh);

/**
 * Creates a pool in the `buflen` bytes at `buffer`, which outlive it. When `*mmh` is not null it is
 * a control area as above and all of the buffer is the pool's memory; else the first MM_CTL_SIZE
 * bytes of the buffer become the control area. The handle is stored through `mmh`. The pool has no
 * lock and cannot grow, unless its properties say otherwise.
 *
 * CS_FAIL when the buffer has to hold the control area and is shorter than 104 [192] bytes. Lengths
 * from there to 151 and from 153 to 160 [287, 289 to 304] stop the process; so do lengths below 9
 * [17] with a control area of the caller's.
 *
 * The pool's own overhead is 20 [56] bytes a chunk. A buddy pool takes its blocks from top-level
 * blocks of the block size, so with the default one it needs a chunk of 4,124 [4,176] bytes, 4,276
 * [4,464] with the control area: set MM_PROP_BLOCKSIZE lower first where there is less.
 */
COMN_API CS_RETCODE comn_mmmanage(CS_VOID* buffer, CS_INT buflen, MmHandle** mmh);

/**
 * Stores the address of `size` zeroed bytes through `out_ptr`; a size of 0 gives a block too.
 * CS_MEM_ERROR when neither the chunks nor the source of chunks have room; CS_FAIL when a uniform
 * pool is asked for another size than the first time; what the lock returned when that failed.
 *
 * Buddy pools: CS_SUCCEED can come without a block. The pool has then merged free blocks but made
 * none that is large enough, and `*out_ptr` is unchanged. Set `*out_ptr` to null first and call
 * again. A first allocation that fails leaves the block size as it was set.
 */
COMN_API CS_RETCODE comn_mmalloc(MmHandle* handle, CS_INT size, CS_VOID** out_ptr);

/**
 * Takes back a block that this handle handed out; null stops the process. CS_FAIL for an alloc-only
 * pool. A lock that cannot be taken stops the process. In a 32-bit host the call searches the
 * family's chunks, newest first, and also the handle's blocks when the block is larger than the
 * block size.
 *
 * A chunk from a source goes back to it when all of it is free. Only blocks that are larger than
 * the block size, and all blocks of a subpool that is dropped, become free in that sense: the
 * smaller blocks of a buddy or uniform pool stay with their handle for its next allocations.
 */
COMN_API CS_RETCODE comn_mmfree(MmHandle* handle, CS_VOID* ptr);

/**
 * Makes the block at `*ptr_inout`, of a buddy pool, hold `new_size` bytes; it may move. A null
 * block stops the process; a size of 0 keeps the block. Bytes beyond the old contents are not
 * cleared. CS_FAIL for the other disciplines; CS_MEM_ERROR, and success without a block, as for
 * comn_mmalloc: pointer and block are then as before.
 *
 * Known limit: a block of 12, 28, 60, ... [24, 56, ...] usable bytes is taken to hold 16, 32, 64,
 * ... [32, 64, ...]. A request of 13 to 16, 29 to 32, ... [25 to 32, ...] bytes therefore succeeds
 * without moving the block, although up to a word is missing. Ask for a word more.
 */
COMN_API CS_RETCODE comn_mmrealloc(MmHandle* handle, CS_INT new_size, CS_VOID** ptr_inout);

/**
 * Gets (CS_GET), sets (CS_SET) or clears (CS_CLEAR) a property. Numbers, addresses and handles are
 * read and written through `buffer`; a function or an opaque argument to set is `buffer` itself.
 * `buflen` counts only where a property names it. A successful get stores the size of the value
 * through `outlen` when that is not null: 4 for a number, the size of a pointer for the others.
 *
 * - MM_PROP_POOLTYPE, MM_PROP_BLOCKSIZE: the discipline; the size of a top-level buddy block, of a
 *   slab of uniform nodes, the least size of an alloc-only region. Set before the first allocation
 *   only, else CS_FAIL. That allocation adapts the block size: a buddy pool rounds it up to a power
 *   of two, 1,048,576 [2,097,152] at most, and adds a word (4096 reads 4100 [4104] then); a uniform
 *   pool cuts it down to whole nodes.
 * - MM_PROP_CHUNKSIZE: least size of a chunk to obtain.
 * - MM_PROP_MAXSIZE: limit for the sum of all chunks ever obtained, those given back included.
 * - MM_PROP_SBREAK, MM_PROP_UNSBREAK, MM_PROP_SBREAKARG: where chunks come from and go, and their
 *   argument (getting the argument writes nothing).
 * - MM_PROP_LOCK, MM_PROP_UNLOCK, MM_PROP_LOCKARG: the lock and its argument (getting that writes
 *   nothing). The lock works only when both functions are set. Set the unlock function and the
 *   argument first and the lock function last: as soon as both are there every call unlocks when it
 *   ends, except the one that sets the lock function. A lock function is not replaced: CS_FAIL.
 *   Clearing any of the three clears all of them. It calls the unlock function, if there is one,
 *   and returns its result. A mutex that the pool has made is not deleted then; it belongs to the
 *   create_mutex_fn that made it.
 * - MM_PROP_ADDMEMORY: set: gives the pool the `buflen` bytes at `buffer` as a further chunk, which
 *   outlives the pool. Less than 9 [17] bytes stop the process. A get stops it too.
 * - MM_PROP_CTLSIZE: get: MM_CTL_SIZE. Needs no lock. Set: CS_FAIL.
 * - MM_PROP_SUBPOOL: get: the handle of the subpool with the tag `buflen`, created when there is
 *   none (CS_MEM_ERROR when it cannot be). Set: CS_FAIL.
 *
 * Stops on any other action or property, on clearing any but the lock's three, on sizes below 1 and
 * on unknown disciplines.
 */
COMN_API CS_RETCODE comn_mmproperty(MmHandle* mmh, CS_INT action, CS_INT property, CS_VOID* buffer,
                                    CS_INT buflen, CS_INT* outlen);

/**
 * Drops a subpool, giving its memory back to the family, or with a top pool the whole family,
 * giving the chunks back. `option` is CS_UNUSED or MM_FORCE_DROP.
 * CS_BUSY when there are subpools below; with MM_FORCE_DROP any handle drops the whole family.
 */
COMN_API CS_RETCODE comn_mmdrop(MmHandle* mmh, CS_INT option);

/** Not supported; stops the process. */
COMN_API CS_RETCODE comn_mmdiag(void);

#ifdef __cplusplus
}
#endif

#endif
