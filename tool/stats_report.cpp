#include "stats_report.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>
#include <vector>

#include "json_printer.h"
#include "table.h"
#include "text.h"
#include "times.h"

namespace wmq::tool {

namespace {

constexpr size_t barWidth = 20;

using NamedGroup = std::pair<std::string, const JobGroup *>;

// Groups with the most core-hours first; where these are equal, with the most jobs, then by name.
std::vector<NamedGroup> ranked(const std::unordered_map<std::string, JobGroup> &groups, size_t most) {
  std::vector<NamedGroup> order;
  order.reserve(groups.size());
  for (const auto &[name, group] : groups) order.emplace_back(name, &group);
  std::sort(order.begin(), order.end(), [](const NamedGroup &left, const NamedGroup &right) {
    if (left.second->coreSeconds != right.second->coreSeconds)
      return left.second->coreSeconds > right.second->coreSeconds;
    if (left.second->jobs != right.second->jobs) return left.second->jobs > right.second->jobs;
    return left.first < right.first;
  });
  if (order.size() > most) order.resize(most);
  return order;
}

// 1234567.89 as "1,234,567.9".
std::string tenths(double number) {
  std::array<char, 400> digits{};
  std::snprintf(digits.data(), digits.size(), "%.1f", number);
  std::string text = digits.data();
  const size_t point = text.find('.');
  if (point == std::string::npos) return text;  // of an infinity
  const size_t first = number < 0 ? 1 : 0;
  for (size_t end = point; end > first + 3; end -= 3) text.insert(end - 3, ",");
  return text;
}

std::string coreHours(const JobGroup &group) { return tenths(group.coreSeconds / 3600); }

constexpr double kilobytesOfGibibyte = 1048576;

std::string gibibytes(double kilobytes) {
  return kilobytes > 0 ? tenths(kilobytes / kilobytesOfGibibyte) : "-";
}

double meanOf(double sum, uint64_t count) { return count > 0 ? sum / static_cast<double>(count) : 0; }

using RankedReason = std::pair<PendingReasons::Key, const PendingReasons::Reason *>;

// Reasons with the most waiting time first, then with the most jobs, then by number.
std::vector<RankedReason> ranked(const PendingReasons &reasons) {
  std::vector<RankedReason> order;
  order.reserve(reasons.reasons().size());
  for (const auto &[key, reason] : reasons.reasons()) order.emplace_back(key, &reason);
  std::stable_sort(order.begin(), order.end(), [](const RankedReason &left, const RankedReason &right) {
    if (left.second->waitSeconds != right.second->waitSeconds)
      return left.second->waitSeconds > right.second->waitSeconds;
    return left.second->jobSum > right.second->jobSum;
  });
  return order;
}

std::string reasonText(const PendingReasons::Key &key) {
  return std::to_string(key.first) + (key.second != 0 ? "." + std::to_string(key.second) : "");
}

std::string quantileText(const Quantiles &waits, double share) {
  if (waits.count() == 0) return "-";
  uint64_t wait = waits.at(share);
  return (waits.isExact(wait) ? "" : "~") + clockText(static_cast<int64_t>(wait));
}

double shareOf(double part, double whole) { return whole > 0 ? part / whole : 0; }

// A report under construction.
struct Report {
  const StreamStatistics &stats;
  bool coloured;
  std::string text;

  std::string bar(double share) const {
    std::string blocks = tool::bar(share, barWidth);
    return coloured && !blocks.empty() ? "\x1b[36m" + blocks + "\x1b[0m" : blocks;
  }

  void line(const char *title, const std::string &content) {
    std::string head = title;
    head.resize(14, ' ');
    text += (coloured ? "\x1b[1m" + head + "\x1b[0m" : head) + content + "\n";
  }

