// wmq follow: the records of a stream as they are written.
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <bitset>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "command_runner.h"
#include "commands.h"
#include "faults.h"
#include "followed.h"
#include "json_printer.h"
#include "options.h"
#include "records.h"
#include "state_file.h"
#include "stop_signals.h"
#include "whole_records.h"
#include "wmq/json.h"

namespace wmq::tool {

namespace {

using Clock = std::chrono::steady_clock;

struct FollowOptions {
  std::string path;
  std::string from = "start";
  std::string state;
  std::string command;
  std::vector<std::string> typeLists;
  std::bitset<WMQ_MAX_EVENT_TYPE + 1> types;  // wanted ones; none set: all
  int64_t since = std::numeric_limits<int64_t>::min();
  double untilIdle = -1;
  bool raw = false;
  bool json = false;
  bool positions = false;
  bool notices = false;
};

// Looked at so often where the system brings no news, and saved at most so often while records keep coming.
constexpr int pollInterval = 100;
constexpr size_t flushSize = size_t{32} << 10;
constexpr auto saveInterval = std::chrono::seconds(1);

class FollowRun {
 public:
  explicit FollowRun(const FollowOptions &given) : options(given), state(given.state) {}
  FollowRun(const FollowRun &) = delete;
  FollowRun &operator=(const FollowRun &) = delete;
  ~FollowRun() { std::free(text); }

  int run() {
    if (open()) {
      // Whoever is killed before anything was saved must not begin elsewhere than the first time.
      save();
      while (!ended && !signals.haveCome()) next();
      // What was written is handed over before its position is kept.
      if (!stopped) save();
    }
    if (!abandoned) output.finish(faults);
    return std::max(status, faults.exitStatus());
  }

 private:
  bool open();
  void next();
  void wait();
  bool flush();
  void save();
  void use(const eventRecord &record);
  void put(std::string_view line, bool isJson);
  void tell(const wmqFollowDetail &detail);
  void fail(const std::string &subject, const std::string &why) {
    flush();
    faults.failure(subject, why);
    ended = stopped = true;
  }

  // Only the library knows a position; what comes of it is that of any other wrong command line.
  void refusePlace(const std::string &place) {
    const std::string message =
        printable("wmq follow: --from: '" + place + "' is no position") + "\nTry 'wmq follow --help'.\n";
    std::fwrite(message.data(), 1, message.size(), stderr);
    status = exitUsage;
    ended = stopped = true;
  }

  void failToFollow() {
    const std::string why = followFailure();
    fail(wmq_errno == WMQE_SYS ? failedPart(options.path) : options.path, why);
  }

