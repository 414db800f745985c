// What a context loads once and then keeps in a list until its localization ends.
#pragma once

#include "intl/intlfile.h"
#include "runtime/hostmemory.h"

namespace comnlib {

// Points `loaded` at the record of the list that `matches`. Where there is none, makes one, which
// is added to the list when `read` has filled it and dropped when `read` fails.
template <auto kNext, class Record, class Loaded, class Matches, class Read>
CS_RETCODE load_once(Record*& list, Loaded*& loaded, Matches matches, Read read) {
  for (Record* known = list; known != nullptr; known = known->*kNext) {
    if (!matches(*known)) continue;
    loaded = known;
    return CS_SUCCEED;
  }
  OwnedRecord<Record> made(make_record<Record>());
  if (made == nullptr) return CS_MEM_ERROR;
  const CS_RETCODE result = read(*made);
  if (result != CS_SUCCEED) return result;
  (*made).*kNext = list;
  list = made.get();
  loaded = made.release();
  return CS_SUCCEED;
}

// Reads a file that `open` gives a handle for.
template <class Open, class Read>
CS_RETCODE read_file(CS_CONTEXT& ctx, Open open, Read read) {
  INTL_HANDLE handle = nullptr;
  const CS_RETCODE opened = open(&handle);
  if (opened != CS_SUCCEED) return opened;
  IntlFile file(ctx, handle);
  return read(file);
}

template <auto kNext, class Record>
void drop_list(Record*& list) {
  while (Record* record = list) {
    list = record->*kNext;
    DropRecord()(record);
  }
}

}  // namespace comnlib
