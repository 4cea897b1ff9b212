/* slot_per_thread MODELS/ PHOTO...: up to nine photographs at once, each on a thread with its own
 * slot. */
#include <pthread.h>
#include <qorocv460/qorocv460.h>
#include <stdio.h>

typedef struct {
  const char* photo;
  int slot;
  int found;
} Job;

static void* findFacesOf(void* argument) {
  Job* job = argument;
  double results[QOROCV460_FACE_RESULTS];
  int count = QOROCV460_FACE_RESULTS;
  int width, height;
  job->found = findQORFacesInTread01(job->photo, results, &count, job->slot, 480, &width, &height);
  return NULL;
}

int main(int argc, char** argv) {
  pthread_t threads[QOROCV460_LAST_SLOT];
  Job jobs[QOROCV460_LAST_SLOT];
  int started = 0;
  if (argc < 3 || initModelsAtPath(argv[1]) != 0) { /* before the first thread */
    return 1;
  }
  while (started < QOROCV460_LAST_SLOT && started + 2 < argc) {
    Job* job = &jobs[started];
    job->photo = argv[started + 2];
    job->slot = QOROCV460_FIRST_SLOT + started;
    if (pthread_create(&threads[started], NULL, findFacesOf, job) != 0) {
      break;
    }
    ++started;
  }
  for (int i = 0; i < started; ++i) {
    pthread_join(threads[i], NULL);
    printf("slot %d: %d found\n", jobs[i].slot, jobs[i].found);
  }
  return 0;
}
