// wmq verify: whether a stream is whole.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "checked_files.h"
#include "commands.h"
#include "faults.h"
#include "followed.h"
#include "json_printer.h"
#include "options.h"
#include "output.h"
#include "progress.h"
#include "stream_check.h"
#include "stream_files.h"
#include "text.h"

namespace wmq::tool {

namespace {

struct VerifyOptions {
  std::string path;
  bool json = false;
  unsigned threads = 1;
};

template <typename Use>
void eachFlaw(Use use) {
  for (size_t i = 0; i < numFlaws; ++i) use(static_cast<Flaw>(i));
}

std::string reportText(const StreamCheck &check, size_t numFiles) {
  std::string text;
  for (const Finding &finding : check.findings) {
    std::string place = finding.file;
    if (finding.place.line > 0) place += ":" + std::to_string(finding.place.line);
    text += printable(place + ": " + flawName(finding.flaw) + ": " + finding.text) + "\n";
  }
  eachFlaw([&](Flaw flaw) {
    if (check.count(flaw) > 0)
      text += grouped(check.count(flaw)) + " " + flawText(flaw, check.count(flaw)) + "\n";
  });
  text += counted(check.records, "record") + " in " + counted(numFiles, "file") + ": " +
          (check.isWhole() ? "whole" : "not whole") + "\n";
  return text;
}

std::string reportJson(const StreamCheck &check, const std::vector<std::string> &files) {
  JsonPrinter json;
  json.beginObject();
  json.key("whole");
  json.boolean(check.isWhole());
  json.key("records");
  json.count(check.records);
  json.key("files");
  json.beginArray();
  for (const std::string &file : files) json.string(file);
  json.endArray();
  json.key("versions");
  json.beginObject();
  for (const auto &[version, count] : check.versions) {
    json.key(version);
    json.count(count);
  }
  json.endObject();
  json.key("earlierJobs");
  json.count(check.earlierJobs);
  json.key("counts");
  json.beginObject();
  eachFlaw([&](Flaw flaw) {
    json.key(flawName(flaw));
    json.count(check.count(flaw));
  });
  json.endObject();
  json.key("findings");
  json.beginArray();
  for (const Finding &finding : check.findings) {
    json.beginObject();
    json.key("kind");
    json.string(flawName(finding.flaw));
    json.key("file");
    json.string(finding.file);
    json.key("line");
    json.count(finding.place.line);
    json.key("offset");
    json.count(finding.place.offset);
    json.key("text");
    json.string(finding.text);
    json.endObject();
  }
  json.endArray();
  json.endObject();
  return json.text();
}

int verify(const VerifyOptions &options) {
  std::vector<StreamFile> files;
  if (!findStream(options.path, files)) {
    Faults faults;
    faults.failure(options.path, systemFailure());
    return faults.exitStatus();
  }
  std::vector<std::string> names;
  names.reserve(files.size());
  for (const StreamFile &file : files) names.push_back(file.path);
  Progress progress(names, false);
  Faults faults(&progress);
  StreamCheck check(options.path, files);
  checkFiles(files, options.threads, check, faults, progress);
  progress.erase();
  if (faults.exitStatus() == exitFailure) return exitFailure;
  Output output;
  output.write(options.json ? reportJson(check, names) : reportText(check, names.size()));
  output.finish(faults);
  return std::max<int>(faults.exitStatus(), check.isWhole() ? exitFine : exitBadInput);
}

}  // namespace

void addVerifyCommand(CLI::App &program, Run &run) {
  auto options = std::make_shared<VerifyOptions>();
  CLI::App *command = program.add_subcommand(
      "verify",
      "Prove that a stream is whole.\n"
      "PATH is the stream's current file; its old files and it are read in their order.\n"
      "Amiss are records that were not written to their end, records that share a line,\n"
      "lines that do not parse, old files that END_OF_STREAM does not end, lines behind\n"
      "it, gaps between files as far as they can be known, a current file that is not\n"
      "there, times that go back, versions later than this program knows, jobs that\n"
      "start without having been submitted or end without having been started. The\n"
      "first hundred of each kind are listed as\n"
      "\n"
      "  FILE:LINE: KIND: what is the matter\n"
      "\n"
      "or without LINE where it is about the whole file, and the exit status is 1 when\n"
      "there is any.");
  addStreamPath(*command, options->path);
  command->add_flag("--json", options->json, "print one JSON object instead");
  addThreadsOption(*command, options->threads);
  command->footer(
      "Jobs with a number below the first one that is submitted in the stream are taken\n"
      "for submitted before it begins.\n"
      "\n"
      "Example:\n"
      "  wmq verify events/stream && echo complete");
  command->callback([options, &run] { run = [options] { return verify(*options); }; });
}

}  // namespace wmq::tool