  void overview(size_t numFiles) {
    line("Stream", counted(numFiles, "file") + ", " + counted(stats.total.records, "record") + ", " +
                       counted(stats.total.bytes, "byte") + ", " +
                       counted(stats.malformedLines, "malformed line") +
                       (stats.otherLines > 0 ? ", " + counted(stats.otherLines, "other line") : ""));
    if (stats.anyEvent)
      line("Time span", timeText(stats.firstTime) + " to " + timeText(stats.lastTime) + ", " +
                            clockText(int64_t{stats.lastTime} - stats.firstTime));
    std::string versions;
    for (const auto &[version, records] : stats.versions)
      versions +=
          (versions.empty() ? "" : ", ") + printable(version) + " (" + counted(records, "record") + ")";
    if (!versions.empty()) line("Versions", versions);
  }

  void jobs() {
    line("Jobs", grouped(stats.jobs.jobs) + ": " + grouped(stats.finished) + " ended (" +
                     grouped(stats.neverStarted) + " without a start), " + grouped(stats.running) +
                     " running, " + grouped(stats.waiting) + " waiting");
    line("Users", grouped(stats.users.size()));
    line("Queues", grouped(stats.queues.size()));
    line("Run time", counted(static_cast<uint64_t>(stats.runSeconds), "second") + " in all");
    line("Core-hours", coreHours(stats.jobs));
    line("Wait time", "median " + quantileText(stats.jobs.waits, 0.5) + ", 95th percentile " +
                          quantileText(stats.jobs.waits, 0.95));
  }

  void types() {
    Table table({{"Type"}, {"Records", Table::Align::right}, {"Bytes", Table::Align::right}, {""}});
    for (const auto &[type, count] : stats.types)
      table.row({wmq_typename(type), grouped(count.records), grouped(count.bytes),
                 bar(shareOf(static_cast<double>(count.bytes), static_cast<double>(stats.total.bytes)))});
    text += "\n" + table.text(coloured);
  }

  void groups(const char *title, const std::unordered_map<std::string, JobGroup> &groups, size_t most) {
    using enum Table::Align;
    Table table({{title},
                 {"Jobs", right},
                 {"Wait median", right},
                 {"Wait 95 %", right},
                 {"Core-hours", right},
                 {""}});
    for (const auto &[name, group] : ranked(groups, most))
      table.row({printable(name), grouped(group->jobs), quantileText(group->waits, 0.5),
                 quantileText(group->waits, 0.95), coreHours(*group),
                 bar(shareOf(group->coreSeconds, stats.jobs.coreSeconds))});
    text += "\n" + table.text(coloured);
  }

  void runningJobs() {
    using enum Table::Align;
    const RunningJobs &running = stats.runningJobs;
    Table table({{"Running jobs from"},
                 {"Samples", right},
                 {"Jobs", right},
                 {"Peak", right},
                 {"Cores", right},
                 {"Peak", right},
                 {"GiB", right},
                 {"Peak", right},
                 {""}});
    auto row = [&](const std::string &title, const RunningJobs::Span &span) {
      table.row({title, grouped(span.samples), tenths(meanOf(span.sum.jobs, span.samples)),
                 grouped(static_cast<uint64_t>(span.peak.jobs)), tenths(meanOf(span.sum.cores, span.samples)),
                 grouped(static_cast<uint64_t>(span.peak.cores)),
                 gibibytes(meanOf(span.sum.memory, span.samples)), gibibytes(span.peak.memory),
                 bar(shareOf(meanOf(span.sum.cores, span.samples), running.whole().peak.cores))});
    };
    for (const auto &[start, span] : running.spans()) row(timeText(start), span);
    row("all, " + clockText(running.spanSeconds()) + " each", running.whole());
    text += "\n" + table.text(coloured);
  }

