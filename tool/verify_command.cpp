// wmq verify: whether a stream is whole.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string>

#include "commands.h"
#include "faults.h"
#include "followed.h"
#include "json_printer.h"
#include "output.h"
#include "records.h"
#include "stream_check.h"
#include "text.h"

namespace wmq::tool {

namespace {

struct VerifyOptions {
  std::string path;
  bool json = false;
};

// False when the stream cannot be read.
bool checkStream(const std::string &path, StreamCheck &check, Faults &faults) {
  wmqFollowParams params{path.c_str(), WMQ_FROM_OLDEST, nullptr, 0};
  Follower follower(wmq_followopen(&params));
  int result = follower ? WMQ_FOLLOW_RECORD : WMQ_FOLLOW_FAILED;
  while (result > WMQ_FOLLOW_NOTHING) {
    eventRecord *given = nullptr;
    result = wmq_follownext(follower.get(), &given, 0);
    Record record(given);
    if (result > WMQ_FOLLOW_NOTHING) check.add(record.get(), *wmq_followdetail(follower.get()));
  }
  if (result == WMQ_FOLLOW_NOTHING) {
    check.finish(path);
    return true;
  }
  faults.failure(path, followFailure());
  return false;
}

template <typename Use>
void eachFlaw(Use use) {
  for (size_t i = 0; i < numFlaws; ++i) use(static_cast<Flaw>(i));
}

std::string reportText(const StreamCheck &check) {
  std::string text;
  for (const Finding &finding : check.findings)
    text += printable(finding.file + ": byte " + std::to_string(finding.offset) + ": " +
                      flawName(finding.flaw) + ": " + finding.text) +
            "\n";
  eachFlaw([&](Flaw flaw) {
    if (check.count(flaw) > 0)
      text += grouped(check.count(flaw)) + " " + flawText(flaw, check.count(flaw)) + "\n";
  });
  text += counted(check.records, "record") + " in " + counted(check.files.size(), "file") + ": " +
          (check.isWhole() ? "whole" : "not whole") + "\n";
  return text;
}

std::string reportJson(const StreamCheck &check) {
  JsonPrinter json;
  json.beginObject();
  json.key("whole");
  json.boolean(check.isWhole());
  json.key("records");
  json.count(check.records);
  json.key("files");
  json.beginArray();
  for (const std::string &file : check.files) json.string(file);
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
    json.key("offset");
    json.integer(finding.offset);
    json.key("text");
    json.string(finding.text);
    json.endObject();
  }
  json.endArray();
  json.endObject();
  return json.text();
}

int verify(const VerifyOptions &options) {
  Faults faults;
  StreamCheck check;
  if (!checkStream(options.path, check, faults)) return faults.exitStatus();
  Output output;
  output.write(options.json ? reportJson(check) : reportText(check));
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
      "it, gaps between files as far as they can be known, times that go back, versions\n"
      "later than this program knows, jobs that start without having been submitted or\n"
      "end without having been started. The first hundred of each kind are listed as\n"
      "\n"
      "  FILE: byte OFFSET: KIND: what is the matter\n"
      "\n"
      "and the exit status is 1 when there is any.");
  command->add_option("PATH", options->path)->required();
  command->add_flag("--json", options->json, "print one JSON object instead");
  command->footer(
      "Jobs with a number below the first one that is submitted in the stream are taken\n"
      "for submitted before it begins.\n"
      "\n"
      "Example:\n"
      "  wmq verify events/stream && echo complete");
  command->callback([options, &run] { run = [options] { return verify(*options); }; });
}

}  // namespace wmq::tool
