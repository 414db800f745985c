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

#define REFUSABLE(call, parameters, ...)                      \
  extern "C" int __real_##call parameters;                    \
  extern "C" int __wrap_##call parameters {                   \
    return unless_refused(#call, __real_##call, __VA_ARGS__); \
  }
REFUSABLE(pthread_mutex_init, (pthread_mutex_t * mutex, const pthread_mutexattr_t* with), mutex,
          with)
REFUSABLE(pthread_cond_init, (pthread_cond_t * cond, const pthread_condattr_t* with), cond, with)
REFUSABLE(pthread_mutex_lock, (pthread_mutex_t * mutex), mutex)
REFUSABLE(pthread_mutex_unlock, (pthread_mutex_t * mutex), mutex)
REFUSABLE(pthread_cond_broadcast, (pthread_cond_t * cond), cond)
REFUSABLE(pthread_cond_destroy, (pthread_cond_t * cond), cond)

namespace {

template <class Object>
CS_RETCODE make(CS_RETCODE (*create)(Object**)) {
  auto* made = reinterpret_cast<Object*>(-1);
  const CS_RETCODE code = create(&made);
  EXPECT_EQ(nullptr, made);
  return code;
}

TEST(PosixFailure, IsTold) {
  COMN_EVENT* event = nullptr;
  COMN_SEM* sem = nullptr;
  ASSERT_EQ(CS_SUCCEED, comn_create_event(&event));
  ASSERT_EQ(CS_SUCCEED, comn_create_sem(&sem));
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
      {"pthread_mutex_lock", "signal", [&] { return comn_signal_event(event); }},
      {"pthread_mutex_lock", "reset", [&] { return comn_reset_event(event); }},
      {"pthread_mutex_lock", "wait", [&] { return comn_waitfor_event(event, 0); }},
      {"pthread_mutex_lock", "release", [&] { return comn_release_sem(sem); }},
      {"pthread_cond_broadcast", "signal", [&] { return comn_signal_event(event); }},
      {"pthread_mutex_unlock", "signal",
       [&] {
         const CS_RETCODE code = comn_signal_event(event);
         refused = {};
         EXPECT_EQ(0, pthread_mutex_unlock(&event->pm));
         return code;
       }},
      {"pthread_cond_destroy", "event", [&] { return comn_delete_event(event); }},
  };
  for (const auto& row : rows) {
    const std::size_t before = host_alloc::live_blocks();
    refused = row.call;
    const CS_RETCODE code = row.run();
    refused = {};
    EXPECT_EQ(CS_FAIL, code) << row.routine << ", " << row.call;
    EXPECT_EQ(before, host_alloc::live_blocks()) << row.routine << ", " << row.call;
    EXPECT_EQ(0, event->ev) << row.routine << ", " << row.call;
    EXPECT_EQ(CS_TIMED_OUT, comn_waitfor_event(event, 0)) << "the event's mutex is free";
  }
  EXPECT_EQ(CS_SUCCEED, comn_delete_event(event));
  EXPECT_EQ(CS_SUCCEED, comn_delete_sem(sem));
}

}  // namespace
