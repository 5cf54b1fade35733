// wmq encode: JSON becomes lines.
#include <memory>
#include <string>
#include <vector>

#include "commands.h"
#include "faults.h"
#include "lines.h"
#include "named_file.h"
#include "options.h"
#include "progress.h"
#include "record_sink.h"
#include "records.h"
#include "wmq/json.h"

namespace wmq::tool {

namespace {

struct EncodeOptions {
  std::vector<std::string> files;
  SinkOptions sink;
};

// False when nothing more can be written.
bool encodeLine(const Lines &line, RecordSink &sink, Faults &faults) {
  if (line.text().find_first_not_of(" \t\r") == std::string_view::npos) return true;
  wmq_errno = 0;
  Record record(wmq_json2record(line.text().data(), line.text().size()));
  if (!record) {
    faults.badInput(line.file(), line.number(), wmq_errno, wmq_jsonerror());
    return true;
  }
  RecordSink::Result result = sink.write(*record, line.file(), line.number());
  if (result == RecordSink::Result::refused) faults.refused(line.file(), line.number(), wmq_errno);
  return result != RecordSink::Result::failed;
}

int encodeFiles(const EncodeOptions &options) {
  Progress progress(options.files, options.sink.file == "-");
  Faults faults(&progress);
  RecordSink sink(options.sink, faults);
  if (!sink.open()) return faults.exitStatus();
  eachLine(
      options.files, faults, progress, [&] { sink.flush(); },
      [&](const Lines &line) { return encodeLine(line, sink, faults); });
  sink.close();
  return faults.exitStatus();
}

}  // namespace

void addEncodeCommand(CLI::App &program, Run &run) {
  auto options = std::make_shared<EncodeOptions>();
  CLI::App *command = program.add_subcommand(
      "encode",
      "Write JSON records, one object on one line, as lines of a stream file.\n"
      "The form is the one that decode prints; members that are left out are zero or\n"
      "empty. FILE may be plain, gzip or zstd; without FILE, or when FILE is -,\n"
      "standard input is read. An object that is refused is reported on standard\n"
      "error as\n"
      "\n"
      "  FILE:LINE: error NUMBER NAME: what is wrong\n"
      "\n"
      "and the next one goes on; the exit status is 1 then. On standard output nothing\n"
      "stands for it. In a stream file (-o) the beginning of a line that failed midway\n"
      "may stand, and the next record goes on behind it.\n"
      "The status stream carries JOB_STATUS2 records, the pending-reasons stream\n"
      "JOB_PENDING_REASONS records; each drops most others without a word.");
  command->add_option("FILE", options->files);
  command
      ->add_option_function<std::string>(
          "--kind",
          [options](const std::string &name) {
            for (const StreamOperations *stream : {&statusStream, &pendingReasonsStream})
              if (name == stream->name) options->sink.stream = stream;
          },
          "write as this stream does: events (default), status or pending")
      ->type_name("KIND")
      ->check(
          CLI::IsMember({eventStream.name, statusStream.name, pendingReasonsStream.name}).description(""));
  addSinkOptions(
      *command, options->sink,
      "append to this stream file, which rotates into FILE.SECONDS, instead of writing to standard output",
      false);
  command->footer(
      "Examples:\n"
      "  wmq decode stream.1700000000 | jq -c 'del(.eventLog.command)' | wmq encode\n"
      "  wmq encode -o events/stream --max-size 4M --max-files 3 < records.json\n"
      "  wmq encode --kind status -o ./wmq.status < samples.json");
  command->callback([options, &run] {
    for (const std::string &file : options->files) refuseInputAsOutput(file, options->sink.file);
    if (options->files.empty()) refuseInputAsOutput("-", options->sink.file);
    run = [options] { return encodeFiles(*options); };
  });
}

}  // namespace wmq::tool
