// Keeps a count of the running jobs of each queue while a stream is written, across restarts of this program.
//
//   cc running_jobs.c $(pkg-config --cflags --libs wmqstream) -o running_jobs
//   ./running_jobs ./events counts          until SIGTERM or SIGINT
//   ./running_jobs ./events counts --once   until all that is there has been counted
//
// The counts and the position that they stand for are one file, which is replaced as a whole: each record is
// counted exactly once, whenever the program is killed. The file holds the position, and then for each job
// that has not ended "JOB RUNNING QUEUE".
#define _POSIX_C_SOURCE 200809L
#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "wmq/wmq.h"

struct job {
  int32_t id;
  int running;
  char queue[WMQ_NAME_SIZE];
};

static struct {
  struct job *jobs;
  size_t count;
  size_t capacity;
  char position[WMQ_POSITION_SIZE];
} counted;

static wmqFollower *follower;
static volatile sig_atomic_t stopping;

static void stop(int number) {
  (void)number;
  stopping = 1;
  wmq_followwake(follower);
}

static void fail(const char *what, const char *why) {
  fprintf(stderr, "running_jobs: %s: %s\n", what, why);
  exit(1);
}

// ------------------------------------------------------------------------------ jobs

static struct job *find(int32_t id) {
  for (size_t i = 0; i < counted.count; ++i)
    if (counted.jobs[i].id == id) return &counted.jobs[i];
  return NULL;
}

static void add(int32_t id, const char *queue, int running) {
  struct job *job = find(id);
  if (job == NULL) {
    if (counted.count == counted.capacity) {
      counted.capacity = 2 * counted.capacity + 16;
      counted.jobs = realloc(counted.jobs, counted.capacity * sizeof *counted.jobs);
      if (counted.jobs == NULL) fail("memory", strerror(ENOMEM));
    }
    job = &counted.jobs[counted.count++];
  }
  *job = (struct job){.id = id, .running = running};
  snprintf(job->queue, sizeof job->queue, "%s", queue);
}

static void drop(int32_t id) {
  struct job *job = find(id);
  if (job != NULL) *job = counted.jobs[--counted.count];
}

static void count(const struct eventRecord *record) {
  struct job *job;
  switch (record->type) {
    case EVENT_JOB_NEW:
      add(record->eventLog.jobNewLog.jobId, record->eventLog.jobNewLog.queue, 0);
      break;
    case EVENT_JOB_START:
      job = find(record->eventLog.jobStartLog.jobId);
      if (job != NULL) job->running = 1;
      break;
    case EVENT_JOB_FINISH:
      drop(record->eventLog.jobFinishLog.jobId);
      break;
    default:
      break;
  }
}

// ------------------------------------------------------------------------------ the file

static int load(const char *name) {
  FILE *file = fopen(name, "r");
  if (file == NULL) return 0;
  int32_t id;
  int running;
  char queue[WMQ_NAME_SIZE];
  if (fscanf(file, "%255s", counted.position) != 1) fail(name, "no position");
  while (fscanf(file, "%d %d %59s", &id, &running, queue) == 3) add(id, queue, running);
  fclose(file);
  return 1;
}

static void save(const char *name) {
  char fresh[4096];
  snprintf(fresh, sizeof fresh, "%s.new", name);
  FILE *file = fopen(fresh, "w");
  if (file == NULL || wmq_followposition(follower, counted.position) != 0) fail(fresh, strerror(errno));
  fprintf(file, "%s\n", counted.position);
  for (size_t i = 0; i < counted.count; ++i)
    fprintf(file, "%d %d %s\n", counted.jobs[i].id, counted.jobs[i].running, counted.jobs[i].queue);
  const int written = fflush(file) == 0 && fsync(fileno(file)) == 0;
  if (fclose(file) != 0 || !written || rename(fresh, name) != 0) fail(name, strerror(errno));
}

static void print(void) {
  for (size_t i = 0; i < counted.count; ++i) {
    const char *queue = counted.jobs[i].queue;
    int running = 0;
    int earlier = 0;
    for (size_t j = 0; j < counted.count; ++j) {
      if (strcmp(counted.jobs[j].queue, queue) != 0) continue;
      running += counted.jobs[j].running;
      earlier += j < i;
    }
    if (earlier == 0) printf("%s %d\n", queue, running);
  }
  fflush(stdout);
}

// ------------------------------------------------------------------------------ following

int main(int argc, char **argv) {
  if (argc < 3) fail("usage", "running_jobs STREAM FILE [--once]");
  const int once = argc > 3 && strcmp(argv[3], "--once") == 0;
  struct wmqFollowParams params = {.path = argv[1], .from = WMQ_FROM_OLDEST};
  if (load(argv[2])) {
    params.from = WMQ_FROM_POSITION;
    params.position = counted.position;
  }
  follower = wmq_followopen(&params);
  if (follower == NULL) fail(argv[1], wmq_strerror(wmq_errno));
  const struct sigaction action = {.sa_handler = stop};
  sigaction(SIGTERM, &action, NULL);
  sigaction(SIGINT, &action, NULL);

  int timeout = 0;
  while (!stopping) {
    struct eventRecord *record = NULL;
    const wmqFollowDetail *detail;
    const int result = wmq_follownext(follower, &record, timeout);
    timeout = 0;
    switch (result) {
      case WMQ_FOLLOW_RECORD:
        count(record);
        wmq_freekept(record);
        wmq_freelogrec(record);
        break;
      case WMQ_FOLLOW_NOTHING:
        // What has been counted is kept before there is time to wait.
        save(argv[2]);
        if (once) stopping = 1;
        timeout = -1;
        break;
      case WMQ_FOLLOW_FAILED:
        fail(argv[1], wmq_strerror(wmq_errno));
        break;
      default:
        detail = wmq_followdetail(follower);
        if (detail->notice != WMQ_NOTICE_ROTATED)
          fprintf(stderr, "running_jobs: %s: %s\n", detail->file, detail->reason);
        break;
    }
  }
  save(argv[2]);
  print();
  wmq_followclose(follower);
  free(counted.jobs);
  return 0;
}
