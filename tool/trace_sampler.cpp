#include "trace_sampler.h"

#include <algorithm>
#include <tuple>

namespace wmq::tool {

void TraceSampler::started(const TraceJob &job) {
  waiting.erase(orderOf(job));
  running.emplace(orderOf(job), &job);
  busyProcessors += job.processors();
}

void TraceSampler::ended(const TraceJob &job) {
  waiting.erase(orderOf(job));
  if (running.erase(orderOf(job)) > 0) busyProcessors -= job.processors();
}

void TraceSampler::sampleUntil(int64_t time) {
  // Nothing is said of an idle machine, however long it idles.
  if (waiting.empty() && running.empty()) {
    nextSample = std::max(nextSample, (time + interval - 1) / interval * interval);
    return;
  }
  for (; nextSample < time; nextSample += interval) {
    if (status) sampleRunning(nextSample);
    if (pending) sampleWaiting(nextSample);
  }
}

void TraceSampler::sampleRunning(int64_t time) {
  for (const auto &[order, job] : running) {
    pool.listHosts(job->hosts, hosts);
    status->write(events.runningSample(*job, hosts, time, interval), job->line);
  }
}

void TraceSampler::sampleWaiting(int64_t time) {
  struct Group {
    const TraceJob *first;
    WaitingJobs jobs;
  };
  std::map<std::tuple<int64_t, int64_t, WaitReason>, Group> groups;  // user, queue, reason
  for (const auto &[order, job] : waiting) {
    WaitReason reason = reasonOf(*job);
    Group &group = groups.try_emplace({job->columns.user, job->columns.queue, reason}, Group{job, {reason}})
                       .first->second;
    ++group.jobs.jobs;
    group.jobs.processors += std::max<int64_t>(job->columns.requestedProcessors, 1);
    group.jobs.seconds += time - job->submitTime;
  }
  for (const auto &[key, group] : groups)
    pending->write(events.waitingSample(*group.first, group.jobs, time, interval), group.first->line);
}

bool TraceSampler::contains(const Jobs &jobs, int64_t number) {
  auto found = jobs.lower_bound({number, 0});
  return found != jobs.end() && found->first.first == number;
}

WaitReason TraceSampler::reasonOf(const TraceJob &job) const {
  int64_t preceding = job.columns.precedingJob;
  if (preceding > 0 && (contains(waiting, preceding) || contains(running, preceding)))
    return WaitReason::dependency;
  // Without its size, a machine is never known to be full.
  bool full = header.maxProcessors > 0 && job.processors() > header.maxProcessors - busyProcessors;
  return full ? WaitReason::processors : WaitReason::turn;
}

}  // namespace wmq::tool
