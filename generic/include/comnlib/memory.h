/*
 * Memory: the host allocator that library records come from.
 */
#ifndef COMNLIB_MEMORY_H
#define COMNLIB_MEMORY_H

#include <stddef.h>

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * The host's allocator. The library brings weak defaults over the C library's; a host that defines
 * one of them defines all four, and its definitions win in the static archive and in the shared
 * object. Sizes are in bytes; null means failure. Called from any thread that calls the library.
 */
COMN_API CS_VOID* comn_malloc(size_t size);
COMN_API CS_VOID* comn_calloc(size_t count, size_t size);
COMN_API CS_VOID* comn_realloc(CS_VOID* block, size_t size);
COMN_API CS_VOID comn_free(CS_VOID* block);

#ifdef __cplusplus
}
#endif

#endif
