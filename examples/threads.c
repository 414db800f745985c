/* A host with a worker thread: the worker counts under a mutex and signals an event when it has
   finished; the host waits for that with a timeout. */
#include <stdio.h>

#include "comnlib.h"

typedef struct Job {
  COMN_MUTEX* mutex;
  COMN_EVENT* finished;
  int count;
} Job;

static CS_VOID* work(CS_VOID* argument) {
  Job* job = argument;
  for (int i = 0; i < 1000; ++i) {
    comn_take_mutex(job->mutex);
    ++job->count;
    comn_release_mutex(job->mutex);
  }
  comn_signal_event(job->finished);
  return NULL; /* what comn_join_thread asks for */
}

int main(void) {
  Job job = {NULL, NULL, 0};
  COMN_THREAD* worker = NULL;
  if (comn_create_mutex(&job.mutex) != CS_SUCCEED) return 1;
  if (comn_create_event(&job.finished) != CS_SUCCEED) return 1;
  if (comn_create_thread(&worker, work, &job) != CS_SUCCEED) return 1;

  CS_RETCODE result = comn_waitfor_event(job.finished, 10000);
  while (result == CS_TIMED_OUT) result = comn_waitfor_event(job.finished, 10000);
  comn_take_mutex(job.mutex);
  printf("%d\n", job.count);
  comn_release_mutex(job.mutex);

  comn_join_thread(worker);
  comn_delete_event(job.finished);
  comn_delete_mutex(job.mutex);
  return result == CS_SUCCEED ? 0 : 1;
}
