// Writers and followers under random mishaps. Records carry their number as their time; what a writer was
// told to be written is counted beside the stream, and each of these records has to arrive, in order and
// once, or to stand in a gap that was told.
//
// WMQ_SOAK_SEQUENCES sequences of actions are played (default: few), from seed WMQ_SOAK_SEED on.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <sstream>

#include "support/scripted_clock.h"
#include "support/small_records.h"
#include "support/stream_follower.h"
#include "support/temporary_directory.h"
#include "support/text_files.h"

namespace wmq::testing {
namespace {

namespace fs = std::filesystem;

enum class Kind { events, status, pending };

constexpr int mostRecords = 1 << 16;

// What writers have been told, seen by this process also when they are killed.
struct Counted {
  int next;                        // number of the next record
  bool acknowledged[mostRecords];  // the write returned success
};

class Sequence {
 public:
  explicit Sequence(uint32_t seed) : random(seed), clock(1700000000) {
    void *shared = mmap(nullptr, sizeof(Counted), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    counted = static_cast<Counted *>(shared);
    counted->next = 1;
    kind = static_cast<Kind>(pick(3));
    size = 1 + pick(3000);
    oldFiles = 1 + pick(5);
    destroys = pick(2) == 0;
    // Of a stream that was not there yet nobody can tell with which file it began.
    beganBeforeIt = pick(3) == 0;
    if (!beganBeforeIt) write(1, false);
    follow(WMQ_FROM_OLDEST);
    save();
  }
  ~Sequence() { munmap(counted, sizeof(Counted)); }
  Sequence(const Sequence &) = delete;
  Sequence &operator=(const Sequence &) = delete;

  // What was not as it should be; empty when all was well.
  std::string play() {
    const int actions = 15 + pick(45);
    for (int i = 0; i < actions && fault.empty(); ++i) act();
    endsLine = true;  // a record that leaves its line open would be held back
    write(1, false);
    if (fault.empty()) read(1 << 20);
    if (fault.empty()) check();
    if (fault.empty()) return "";
    return fault + "\n" + story.str();
  }

 private:
  struct Item {
    bool isRecord;
    int number;    // of a record
    bool excuses;  // a notice that records are missing, or come again
    std::string text;
  };

  int pick(int below) {
    return static_cast<int>(static_cast<uint32_t>(random()) % static_cast<uint32_t>(below));
  }

  void act() {
    switch (pick(destroys ? 22 : 17)) {
      case 0:
      case 1:
      case 2:
      case 3:
        return write(1 + pick(30), pick(3) == 0);
      case 4:
        return write(1 + pick(5), true);
      case 5:
        return tear();
      case 6:
        return endByHand(false);
      case 7:
        return endByHand(true);
      case 8:
        clock.now += pick(3);
        return;
      case 9:
        clock.now -= pick(200);
        return;
      case 10:
      case 11:
      case 12:
        return read(1 + pick(20));
      case 13:
        return read(1 << 20);
      case 14:
      case 15:
        return save();
      case 16:
        return kill();
      case 17:
        return pick(2) == 0 ? removeOldest() : removeCurrent();
      case 18:
        return truncate();
      case 19:
        return replace(false);
      case 20:
        return replace(true);
      default:
        return write(1 + pick(30), false);
    }
  }

  // ------------------------------------------------------------------------------ writing

  // A process that writes, and is killed if `dies`: between two writes, or while it rotates.
  void write(int count, bool dies) {
    story << "write " << count << (dies ? " and die" : "") << " from " << counted->next << "\n";
    const auto seed = static_cast<uint32_t>(random());
    const pid_t child = fork();
    if (child == 0) writerProcess(count, dies, seed);
    int status = 0;
    waitpid(child, &status, 0);
    if (static_cast<int>(suffixes().size()) >= oldFiles) limited = true;
    if (!WIFSIGNALED(status) && WEXITSTATUS(status) != 0) fault = "the writer could not open its stream";
  }

  [[noreturn]] void writerProcess(int count, bool dies, uint32_t seed) {
    random.seed(seed);
    const int deadly = dies ? pick(4) : -1;
    if (dies && pick(2) == 0)
      clock.whenRead = [&, readings = 0]() mutable {
        if (++readings > deadly) ::kill(getpid(), SIGKILL);
      };
    std::string name = path;
    const streamParams params{name.data(), size, oldFiles, 0, nullptr, name.data(), name.data()};
    if (openStream(params) != 0) _exit(1);
    for (int i = 0; i < count; ++i) {
      if (pick(4) == 0) countWrites();
      if (dies && i == deadly) ::kill(getpid(), SIGKILL);
      const int number = counted->next++;
      if (writeNumber(number) == 0) counted->acknowledged[number] = true;
    }
    if (dies) ::kill(getpid(), SIGKILL);
    _exit(0);
  }

  int openStream(const streamParams &params) const {
    if (kind == Kind::status) return wmq_openstatus(&params);
    return kind == Kind::pending ? wmq_openpendingreasons(&params) : wmq_openstream(&params);
  }

  int writeAs(eventRecord &record) const {
    wmq_errno = 0;
    if (kind == Kind::status) return wmq_writestatus(&record);
    return kind == Kind::pending ? wmq_writependingreasons(&record) : wmq_writestream(&record);
  }

  // Every 100th call looks at the size: here the next one does, or one of the next.
  void countWrites() {
    eventRecord nothing = bareRecord(61);
    for (int calls = 90 + pick(20); calls > 0; --calls) writeAs(nothing);
  }

  int writeNumber(int number) {
    static const int32_t types[] = {EVENT_LOG_SWITCH,  EVENT_LOG_SWITCH,     EVENT_SBD_JOB_STATUS,
                                    EVENT_JOB_VACATED, EVENT_JOB_OCCUPY_REQ, EVENT_JOB_NEW};
    int32_t type = types[endsLine ? 0 : pick(6)];
    if (kind == Kind::status) type = EVENT_JOB_STATUS2;
    if (kind == Kind::pending) type = EVENT_JOB_PENDING_REASONS;
    eventRecord record = bareRecord(type);
    record.eventTime = number;
    std::string command =
        "echo \"LOG_SWITCH\" \"10.1\" 5 7\n" + std::string(static_cast<size_t>(pick(200)), 'x');
    if (type == EVENT_JOB_NEW) record.eventLog.jobNewLog.command = command.data();
    return writeAs(record);
  }

  // ------------------------------------------------------------------------------ mishaps

  // The beginning of a line, as a writer leaves it that dies in the middle of it.
  void tear() {
    const std::string line = R"("GRP_CTRL" "10.1" 1700000000 2 3 4 "some ""text""" "name")";
    const std::string part = line.substr(0, 1 + static_cast<size_t>(pick(static_cast<int>(line.size()) - 1)));
    story << "tear " << part << "\n";
    appendTo(path, part);
  }

  // A writer dies before it renames, or before it creates the new file.
  void endByHand(bool renames) {
    if (!fs::exists(path)) return;
    story << "end" << (renames ? " and rename" : "") << "\n";
    if (!endsInLineEnd()) return;
    appendTo(path, "\"END_OF_STREAM\" \"10.1\" 1700000000\n");
    if (!renames) return;
    int64_t suffix = clock.now;
    for (const int64_t old : suffixes()) suffix = std::max(suffix, old + 1);
    fs::rename(path, path + "." + std::to_string(suffix));
  }

  bool endsInLineEnd() const {
    const std::string content = contentOf(path);
    return content.empty() || content.back() == '\n';
  }

  std::vector<int64_t> suffixes() const {
    std::vector<int64_t> found;
    for (const std::string &name : namesIn(directory.path()))
      if (name.starts_with("s.")) found.push_back(std::stoll(name.substr(2)));
    return found;
  }

  // Old files go from the oldest on, as the limit removes them. What somebody takes out of the middle leaves
  // no trace that anybody could find.
  void removeOldest() {
    std::vector<int64_t> old = suffixes();
    std::sort(old.begin(), old.end());
    for (size_t i = 0; i < old.size() && (i == 0 || pick(3) != 0); ++i) {
      story << "remove s." << old[i] << "\n";
      fs::remove(path + "." + std::to_string(old[i]));
      destroyed = true;
    }
  }

  // So does what is taken from a file that the follower has not begun: it is in this one, and behind its
  // position more is written.
  bool isInCurrent() {
    read(1 << 20);
    save();
    if (!fs::exists(path)) return false;
    sizeRead = fs::file_size(path);
    if (offsetOf(savedPosition) == 0) return false;
    const ino_t itself = inodeOf(path);
    write(1 + pick(10), false);
    return inodeOf(path) == itself;
  }

  // The seventh part of a position.
  static int64_t offsetOf(const std::string &position) {
    size_t at = 0;
    for (int colons = 0; colons < 6 && at != std::string::npos; ++colons) at = position.find(':', at) + 1;
    return std::atoll(position.c_str() + at);
  }

  static ino_t inodeOf(const std::string &file) {
    struct stat status {};
    return stat(file.c_str(), &status) == 0 ? status.st_ino : 0;
  }

  void removeCurrent() {
    if (!isInCurrent()) return;
    story << "remove s\n";
    fs::remove(path);
    destroyed = true;
  }

  void truncate() {
    if (!isInCurrent()) return;
    // What has been read must be gone: that something behind it was there, nobody else knows.
    const uintmax_t length = pick(2) == 0 || sizeRead < 500 ? 0 : sizeRead / 2;
    story << "truncate to " << length << "\n";
    fs::resize_file(path, length);
    destroyed = true;
  }

  void replace(bool byCopy) {
    if (!isInCurrent()) return;
    story << "replace" << (byCopy ? " by a copy" : "") << "\n";
    if (byCopy)
      fs::copy_file(path, directory / "x");
    else
      makeFile(directory / "x");
    fs::rename(directory / "x", path);
    destroyed = true;
  }

  // ------------------------------------------------------------------------------ following

  void follow(int32_t from) { follower = std::make_unique<StreamFollower>(path, from); }

  void read(int most) {
    for (int i = 0; i < most; ++i) {
      eventRecord *given = nullptr;
      const int result = wmq_follownext(follower->get(), &given, 0);
      const OwnedRecord record(given);
      if (result == WMQ_FOLLOW_NOTHING) return;
      if (result == WMQ_FOLLOW_FAILED) {
        fault = "following failed with " + std::string(wmq_errname(wmq_errno)) + ", " + std::strerror(errno);
        return;
      }
      const wmqFollowDetail &detail = follower->detail();
      Item item{result == WMQ_FOLLOW_RECORD, 0, false, detail.text};
      if (record != nullptr) item.number = record->eventTime;
      item.excuses = detail.notice == WMQ_NOTICE_GAP || detail.notice == WMQ_NOTICE_TRUNCATED;
      if (result == WMQ_FOLLOW_NOTICE)
        story << "  notice " << detail.notice << " in " << fs::path(detail.file).filename().string() << ": "
              << detail.reason << "\n";
      else
        story << "  " << item.number << "\n";
      items.push_back(item);
    }
  }

  // A consumer keeps what it was given and the position together, and loses what came after when it is
  // killed.
  void save() {
    savedPosition = follower->position();
    savedItems = items.size();
    story << "save " << savedPosition << "\n";
  }

  void kill() {
    story << "kill the follower\n";
    items.resize(savedItems);
    follower = std::make_unique<StreamFollower>(path, savedPosition);
    if (!follower->isOpen()) fault = "the position was refused: " + savedPosition;
  }

  // ------------------------------------------------------------------------------ counting

  void check() {
    int highest = 0;
    bool excused = beganBeforeIt;
    for (const Item &item : items) {
      if (item.excuses) excused = true;
      if (!item.isRecord) continue;
      if (item.number <= highest) {
        if (!excused) return fail(item.number, "came again");
        continue;
      }
      if (!excused) checkBetween(highest, item.number);
      highest = item.number;
      excused = false;
    }
    if (!excused) checkBetween(highest, counted->next);
    const bool anyExcuse =
        std::any_of(items.begin(), items.end(), [](const Item &item) { return item.excuses; });
    if (anyExcuse && !destroyed && !limited && !beganBeforeIt) fault = "a gap without a cause";
  }

  void checkBetween(int before, int behind) {
    for (int number = before + 1; number < behind; ++number)
      if (counted->acknowledged[number]) return fail(number, "is missing");
  }

  void fail(int number, const char *what) {
    if (fault.empty()) fault = "record " + std::to_string(number) + " " + what;
  }

  std::mt19937 random;
  ScriptedClock clock;
  const TemporaryDirectory directory{};
  const std::string path = directory / "s";
  Counted *counted = nullptr;
  Kind kind = Kind::events;
  int size = 0;
  int oldFiles = 0;
  bool destroys = false;
  bool destroyed = false;  // by hand
  bool limited = false;    // the limit of old files has been reached
  bool beganBeforeIt = false;
  bool endsLine = false;
  uintmax_t sizeRead = 0;

  std::unique_ptr<StreamFollower> follower;
  std::vector<Item> items;
  std::string savedPosition;
  size_t savedItems = 0;

  std::string fault;
  std::ostringstream story;
};

int numberFrom(const char *variable, int otherwise) {
  const char *const text = std::getenv(variable);
  return text != nullptr ? std::atoi(text) : otherwise;
}

TEST(FollowSoak, EveryRecordArrivesOnceOrStandsInAGap) {
  const int first = numberFrom("WMQ_SOAK_SEED", 1);
  // Where random cases are to be few, a sequence takes thirty times as long.
  const bool few = std::getenv("RC_PARAMS") != nullptr;
  const int count = numberFrom("WMQ_SOAK_SEQUENCES", few ? 8 : 150);
  for (int seed = first; seed < first + count; ++seed) {
    const std::string fault = Sequence(static_cast<uint32_t>(seed)).play();
    ASSERT_TRUE(fault.empty()) << "in the sequence of seed " << seed << ": " << fault;
  }
}

}  // namespace
}  // namespace wmq::testing
