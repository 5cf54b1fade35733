// wmq replay: a workload trace becomes the events that a scheduler would have logged.
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <optional>
#include <queue>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "commands.h"
#include "faults.h"
#include "host_pool.h"
#include "lines.h"
#include "named_file.h"
#include "options.h"
#include "output.h"
#include "progress.h"
#include "swf_trace.h"
#include "text.h"
#include "trace_events.h"
#include "trace_output.h"
#include "trace_sampler.h"

namespace wmq::tool {

namespace {

struct ReplayOptions {
  std::string trace;
  SinkOptions events;
  std::string statusFile;     // "": not wanted
  std::string pendingFile;    // likewise
  int64_t limit = INT64_MAX;  // jobs
};

// What is to happen with a job. Of all at one time, the first kind comes first.
struct Step {
  enum Kind : int {
    freeHosts,  // of a job that ends, so that those that start in this second can have them
    submission,
    start,
    finish
  };
  int64_t time;
  Kind kind;
  int64_t jobNumber;
  uint64_t line;  // a trace may name a job twice
  size_t slot;    // where the job is kept

  bool operator>(const Step &other) const {
    return std::tie(time, kind, jobNumber, line) >
           std::tie(other.time, other.kind, other.jobNumber, other.line);
  }
};

// The streams of a replay.
class ReplayOutputs {
 public:
  ReplayOutputs(const ReplayOptions &options, Faults &faults);

  // False when one cannot be opened, which is reported.
  bool open();

  bool failed() const;
  void flush();
  void close();

  // "22 records, 5 status samples".
  std::string written() const;

  TraceOutput events;
  std::optional<TraceOutput> status;
  std::optional<TraceOutput> pending;

 private:
  std::vector<TraceOutput *> all{&events};
};

ReplayOutputs::ReplayOutputs(const ReplayOptions &options, Faults &faults)
    : events(options.trace, options.events, faults) {
  auto add = [&](std::optional<TraceOutput> &output, const std::string &file,
                 const StreamOperations &stream) {
    if (file.empty()) return;
    SinkOptions sink = options.events;
    sink.file = file;
    sink.stream = &stream;
    all.push_back(&output.emplace(options.trace, sink, faults));
  };
  add(status, options.statusFile, statusStream);
  add(pending, options.pendingFile, pendingReasonsStream);
}

bool ReplayOutputs::open() {
  return std::all_of(all.begin(), all.end(), [](TraceOutput *output) { return output->open(); });
}

bool ReplayOutputs::failed() const {
  return std::any_of(all.begin(), all.end(), [](const TraceOutput *output) { return output->failed(); });
}

void ReplayOutputs::flush() {
  for (TraceOutput *output : all) output->flush();
}

void ReplayOutputs::close() {
  for (TraceOutput *output : all) output->close();
}

std::string ReplayOutputs::written() const {
  std::string text = counted(events.numRecords(), "record");
  if (status) text += ", " + counted(status->numRecords(), "status sample");
  if (pending) text += ", " + counted(pending->numRecords(), "pending sample");
  return text;
}

// Reads jobs in order of submission and writes their events in order of time. Only jobs that have not ended
// are kept.
class Replay {
 public:
  Replay(const ReplayOptions &given, ReplayOutputs &writeTo, Faults &reportTo)
      : options(given), outputs(writeTo), faults(reportTo) {}

  // Takes a line of the trace. False when no more is wanted.
  bool takeLine(const Lines &line);

  // Writes what is left when the trace has ended.
  void finish();

  uint64_t numJobs() const { return static_cast<uint64_t>(jobsTaken); }

 private:
  void begin(int64_t time);
  void takeJob(TraceJob job);
  void schedule(Step::Kind kind, int64_t time, size_t slot);
  void writeUntil(int64_t time);
  void carryOut(const Step &step);
  void submit(const TraceJob &job);
  void startJob(TraceJob &job);
  void finishJob(size_t slot);
  void write(const TraceJob &job, eventRecord &record) { outputs.events.write(record, job.line); }