  void pendingReasons() {
    using enum Table::Align;
    Table table({{"Pending for", right},
                 {"Detail"},
                 {"Samples", right},
                 {"Jobs", right},
                 {"Peak", right},
                 {"Longest average wait", right},
                 {"Job-hours", right},
                 {""}});
    double whole = 0;
    for (const auto &[key, reason] : stats.pendingReasons.reasons()) whole += reason.waitSeconds;
    for (const auto &[key, reason] : ranked(stats.pendingReasons))
      table.row({reasonText(key), printable(reason->detail), grouped(reason->samples),
                 tenths(meanOf(static_cast<double>(reason->jobSum), reason->samples)),
                 std::to_string(reason->peakJobs), clockText(reason->longestAverage),
                 tenths(reason->waitSeconds / 3600), bar(shareOf(reason->waitSeconds, whole))});
    text += "\n" + table.text(coloured);
  }

  void exits() {
    Table table({{"Exit status", Table::Align::right}, {"Meaning"}, {"Jobs", Table::Align::right}, {""}});
    for (const auto &[status, jobs] : stats.exitStatuses)
      table.row({std::to_string(status), exitMeaning(status), grouped(jobs),
                 bar(shareOf(static_cast<double>(jobs), static_cast<double>(stats.finished)))});
    text += "\n" + table.text(coloured);
  }

