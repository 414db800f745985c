// A context's object identifiers, sort orders and conversion tables, reached through
// CsCtxGlobals.ctxoids. Made on first use, freed by com_intl_chardesc_drop.
#pragma once

#include "comnlib/locale.h"
#include "intl/convcfg.h"
#include "intl/convtable.h"
#include "intl/objectid.h"
#include "intl/sortorder.h"

namespace comnlib {

struct LoadedOnce {
  ~LoadedOnce();

  ObjectIds ids;
  CsSortOrder* sort_orders;
  ConvTable* tables;
  std::span<const SystemAlgorithm> algorithms;
};

// The context's record, made on first use; null when memory is out.
LoadedOnce* loaded_of(CsCtxGlobals& globals);

void drop_loaded(CsCtxGlobals& globals);

}  // namespace comnlib
