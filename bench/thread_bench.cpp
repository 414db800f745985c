// Uncontended mutexes: a take and its release, by itself and inside another one. The C library does
// without atomic instructions in a process that has never had a second thread; the rows "beside a
// second thread" are of one that has, as hosts with locks are.
#include <pthread.h>
#include <unistd.h>

#include "bench.h"

namespace {

class Ours {
 public:
  Ours() { comn_create_mutex(&mutex_); }
  ~Ours() { comn_delete_mutex(mutex_); }
  void take() { comn_take_mutex(mutex_); }
  void release() { comn_release_mutex(mutex_); }

 private:
  COMN_MUTEX* mutex_ = nullptr;
};

class Recursive {
 public:
  Recursive() {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&mutex_, &attributes);
    pthread_mutexattr_destroy(&attributes);
  }
  ~Recursive() { pthread_mutex_destroy(&mutex_); }
  void take() { pthread_mutex_lock(&mutex_); }
  void release() { pthread_mutex_unlock(&mutex_); }

 private:
  pthread_mutex_t mutex_;
};

// A thread that waits for the end of the process.
void start_second_thread() {
  [[maybe_unused]] static const bool started = [] {
    pthread_t thread;
    return pthread_create(
               &thread, nullptr,
               [](void*) -> void* {
                 for (;;) pause();
               },
               nullptr) == 0;
  }();
}

template <class Mutex, bool nested, bool threaded = false>
void take_release(benchmark::State& state) {
  if (threaded) start_second_thread();
  Mutex mutex;
  if (nested) mutex.take();
  for (auto _ : state) {
    mutex.take();
    mutex.release();
  }
  if (nested) mutex.release();
}

const bench::Registration registered([] {
  using bench::measure;
  measure("mutex/take and release/comnlib", take_release<Ours, false>);
  measure("mutex/take and release/recursive pthread", take_release<Recursive, false>);
  measure("mutex/take and release, held already/comnlib", take_release<Ours, true>);
  measure("mutex/take and release, held already/recursive pthread", take_release<Recursive, true>);
  // The process has a second thread from here on, so tools/bench gives these one of their own.
  measure("mutex/take and release, beside a second thread/comnlib",
          take_release<Ours, false, true>);
  measure("mutex/take and release, beside a second thread/recursive pthread",
          take_release<Recursive, false, true>);
});

}  // namespace
