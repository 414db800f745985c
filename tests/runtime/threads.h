// Objects and threads of the thread layer that last as long as a block.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <utility>

#include "comnlib/thread.h"

namespace threads {

template <class Object, CS_RETCODE (*Create)(Object**), CS_RETCODE (*Delete)(Object*)>
struct Made {
  Made() { EXPECT_EQ(CS_SUCCEED, Create(&object)); }
  ~Made() { EXPECT_EQ(CS_SUCCEED, Delete(object)); }
  Made(const Made&) = delete;
  Made& operator=(const Made&) = delete;
  operator Object*() const { return object; }
  Object* operator->() const { return object; }
  Object* object = nullptr;
};
using Mutex = Made<COMN_MUTEX, comn_create_mutex, comn_delete_mutex>;
using Event = Made<COMN_EVENT, comn_create_event, comn_delete_event>;
using Condition = Made<COMN_COND, comn_create_cond, comn_delete_cond>;
using Semaphore = Made<COMN_SEM, comn_create_sem, comn_delete_sem>;

// Runs a callable in a thread of this layer; joining checks the result.
class Thread {
 public:
  explicit Thread(std::function<void()> work) : work_(std::move(work)) {
    EXPECT_EQ(CS_SUCCEED, comn_create_thread(&handle_, run, this));
  }
  ~Thread() { EXPECT_EQ(CS_SUCCEED, comn_join_thread(handle_)); }
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;
  COMN_THREAD* handle() const { return handle_; }

 private:
  static void* run(void* self) {
    static_cast<Thread*>(self)->work_();
    return nullptr;
  }
  std::function<void()> work_;
  COMN_THREAD* handle_ = nullptr;
};

inline void await(const std::function<bool()>& condition) {
  while (!condition()) usleep(1000);
}

}  // namespace threads
