// wmq stats: what an operator wants to know of a stream at a glance.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "commands.h"
#include "faults.h"
#include "line_feed.h"
#include "line_parts.h"
#include "options.h"
#include "output.h"
#include "pipeline.h"
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
  unsigned threads = 1;
};

bool isPlainFile(const std::string &file) {
  struct stat status {};
  return file != "-" && stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

constexpr uint64_t noSuffix = UINT64_MAX;

// The suffix that rotation gave to a file, which grows from file to file. The file that is still written to
// has none and comes last.
uint64_t rotationSuffix(const std::string &file) {
  size_t dot = file.rfind('.');
  std::string digits = dot == std::string::npos ? "" : file.substr(dot + 1);
  bool isNumber =
      !digits.empty() && digits.size() < 19 && digits.find_first_not_of("0123456789") == std::string::npos;
  return isNumber ? std::stoull(digits) : noSuffix;
}

// A file and where in the stream it belongs.
struct StreamPart {
  LineFeed::File file;
  int64_t firstTime = INT64_MAX;
  uint64_t suffix = 0;
};

// The time of the first event, INT64_MAX when the first lines hold none.
int64_t firstEventTime(Blocks &blocks) {
  constexpr uint64_t enough = 1000;
  int64_t time = INT64_MAX;
  uint64_t linesSeen = 0;
  blocks.lookAhead([&](Block &block) {
    linesSeen += block.eachLine([&](std::string_view line, uint64_t number, uint64_t /*bytes*/) {
      wmqLineHeader header;
      if (!carriesNoRecord(line) && wmq_peekline(line.data(), &header) == 0 &&
          header.type != EVENT_END_OF_STREAM)
        time = header.eventTime;
      return time == INT64_MAX && linesSeen + number < enough;
    });
    return time != INT64_MAX || linesSeen >= enough;
  });
  return time;
}

// A stream has one current file. Others without a suffix are kept open as well, but not any number of them.
constexpr int mostCurrent = 100;

// Jobs are followed through the stream, so its files are to be read in the order of their events, whatever
// the order in which a shell lists them.
std::deque<LineFeed::File> inOrderOfEvents(const std::vector<std::string> &files) {
  std::vector<StreamPart> parts;
  int numCurrent = 0;
  for (const std::string &name : files) {
    StreamPart part{{name, nullptr}, INT64_MAX, rotationSuffix(name)};
    // A single input is in order as it is, and may be a pipe that brings its first line much later.
    if (files.size() > 1) {
      const auto opened = std::make_shared<Blocks>(name);
      part.firstTime = firstEventTime(*opened);
      // What cannot be opened twice stays open, and so does the file that may have another name by its turn.
      const bool mayBeCurrent = part.suffix == noSuffix && !opened->source().isPacked();
      if (!isPlainFile(name) || (mayBeCurrent && ++numCurrent <= mostCurrent)) part.file.opened = opened;
    }
    parts.push_back(std::move(part));
  }
  std::stable_sort(parts.begin(), parts.end(), [](const StreamPart &left, const StreamPart &right) {
    return left.firstTime != right.firstTime ? left.firstTime < right.firstTime : left.suffix < right.suffix;
  });
  std::deque<LineFeed::File> ordered;
  for (StreamPart &part : parts) ordered.push_back(std::move(part.file));
  return ordered;
}

// A block of lines, and all that the statistics take of it: counts, and facts in their order. Samples are
// whole records, which the statistics look at themselves.
struct StatsPart : LinePart {
  LineCounts counts;
  std::vector<JobFact> facts;
  std::vector<Record> samples;
};

// The text of a record, and what its header tells.
struct HeadedText {
  explicit HeadedText(std::string_view ofRecord)
      : text(ofRecord), hasHeader(wmq_peekline(text.data(), &header) == 0) {}

  std::string_view text;
  wmqLineHeader header{};
  bool hasHeader;
};

// False when it is refused; nothing of it is taken then.
bool observeRecord(const HeadedText &record, uint64_t bytes, StatsPart &part, Refusal &why) {
  // A line with a bad header is checked: that tells what is wrong with it.
  const Counted counted = record.hasHeader ? countedOf(record.header.type) : Counted::figures;
  Record sample;
  eventRecord figures;
  if (counted == Counted::all) sample = readRecord(record.text, why);
  if (counted == Counted::figures && record.hasHeader) checkFields(record.text, record.header, figures, why);
  if (!record.hasHeader) checkRecord(record.text, figures, why);
  if (why.error != 0) return false;
  part.counts.addLine(record.header, bytes);
  if (sample) part.samples.push_back(std::move(sample));
  if (counted == Counted::figures) part.facts.push_back(jobFactOf(figures));
  return true;
}

void observeLine(std::string_view line, uint64_t number, uint64_t bytes, StatsPart &part) {
  if (carriesNoRecord(line)) return part.counts.addOther();
  uint64_t bytesLeft = bytes;
  eachRecordText(line, [&](std::string_view text, bool isTorn) {
    // The line end belongs to the last one.
    const bool isLast = bytesLeft - text.size() <= bytes - line.size();
    const uint64_t ownBytes = isLast ? bytesLeft : text.size();
    bytesLeft -= ownBytes;
    Refusal why;
    if (isTorn)
      why = tornRefusal();
    else if (observeRecord(HeadedText(text), ownBytes, part, why))
      return;
    part.counts.addMalformed();
    part.badLines.push_back({number, std::move(why)});
  });
}

void observe(StatsPart &part) {
  part.counts = {};
  part.facts.clear();
  part.samples.clear();
  part.badLines.clear();
  part.numLines = part.block.eachLine([&](std::string_view line, uint64_t number, uint64_t bytes) {
    observeLine(line, number, bytes, part);
    return true;
  });
}

void take(const StatsPart &part, StreamStatistics &statistics) {
  statistics.addCounts(part.counts);
  for (const JobFact &fact : part.facts) statistics.addFact(fact);
  for (const Record &sample : part.samples) statistics.addSample(*sample);
}

int reportStatistics(const StatsOptions &options) {
  std::vector<std::string> files = options.files;
  if (files.empty()) files.emplace_back("-");
  Progress progress(files, false);
  Faults faults(&progress);
  PartReport report(faults, progress);
  StreamStatistics statistics;
  LineFeed feed(inOrderOfEvents(files));
  Pipeline<StatsPart>(options.threads, {.fill = [&](StatsPart &part) { return feed.fill(part); },
                                        .work = observe,
                                        .use =
                                            [&](const StatsPart &part) {
                                              report.add(part);
                                              take(part, statistics);
                                              return true;
                                            },
                                        .idle = [] {}})
      .run();
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
      "and the exit status is 1 then. Of lines that tell nothing of these things but\n"
      "their type and time only the header is looked at.");
  command->add_option("FILE", options->files);
  command->add_flag("--json", options->json, "print one JSON object instead of tables; times are in seconds");
  addThreadsOption(*command, options->threads);
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
