// The library as a C program sees it: records built with malloc, written to a stream, read back, released.
#define _POSIX_C_SOURCE 200809L  // mkdtemp
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "wmq/wmq.h"

static int failures = 0;

static void check(int holds, const char *what, int line) {
  if (holds) return;
  ++failures;
  fprintf(stderr, "line %d: not so: %s (error %d %s, %s)\n", line, what, wmq_errno, wmq_errname(wmq_errno),
          wmq_errdetail());
}

#define CHECK(condition) check(condition, #condition, __LINE__)

static void *zeroed(size_t count, size_t size) {
  void *memory = calloc(count, size);
  if (memory == NULL) {
    fputs("out of memory\n", stderr);
    exit(2);
  }
  return memory;
}

static eventRecord *newRecord(int32_t type, int32_t eventTime) {
  eventRecord *record = zeroed(1, sizeof *record);
  record->type = type;
  record->eventTime = eventTime;
  return record;
}

static char **newNames(int32_t count, const char *const *names) {
  char **copies = zeroed((size_t)count, sizeof *copies);
  for (int32_t i = 0; i < count; ++i) copies[i] = putstr_(names[i]);
  return copies;
}

static int sameText(const char *a, const char *b) { return a != NULL && b != NULL && strcmp(a, b) == 0; }

// ------------------------------------------------------------------------------ JOB_STATUS

static eventRecord *buildJobStatus(void) {
  eventRecord *record = newRecord(EVENT_JOB_STATUS, 1700000001);
  struct jobStatusLog *log = &record->eventLog.jobStatusLog;
  log->jobId = 4711;
  log->jStatus = 64;
  log->reason = -2;
  log->cpuTime = 12.5f;
  log->endTime = 1700000000;
  log->ru = 1;
  log->wmxRusage.ru_utime = 12.25;
  log->wmxRusage.ru_elapsed = 60;
  log->idx = 3;
  log->exitStatus = 256;
  log->srcCluster = putstr_("cluster \"one\"");
  log->srcJobId = 9000000000;
  log->dstCluster = putstr_("");
  log->indexRangeCnt = 2;
  log->indexRangeStart = zeroed(6, sizeof(int32_t));
  log->indexRangeEnd = log->indexRangeStart + 2;
  log->indexRangeStep = log->indexRangeStart + 4;
  for (int32_t i = 0; i < 2; ++i) {
    log->indexRangeStart[i] = 10 * i + 1;
    log->indexRangeEnd[i] = 10 * i + 10;
    log->indexRangeStep[i] = i + 1;
  }
  return record;
}

static void compareJobStatus(const eventRecord *record) {
  const struct jobStatusLog *log = &record->eventLog.jobStatusLog;
  CHECK(record->type == EVENT_JOB_STATUS);
  CHECK(record->eventTime == 1700000001);
  CHECK(sameText(record->version, wmq_streamversion()));
  CHECK(log->jobId == 4711 && log->jStatus == 64 && log->reason == -2 && log->subreasons == 0);
  CHECK(log->cpuTime == 12.5f);
  CHECK(log->endTime == 1700000000);
  CHECK(log->ru == 1);
  CHECK(log->wmxRusage.ru_utime == 12.25 && log->wmxRusage.ru_stime == 0 && log->wmxRusage.ru_elapsed == 60);
  CHECK(log->idx == 3 && log->exitStatus == 256);
  CHECK(sameText(log->srcCluster, "cluster \"one\""));
  CHECK(log->srcJobId == 9000000000);
  CHECK(sameText(log->dstCluster, ""));
  CHECK(log->indexRangeCnt == 2);
  if (log->indexRangeCnt != 2) return;
  for (int32_t i = 0; i < 2; ++i) {
    CHECK(log->indexRangeStart[i] == 10 * i + 1);
    CHECK(log->indexRangeEnd[i] == 10 * i + 10);
    CHECK(log->indexRangeStep[i] == i + 1);
  }
}

// --------------------------------------------------------------------------------- JOB_NEW

