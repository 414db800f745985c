#include "intl/store.h"

#include "runtime/hostmemory.h"

namespace comnlib {

Store* store_of(CsCtxGlobals& globals) {
  if (globals.ctxoids == nullptr) globals.ctxoids = make_record<Store>();
  return static_cast<Store*>(globals.ctxoids);
}

void drop_store(CsCtxGlobals& globals) {
  auto* store = static_cast<Store*>(globals.ctxoids);
  if (store == nullptr) return;
  drop_ids(store->ids);
  drop_sort_orders(store->sort_orders);
  drop_tables(store->tables);
  comn_free(store);
  globals.ctxoids = nullptr;
}

}  // namespace comnlib
