// wmq schema: how the records of a type stand on the line.
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "commands.h"
#include "faults.h"
#include "options.h"
#include "output.h"
#include "records.h"
#include "schema_text.h"
#include "terminal.h"

namespace wmq::tool {

namespace {

struct SchemaOptions {
  int32_t type = 0;  // 0: all
  std::optional<float> version;
  bool json = false;
  std::string pages;  // directory to put documentation into
};

void writePage(const std::filesystem::path &path, const std::string &text, Faults &faults) {
  errno = 0;
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) faults.failure(path.string(), errno ? std::strerror(errno) : "cannot be written");
}

int writePages(const std::filesystem::path &directory) {
  Faults faults;
  std::error_code error;
  std::filesystem::create_directories(directory, error);
  if (error) {
    faults.failure(directory.string(), error.message());
    return faults.exitStatus();
  }
  writePage(directory / "index.md", schemaIndex(), faults);
  for (int32_t type : typesWithLayout())
    writePage(directory / (std::string(wmq_typename(type)) + ".md"), schemaPage(type), faults);
  return faults.exitStatus();
}

int printSchema(const SchemaOptions &options) {
  Faults faults;
  Output output;
  std::vector<int32_t> types = options.type == 0 ? typesWithLayout() : std::vector{options.type};
  bool coloured = wantsColour(STDOUT_FILENO);
  bool first = true;
  for (int32_t type : types) {
    if (options.json) {
      output.write(schemaJson(type, options.version));
    } else {
      output.write((first ? "" : "\n") + schemaTable(type, options.version, coloured));
    }
    first = false;
  }
  output.finish(faults);
  return faults.exitStatus();
}

float versionFrom(const std::string &text) {
  float version = 0;
  auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), version);
  bool isNumber = error == std::errc() && stop == text.data() + text.size();
  if (!isNumber || !std::isfinite(version) || !(version > 0))
    throw CLI::ValidationError("--version", "'" + text + "' is no version such as 9.1");
  return version;
}

int32_t typeWithLayout(const std::string &name) {
  std::optional<int32_t> type = typeFromText(name);
  if (!type) throw CLI::ValidationError("TYPE", "there is no event type '" + name + "'");
  if (!hasLineLayout(*type))
    throw CLI::ValidationError("TYPE", "'" + name + "' has no layout in this version of wmq");
  return *type;
}

}  // namespace

void addSchemaCommand(CLI::App &program, Run &run) {
  auto options = std::make_shared<SchemaOptions>();
  CLI::App *command = program.add_subcommand(
      "schema",
      "Tell how the records of a type stand on the line.\n"
      "The table has one row for each field in the order of the line: its position,\n"
      "its form, the versions that carry it, the condition on other fields, and its\n"
      "value where the line has none. A + before the form: read together with the field\n"
      "before it. Without TYPE (a name or a number) all types follow each other.");
  CLI::Option *type = command->add_option_function<std::string>(
      "TYPE", [options](const std::string &name) { options->type = typeWithLayout(name); });
  CLI::Option *version = command->add_option_function<std::string>(
      "--version", [options](const std::string &text) { options->version = versionFrom(text); },
      "only what a line of version V carries");
  version->type_name("V");
  CLI::Option *json =
      command->add_flag("--json", options->json, "print a JSON object for each type, one on a line");
  CLI::Option *pages = command->add_option(
      "--markdown", options->pages,
      "write a page for each type and an index into the directory DIR instead of printing");
  pages->type_name("DIR")->excludes(type)->excludes(version)->excludes(json);
  refuseEmpty(*pages, "directory name");
  command->footer(
      "Examples:\n"
      "  wmq schema JOB_FINISH --version 9.1\n"
      "  wmq schema --json | jq -r '.fields[].field'");
  command->callback([options, &run] {
    run = [options] { return options->pages.empty() ? printSchema(*options) : writePages(options->pages); };
  });
}

}  // namespace wmq::tool
