// The lock of a context's localization globals.
#pragma once

#include "comnlib/locale.h"
#include "comnlib/thread.h"
#include "diag/uncancelled.h"

namespace comnlib {

// Holds cmg_mtx while the object lives, and takes it through the context's thread table when there
// is one. A table without the function means that the host needs no locks. The thread cannot be
// cancelled meanwhile.
class GlobalsLock {
 public:
  explicit GlobalsLock(const CS_CONTEXT& ctx) : ctx_(ctx), taken_(take() == CS_SUCCEED) {}
  ~GlobalsLock() {
    if (taken_) release();
  }
  GlobalsLock(const GlobalsLock&) = delete;
  GlobalsLock& operator=(const GlobalsLock&) = delete;

  bool taken() const { return taken_; }

 private:
  CS_RETCODE take() const {
    if (ctx_.ctxthread == nullptr) return comn_take_mutex(ctx_.ctxglobals->cmg_mtx);
    const auto function = ctx_.ctxthread->take_mutex_fn;
    return function == nullptr ? CS_SUCCEED : function(ctx_.ctxglobals->cmg_mtx);
  }
  void release() const {
    if (ctx_.ctxthread == nullptr) {
      static_cast<void>(comn_release_mutex(ctx_.ctxglobals->cmg_mtx));
    } else if (const auto function = ctx_.ctxthread->release_mutex_fn) {
      static_cast<void>(function(ctx_.ctxglobals->cmg_mtx));
    }
  }

  Uncancelled uncancelled_;
  const CS_CONTEXT& ctx_;
  bool taken_;
};

}  // namespace comnlib
