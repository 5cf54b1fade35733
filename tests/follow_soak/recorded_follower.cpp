#include "follow_soak/recorded_follower.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>

#include "follow_soak/counted_writer.h"
#include "support/small_records.h"
#include "support/text_files.h"

namespace wmq::testing {
namespace {

constexpr int all = std::numeric_limits<int>::max();

// A program that writes to a pipe.
struct Started {
  pid_t child = -1;
  int output = -1;
};

Started start(std::vector<std::string> arguments) {
  int ends[2];
  Started started;
  if (pipe2(ends, O_CLOEXEC) != 0) return started;
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_adddup2(&files, ends[1], STDOUT_FILENO);
  std::vector<char *> pointers;
  pointers.reserve(arguments.size() + 1);
  for (std::string &argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  if (posix_spawn(&started.child, WMQ_TEST_PROGRAM, &files, nullptr, pointers.data(), environ) != 0)
    started.child = -1;
  posix_spawn_file_actions_destroy(&files);
  close(ends[1]);
  started.output = ends[0];
  return started;
}

// The text behind `name` in a line of JSON, from its first or last occurrence on; "" without one.
std::string behind(const std::string &line, const char *name, bool last) {
  const size_t at = last ? line.rfind(name) : line.find(name);
  return at == std::string::npos ? "" : line.substr(at + std::strlen(name));
}

}  // namespace

RecordedFollower::RecordedFollower(std::string streamPath, Way consumersWay, const std::string &statePrefix,
                                   std::mt19937 &theRandom, std::ostringstream &log)
    : path(std::move(streamPath)),
      way(consumersWay),
      state(statePrefix + ".state"),
      random(theRandom),
      story(log) {
  follower = std::make_unique<StreamFollower>(path, WMQ_FROM_OLDEST);
  save();
  if (way != Way::library) follower.reset();
  if (way == Way::state) makeFile(state, position + "\n");
}

void RecordedFollower::read(int most) {
  if (way == Way::library)
    readFromLibrary(most);
  else
    readFromProgram(most);
}

void RecordedFollower::readAll() { read(all); }

void RecordedFollower::readFromLibrary(int most) {
  for (int i = 0; i < most; ++i) {
    eventRecord *next = nullptr;
    const int result = wmq_follownext(follower->get(), &next, 0);
    const OwnedRecord record(next);
    if (result == WMQ_FOLLOW_NOTHING) return;
    if (result == WMQ_FOLLOW_FAILED) {
      wrong = "following failed with " + std::string(wmq_errname(wmq_errno)) + ", " + std::strerror(errno);
      return;
    }
    const wmqFollowDetail &detail = follower->detail();
    Item item;
    item.isRecord = result == WMQ_FOLLOW_RECORD;
    if (record != nullptr) item.number = record->eventTime;
    item.excuses = detail.notice == WMQ_NOTICE_GAP || detail.notice == WMQ_NOTICE_TRUNCATED;
    item.position = follower->position();
    if (result == WMQ_FOLLOW_NOTICE)
      story << "  notice " << detail.notice << " in "
            << std::filesystem::path(detail.file).filename().string() << ": " << detail.reason << "\n";
    else
      story << "  " << item.number << "\n";
    given.push_back(item);
  }
}

// With `most` it is killed after so many lines, or a moment later; else it ends by itself.
void RecordedFollower::readFromProgram(int most) {
  std::vector<std::string> arguments{"wmq", "follow", "--positions", "--notices", "--until-idle", "0", path};
  if (way == Way::state)
    arguments.insert(arguments.end(), {"--state", state});
  else
    arguments.insert(arguments.end(), {"--from", position});
  const Started program = start(arguments);
  if (program.child < 0) {
    wrong = "wmq cannot be started";
    return;
  }
  std::string text;
  char bytes[4096];
  bool killed = false;
  bool restarts = way == Way::state;
  for (int lines = 0;;) {
    const ssize_t got = ::read(program.output, bytes, sizeof bytes);
    if (got <= 0) break;
    text.append(bytes, static_cast<size_t>(got));
    for (size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n')) {
      takeLine(text.substr(0, end), restarts);
      restarts = false;
      text.erase(0, end + 1);
      ++lines;
    }
    if (killed || lines < most) continue;
    if (pickFrom(random, 2) == 0) usleep(static_cast<useconds_t>(pickFrom(random, 1000)));
    ::kill(program.child, SIGKILL);
    ++numKills;
    killed = true;
  }
  close(program.output);
  int status = 0;
  waitpid(program.child, &status, 0);
  story << "  wmq follow " << (killed ? "was killed" : "has ended") << "\n";
  if (!killed && (!WIFEXITED(status) || WEXITSTATUS(status) > 1))
    wrong = "wmq follow has failed with status " + std::to_string(status);
}

void RecordedFollower::takeLine(const std::string &line, bool restarts) {
  Item item;
  const std::string notice = behind(line, "{\"notice\":\"", false);
  item.isRecord = notice.empty();
  item.excuses = notice.starts_with("gap\"") || notice.starts_with("truncated\"");
  if (item.isRecord) item.number = std::atoi(behind(line, "\"eventTime\":", false).c_str());
  item.position = behind(line, "\"position\":\"", true);
  item.position.resize(std::min(item.position.size(), item.position.find('"')));
  item.restarts = restarts;
  story << "  " << (item.isRecord ? std::to_string(item.number) : line) << "\n";
  given.push_back(item);
  if (way == Way::positions) position = item.position;
}

void RecordedFollower::save() {
  if (follower == nullptr) return;
  position = follower->position();
  numSaved = given.size();
  story << "save " << position << "\n";
}

void RecordedFollower::kill() {
  if (follower == nullptr) return;
  story << "kill the follower\n";
  ++numKills;
  given.resize(numSaved);
  follower = std::make_unique<StreamFollower>(path, position);
  if (!follower->isOpen()) wrong = "the position was refused: " + position;
}

std::string RecordedFollower::savedPosition() const {
  return way == Way::state ? contentOf(state) : position;
}

}  // namespace wmq::testing