static eventRecord *buildJobNew(void) {
  static const char *const names[] = {"first host", "second host"};
  eventRecord *record = newRecord(EVENT_JOB_NEW, 1700000002);
  struct jobNewLog *log = &record->eventLog.jobNewLog;
  log->jobId = 4712;
  log->userId = 1000;
  strcpy(log->userName, "alice");
  log->options2 = JOB_OPTION2_SLA;
  log->numProcessors = 16;
  log->submitTime = 1699999999;
  for (int i = 0; i < WMX_RLIM_NLIMITS; ++i) log->rlimits[i] = -1;
  log->rlimits[WMX_RLIMIT_RUN] = 3600;
  log->hostFactor = 1.25f;
  strcpy(log->queue, "normal");
  strcpy(log->fromHost, "login1");
  log->cwd = putstr_("/home/alice");
  log->command = putstr_("simulate --fast\n--once");
  log->jobName = putstr_("a name in \"quotes\"");
  log->numNameList = 2;
  log->nameList = newNames(2, names);
  log->sla = putstr_("gold");
  CHECK(add_pair2submit_ext(&log->submitExt, 7, "seven") == 0);
  log->namedValues = zeroed(1, sizeof *log->namedValues);
  log->namedValues->count = 2;
  log->namedValues->names = newNames(2, names);
  log->namedValues->values = zeroed(2, sizeof(int32_t));
  log->namedValues->values[1] = -5;
  return record;
}

static void compareJobNew(const eventRecord *record) {
  const struct jobNewLog *log = &record->eventLog.jobNewLog;
  CHECK(record->type == EVENT_JOB_NEW);
  CHECK(log->jobId == 4712 && log->userId == 1000 && log->numProcessors == 16);
  CHECK(sameText(log->userName, "alice"));
  CHECK(sameText(log->queue, "normal"));
  CHECK(sameText(log->fromHost, "login1"));
  CHECK(log->submitTime == 1699999999);
  CHECK(log->rlimits[WMX_RLIMIT_CPU] == -1 && log->rlimits[WMX_RLIMIT_RUN] == 3600);
  CHECK(log->hostFactor == 1.25f);
  CHECK(sameText(log->cwd, "/home/alice"));
  CHECK(sameText(log->command, "simulate --fast --once"));
  CHECK(sameText(log->jobName, "a name in \"quotes\""));
  CHECK(sameText(log->sla, "gold"));
  CHECK(sameText(log->resReq, ""));
  CHECK(log->numNameList == 2 && sameText(log->nameList[1], "second host"));
  CHECK(log->submitExt != NULL && log->submitExt->numPairs == 1);
  CHECK(log->submitExt != NULL && log->submitExt->pairs[0].key == 7);
  CHECK(log->submitExt != NULL && sameText(log->submitExt->pairs[0].value, "seven"));
  CHECK(log->namedValues != NULL && log->namedValues->count == 2);
  CHECK(log->namedValues != NULL && sameText(log->namedValues->names[0], "first host"));
  CHECK(log->namedValues != NULL && log->namedValues->values[1] == -5);
}

// ------------------------------------------------------------------------------ JOB_FINISH

static eventRecord *buildJobFinish(void) {
  static const char *const hosts[] = {"node1", "node1", "node1", "node2"};
  eventRecord *record = newRecord(EVENT_JOB_FINISH, 1700000003);
  struct jobFinishLog *log = &record->eventLog.jobFinishLog;
  log->jobId = 4712;
  strcpy(log->userName, "alice");
  strcpy(log->queue, "normal");
  strcpy(log->fromHost, "login1");
  log->startTime = 1700000000;
  log->numExHosts = 4;
  log->execHosts = newNames(4, hosts);
  log->jStatus = 32;
  log->hostFactor = 2.5f;
  log->wmxRusage.ru_utime = 0.5;
  log->wmxRusage.ru_stime = 0.25;
  log->projectName = putstr_("physics");
  log->exitStatus = 1;
  log->numhRusages = 1;
  log->hostRusage = zeroed(1, sizeof *log->hostRusage);
  log->hostRusage[0].name = putstr_("node1");
  log->hostRusage[0].mem = 1024;
  log->hostRusage[0].utime = 5000000000;
  log->numAllocSlots = 4;
  log->allocSlots = newNames(4, hosts);
  log->numGPURusages = 1;
  log->gpuRusages = zeroed(1, sizeof *log->gpuRusages);
  log->gpuRusages[0].hostName = putstr_("node2");
  log->gpuRusages[0].numPairs = 1;
  log->gpuRusages[0].pairs = zeroed(1, sizeof(struct keyValue));
  log->gpuRusages[0].pairs[0].key = putstr_("gpu");
  log->gpuRusages[0].pairs[0].value = putstr_("87%");
  return record;
}

