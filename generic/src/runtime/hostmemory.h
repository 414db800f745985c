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

// Gives a block back, if there is one: a host's own comn_free may not accept null.
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

// A record of make_record that is freed with its owner, unless it is released from it.
template <class Record>
using OwnedRecord = std::unique_ptr<Record, DropRecord>;

}  // namespace comnlib
