// The calls on pools in short, and the sizes that go by the word.
#pragma once

#include <utility>

#include "runtime/commmgr.h"
#include "support/hosts.h"

namespace pools {

using hosts::PoolContext;

inline constexpr CS_INT kWord = sizeof(void*);
inline constexpr CS_INT kHeadSize = kWord == 4 ? 48 : 96;
inline constexpr CS_INT kHandleSize = kWord == 4 ? 104 : 192;
inline constexpr CS_INT kControlSize = kHeadSize + kHandleSize;
inline constexpr CS_INT kOverhead = kWord == 4 ? 20 : 56;  // of a chunk
inline constexpr CS_INT kLink = kWord == 4 ? 4 : 16;       // of a handle's block
inline constexpr CS_INT kKinds[] = {MM_POOL_BUDDY, MM_POOL_ALLOCONLY, MM_POOL_UNIFORM};

constexpr CS_INT rounded(CS_INT size) {
  return (size + kWord - 1) / kWord * kWord;
}
// Bytes of a buddy block of that order, its header included, and the most that a user gets of it.
constexpr CS_INT span(CS_INT order) {
  return (4 * kWord) << order;
}
constexpr CS_INT most(CS_INT order) {
  return span(order) - kWord;
}

inline CS_RETCODE put(MmHandle* pool, CS_INT property, void* value, CS_INT size = 0) {
  return comn_mmproperty(pool, CS_SET, property, value, size, nullptr);
}

template <class Function>
CS_RETCODE put_function(MmHandle* pool, CS_INT property, Function* function) {
  return put(pool, property, reinterpret_cast<void*>(function));
}

inline CS_RETCODE set(MmHandle* pool, CS_INT property, CS_INT value) {
  return put(pool, property, &value);
}

inline CS_RETCODE clear(MmHandle* pool, CS_INT property) {
  return comn_mmproperty(pool, CS_CLEAR, property, nullptr, 0, nullptr);
}

template <class Value = CS_INT>
Value get(MmHandle* pool, CS_INT property, CS_INT buflen = CS_UNUSED) {
  Value value = {};
  CS_INT outlen = 0;
  EXPECT_EQ(CS_SUCCEED, comn_mmproperty(pool, CS_GET, property, &value, buflen, &outlen));
  EXPECT_EQ(static_cast<CS_INT>(sizeof value), outlen);
  return value;
}

inline MmHandle* subpool(MmHandle* pool, CS_INT tag) {
  return get<MmHandle*>(pool, MM_PROP_SUBPOOL, tag);
}

inline CS_BYTE* allocate(MmHandle* pool, CS_INT size) {
  void* memory = nullptr;
  EXPECT_EQ(CS_SUCCEED, comn_mmalloc(pool, size, &memory)) << size;
  return static_cast<CS_BYTE*>(memory);
}

inline CS_UINT& header_of(void* user) {
  return *reinterpret_cast<CS_UINT*>(static_cast<CS_BYTE*>(user) - kWord);
}

// A pool on a context or in caller memory, dropped with all its subpools at the end.
struct Pool {
  explicit Pool(PoolContext& host, CS_INT kind = MM_POOL_BUDDY, CS_INT blocksize = 4096) {
    EXPECT_EQ(CS_SUCCEED, comn_mminit(&host, &handle));
    EXPECT_EQ(CS_SUCCEED, set(handle, MM_PROP_POOLTYPE, kind));
    EXPECT_EQ(CS_SUCCEED, set(handle, MM_PROP_BLOCKSIZE, blocksize));
  }
  // Without `control` its records are in the memory.
  Pool(CS_BYTE* memory, std::size_t length, CS_BYTE* control = nullptr)
      : handle(reinterpret_cast<MmHandle*>(control)) {
    EXPECT_EQ(CS_SUCCEED, comn_mmmanage(memory, static_cast<CS_INT>(length), &handle));
  }
  ~Pool() { EXPECT_TRUE(handle == nullptr || comn_mmdrop(handle, MM_FORCE_DROP) == CS_SUCCEED); }
  Pool(const Pool&) = delete;
  operator MmHandle*() const { return handle; }
  MmHandle* operator->() const { return handle; }
  MmHandle* release() { return std::exchange(handle, nullptr); }
  MmHandle* handle = nullptr;
};

}  // namespace pools
