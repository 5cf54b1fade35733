// wmq: the event streams of a batch job scheduler on the command line.
#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "commands.h"
#include "exit_status.h"
#include "faults.h"
#include "help.h"
#include "output.h"
#include "text.h"
#include "wmq/wmq.h"

namespace wmq::tool {

namespace {

// A file that is opened must not get the number of a standard stream that the caller has closed. Nothing
// can be written to, or read from, what stands in for them.
void occupyStandardStreams() {
  for (int descriptor = 0; descriptor <= STDERR_FILENO; ++descriptor)
    if (fcntl(descriptor, F_GETFD) < 0) {
      int mode = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
      if (open("/dev/null", mode) < 0) std::_Exit(exitFailure);
    }
}

void describe(CLI::App &program) {
  program.name("wmq");
  program.description(
      "Turn the event streams of a batch job scheduler into JSON and back, write them,\n"
      "and tell what is in them.");
  program.footer(
      "Every command explains itself: wmq COMMAND --help.\n"
      "\n"
      "Exit status:\n"
      "  0                   all went well\n"
      "  1                   some input was bad; all else was done\n"
      "  2                   the command line was wrong\n"
      "  3                   an output or the system failed\n"
      "\n"
      "Environment:\n"
      "  NO_COLOR            when set and not empty, nothing is coloured\n"
      "\n"
      "Examples:\n"
      "  wmq decode stream | jq .type\n"
      "  wmq replay trace.swf.gz -o ./stream --max-size 4M\n"
      "  wmq stats stream stream.*\n"
      "  wmq follow --state here stream | jq .type");
  program.formatter(std::make_shared<HelpFormatter>());
  program.require_subcommand(0, 1);
  program.set_help_flag("-h,--help", "print this help and end");
  program.set_version_flag("--version", std::string("wmq ") + wmq_version(), "print the version and end");
}

int printed(const std::string &text) {
  Faults faults;
  Output output;
  output.write(text);
  output.finish(faults);
  return faults.exitStatus();
}

bool takesValue(const CLI::Option *option) { return option && option->get_items_expected_max() > 0; }

// The parser takes the next argument for the value of an option with nothing behind its "=": with a variable
// that is not set, an input file becomes the output.
void refuseEmptyValues(CLI::App &command, const std::vector<std::string> &arguments) {
  for (size_t i = 0; i < arguments.size() && arguments[i] != "--"; ++i) {
    const std::string &argument = arguments[i];
    if (argument.rfind('-', 0) != 0) continue;
    if (takesValue(command.get_option_no_throw(argument))) {
      ++i;
      continue;
    }
    const size_t equals = argument.find('=');
    if (argument.rfind("--", 0) != 0 || equals == std::string::npos || equals + 1 != argument.size())
      continue;
    const std::string name = argument.substr(0, equals);
    if (takesValue(command.get_option_no_throw(name)))
      throw CLI::ValidationError(name, "no value stands behind the =");
  }
}

int usageError(const CLI::App &program, const std::string &what) {
  std::string name = program.get_name();
  for (const CLI::App *chosen : program.get_subcommands()) name += " " + chosen->get_name();
  std::string text = name + ": " + printable(what) + "\nTry '" + name + " --help'.\n";
  std::fputs(text.c_str(), stderr);
  return exitUsage;
}

int runProgram(int argc, char **argv) {
  CLI::App program;
  Run run;
  describe(program);
  addDecodeCommand(program, run);
  addEncodeCommand(program, run);
  addReplayCommand(program, run);
  addStatsCommand(program, run);
  addFollowCommand(program, run);
  addVerifyCommand(program, run);
  addSchemaCommand(program, run);
  // Set last: commands take over the flags that stand when they are added, and this one is not theirs.
  program.set_help_all_flag("--help-all", "print the help of all commands and end");
  const std::vector<std::string> arguments(argv, argv + argc);
  for (CLI::App *command : program.get_subcommands({}))
    command->preparse_callback([command, &arguments](size_t numLeft) {
      refuseEmptyValues(*command, {arguments.end() - static_cast<ptrdiff_t>(numLeft), arguments.end()});
    });
  try {
    program.parse(argc, argv);
  } catch (const CLI::CallForHelp &) {
    return printed(program.help());
  } catch (const CLI::CallForAllHelp &) {
    return printed(program.help("", CLI::AppFormatMode::All));
  } catch (const CLI::CallForVersion &version) {
    return printed(std::string(version.what()) + "\n");
  } catch (const CLI::Error &error) {
    return usageError(program, error.what());
  }
  // Asked of the parser, this would hide that an unknown command was given.
  return run ? run() : usageError(program, "a command is missing");
}

}  // namespace

}  // namespace wmq::tool

// A record with many hosts takes and gives back megabytes, again and again: they stay with the process.
static void keepFreedMemory() {
#ifdef __GLIBC__
  mallopt(M_TRIM_THRESHOLD, 64 << 20);
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
#endif
}

int main(int argc, char **argv) {
  // Callers may hand down that it is ignored; a reader that has gone is to end the program silently.
  std::signal(SIGPIPE, SIG_DFL);
  wmq::tool::occupyStandardStreams();
  keepFreedMemory();
  try {
    return wmq::tool::runProgram(argc, argv);
  } catch (const std::bad_alloc &) {
    std::fputs("wmq: out of memory\n", stderr);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "wmq: %s\n", error.what());
  }
  return wmq::tool::exitFailure;
}
