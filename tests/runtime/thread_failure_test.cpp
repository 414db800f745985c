// Calls of POSIX threads that fail: the routine says so, and what it had made is given back. The
// linker hands the calls over to this file, see the build file.
#include <gtest/gtest.h>
#include <pthread.h>

#include <cerrno>
#include <functional>
#include <string_view>

#include "comnlib/thread.h"
#include "support/host_alloc.h"

namespace {

std::string_view refused;  // the one call that fails

template <class Function, class... Arguments>
int unless_refused(std::string_view name, Function function, Arguments... arguments) {
  return name == refused ? EAGAIN : function(arguments...);
}

}  // namespace

#define REFUSABLE(call, type)                            \
  extern "C" int __real_##call(type* object);            \
  extern "C" int __wrap_##call(type* object) {           \
    return unless_refused(#call, __real_##call, object); \
  }
#define REFUSABLE_INIT(call, type, attributes)                         \
  extern "C" int __real_##call(type* object, const attributes* with);  \
  extern "C" int __wrap_##call(type* object, const attributes* with) { \
    return unless_refused(#call, __real_##call, object, with);         \
  }
REFUSABLE_INIT(pthread_mutex_init, pthread_mutex_t, pthread_mutexattr_t)
REFUSABLE_INIT(pthread_cond_init, pthread_cond_t, pthread_condattr_t)
REFUSABLE(pthread_mutex_lock, pthread_mutex_t)
REFUSABLE(pthread_mutex_unlock, pthread_mutex_t)
REFUSABLE(pthread_cond_broadcast, pthread_cond_t)
REFUSABLE(pthread_cond_destroy, pthread_cond_t)

namespace {

class PosixFailure : public testing::Test {
 protected:
  PosixFailure() {
    EXPECT_EQ(CS_SUCCEED, comn_create_event(&event_));
    EXPECT_EQ(CS_SUCCEED, comn_create_sem(&sem_));
  }
  ~PosixFailure() override {
    EXPECT_EQ(CS_SUCCEED, comn_delete_event(event_));
    EXPECT_EQ(CS_SUCCEED, comn_delete_sem(sem_));
  }

  COMN_EVENT* event_ = nullptr;
  COMN_SEM* sem_ = nullptr;
};

template <class Object>
CS_RETCODE make(CS_RETCODE (*create)(Object**)) {
  auto* made = reinterpret_cast<Object*>(-1);
  const CS_RETCODE code = create(&made);
  EXPECT_EQ(nullptr, made);
  return code;
}

TEST_F(PosixFailure, IsTold) {
  const struct {
    const char* call;
    const char* routine;
    std::function<CS_RETCODE()> run;
  } rows[] = {
      {"pthread_mutex_init", "mutex", [] { return make(comn_create_mutex); }},
      {"pthread_mutex_init", "event", [] { return make(comn_create_event); }},
      {"pthread_cond_init", "event", [] { return make(comn_create_event); }},
      {"pthread_cond_init", "semaphore", [] { return make(comn_create_sem); }},
      {"pthread_cond_init", "condition", [] { return make(comn_create_cond); }},
      {"pthread_mutex_lock", "signal", [&] { return comn_signal_event(event_); }},
      {"pthread_mutex_lock", "reset", [&] { return comn_reset_event(event_); }},
      {"pthread_mutex_lock", "wait", [&] { return comn_waitfor_event(event_, 0); }},
      {"pthread_mutex_lock", "release", [&] { return comn_release_sem(sem_); }},
      {"pthread_cond_broadcast", "signal", [&] { return comn_signal_event(event_); }},
      {"pthread_cond_destroy", "event", [&] { return comn_delete_event(event_); }},
  };
  for (const auto& row : rows) {
    const std::size_t before = host_alloc::live_blocks();
    refused = row.call;
    const CS_RETCODE code = row.run();
    refused = {};
    EXPECT_EQ(CS_FAIL, code) << row.routine << ", " << row.call;
    EXPECT_EQ(before, host_alloc::live_blocks()) << row.routine << ", " << row.call;
    EXPECT_EQ(0, event_->ev) << row.routine << ", " << row.call;
    EXPECT_EQ(CS_TIMED_OUT, comn_waitfor_event(event_, 0)) << "the event's mutex is free";
  }
}

TEST_F(PosixFailure, OfAnUnlockTakesTheSignalBack) {
  refused = "pthread_mutex_unlock";
  const CS_RETCODE code = comn_signal_event(event_);
  refused = {};
  EXPECT_EQ(CS_FAIL, code);
  EXPECT_EQ(0, event_->ev);
  EXPECT_EQ(0, pthread_mutex_unlock(&event_->pm));
}

}  // namespace
