// Records in the host's memory.
#pragma once

#include <memory>
#include <new>

#include "comnlib/memory.h"

namespace comnlib {

// A record as its initializers make it; null when memory is out.
template <class Record>
Record* make_record() {
  void* block = comn_malloc(sizeof(Record));
  return block == nullptr ? nullptr : new (block) Record{};
}

// Gives a block back, if there is one: hosts bring allocators of their own, and what those make of
// a null block is not known.
inline void release(const void* block) {
  if (block != nullptr) comn_free(const_cast<void*>(block));
}

struct DropRecord {
  template <class Record>
  void operator()(Record* record) const {
    record->~Record();
    comn_free(record);
  }
};

// A record of make_record's that goes with its owner, unless it is handed on.
template <class Record>
using OwnedRecord = std::unique_ptr<Record, DropRecord>;

}  // namespace comnlib
