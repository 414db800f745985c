// A host for pools that records the chunks it gives, and the calls on pools in short.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <utility>
#include <vector>

#include "comnlib/memory.h"
#include "runtime/commmgr.h"

namespace pools {

// Sizes that go by the word.
inline constexpr CS_INT kWord = sizeof(void*);
inline constexpr CS_INT kHeadSize = kWord == 4 ? 48 : 96;
inline constexpr CS_INT kHandleSize = kWord == 4 ? 104 : 192;
inline constexpr CS_INT kControlSize = kHeadSize + kHandleSize;
inline constexpr CS_INT kOverhead = kWord == 4 ? 20 : 56;  // of a chunk
inline constexpr CS_INT kLink = kWord == 4 ? 4 : 16;       // of a handle's block

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

struct Host : CS_CONTEXT {
  // Its chunks start `shift` bytes behind an aligned address.
  explicit Host(int with_shift = 0) : CS_CONTEXT{}, shift(with_shift) {
    ctxversion = 113;
    ctxmalloc = [](CS_CONTEXT* self, CS_INT size) { return static_cast<Host*>(self)->give(size); };
    ctxfree = [](CS_CONTEXT* self, CS_VOID* block) {
      EXPECT_EQ(1u, static_cast<Host*>(self)->live.erase(block));
      std::free(static_cast<char*>(block) - static_cast<Host*>(self)->shift);
    };
  }
  Host(const Host&) = delete;
  ~Host() { EXPECT_TRUE(live.empty()) << "everything is given back"; }
  void* give(CS_INT size) {
    requests.push_back(size);
    auto* block = static_cast<char*>(std::malloc(static_cast<std::size_t>(size + shift)));
    return *live.insert(block + shift).first;
  }

  int shift;
  std::set<void*> live;
  std::vector<CS_INT> requests;
};

inline CS_RETCODE set(MmHandle* pool, CS_INT property, CS_INT value) {
  return comn_mmproperty(pool, CS_SET, property, &value, CS_UNUSED, nullptr);
}

// A pool on a context, dropped with all its subpools at the end.
struct Pool {
  explicit Pool(Host& host, CS_INT kind = MM_POOL_BUDDY, CS_INT blocksize = 4096) {
    EXPECT_EQ(CS_SUCCEED, comn_mminit(&host, &handle));
    EXPECT_EQ(CS_SUCCEED, set(handle, MM_PROP_POOLTYPE, kind));
    EXPECT_EQ(CS_SUCCEED, set(handle, MM_PROP_BLOCKSIZE, blocksize));
  }
  ~Pool() { EXPECT_TRUE(handle == nullptr || comn_mmdrop(handle, MM_FORCE_DROP) == CS_SUCCEED); }
  Pool(const Pool&) = delete;
  operator MmHandle*() const { return handle; }
  MmHandle* operator->() const { return handle; }
  MmHandle* release() { return std::exchange(handle, nullptr); }
  MmHandle* handle = nullptr;
};

inline CS_RETCODE put(MmHandle* pool, CS_INT property, void* value, CS_INT size = 0) {
  return comn_mmproperty(pool, CS_SET, property, value, size, nullptr);
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

inline constexpr CS_INT kKinds[] = {MM_POOL_BUDDY, MM_POOL_ALLOCONLY, MM_POOL_UNIFORM};

}  // namespace pools
