// Keeps a context's status while a failure is explained: the look-ups for its words may fail too.
#pragma once

#include "comnlib/context.h"

namespace comnlib {

// Restores the context's ctxintlerr at the end. Threads may share the context, so look-ups that
// load something use this under the lock of the load.
class KeptStatus {
 public:
  explicit KeptStatus(CS_CONTEXT& ctx) : ctx_(ctx), status_(ctx.ctxintlerr) {}
  ~KeptStatus() { ctx_.ctxintlerr = status_; }
  KeptStatus(const KeptStatus&) = delete;
  KeptStatus& operator=(const KeptStatus&) = delete;

 private:
  CS_CONTEXT& ctx_;
  int status_;
};

}  // namespace comnlib
