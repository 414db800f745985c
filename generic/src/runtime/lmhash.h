// The hash of a key, and the two hash-table kinds. The hash values never change, since other code
// reads tables that are laid out by them.
#pragma once

#include "runtime/lmutils.h"

extern "C" {

// The key's number: 0 for an empty key. A negative size stops the process. Arithmetic wraps at 32
// bits, and bytes count as signed.
CS_UINT lm___api_key_to_uint(const CS_VOID* key, CS_INT key_size);

// Home address: number modulo table size, which is at least 1.
CS_INT lm__api_key_to_hash(const CS_VOID* key, CS_INT key_size, CS_INT table_size);

// Increment of the first probe: number * 7 modulo (table size - 1), plus 1. A table size of 1 ends
// the process by a division by zero.
CS_INT lm__api_key_to_hash2(const CS_VOID* key, CS_INT key_size, CS_INT table_size);

// Gives an open-addressing table another size. CS_FAIL when it holds more elements than that;
// CS_MEM_ERROR; both leave it as it was. Success clears the cursor.
CS_RETCODE lm___dhash_rehash(LM_HANDLE* handle, CS_INT table_size);
}

namespace comnlib {

extern const KindOps chash_ops;
extern const KindOps dhash_ops;

}  // namespace comnlib
