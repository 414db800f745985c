// Keeps the calling thread from being cancelled while the object lives. A lock, a descriptor or
// memory that the thread holds would be lost with it. Input and output are cancellation points.
#pragma once

#include <pthread.h>

namespace comnlib {

class Uncancelled {
 public:
  Uncancelled() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &state_before_); }
  ~Uncancelled() { pthread_setcancelstate(state_before_, nullptr); }
  Uncancelled(const Uncancelled&) = delete;
  Uncancelled& operator=(const Uncancelled&) = delete;

 private:
  int state_before_ = PTHREAD_CANCEL_ENABLE;
};

}  // namespace comnlib
