// wmq stats: what an operator wants to know of a stream at a glance.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "commands.h"
#include "faults.h"
#include "lines.h"
#include "output.h"
#include "progress.h"
#include "records.h"
#include "stats_report.h"
#include "stream_statistics.h"
#include "terminal.h"

namespace wmq::tool {

namespace {

struct StatsOptions {
  std::vector<std::string> files;
  bool json = false;
};

bool isPlainFile(const std::string &file) {
  struct stat status {};
  return file != "-" && stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// The suffix that rotation gave to a file, which grows from file to file. The file that is still written to
// has none and comes last.
uint64_t rotationSuffix(const std::string &file) {
  size_t dot = file.rfind('.');
  std::string digits = dot == std::string::npos ? "" : file.substr(dot + 1);
  bool isNumber =
      !digits.empty() && digits.size() < 19 && digits.find_first_not_of("0123456789") == std::string::npos;
  return isNumber ? std::stoull(digits) : UINT64_MAX;
}

// A file and where in the stream it belongs.
struct Part {
  std::string file;
  std::unique_ptr<Lines> opened;  // what cannot be opened twice stays open
  int64_t firstTime = INT64_MAX;
  uint64_t suffix = 0;
};

// The time of the first event, INT64_MAX when the first lines hold none.
int64_t firstEventTime(Lines &lines) {
  constexpr int enough = 1000;
  for (int i = 0; i < enough && lines.next(); ++i) {
    if (carriesNoRecord(lines.text())) continue;
    Record record = readRecord(lines, nullptr);
    if (record && record->type != EVENT_END_OF_STREAM) return record->eventTime;
  }
  return INT64_MAX;
}

// Jobs are followed through the stream, so its files are to be read in the order of their events, whatever
// the order in which a shell lists them.
std::vector<Part> inOrderOfEvents(const std::vector<std::string> &files) {
  std::vector<Part> parts;
  for (const std::string &file : files) {
    Part part{file, std::make_unique<Lines>(file), INT64_MAX, rotationSuffix(file)};
    // A single input is in order as it is, and may be a pipe that brings its first line much later.
    if (files.size() > 1) {
      part.opened->keepBeginning();
      part.firstTime = firstEventTime(*part.opened);
      part.opened->startAgain();
    }
    if (isPlainFile(file)) part.opened = nullptr;
    parts.push_back(std::move(part));
  }
  std::stable_sort(parts.begin(), parts.end(), [](const Part &left, const Part &right) {
    return left.firstTime != right.firstTime ? left.firstTime < right.firstTime : left.suffix < right.suffix;
  });
  return parts;
}

void addLine(StreamStatistics &statistics, const Lines &line, Faults &faults) {
  if (carriesNoRecord(line.text())) {
    statistics.addOther();
    return;
  }
  Record record = readRecord(line, &faults);
  if (record) {
    statistics.add(*record, line.size());
  } else {
    statistics.addMalformed();
  }
}

void addPart(StreamStatistics &statistics, Part &part, Faults &faults, Progress &progress) {
  if (!part.opened) part.opened = std::make_unique<Lines>(part.file);
  Lines &lines = *part.opened;
  while (lines.next()) {
    progress.step(lines.source().bytesTaken());
    addLine(statistics, lines, faults);
  }
  lines.reportEnd(faults);
  progress.fileDone(lines.source().bytesTaken());
  part.opened = nullptr;
}

int reportStatistics(const StatsOptions &options) {
  std::vector<std::string> files = options.files;
  if (files.empty()) files.emplace_back("-");
  Progress progress(files, false);
  Faults faults(&progress);
  StreamStatistics statistics;
  for (Part &part : inOrderOfEvents(files)) addPart(statistics, part, faults, progress);
  statistics.finish();
  progress.erase();

  Output output;
  output.write(options.json ? statsJson(statistics, files.size())
                            : statsText(statistics, files.size(), wantsColour(STDOUT_FILENO)));
  output.finish(faults);
  return faults.exitStatus();
}

}  // namespace

void addStatsCommand(CLI::App &program, Run &run) {
  auto options = std::make_shared<StatsOptions>();
  CLI::App *command = program.add_subcommand(
      "stats",
      "Tell what is in a stream.\n"
      "Records and bytes of each type, versions, malformed lines, time span; jobs,\n"
      "users, queues, exit statuses; wait times (median and 95th percentile) and\n"
      "core-hours of each queue and of the ten biggest users. Of a status stream:\n"
      "running jobs, cores and memory over time. Of a pending-reasons stream: the\n"
      "reasons by jobs and waiting time. FILE may be plain, gzip or zstd; without FILE,\n"
      "or when FILE is -, standard input is read. The files of a stream may be given in\n"
      "any order; standard input must be in order of time.\n"
      "A line that does not parse is counted and reported on standard error as\n"
      "\n"
      "  FILE:LINE: error NUMBER NAME: what is wrong\n"
      "\n"
      "and the exit status is 1 then.");
  command->add_option("FILE", options->files);
  command->add_flag("--json", options->json, "print one JSON object instead of tables; times are in seconds");
  command->footer(
      "A job counts with the queue and the user of its JOB_FINISH, one that has not\n"
      "ended with those of its JOB_NEW. Its cores are the hosts in its JOB_FINISH, a\n"
      "host counting as often as it is listed. A percentile is the smallest value that\n"
      "so many of the values do not exceed; of more than 4096 values it is exact up to\n"
      "255 seconds and within 0.4 % above, which a ~ shows.\n"
      "\n"
      "Jobs, cores and memory are means over the samples of a span of time, and the\n"
      "highest of one sample. A sample is all that is said of one second; a second in\n"
      "which nothing runs has none. Job-hours of a reason are the jobs of its records\n"
      "times their sample intervals.\n"
      "\n"
      "Examples:\n"
      "  wmq stats stream stream.*\n"
      "  zcat old/*.gz | wmq stats --json | jq .runSeconds");
  command->callback([options, &run] { run = [options] { return reportStatistics(*options); }; });
}

}  // namespace wmq::tool