static void compareJobFinish(const eventRecord *record) {
  static const char *const hosts[] = {"node1", "node1", "node1", "node2"};
  const struct jobFinishLog *log = &record->eventLog.jobFinishLog;
  CHECK(record->type == EVENT_JOB_FINISH);
  CHECK(log->jobId == 4712 && log->jStatus == 32 && log->exitStatus == 1);
  CHECK(log->startTime == 1700000000);
  CHECK(log->endTime == 1700000003);
  CHECK(log->cpuTime == 0.75f);
  CHECK(log->hostFactor == 2.5f);
  CHECK(sameText(log->projectName, "physics"));
  CHECK(log->numExHosts == 4 && log->numAllocSlots == 4);
  for (int32_t i = 0; i < 4 && log->numExHosts == 4 && log->numAllocSlots == 4; ++i) {
    CHECK(sameText(log->execHosts[i], hosts[i]));
    CHECK(sameText(log->allocSlots[i], hosts[i]));
  }
  CHECK(log->numhRusages == 1 && sameText(log->hostRusage[0].name, "node1"));
  CHECK(log->numhRusages == 1 && log->hostRusage[0].mem == 1024 && log->hostRusage[0].utime == 5000000000);
  CHECK(log->numGPURusages == 1 && sameText(log->gpuRusages[0].hostName, "node2"));
  CHECK(log->numGPURusages == 1 && sameText(log->gpuRusages[0].pairs[0].value, "87%"));
}

// ------------------------------------------------------------------------------- the stream

static int messages = 0;

static int countMessage(const char *message) {
  CHECK(strstr(message, " all right maxsize 1000000") != NULL);
  return ++messages;
}

static void (*const compare[])(const eventRecord *record) = {compareJobStatus, compareJobNew,
                                                             compareJobFinish};

static void throughAStream(char *path) {
  eventRecord *records[] = {buildJobStatus(), buildJobNew(), buildJobFinish()};
  const struct streamParams params = {.fileName = path,
                                      .maxStreamSize = 1000000,
                                      .maxStreamFileNum = 2,
                                      .trace = 1,
                                      .traceFunc = countMessage};

  CHECK(wmq_openstream(&params) == 0);
  CHECK(wmq_writestream(records[0]) == 0);
  size_t written = 0;
  CHECK(wmq_writestreambatch(records + 1, 2, &written) == 0 && written == 2);
  for (size_t i = 0; i < 3; ++i) {
    wmq_freekept(records[i]);
    wmq_freelogrec(records[i]);
  }

  CHECK(wmq_syncstream() == 0);

  int lineNum = 0;
  for (size_t i = 0; i < 3; ++i) {
    eventRecord *record = wmq_readstream(&lineNum);
    CHECK(record != NULL);
    if (record == NULL) continue;
    compare[i](record);
    wmq_freekept(record);
  }
  CHECK(lineNum == 3);
  CHECK(wmq_readstream(&lineNum) == NULL);
  CHECK(wmq_errno == WMQE_EOF);
  CHECK(wmq_closestream() == 0);
  CHECK(wmq_closestream() == -1);
  CHECK(wmq_syncstream() == -1 && wmq_errno == WMQE_BAD_ARG);
  CHECK(messages == 2);
}

// The same file, line by line, with records that belong to this program.
static void lineByLine(const char *path) {
  FILE *file = fopen(path, "r");
  CHECK(file != NULL);
  if (file == NULL) return;
  size_t count = 0;
  for (const char *line = _getNextLine_(file, NULL, 0); line != NULL; line = _getNextLine_(file, NULL, 0)) {
    CHECK(count < 3);
    struct wmqLineHeader header;
    CHECK(wmq_peekline(line, &header) == 0);
    eventRecord figures;
    CHECK(wmq_checkline(line, &figures) == 0 && figures.type == header.type);
    CHECK(wmq_checkfields(line, strlen(line), &header, &figures) == 0 && figures.type == header.type);
    eventRecord *record = wmq_readstreamlineMT(line);
    CHECK(record != NULL);
    const eventRecord *borrowed = wmq_borrowline(line, strlen(line));
    CHECK(borrowed != NULL && borrowed->type == header.type && borrowed != record);
    CHECK(record == NULL || (header.type == record->type && header.eventTime == record->eventTime));
    CHECK(sameText(header.version, wmq_streamversion()));
    if (record != NULL && count < 3) compare[count](record);
    ++count;
    wmq_freekept(record);
    wmq_freelogrec(record);
  }
  CHECK(count == 3);
  _getNextLine_(NULL, NULL, 0);
  fclose(file);
}

