// Writes one record to a stream, reads it back and prints it.
//
//   cc job_status.c $(pkg-config --cflags --libs wmqstream) -o job_status
//   ./job_status ./events
#include <stdio.h>

#include "wmq/wmq.h"

static int fail(const char *what) {
  fprintf(stderr, "%s: %s\n", what, wmq_strerror(wmq_errno));
  return 1;
}

int main(int argc, char **argv) {
  struct streamParams params = {.fileName = argc > 1 ? argv[1] : "./events", .maxStreamFileNum = 10};
  if (wmq_openstream(&params) != 0) return fail(params.fileName);

  struct eventRecord record = {.type = EVENT_JOB_STATUS, .eventTime = 1700000000};
  record.eventLog.jobStatusLog = (struct jobStatusLog){
      .jobId = 7, .jStatus = 64, .cpuTime = 12.5f, .endTime = 1699999990, .srcCluster = "east"};
  if (wmq_writestream(&record) != 0) return fail("write");

  int lineNum = 0;
  const struct eventRecord *read;
  while ((read = wmq_readstream(&lineNum)) != NULL) {
    if (read->type != EVENT_JOB_STATUS) continue;
    const struct jobStatusLog *status = &read->eventLog.jobStatusLog;
    printf("line %d, version %s: job %d of %s has status %d after %.1f s of CPU time\n", lineNum,
           read->version, status->jobId, status->srcCluster, status->jStatus, status->cpuTime);
  }
  if (wmq_errno != WMQE_EOF) return fail("read");
  return wmq_closestream() == 0 ? 0 : fail("close");
}
