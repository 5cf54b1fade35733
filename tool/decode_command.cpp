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
#include "lines.h"
#include "options.h"
#include "output.h"
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

  bool chooses() const {
    using Limits = std::numeric_limits<int64_t>;
    return types.any() || since != Limits::min() || until != Limits::max();
  }
  bool isWanted(const wmqLineHeader &header) const {
    if (types.any() && !types.test(static_cast<size_t>(header.type))) return false;
    return header.eventTime >= since && header.eventTime <= until;
  }
};

class Decoder {
 public:
  Decoder(const DecodeOptions &given, Faults &reportTo, Output &writeTo)
      : options(given), faults(reportTo), output(writeTo) {}
  Decoder(const Decoder &) = delete;
  Decoder &operator=(const Decoder &) = delete;
  ~Decoder() { std::free(text); }

  // False when nothing more can be written.
  bool decode(const Lines &line) {
    if (carriesNoRecord(line.text()) || isPassedOver(line)) return true;
    Record record = readRecord(line, &faults);
    if (!record) return true;

    wmq_errno = 0;
    ssize_t length = wmq_record2json(record.get(), options.pretty, &text, &capacity);
    if (length < 0) {
      faults.refused(line.file(), line.number(), wmq_errno);
      return true;
    }
    return output.write({text, static_cast<size_t>(length)}) && output.write("\n");
  }

 private:
  // A line with a bad header is not: reading it will tell what is wrong.
  bool isPassedOver(const Lines &line) const {
    if (!options.chooses()) return false;
    wmqLineHeader header;
    return wmq_peekline(line.text().data(), &header) == 0 && !options.isWanted(header);
  }

  const DecodeOptions &options;
  Faults &faults;
  Output &output;
  char *text = nullptr;
  size_t capacity = 0;
};

int decodeFiles(const DecodeOptions &options) {
  Progress progress(options.files, true);
  Faults faults(&progress);
  Output output;
  Decoder decoder(options, faults, output);
  eachLine(
      options.files, faults, progress, [&] { output.flush(); },
      [&](const Lines &line) { return decoder.decode(line); });
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
