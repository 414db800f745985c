// Work that must not end half-way: it holds a lock, memory or open files that only its own end
// gives back.
#pragma once

#include <pthread.h>

namespace comnlib {

// While it lives, a cancellation of the calling thread waits.
class Uncancelled {
 public:
  Uncancelled() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_); }
  ~Uncancelled() { pthread_setcancelstate(before_, nullptr); }
  Uncancelled(const Uncancelled&) = delete;
  Uncancelled& operator=(const Uncancelled&) = delete;

 private:
  int before_ = PTHREAD_CANCEL_ENABLE;
};

}  // namespace comnlib
