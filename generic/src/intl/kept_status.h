// Look-ups that explain a failure must not change what there is to explain.
#pragma once

#include "comnlib/context.h"

namespace comnlib {

// Restores the context's ctxintlerr. Threads may share the context, so look-ups that load keep it
// under the lock of their load.
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
