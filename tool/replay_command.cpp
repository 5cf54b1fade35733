// wmq replay: a workload trace becomes the events that a scheduler would have logged.
#include <deque>
#include <memory>
#include <optional>
#include <queue>
#include <string>
#include <tuple>
#include <vector>

#include "commands.h"
#include "faults.h"
#include "host_pool.h"
#include "lines.h"
#include "options.h"
#include "output.h"
#include "progress.h"
#include "record_sink.h"
#include "swf_trace.h"
#include "text.h"
#include "trace_events.h"

namespace wmq::tool {

namespace {

struct ReplayOptions {
  std::string trace;
  SinkOptions sink;
  uint64_t limit = UINT64_MAX;  // jobs
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

// Reads jobs in order of submission and writes their events in order of time. Only jobs that have not ended
// are kept.
class Replay {
 public:
  Replay(const ReplayOptions &given, RecordSink &writeTo, Faults &reportTo)
      : options(given), sink(writeTo), faults(reportTo) {}

  // Takes a line of the trace. False when no more is wanted.
  bool takeLine(const Lines &line);

  // Writes what is left when the trace has ended.
  void finish() { writeUntil(INT64_MAX); }

  bool outputFailed() const { return failed; }
  uint64_t numJobs() const { return jobsTaken; }
  uint64_t numRecords() const { return recordsWritten; }

 private:
  void takeJob(TraceJob job);
  void schedule(Step::Kind kind, int64_t time, size_t slot);
  void writeUntil(int64_t time);
  void carryOut(const Step &step);
  void submit(const TraceJob &job);
  void startJob(TraceJob &job);
  void finishJob(size_t slot);
  void write(const TraceJob &job, eventRecord &record);

  const ReplayOptions &options;
  RecordSink &sink;
  Faults &faults;
  SwfHeader header;
  EventMaker events{header};
  std::optional<HostPool> pool;  // made for the first job, when the header has been read
  std::deque<TraceJob> jobs;
  std::vector<size_t> freeSlots;
  std::priority_queue<Step, std::vector<Step>, std::greater<>> steps;
  std::vector<char *> hosts;  // of the job at hand
  int64_t lastSubmission = 0;
  uint64_t jobsTaken = 0;
  uint64_t recordsWritten = 0;
  bool failed = false;
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
  return !failed && jobsTaken < options.limit;
}

void Replay::takeJob(TraceJob job) {
  lastSubmission = job.submitTime;
  ++jobsTaken;
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
  while (!failed && !steps.empty() && steps.top().time < time) {
    Step step = steps.top();
    steps.pop();
    carryOut(step);
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
}

void Replay::startJob(TraceJob &job) {
  if (!pool) pool.emplace(header.maxNodes, header.maxProcessors);
  job.hosts = pool->take(job.processors());
  pool->listNames(job.hosts, hosts);
  write(job, events.start(job, hosts));
  write(job, events.stateChange(job, job.startTime, stateRunning));
}

void Replay::finishJob(size_t slot) {
  TraceJob &job = jobs[slot];
  hosts.clear();
  if (job.started()) pool->listNames(job.hosts, hosts);
  write(job, events.stateChange(job, job.endTime, finalState(job.columns)));
  write(job, events.finish(job, hosts));
  if (job.started() && job.endTime == job.startTime) pool->giveBack(job.hosts);
  job = {};
  freeSlots.push_back(slot);
}

void Replay::write(const TraceJob &job, eventRecord &record) {
  if (failed) return;
  switch (sink.write(record)) {
    case RecordSink::Result::written:
      ++recordsWritten;
      break;
    case RecordSink::Result::refused:
      faults.refused(options.trace, job.line, wmq_errno);
      break;
    case RecordSink::Result::failed:
      failed = true;
      break;
  }
}

int replayTrace(const ReplayOptions &options) {
  bool toOutput = options.sink.file == "-";
  Progress progress({options.trace}, toOutput);
  Faults faults(&progress);
  RecordSink sink(options.sink, faults);
  if (!sink.open()) return faults.exitStatus();

  Replay replay(options, sink, faults);
  eachLine(
      {options.trace}, faults, progress, [&] { sink.flush(); },
      [&](const Lines &line) { return replay.takeLine(line); });
  replay.finish();
  sink.close();
  progress.erase();

  if (!toOutput && !replay.outputFailed()) {
    Output output;
    output.write(counted(replay.numJobs(), "job") + ", " + counted(replay.numRecords(), "record") + ", " +
                 counted(faults.badInputs(), "fault") + "\n");
    output.finish(faults);
  }
  return faults.exitStatus();
}

}  // namespace

void addReplayCommand(CLI::App &program, Run &run) {
  auto options = std::make_shared<ReplayOptions>();
  CLI::App *command = program.add_subcommand(
      "replay",
      "Turn a workload trace into the events that a scheduler would have logged.\n"
      "TRACE is in the Standard Workload Format, plain, gzip or zstd; - is standard\n"
      "input. Its jobs become JOB_NEW, JOB_START, JOB_STATUS and JOB_FINISH records in\n"
      "order of time. A bad line is reported on standard error as\n"
      "\n"
      "  FILE:LINE: error NUMBER NAME: what is wrong\n"
      "\n"
      "and skipped; the exit status is 1 then.");
  command->add_option("TRACE", options->trace)->required();
  addSinkOptions(*command, options->sink,
                 "append to this stream file, which rotates into FILE.SECONDS; - is standard output", true);
  command->add_option("--limit", options->limit, "stop after N jobs of the trace")
      ->type_name("N")
      ->check(CLI::Range(uint64_t{1}, UINT64_MAX).description(""));
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
      "Examples:\n"
      "  wmq replay trace.swf.gz -o events/stream --max-size 4M --max-files 3\n"
      "  wmq replay --limit 100 trace.swf -o - | wmq decode --type JOB_FINISH");
  command->callback([options, &run] { run = [options] { return replayTrace(*options); }; });
}

}  // namespace wmq::tool
