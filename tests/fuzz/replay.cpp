// Replays inputs of one target without libFuzzer, and moves a corpus between its one file and the directories
// of one file per input that libFuzzer works on.
//
//   replay_TARGET CORPUS...          every input of the corpus files, and the target's own seeds
//   replay_TARGET --raw FILE...      files that are one input each, such as what libFuzzer reports
//   replay_TARGET --unpack DIR CORPUS...   seeds and inputs as files of DIR
//   replay_TARGET --pack DIR...      the files of the directories as a corpus, on standard output
//   replay_TARGET --headers          how lines of each type begin
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "fuzz/corpus_file.h"
#include "fuzz/fuzz_target.h"
#include "support/record_lines.h"
#include "support/text_files.h"

namespace wmq::testing {
namespace {

std::vector<std::string> inputsOf(const std::vector<std::string> &corpora) {
  std::vector<std::string> inputs = seeds();
  for (const std::string &path : corpora) {
    const std::vector<std::string> more = readCorpus(path);
    inputs.insert(inputs.end(), more.begin(), more.end());
  }
  return inputs;
}

void replay(const std::vector<std::string> &corpora) {
  const std::vector<std::string> inputs = inputsOf(corpora);
  if (inputs.empty()) throw std::runtime_error("nothing to replay");
  for (const std::string &input : inputs) tryInput(input);
  std::printf("%zu inputs\n", inputs.size());
}

void unpack(const std::vector<std::string> &arguments) {
  if (arguments.empty()) throw std::runtime_error("no directory to unpack to");
  size_t number = 0;
  for (const std::string &input : inputsOf({arguments.begin() + 1, arguments.end()}))
    makeFile(arguments[0] + "/seed-" + std::to_string(number++), input);
}

void pack(const std::vector<std::string> &directories) {
  std::set<std::string> lines;
  for (const std::string &directory : directories)
    for (const auto &entry : std::filesystem::directory_iterator(directory))
      if (entry.is_regular_file()) lines.insert(escaped(contentOf(entry.path())));
  lines.erase("");
  for (const std::string &line : lines) std::printf("%s\n", line.c_str());
}

void printHeaders() {
  for (int32_t type = 0; type <= WMQ_MAX_EVENT_TYPE; ++type)
    if (const char *name = wmq_typename(type); name != nullptr)
      std::printf("%s\n", line(name, WMQ_FORMAT_VERSION, "").c_str());
}

void run(std::vector<std::string> arguments) {
  const std::string mode = arguments.empty() ? "" : arguments[0];
  if (!mode.starts_with("--")) return replay(arguments);
  arguments.erase(arguments.begin());
  if (mode == "--unpack") return unpack(arguments);
  if (mode == "--pack") return pack(arguments);
  if (mode == "--headers") return printHeaders();
  if (mode != "--raw") throw std::runtime_error("no option " + mode);
  for (const std::string &path : arguments) tryInput(contentOf(path));
}

}  // namespace
}  // namespace wmq::testing

int main(int argc, char **argv) {
  try {
    wmq::testing::run({argv + 1, argv + argc});
    return 0;
  } catch (const std::exception &problem) {
    std::fprintf(stderr, "%s: %s\n", argv[0], problem.what());
    return 2;
  }
}
