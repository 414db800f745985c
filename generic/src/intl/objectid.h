// Global object identifiers: the numbers that config/objectid.dat gives to character sets,
// languages, sort orders and conventions.
#pragma once

#include <string_view>

#include "comnlib/locale.h"
#include "intl/com_loc.h"
#include "runtime/podvector.h"

namespace comnlib {

struct ObjectId {
  std::size_t oidclass;  // texts in the pool
  std::size_t name;
  CsOid oid;
};

struct ObjectIds {
  Owned<PodVector<ObjectId>> entries;
  Owned<TextPool> texts;
  bool loaded;
};

// comn_globalid with an error buffer. The table is read on first use and then kept.
CS_RETCODE global_id(CS_CONTEXT& ctx, std::string_view oidclass, std::string_view name, CsOid& oid,
                     ErrorBuffer error);

void drop_ids(ObjectIds& ids);

}  // namespace comnlib
