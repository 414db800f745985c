#include "intl/loaded.h"

#include "runtime/hostmemory.h"

namespace comnlib {

LoadedOnce::~LoadedOnce() {
  drop_sort_orders(sort_orders);
  drop_tables(tables);
}

LoadedOnce* loaded_of(CsCtxGlobals& globals) {
  if (globals.ctxoids == nullptr) globals.ctxoids = make_record<LoadedOnce>();
  return static_cast<LoadedOnce*>(globals.ctxoids);
}

void drop_loaded(CsCtxGlobals& globals) {
  if (globals.ctxoids != nullptr) DropRecord()(static_cast<LoadedOnce*>(globals.ctxoids));
  globals.ctxoids = nullptr;
}

}  // namespace comnlib