static void withoutAStream(void) {
  eventRecord *record = buildJobNew();
  char *text = NULL;
  size_t length = 0;
  CHECK(wmq_formatrecord(record, &text, &length) == 0);
  CHECK(text != NULL && length == strlen(text) && text[length - 1] == '\n');
  wmq_freelogrec(record);
  if (text == NULL) return;

  const eventRecord *kept = wmq_readstreamline(text);
  CHECK(kept != NULL);
  if (kept != NULL) compareJobNew(kept);
  free(text);
  CHECK(wmq_readstreamline("no record") == NULL);
  CHECK(wmq_errno == WMQE_BAD_FORMAT);
}

static void following(const char *path) {
  struct streamParams params = {.fileName = (char *)path, .maxStreamFileNum = 10};
  CHECK(wmq_openstream(&params) == 0);
  eventRecord *status = buildJobStatus();
  CHECK(wmq_writestream(status) == 0);

  struct wmqFollowParams from = {.path = path, .from = WMQ_FROM_END};
  wmqFollower *follower = wmq_followopen(&from);
  CHECK(follower != NULL);
  struct eventRecord *record = status;
  CHECK(wmq_follownext(follower, &record, 0) == WMQ_FOLLOW_NOTHING);
  CHECK(record == NULL);
  CHECK(wmq_writestream(status) == 0);
  CHECK(wmq_follownext(follower, &record, -1) == WMQ_FOLLOW_RECORD);
  CHECK(record != NULL && record->type == EVENT_JOB_STATUS);
  CHECK(wmq_followdetail(follower)->kind == WMQ_FOLLOW_RECORD);
  CHECK(sameText(wmq_followdetail(follower)->file, path));
  wmq_freekept(record);
  wmq_freelogrec(record);

  char position[WMQ_POSITION_SIZE];
  CHECK(wmq_followposition(follower, position) == 0);
  wmq_followclose(follower);
  from.from = WMQ_FROM_POSITION;
  from.position = position;
  follower = wmq_followopen(&from);
  CHECK(follower != NULL);
  CHECK(wmq_follownext(follower, &record, 0) == WMQ_FOLLOW_NOTHING);
  CHECK(wmq_follownext(follower, NULL, 0) == WMQ_FOLLOW_FAILED && wmq_errno == WMQE_BAD_ARG);
  CHECK(wmq_follownext(NULL, &record, 0) == WMQ_FOLLOW_FAILED && wmq_errno == WMQE_BAD_ARG);
  CHECK(wmq_followposition(NULL, position) == -1 && wmq_errno == WMQE_BAD_ARG);
  CHECK(wmq_followdetail(NULL)->kind == WMQ_FOLLOW_NOTHING);
  wmq_followwake(follower);
  CHECK(wmq_followdescriptor(NULL) == -1);
  wmq_followclose(follower);
  wmq_followclose(NULL);

  size_t count = 0;
  struct wmqStreamFile *files = wmq_streamfiles(path, &count);
  CHECK(files != NULL && count == 1 && files[0].isCurrent == 1 && sameText(files[0].path, path));
  free(files);

  int part = -1;
  const char *joined = "\"JOB_VACATED\" \"10.1\" 17\"LOG_SWITCH\" \"10.1\" 18 7";
  CHECK(wmq_firstrecord(joined, strlen(joined), &part) == 23 && part == WMQ_PART_JOINED);
  CHECK(wmq_leavesopen(EVENT_JOB_VACATED) == 1 && wmq_leavesopen(EVENT_LOG_SWITCH) == 0);

  wmq_freekept(status);
  wmq_freelogrec(status);
  CHECK(wmq_closestream() == 0);
}

int main(void) {
  char directory[] = "/tmp/wmq-c-api-XXXXXX";
  if (mkdtemp(directory) == NULL) {
    perror("mkdtemp");
    return 2;
  }
  char path[64];
  snprintf(path, sizeof path, "%s/stream", directory);

  throughAStream(path);
  lineByLine(path);
  withoutAStream();
  following(path);

  CHECK(remove(path) == 0);
  CHECK(rmdir(directory) == 0);
  return failures == 0 ? 0 : 1;
}