  const FollowOptions &options;
  StopSignals signals;
  Faults faults;
  WholeRecords output{signals};
  StateFile state;
  Follower follower;
  char *text = nullptr;
  size_t capacity = 0;
  bool ended = false;
  bool stopped = false;    // by a failure: what was given last is not done, and the position stays before it
  bool abandoned = false;  // nobody takes the rest of the output
  int status = exitFine;
  Clock::time_point lastGiven = Clock::now();
  Clock::time_point lastSaved = Clock::now();
};

bool FollowRun::open() {
  wmqFollowParams params{options.path.c_str(), WMQ_FROM_POSITION, nullptr, 0};
  std::string position = options.from;
  int error = 0;
  std::optional<std::string> saved;
  if (!options.state.empty()) saved = state.load(error);
  if (error != 0) {
    errno = error;
    fail(options.state, systemFailure());
    return false;
  }
  if (saved) position = *saved;
  if (position == "oldest") params.from = WMQ_FROM_OLDEST;
  if (position == "start") params.from = WMQ_FROM_START;
  if (position == "end") params.from = WMQ_FROM_END;
  params.position = position.c_str();
  follower.reset(wmq_followopen(&params));
  if (follower) return true;
  if (wmq_errno != WMQE_BAD_FORMAT)
    failToFollow();
  else if (saved)
    fail(options.state, "holds no position");
  else
    refusePlace(position);
  return false;
}

void FollowRun::next() {
  eventRecord *given = nullptr;
  int result = wmq_follownext(follower.get(), &given, 0);
  Record record(given);
  if (result == WMQ_FOLLOW_FAILED) return failToFollow();
  if (result == WMQ_FOLLOW_NOTHING) return wait();
  lastGiven = Clock::now();
  if (record)
    use(*record);
  else
    tell(*wmq_followdetail(follower.get()));
  if (!options.state.empty() && lastGiven - lastSaved >= saveInterval) save();
}

void FollowRun::wait() {
  save();
  if (ended) return;
  int most = wmq_followdescriptor(follower.get()) < 0 ? pollInterval : -1;
  if (options.untilIdle >= 0) {
    auto idle = std::chrono::duration<double>(options.untilIdle) - (Clock::now() - lastGiven);
    auto left = std::chrono::ceil<std::chrono::milliseconds>(idle).count();
    if (left <= 0) {
      ended = true;
      return;
    }
    int atMost = static_cast<int>(std::min<int64_t>(left, std::numeric_limits<int>::max()));
    most = most < 0 ? atMost : std::min(most, atMost);
  }
  // A reader that has gone is noticed although there is nothing to write.
  pollfd waited[2] = {{wmq_followdescriptor(follower.get()), POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
  signals.poll(waited, 2, most);
  if ((waited[1].revents & (POLLERR | POLLHUP | POLLNVAL)) == 0) return;
  std::raise(SIGPIPE);
  errno = EPIPE;  // where that signal is ignored
  fail("standard output", systemFailure());
  abandoned = true;
}

// A reader that takes nothing must not keep the program from ending. The position that is kept then is behind
// what it has got.
bool FollowRun::flush() {
  const WholeRecords::Outcome outcome = output.flush();
  if (outcome == WholeRecords::Outcome::handedOver) return true;
  ended = stopped = true;
  abandoned = outcome != WholeRecords::Outcome::failed;
  if (outcome == WholeRecords::Outcome::cut)
    faults.failure("standard output", "ended within a record, of which nobody takes the rest");
  const bool keeps = abandoned && !options.state.empty() && !output.position().empty();
  if (keeps && !state.save(output.position())) faults.failure(options.state, std::strerror(errno));
  return false;
}

void FollowRun::save() {
  lastSaved = Clock::now();
  if (stopped || !flush()) return;
  if (!options.state.empty() && !state.save(positionOf(follower))) fail(options.state, std::strerror(errno));
}

void FollowRun::use(const eventRecord &record) {
  if (options.types.any() && !options.types.test(static_cast<size_t>(record.type))) return;
  if (record.eventTime < options.since) return;
  if (options.raw) {
    const wmqFollowDetail &detail = *wmq_followdetail(follower.get());
    return put({detail.text, static_cast<size_t>(detail.textLength)}, false);
  }
  wmq_errno = 0;
  ssize_t length = wmq_record2json(&record, 0, &text, &capacity);
  if (length < 0) return fail("memory", wmq_strerror(wmq_errno));
  put({text, static_cast<size_t>(length)}, true);
}

void FollowRun::put(std::string_view line, bool isJson) {
  std::string shown;
  std::string position;
  if (options.positions || (!options.state.empty() && output.mayBeLeft())) position = positionOf(follower);
  if (options.positions) {
    shown = isJson ? std::string(line.substr(0, line.size() - 1)) + ",\"position\":\"" + position + "\"}"
                   : position + "\t" + std::string(line);
    line = shown;
  }
  if (options.command.empty()) {
    output.append(line, std::move(position));
    if (output.size() >= flushSize) flush();
    return;
  }
  std::string input(line);
  std::string why = runCommand(options.command, input + "\n", positionOf(follower));
  if (!why.empty() && signals.haveCome()) {
    // The command has ended by the signal that this program got, too.
    ended = stopped = true;
    return;
  }
  if (!why.empty()) return fail(options.command, why);
  save();
}

// Bad lines and notices: as JSON among the records when that is wanted, else on standard error, but for
// rotations, at which nothing is amiss.
void FollowRun::tell(const wmqFollowDetail &detail) {
  bool isLine = detail.kind == WMQ_FOLLOW_LINE;
  bool isFault = isLine || (detail.notice != WMQ_NOTICE_ROTATED && detail.notice != WMQ_NOTICE_END_IN_MIDDLE);
  if (isFault) status = exitBadInput;
  if (!options.notices) {
    if (detail.notice == WMQ_NOTICE_ROTATED) return;
    std::string place = std::string(detail.file) + ": byte " + std::to_string(detail.offset);
    std::string what = isLine ? "error " + std::to_string(detail.error) + " " + wmq_errname(detail.error) +
                                    ": " + detail.reason
                              : std::string(noticeName(detail.notice)) + ": " + noticeText(detail);
    std::string message = printable(place + ": " + what) + "\n";
    if (!flush()) return;
    std::fwrite(message.data(), 1, message.size(), stderr);
    return;
  }
  JsonPrinter json;
  json.beginObject();
  json.key("notice");
  json.string(isLine ? "bad line" : noticeName(detail.notice));
  json.key("file");
  json.string(detail.file);
  json.key("offset");
  json.integer(detail.offset);
  json.key("reason");
  json.string(detail.reason);
  if (isLine) {
    json.key("error");
    json.integer(detail.error);
  }
  if (detail.textLength > 0) {
    json.key("text");
    json.string({detail.text, static_cast<size_t>(detail.textLength)});
  }
  if (detail.notice == WMQ_NOTICE_GAP) {
    json.key("missingFiles");
    json.string(detail.missingFiles);
    json.key("missingBytes");
    if (detail.missingBytes < 0)
      json.null();
    else
      json.integer(detail.missingBytes);
  }
  json.endObject();
  std::string line = json.text();
  put(std::string_view(line).substr(0, line.size() - 1), true);
}

// What is wrong with a number of seconds; "" when it is one.
std::string secondsProblem(const std::string &text) {
  double seconds = -1;
  const char *const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, seconds);
  // Not a number is not within any limits, either.
  const bool fits = error == std::errc() && stop == end && seconds >= 0 && seconds <= 1e9;
  return fits ? "" : "'" + text + "' is no number of seconds from 0 to 1000000000";
}

}  // namespace

void addFollowCommand(CLI::App &program, Run &run) {
  auto options = std::make_shared<FollowOptions>();
  CLI::App *command = program.add_subcommand(
      "follow",
      "Print the records of a stream as they come, one JSON object a line.\n"
      "PATH is the stream's current file. Following goes on across rotations and\n"
      "restarts of the writer, and waits for a file that is not there yet. Records that\n"
      "share a line are printed each by itself. What is missing or malformed is told on\n"
      "standard error as\n"
      "\n"
      "  FILE: byte OFFSET: KIND: what is the matter\n"
      "\n"
      "and the exit status is 1 then, but for an END_OF_STREAM in the middle of a file,\n"
      "at which nothing is missing. SIGTERM, SIGINT and SIGHUP end it between two\n"
      "records; while nobody takes the rest of a record that has been begun, only a\n"
      "second one does, with exit status 3.");
  addStreamPath(*command, options->path);
  CLI::Option *from = command->add_option("--from", options->from,
                                          "begin with the oldest old file, the start (default) or the end of "
                                          "the current one, or behind a position");
  from->type_name("oldest|start|end|POSITION");
  refuseEmpty(*from, "position");
  CLI::Option *state = command->add_option(
      "--state", options->state,
      "keep the position in this file (by way of FILE.new), and go on there when it exists, whatever --from "
      "says; what was printed before the position was saved is printed again");
  state->type_name("FILE");
  refuseEmpty(*state, "file name");
  addListOption(*command, "--type", options->typeLists, "T,...",
                "only records of these types, given by name or number")
      ->each([options](const std::string &name) {
        std::optional<int32_t> code = typeFromText(name);
        if (!code) throw CLI::ValidationError("there is no event type '" + name + "'");
        options->types.set(static_cast<size_t>(*code));
      });
  addTimeOption(*command, "--since", options->since, "only records of this time or later");
  CLI::Option *raw = command->add_flag("--raw", options->raw, "print lines as they stand in the stream");
  command->add_flag("--json", options->json, "print JSON (default)")->excludes(raw);
  command->add_flag("--positions", options->positions,
                    "print with each record the position behind it: as its last member, or before a tab");
  command
      ->add_flag("--notices", options->notices,
                 "print what is otherwise told on standard error, and rotations, as JSON among the records")
      ->excludes(raw);
  command
      ->add_option("--until-idle", options->untilIdle,
                   "end when nothing has come for so many seconds; 0: when all has been printed")
      ->type_name("SECONDS")
      ->check(secondsProblem);
  CLI::Option *exec = command->add_option(
      "--exec", options->command,
      "run this by the shell for each record (and notice), with it on its standard input and the position "
      "behind it in WMQ_POSITION, instead of printing; a failure ends following, with the position before "
      "the record, and a signal ends it behind the command");
  exec->type_name("CMD");
  refuseEmpty(*exec, "command");
  command->footer(
      "TIME is a number of seconds since 1970-01-01T00:00:00Z, or ISO 8601 with a\n"
      "zone: 2023-11-14T22:13:20Z, 2023-11-14T23:13+01:00.\n"
      "\n"
      "Examples:\n"
      "  wmq follow --type JOB_FINISH --state finished.state stream | accounting\n"
      "  wmq follow --from oldest --until-idle 0 stream | jq .eventTime\n"
      "  wmq follow --from end --exec 'mail -s event root' stream");
  command->callback([options, &run] { run = [options] { return FollowRun(*options).run(); }; });
}

}  // namespace wmq::tool
