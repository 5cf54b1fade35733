// wmq decode: lines of stream files become JSON.
#include <algorithm>
#include <bitset>
#include <cstdlib>
#include <limits>
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
#include "wmq/json.h"
#include "wmq/stream.h"

namespace wmq::tool {

namespace {

struct DecodeOptions {
  std::vector<std::string> files;
  std::vector<std::string> typeLists;
  std::bitset<WMQ_MAX_EVENT_TYPE + 1> types;  // wanted ones; none set: all
  int64_t since = std::numeric_limits<int64_t>::min();
  int64_t until = std::numeric_limits<int64_t>::max();
  bool pretty = false;
  bool splits = true;  // lines on which several records stand
  unsigned threads = 1;

  bool chooses() const {
    using Limits = std::numeric_limits<int64_t>;
    return types.any() || since != Limits::min() || until != Limits::max();
  }
  bool isWanted(const wmqLineHeader &header) const {
    if (types.any() && !types.test(static_cast<size_t>(header.type))) return false;
    return header.eventTime >= since && header.eventTime <= until;
  }
};

// JSON of many records, in memory that is used again.
struct JsonText {
  JsonText() = default;
  JsonText(const JsonText &) = delete;
  JsonText &operator=(const JsonText &) = delete;
  ~JsonText() { std::free(text); }

  char *text = nullptr;
  size_t capacity = 0;
  size_t size = 0;
};

struct DecodePart : LinePart {
  JsonText json;
};

// A line with a bad header is not passed over: reading it will tell what is wrong.
bool isPassedOver(std::string_view line, const DecodeOptions &options) {
  if (carriesNoRecord(line)) return true;
  if (!options.chooses()) return false;
  wmqLineHeader header;
  return wmq_peekline(line.data(), &header) == 0 && !options.isWanted(header);
}

bool decodeLine(std::string_view line, const DecodeOptions &options, DecodePart &part, Refusal &why) {
  const eventRecord *const record = borrowRecord(line, why);
  if (record == nullptr) return false;
  wmq_errno = 0;
  JsonText &json = part.json;
  if (wmq_appendjson(record, options.pretty, &json.text, &json.capacity, &json.size) < 0) {
    why = lastRefusal();
    return false;
  }
  json.text[json.size++] = '\n';  // where the NUL stood
  return true;
}

void decodePart(DecodePart &part, const DecodeOptions &options) {
  part.json.size = 0;
  part.badLines.clear();
  part.numLines = part.block.eachLine([&](std::string_view line, uint64_t number, uint64_t /*bytes*/) {
    const auto take = [&](std::string_view text, bool isTorn) {
      Refusal why;
      if (isTorn)
        why = tornRefusal();
      else if (isPassedOver(text, options) || decodeLine(text, options, part, why))
        return;
      part.badLines.push_back({number, std::move(why), part.json.size});
    };
    if (options.splits)
      eachRecordText(line, take);
    else
      take(line, false);
    return true;
  });
}

// Records and faults, in the order of their lines.
bool printPart(const DecodePart &part, PartReport &report, Output &output) {
  std::string_view rest(part.json.text, part.json.size);
  report.add(part, [&](const BadLine &line) {
    const size_t length = line.textBefore - (part.json.size - rest.size());
    output.write(rest.substr(0, length));
    rest.remove_prefix(length);
  });
  return output.write(rest);
}

int decodeFiles(const DecodeOptions &options) {
  Progress progress(options.files, true);
  Faults faults(&progress);
  PartReport report(faults, progress);
  Output output;
  faults.beforePrinting([&] { output.flush(); });
  LineFeed feed(options.files);
  Pipeline<DecodePart>(options.threads,
                       {.fill = [&](DecodePart &part) { return feed.fill(part); },
                        .work = [&](DecodePart &part) { decodePart(part, options); },
                        .use = [&](DecodePart &part) { return printPart(part, report, output); },
                        .idle = [&] { output.flush(); }})
      .run();
  output.finish(faults);
  return faults.exitStatus();
}

}  // namespace

void addDecodeCommand(CLI::App &program, Run &run) {
  auto options = std::make_shared<DecodeOptions>();
  CLI::App *command =
      program.add_subcommand("decode",
                             "Print the records of stream files as JSON, one object on one line.\n"
                             "FILE may be plain, gzip or zstd; without FILE, or when FILE is -, standard\n"
                             "input is read. Lines that begin with # are skipped. A line that does not\n"
                             "parse is reported on standard error as\n"
                             "\n"
                             "  FILE:LINE: error NUMBER NAME: what is wrong\n"
                             "\n"
                             "and the next line goes on; the exit status is 1 then. Of lines that --type,\n"
                             "--since or --until leave out only the header is looked at.");
  command->add_option("FILE", options->files);
  addListOption(*command, "--type", options->typeLists, "T,...",
                "only records of these types, given by name or number")
      ->each([options](const std::string &name) {
        std::optional<int32_t> code = typeFromText(name);
        if (!code) throw CLI::ValidationError("there is no event type '" + name + "'");
        options->types.set(static_cast<size_t>(*code));
      });
  addTimeOption(*command, "--since", options->since, "only records of this time or later");
  addTimeOption(*command, "--until", options->until, "only records of this time or earlier");
  command->add_flag("--pretty", options->pretty, "indent the objects over several lines");
  command->add_flag(
      "--split-joined,!--no-split-joined", options->splits,
      "print each of the records that stand on one line, which some types and interrupted writers "
      "leave open (default); --no-split-joined: one record for each line");
  addThreadsOption(*command, options->threads);
  command->footer(
      "TIME is a number of seconds since 1970-01-01T00:00:00Z, or ISO 8601 with a\n"
      "zone: 2023-11-14T22:13:20Z, 2023-11-14T23:13+01:00.\n"
      "\n"
      "Examples:\n"
      "  wmq decode --type JOB_START,JOB_FINISH --since 2023-11-14T00:00Z stream\n"
      "  tail -f stream | wmq decode | jq .eventLog.jobId");
  command->callback([options, &run] { run = [options] { return decodeFiles(*options); }; });
}

}  // namespace wmq::tool
