#include "options.h"

#include <limits>

#include "pipeline.h"
#include "times.h"

namespace wmq::tool {

namespace {

// Decimal digits and perhaps a unit: "4194304", "4096K", "4M".
int32_t sizeFromText(const std::string &option, const std::string &text) {
  size_t digits = text.find_first_not_of("0123456789");
  std::string unit = digits == std::string::npos ? "" : text.substr(digits);
  int shift = unit.empty() ? 0 : unit == "K" ? 10 : unit == "M" ? 20 : unit == "G" ? 30 : -1;
  constexpr int64_t most = std::numeric_limits<int32_t>::max();
  int64_t size = 0;
  bool fits = digits != 0 && !text.empty() && shift >= 0;
  for (char c : text.substr(0, digits)) {
    size = 10 * size + (c - '0');
    fits = fits && size <= most;
    if (!fits) break;
  }
  if (fits) size <<= shift;
  if (!fits || size < 1 || size > most)
    throw CLI::ValidationError(option, "'" + text + "' is no size from 1 to 2147483647 bytes");
  return static_cast<int32_t>(size);
}

}  // namespace

CLI::Option *addListOption(CLI::App &command, const std::string &name, std::vector<std::string> &values,
                           const std::string &valueName, const std::string &description) {
  return command.add_option(name, values, description)
      ->type_name(valueName)
      ->allow_extra_args(false)
      ->delimiter(',');
}

CLI::Option *addTimeOption(CLI::App &command, const std::string &name, int64_t &seconds,
                           const std::string &description) {
  auto take = [name, &seconds](const std::string &text) {
    std::string why;
    std::optional<int64_t> point = parseTime(text, why);
    if (!point) throw CLI::ValidationError(name, "'" + text + "': " + why);
    seconds = *point;
  };
  return command.add_option_function<std::string>(name, take, description)->type_name("TIME");
}

void refuseEmpty(CLI::Option &option, const std::string &what) {
  option.check(
      [what](const std::string &text) { return text.empty() ? "the " + what + " is empty" : std::string(); });
}

void addStreamPath(CLI::App &command, std::string &path) {
  CLI::Option *option = command.add_option("PATH", path)->required();
  refuseEmpty(*option, "file name");
  option->check([](const std::string &name) {
    return name == "-" ? "standard input is no stream, but can be decoded (wmq decode)" : std::string();
  });
}

void addThreadsOption(CLI::App &command, unsigned &threads) {
  threads = availableThreads();
  command
      .add_option("-j,--threads", threads, "work on the input in N threads (default: one for each processor)")
      ->type_name("N")
      ->check(CLI::Range(1U, 1024U).description(""));
}

void addSinkOptions(CLI::App &command, SinkOptions &sink, const std::string &description, bool required) {
  CLI::Option *file = command.add_option("-o,--output", sink.file, description)->type_name("FILE");
  if (required) file->required();
  refuseEmpty(*file, "file name");
  CLI::Option *size = command.add_option_function<std::string>(
      "--max-size", [&sink](const std::string &text) { sink.maxSize = sizeFromText("--max-size", text); },
      "rotate FILE when it has N bytes or more, K, M and G allowed behind the number (default 1000000000); "
      "looked at before every 100th record of a run, never in a run of fewer");
  CLI::Option *files = command.add_option("--max-files", sink.maxFiles, "keep N old files (default 10)");
  command
      .add_flag(
          "--sync", sink.sync,
          "bring FILE and the old files made of it to the disk before ending (fsync), and end with 3 if "
          "that fails")
      ->needs(file);
  size->type_name("N")->needs(file);
  files->type_name("N")->needs(file)->check(
      CLI::Range(1, std::numeric_limits<int32_t>::max()).description(""));
}

}  // namespace wmq::tool