  void accuracy() {
    if (!stats.jobs.waits.isExact())
      text += "\n~ of more than " + grouped(Quantiles::exactSamples) + " jobs, within 0.4 %\n";
  }
};

void waitMember(JsonPrinter &json, const Quantiles &waits) {
  json.key("wait");
  json.beginObject();
  json.key("jobs");
  json.count(waits.count());
  for (auto [name, share] : {std::pair("median", 0.5), std::pair("percentile95", 0.95)}) {
    json.key(name);
    if (waits.count() == 0) {
      json.null();
    } else {
      json.count(waits.at(share));
    }
  }
  json.key("exact");
  json.boolean(waits.isExact());
  json.endObject();
}

void groupMembers(JsonPrinter &json, const JobGroup &group) {
  json.key("jobs");
  json.count(group.jobs);
  json.key("coreHours");
  json.real(group.coreSeconds / 3600);
  waitMember(json, group.waits);
}

void groupArray(JsonPrinter &json, const char *name, const std::unordered_map<std::string, JobGroup> &groups,
                size_t most) {
  json.key(name);
  json.beginArray();
  for (const auto &[groupName, group] : ranked(groups, most)) {
    json.beginObject();
    json.key("name");
    json.string(groupName);
    groupMembers(json, *group);
    json.endObject();
  }
  json.endArray();
}

void streamMembers(JsonPrinter &json, const StreamStatistics &stats, size_t numFiles) {
  json.key("files");
  json.count(numFiles);
  json.key("records");
  json.count(stats.total.records);
  json.key("bytes");
  json.count(stats.total.bytes);
  json.key("malformedLines");
  json.count(stats.malformedLines);
  json.key("otherLines");
  json.count(stats.otherLines);
  for (auto [name, time] : {std::pair("firstTime", stats.firstTime), std::pair("lastTime", stats.lastTime)}) {
    json.key(name);
    if (stats.anyEvent) {
      json.integer(time);
    } else {
      json.null();
    }
  }
  json.key("versions");
  json.beginArray();
  for (const auto &[version, records] : stats.versions) {
    json.beginObject();
    json.key("version");
    json.string(version);
    json.key("records");
    json.count(records);
    json.endObject();
  }
  json.endArray();
  json.key("types");
  json.beginArray();
  for (const auto &[type, count] : stats.types) {
    json.beginObject();
    json.key("type");
    json.string(wmq_typename(type));
    json.key("records");
    json.count(count.records);
    json.key("bytes");
    json.count(count.bytes);
    json.endObject();
  }
  json.endArray();
}

void jobMembers(JsonPrinter &json, const StreamStatistics &stats) {
  groupMembers(json, stats.jobs);
  json.key("waiting");
  json.count(stats.waiting);
  json.key("running");
  json.count(stats.running);
  json.key("ended");
  json.count(stats.finished);
  json.key("endedWithoutStart");
  json.count(stats.neverStarted);
  json.key("runSeconds");
  json.integer(stats.runSeconds);
  json.key("users");
  json.count(stats.users.size());
  groupArray(json, "queues", stats.queues, stats.queues.size());
  groupArray(json, "biggestUsers", stats.users, biggestUsers);
  json.key("exitStatuses");
  json.beginArray();
  for (const auto &[status, jobs] : stats.exitStatuses) {
    json.beginObject();
    json.key("exitStatus");
    json.integer(status);
    json.key("meaning");
    json.string(exitMeaning(status));
    json.key("jobs");
    json.count(jobs);
    json.endObject();
  }
  json.endArray();
}

void usageMember(JsonPrinter &json, const char *name, double sum, double peak, uint64_t samples) {
  json.key(name);
  json.beginObject();
  json.key("mean");
  json.real(meanOf(sum, samples));
  json.key("peak");
  json.real(peak);
  json.endObject();
}

void spanMembers(JsonPrinter &json, const RunningJobs::Span &span) {
  json.key("samples");
  json.count(span.samples);
  usageMember(json, "jobs", span.sum.jobs, span.peak.jobs, span.samples);
  usageMember(json, "cores", span.sum.cores, span.peak.cores, span.samples);
  usageMember(json, "memory", span.sum.memory, span.peak.memory, span.samples);
}

void runningJobsMember(JsonPrinter &json, const RunningJobs &running) {
  json.key("runningJobs");
  json.beginObject();
  spanMembers(json, running.whole());
  json.key("spanSeconds");
  json.integer(running.spanSeconds());
  json.key("spans");
  json.beginArray();
  for (const auto &[start, span] : running.spans()) {
    json.beginObject();
    json.key("time");
    json.integer(start);
    spanMembers(json, span);
    json.endObject();
  }
  json.endArray();
  json.endObject();
}

void pendingReasonsMember(JsonPrinter &json, const PendingReasons &reasons) {
  json.key("pendingReasons");
  json.beginArray();
  for (const auto &[key, reason] : ranked(reasons)) {
    json.beginObject();
    json.key("mainReason");
    json.integer(key.first);
    json.key("subReason");
    json.integer(key.second);
    json.key("detail");
    json.string(reason->detail);
    json.key("records");
    json.count(reason->records);
    json.key("samples");
    json.count(reason->samples);
    json.key("jobs");
    json.beginObject();
    json.key("mean");
    json.real(meanOf(static_cast<double>(reason->jobSum), reason->samples));
    json.key("peak");
    json.integer(reason->peakJobs);
    json.endObject();
    json.key("longestAverageWait");
    json.integer(reason->longestAverage);
    json.key("jobHours");
    json.real(reason->waitSeconds / 3600);
    json.endObject();
  }
  json.endArray();
}

}  // namespace

std::string statsText(const StreamStatistics &statistics, size_t numFiles, bool coloured) {
  Report report{statistics, coloured, ""};
  report.overview(numFiles);
  if (statistics.jobs.jobs > 0) report.jobs();
  if (statistics.total.records > 0) report.types();
  if (statistics.jobs.jobs > 0) {
    report.groups("Queue", statistics.queues, statistics.queues.size());
    report.groups("User", statistics.users, biggestUsers);
  }
  if (statistics.finished > 0) report.exits();
  if (statistics.runningJobs.samples() > 0) report.runningJobs();
  if (!statistics.pendingReasons.reasons().empty()) report.pendingReasons();
  report.accuracy();
  return report.text;
}

std::string statsJson(const StreamStatistics &statistics, size_t numFiles) {
  JsonPrinter json;
  json.beginObject();
  streamMembers(json, statistics, numFiles);
  jobMembers(json, statistics);
  if (statistics.runningJobs.samples() > 0) runningJobsMember(json, statistics.runningJobs);
  if (!statistics.pendingReasons.reasons().empty()) pendingReasonsMember(json, statistics.pendingReasons);
  json.endObject();
  return json.text();
}

}  // namespace wmq::tool
