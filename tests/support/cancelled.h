// Work in a thread that is cancelled while it works.
#pragma once

#include <pthread.h>

#include <utility>

namespace cancelled {

// Returns before the cancellation takes effect, so that AddressSanitizer sees its frame end.
template <class Work>
[[gnu::noinline]] void call(Work& work) {
  work();
}

// Runs `work` in a thread that has been cancelled already. Returns whether the work was done whole
// and the thread then ended as cancelled.
template <class Work>
bool waits_for(Work work, const pthread_attr_t* attributes = nullptr) {
  std::pair<Work, bool> run{std::move(work), false};
  const auto start = [](void* at) -> void* {
    auto& [given, done] = *static_cast<std::pair<Work, bool>*>(at);
    pthread_cancel(pthread_self());
    call(given);
    done = true;
    pthread_testcancel();
    return nullptr;
  };
  pthread_t thread{};
  void* result = nullptr;
  return pthread_create(&thread, attributes, start, &run) == 0 &&
         pthread_join(thread, &result) == 0 && result == PTHREAD_CANCELED && run.second;
}

}  // namespace cancelled