  const ReplayOptions &options;
  ReplayOutputs &outputs;
  Faults &faults;
  SwfHeader header;
  EventMaker events{header};
  // Made for the first job, when the header has been read.
  std::optional<HostPool> pool;
  std::optional<TraceSampler> sampler;
  std::deque<TraceJob> jobs;
  std::vector<size_t> freeSlots;
  std::priority_queue<Step, std::vector<Step>, std::greater<>> steps;
  std::vector<char *> hosts;  // of the job at hand, one for each processor
  HostSlots hostSlots;        // of the job at hand
  int64_t lastSubmission = 0;
  int64_t lastEvent = 0;
  uint64_t lastLine = 0;
  int64_t jobsTaken = 0;
};

bool Replay::takeLine(const Lines &line) {
  TraceJob job;
  job.line = line.number();
  std::string why;
  SwfLine kind = readSwfLine(line.text(), header, job.columns, why);
  if (kind == SwfLine::header) return true;
  // The line of the whole job stands before those of its parts.
  if (kind == SwfLine::job && job.columns.status >= swfPartial && job.columns.status <= swfPartialFailed)
    return true;

  bool good = kind == SwfLine::job && placeOnClock(header, job, why);
  if (good && job.submitTime < lastSubmission) {
    why = "the job was submitted before the one on the line above";
    good = false;
  }
  if (!good) {
    faults.badInput(line.file(), line.number(), WMQE_BAD_FORMAT, why);
    return true;
  }
  takeJob(std::move(job));
  return !outputs.failed() && jobsTaken < options.limit;
}

void Replay::begin(int64_t time) {
  pool.emplace(header.maxNodes, header.maxProcessors);
  sampler.emplace(header, *pool, outputs.status ? &*outputs.status : nullptr,
                  outputs.pending ? &*outputs.pending : nullptr);
  outputs.events.write(events.schedulerStart(time), lastLine);
}

void Replay::finish() {
  writeUntil(INT64_MAX);
  if (jobsTaken > 0) outputs.events.write(events.schedulerEnd(lastEvent), lastLine);
}

void Replay::takeJob(TraceJob job) {
  lastSubmission = job.submitTime;
  lastLine = job.line;
  if (jobsTaken++ == 0) begin(job.submitTime);
  writeUntil(job.submitTime);
  size_t slot = jobs.size();
  if (freeSlots.empty()) {
    jobs.emplace_back();
  } else {
    slot = freeSlots.back();
    freeSlots.pop_back();
  }
  jobs[slot] = std::move(job);

  const TraceJob &kept = jobs[slot];
  schedule(Step::submission, kept.submitTime, slot);
  if (kept.started()) {
    schedule(Step::start, kept.startTime, slot);
    // A job that ends in the second of its start needs its hosts until it has ended.
    if (kept.endTime > kept.startTime) schedule(Step::freeHosts, kept.endTime, slot);
  }
  schedule(Step::finish, kept.endTime, slot);
}

void Replay::schedule(Step::Kind kind, int64_t time, size_t slot) {
  steps.push({time, kind, jobs[slot].columns.number, jobs[slot].line, slot});
}

void Replay::writeUntil(int64_t time) {
  while (!outputs.failed() && !steps.empty() && steps.top().time < time) {
    Step step = steps.top();
    steps.pop();
    sampler->sampleUntil(step.time);
    carryOut(step);
    lastEvent = step.time;
  }
}

void Replay::carryOut(const Step &step) {
  switch (step.kind) {
    case Step::freeHosts:
      pool->giveBack(jobs[step.slot].hosts);
      break;
    case Step::submission:
      submit(jobs[step.slot]);
      break;
    case Step::start:
      startJob(jobs[step.slot]);
      break;
    case Step::finish:
      finishJob(step.slot);
      break;
  }
}

void Replay::submit(const TraceJob &job) {
  write(job, events.submission(job));
  write(job, events.stateChange(job, job.submitTime, statePending));
  sampler->submitted(job);
}

void Replay::startJob(TraceJob &job) {
  job.hosts = pool->take(job.processors());
  pool->listNames(job.hosts, hosts);
  write(job, events.start(job, hosts));
  write(job, events.startAccepted(job));
  write(job, events.execution(job));
  write(job, events.stateChange(job, job.startTime, stateRunning));
  sampler->started(job);
}

void Replay::finishJob(size_t slot) {
  TraceJob &job = jobs[slot];
  pool->listNames(job.hosts, hosts);
  pool->listHosts(job.hosts, hostSlots);
  if (job.columns.status == swfCancelled) write(job, events.cancellation(job));
  write(job, events.stateChange(job, job.endTime, finalState(job.columns)));
  write(job, events.finish(job, hosts));
  write(job, events.namedFinish(job, hostSlots));
  sampler->ended(job);
  if (job.started() && job.endTime == job.startTime) pool->giveBack(job.hosts);
  job = {};
  freeSlots.push_back(slot);
}

int replayTrace(const ReplayOptions &options) {
  bool toOutput = options.events.file == "-" || options.statusFile == "-" || options.pendingFile == "-";
  Progress progress({options.trace}, toOutput);
  Faults faults(&progress);
  ReplayOutputs outputs(options, faults);
  if (!outputs.open()) return faults.exitStatus();

  Replay replay(options, outputs, faults);
  eachLine(
      {options.trace}, faults, progress, [&] { outputs.flush(); },
      [&](const Lines &line) { return replay.takeLine(line); });
  replay.finish();
  outputs.close();
  progress.erase();

  if (!toOutput && !outputs.failed()) {
    Output output;
    output.write(counted(replay.numJobs(), "job") + ", " + outputs.written() + ", " +
                 counted(faults.badInputs(), "fault") + "\n");
    output.finish(faults);
  }
  return faults.exitStatus();
}

[[noreturn]] void refuseOldFile(const std::string &file, const std::string &stream) {
  throw CLI::ValidationError("the stream " + file + " has the name of an old file of " + stream +
                             ", which rotating removes");
}

void refuseSharedOutput(const ReplayOptions &options) {
  std::vector<std::pair<std::string, NamedFile>> streams;
  for (const std::string &file : {options.events.file, options.statusFile, options.pendingFile}) {
    if (file.empty()) continue;
    refuseInputAsOutput(options.trace, file);
    const NamedFile added(file, STDOUT_FILENO);
    for (const auto &[name, stream] : streams) {
      if (added == stream)
        throw CLI::ValidationError("two streams cannot share " +
                                   std::string(file == "-" ? "standard output" : "a file"));
      if (added.isOldFileOf(stream)) refuseOldFile(file, name);
      if (stream.isOldFileOf(added)) refuseOldFile(name, file);
    }
    streams.emplace_back(file, added);
  }
}

}  // namespace

void addReplayCommand(CLI::App &program, Run &run) {
  auto options = std::make_shared<ReplayOptions>();
  CLI::App *command = program.add_subcommand(
      "replay",
      "Turn a workload trace into the events that a scheduler would have logged.\n"
      "TRACE is in the Standard Workload Format, plain, gzip or zstd; - is standard\n"
      "input. Its jobs become JOB_NEW, JOB_START, JOB_START_ACCEPT, JOB_EXECUTE,\n"
      "JOB_STATUS, JOB_SIGNAL, JOB_FINISH and JOB_FINISH2 records in order of time,\n"
      "between the MBD_START and the MBD_DIE of the scheduler. A bad line is reported\n"
      "on standard error as\n"
      "\n"
      "  FILE:LINE: error NUMBER NAME: what is wrong\n"
      "\n"
      "and skipped; the exit status is 1 then.");
  command->add_option("TRACE", options->trace)->required();
  addSinkOptions(*command, options->events,
                 "append to this stream file, which rotates into FILE.SECONDS; - is standard output", true);
  CLI::Option *status =
      command->add_option("--status", options->statusFile,
                          "append a JOB_STATUS2 of each running job, every 300 seconds, to this stream file");
  CLI::Option *pending = command->add_option(
      "--pending", options->pendingFile,
      "append JOB_PENDING_REASONS of the waiting jobs, every 300 seconds, to this stream file");
  for (CLI::Option *file : {status, pending}) {
    file->type_name("FILE");
    refuseEmpty(*file, "file name");
  }
  command->add_option("--limit", options->limit, "stop after N jobs of the trace")
      ->type_name("N")
      ->check(CLI::Range(int64_t{1}, INT64_MAX).description(""));
  command->footer(
      "Queues and partitions have the names of the trace's header; other names are\n"
      "made of their numbers (user17). Hosts are invented, the same ones at every\n"
      "replay. What the trace does not know is left at the record's default, but for\n"
      "the user (unknown), the queue (default) and the first host of a job that has\n"
      "started. A job that was cancelled before it started (status 5 with run time -1,\n"
      "or with run time 0 and allocated processors -1) has no JOB_START, and startTime\n"
      "0 in its JOB_FINISH. Lines of partial runs (status 2 to 4) are passed over,\n"
      "because the line of the whole job stands before them. Exit statuses are those of\n"
      "wait(2): 0 for completed jobs, 256 for failed and 15 for cancelled ones.\n"
      "\n"
      "Samples tell of the jobs that run or wait at the full 5 minutes of the trace's\n"
      "time, after all that happens in that second; all three files rotate alike. CPU\n"
      "time is spread evenly over a job's run. Jobs wait for other jobs on which they\n"
      "depend (reason 1), for processors (2, where the trace tells how many there are)\n"
      "or for their turn (3), and are put together by user, queue and reason.\n"
      "\n"
      "Examples:\n"
      "  wmq replay trace.swf.gz -o events/stream --max-size 4M --max-files 3\n"
      "  wmq replay trace.swf -o events --status status --pending pending\n"
      "  wmq replay --limit 100 trace.swf -o - | wmq decode --type JOB_FINISH");
  command->callback([options, &run] {
    refuseSharedOutput(*options);
    run = [options] { return replayTrace(*options); };
  });
}

}  // namespace wmq::tool
