// Writers and followers under random mishaps. Records carry their number as their time; what a writer was
// told to be written is counted beside the stream, and each of these records has to arrive, in order and
// once, or to stand in a gap that was told.
//
// WMQ_SOAK_SEQUENCES sequences of actions are played (default: few), from seed WMQ_SOAK_SEED on: those of
// even seeds where temporary files are, which should be a disk that uses inode numbers again, those of odd
// seeds on a disk in memory that is soon full.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>

#include "follow_soak/counted_writer.h"
#include "follow_soak/recorded_follower.h"
#include "support/private_mounts.h"
#include "support/temporary_directory.h"
#include "support/text_files.h"

namespace wmq::testing {

static bool hidesBirth = false;  // as file systems do that keep no time of creation

}  // namespace wmq::testing

extern "C" {

int __real_statx(int directory, const char *name, int flags, unsigned mask, struct statx *status);

int __wrap_statx(int directory, const char *name, int flags, unsigned mask, struct statx *status) {
  const int result = __real_statx(directory, name, flags, mask, status);
  if (result == 0 && wmq::testing::hidesBirth) status->stx_mask &= ~static_cast<unsigned>(STATX_BTIME);
  return result;
}
}

namespace wmq::testing {
namespace {

namespace fs = std::filesystem;

// What has happened in all sequences, for whoever plays many.
struct Tally {
  int sequences = 0, records = 0, rotations = 0, writersKilled = 0, followersKilled = 0, destroyed = 0,
      told = 0;
};
Tally tally;

void printTally() {
  std::printf(
      "%d sequences, %d records, %d rotations, %d writers killed, %d followers killed, "
      "%d files destroyed, %d losses told\n",
      tally.sequences, tally.records, tally.rotations, tally.writersKilled, tally.followersKilled,
      tally.destroyed, tally.told);
  tally = {};
}

class Sequence {
 public:
  // `ballast` is a file that can be removed to make room on a full disk; "" where there is always room.
  // States of followers are kept in files that begin with `states`.
  Sequence(uint32_t seed, std::string ballastFile, const std::string &states)
      : random(seed), clock(1700000000), ballast(std::move(ballastFile)) {
    hidesBirth = pick(4) == 0;
    destroys = pick(2) == 0;
    // Of a stream that was not there yet nobody can tell with which file it began.
    if (pick(3) != 0) write({.count = 1 + pick(3)});
    const int way = pick(12);
    for (int kind = 0; kind < numKinds; ++kind) {
      Stream &stream = streams[static_cast<size_t>(kind)];
      stream.kind = static_cast<Kind>(kind);
      stream.path = paths[static_cast<size_t>(kind)];
      stream.beganBeforeIt = !fs::exists(stream.path);
      const Way consumersWay = way == 0 ? Way::positions : (way == 1 ? Way::state : Way::library);
      stream.follower = std::make_unique<RecordedFollower>(stream.path, consumersWay,
                                                           states + std::to_string(kind), random, story);
    }
  }
  ~Sequence() { hidesBirth = false; }
  Sequence(const Sequence &) = delete;
  Sequence &operator=(const Sequence &) = delete;

  // What was not as it should be; empty when all was well.
  std::string play() {
    const int actions = 25 + pick(75);
    for (int i = 0; i < actions && fault.empty(); ++i) {
      try {
        act(streams[static_cast<size_t>(pick(numKinds))]);
      } catch (const std::runtime_error &error) {
        story << error.what() << "\n";
        if (ballast.empty()) fault = error.what();
      }
    }
    finish();
    addToTally();
    if (fault.empty()) return "";
    return fault + "\n" + story.str();
  }

 private:
  struct Stream {
    Kind kind = Kind::events;
    std::string path;
    std::unique_ptr<RecordedFollower> follower;
    bool beganBeforeIt = false;
    bool destroyed = false;  // by hand
    bool limited = false;    // the limit of old files has been reached
    uintmax_t sizeRead = 0;
  };

  void addToTally() const {
    ++tally.sequences;
    tally.rotations += writer.rotations();
    for (int number = firstNumber; number < writer.next(); ++number)
      if (writer.hasWritten(number)) ++tally.records;
    for (const Stream &stream : streams) {
      tally.followersKilled += stream.follower->kills();
      for (const Item &item : stream.follower->items()) tally.told += item.excuses ? 1 : 0;
    }
  }

  int pick(int below) { return pickFrom(random, below); }

  void act(Stream &stream) {
    switch (pick(destroys ? 23 : 18)) {
      case 0:
      case 1:
      case 2:
        return write({.count = 1 + pick(60), .dies = pick(3) == 0});
      case 3:
        return write({.count = 1 + pick(5), .dies = true});
      case 4:
        return writeMeanwhile(stream);
      case 5:
        return tear(stream);
      case 6:
        return endByHand(stream, false);
      case 7:
        return endByHand(stream, true);
      case 8:
        clock.now += pick(3);
        return;
      case 9:
        clock.now -= pick(200);
        return;
      case 10:
      case 11:
      case 12:
        return read(stream, 1 + pick(20));
      case 13:
        return readAll(stream);
      case 14:
      case 15:
        return stream.follower->save();
      case 16:
      case 17:
        return stream.follower->kill();
      case 18:
        return pick(2) == 0 ? removeOldest(stream) : removeCurrent(stream);
      case 19:
        return truncate(stream);
      case 20:
        return replace(stream, false);
      case 21:
        return replace(stream, true);
      default:
        return write({.count = 1 + pick(30), .kind = static_cast<int>(stream.kind)});
    }
  }

  // ------------------------------------------------------------------------------ writing

  pid_t start(Writing task) {
    story << "write " << task.count << (task.dies ? " and die" : "") << " from " << writer.next() << "\n";
    task.seed = static_cast<uint32_t>(random());
    return writer.start(task);
  }

  void written(int status) {
    if (WIFSIGNALED(status)) ++tally.writersKilled;
    for (Stream &stream : streams)
      if (static_cast<int>(suffixes(stream).size()) >= oldFiles) stream.limited = true;
    if (WIFSIGNALED(status) || WEXITSTATUS(status) == 0) return;
    story << "the writer could not open its streams\n";
    if (ballast.empty()) fault = "the writer could not open its streams";
  }

  void write(const Writing &task) {
    int status = 0;
    waitpid(start(task), &status, 0);
    written(status);
  }

  void writeMeanwhile(Stream &stream) {
    const pid_t child =
        start({.count = 100 + pick(200), .kind = static_cast<int>(stream.kind), .dies = pick(3) == 0});
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
      readAll(stream);
      if (pick(8) == 0) stream.follower->kill();
    }
    written(status);
  }

  // ------------------------------------------------------------------------------ mishaps

  // The beginning of a line, as a writer leaves it that dies in the middle of it.
  void tear(const Stream &stream) {
    const std::string line = R"("GRP_CTRL" "10.1" 1700000000 2 3 4 "some ""text""" "name")";
    const std::string part = line.substr(0, 1 + static_cast<size_t>(pick(static_cast<int>(line.size()) - 1)));
    story << "tear " << part << "\n";
    appendTo(stream.path, part);
  }

  // A writer dies before it renames, or before it creates the new file.
  void endByHand(const Stream &stream, bool renames) {
    if (!fs::exists(stream.path)) return;
    story << "end" << (renames ? " and rename" : "") << "\n";
    if (!endsInLineEnd(stream)) return;
    appendTo(stream.path, "\"END_OF_STREAM\" \"10.1\" 1700000000\n");
    if (!renames) return;
    int64_t suffix = clock.now;
    for (const int64_t old : suffixes(stream)) suffix = std::max(suffix, old + 1);
    fs::rename(stream.path, stream.path + "." + std::to_string(suffix));
  }

  static bool endsInLineEnd(const Stream &stream) {
    const std::string content = contentOf(stream.path);
    return content.empty() || content.back() == '\n';
  }

  std::vector<int64_t> suffixes(const Stream &stream) const {
    const std::string prefix = fs::path(stream.path).filename().string() + ".";
    std::vector<int64_t> found;
    for (const std::string &name : namesIn(directory.path()))
      if (name.starts_with(prefix)) found.push_back(std::stoll(name.substr(prefix.size())));
    return found;
  }

  // Old files go from the oldest on, as the limit removes them. What somebody takes out of the middle leaves
  // no trace that anybody could find.
  void removeOldest(Stream &stream) {
    std::vector<int64_t> old = suffixes(stream);
    std::sort(old.begin(), old.end());
    for (size_t i = 0; i < old.size() && (i == 0 || pick(3) != 0); ++i) {
      story << "remove the old file " << old[i] << "\n";
      fs::remove(stream.path + "." + std::to_string(old[i]));
      destroyed(stream);
    }
  }

  // So does what is taken from a file that the follower has not begun: it is in this one, and behind its
  // position more is written.
  bool isInCurrent(Stream &stream) {
    readAll(stream);
    stream.follower->save();
    if (!fs::exists(stream.path)) return false;
    stream.sizeRead = fs::file_size(stream.path);
    if (offsetOf(stream.follower->savedPosition()) == 0) return false;
    // While it is open, no other file gets its inode.
    const std::ifstream itself(stream.path);
    const ino_t inode = inodeOf(stream.path);
    write({.count = 1 + pick(10), .kind = static_cast<int>(stream.kind)});
    return inodeOf(stream.path) == inode;
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

  static void destroyed(Stream &stream) {
    stream.destroyed = true;
    ++tally.destroyed;
  }

  void removeCurrent(Stream &stream) {
    if (!isInCurrent(stream)) return;
    story << "remove the file\n";
    fs::remove(stream.path);
    destroyed(stream);
  }

  void truncate(Stream &stream) {
    if (!isInCurrent(stream)) return;
    // What has been read must be gone: that something behind it was there, nobody else knows.
    const uintmax_t length = pick(2) == 0 || stream.sizeRead < 500 ? 0 : stream.sizeRead / 2;
    story << "truncate to " << length << "\n";
    fs::resize_file(stream.path, length);
    destroyed(stream);
  }

  void replace(Stream &stream, bool byCopy) {
    if (!isInCurrent(stream)) return;
    const std::string other = directory / "x";
    story << "replace" << (byCopy ? " by a copy" : "") << "\n";
    if (byCopy)
      fs::copy_file(stream.path, other, fs::copy_options::overwrite_existing);
    else
      makeFile(other);
    fs::rename(other, stream.path);
    destroyed(stream);
  }

  // ------------------------------------------------------------------------------ following

  void read(Stream &stream, int most) {
    stream.follower->read(most);
    if (fault.empty()) fault = stream.follower->fault();
  }

  void readAll(Stream &stream) {
    stream.follower->readAll();
    if (fault.empty()) fault = stream.follower->fault();
  }

  // ------------------------------------------------------------------------------ counting

  void finish() {
    if (!ballast.empty()) fs::resize_file(ballast, 0);
    // A record that leaves its line open would be held back.
    for (int kind = 0; kind < numKinds; ++kind) write({.count = 1, .kind = kind, .endsLine = true});
    for (Stream &stream : streams) {
      if (!fault.empty()) return;
      story << "stream " << static_cast<int>(stream.kind) << "\n";
      readAll(stream);
      check(stream);
    }
  }

  void check(const Stream &stream) {
    int highest = firstNumber - 1;
    bool excused = stream.beganBeforeIt;
    bool restarts = false;
    bool anyExcuse = false;
    int before = 0;                      // the number before, since the last restart
    std::map<std::string, int> numbers;  // of the record at each position
    for (const Item &item : stream.follower->items()) {
      if (item.excuses) excused = anyExcuse = true;
      if (item.restarts) {
        restarts = true;
        before = 0;
      }
      if (!item.isRecord || item.number < firstNumber) continue;
      if (numbers.try_emplace(item.position, item.number).first->second != item.number)
        return fail(item.number, "has the position of another");
      if (!excused && (item.number <= before || (item.number <= highest && !restarts)))
        return fail(item.number, "came again");
      before = item.number;
      if (item.number <= highest) continue;
      if (!excused) checkBetween(stream, highest, item.number);
      highest = item.number;
      excused = restarts = false;
    }
    if (!excused) checkBetween(stream, highest, writer.next());
    // Without a time of creation a file that was empty cannot be known again.
    const bool mayLose = stream.destroyed || stream.limited || stream.beganBeforeIt || hidesBirth;
    if (anyExcuse && !mayLose && fault.empty()) fault = "a gap without a cause";
  }

  void checkBetween(const Stream &stream, int before, int behind) {
    for (int number = before + 1; number < behind; ++number)
      if (writer.hasWritten(number, stream.kind)) return fail(number, "is missing");
  }

  void fail(int number, const char *what) {
    if (fault.empty()) fault = "record " + std::to_string(number) + " " + what;
  }

  std::mt19937 random;
  ScriptedClock clock;
  const std::string ballast;
  const TemporaryDirectory directory{};
  const std::array<std::string, numKinds> paths{directory / "s", directory / "status", directory / "pending"};
  const int oldFiles = 1 + pick(5);
  CountedWriter writer{paths, 1 + pick(3000), oldFiles, clock};
  bool destroys = false;
  std::array<Stream, numKinds> streams;

  std::string fault;
  std::ostringstream story;
};

int numberFrom(const char *variable, int otherwise) {
  const char *const text = std::getenv(variable);
  return text != nullptr ? std::atoi(text) : otherwise;
}

struct Seeds {
  int first;
  int behind;
};

Seeds chosenSeeds() {
  const int first = numberFrom("WMQ_SOAK_SEED", 1);
  // Where random cases are to be few, a sequence takes thirty times as long.
  const bool few = std::getenv("RC_PARAMS") != nullptr;
  return {first, first + numberFrom("WMQ_SOAK_SEQUENCES", few ? 8 : 40)};
}

void playAll(const Seeds &seeds, bool odd, const std::string &ballast, const TemporaryDirectory &states) {
  for (int seed = seeds.first; seed < seeds.behind; ++seed) {
    if ((seed % 2 != 0) != odd) continue;
    if (!ballast.empty()) makeFile(ballast, std::string(size_t{40} << 10, 'x'));
    const std::string fault = Sequence(static_cast<uint32_t>(seed), ballast, states / "").play();
    ASSERT_TRUE(fault.empty()) << "in the sequence of seed " << seed << ": " << fault;
  }
  printTally();
}

TEST(FollowSoak, EveryRecordArrivesOnceOrStandsInAGap) {
  const TemporaryDirectory states;
  playAll(chosenSeeds(), false, "", states);
}

TEST(FollowSoak, EveryRecordArrivesOnceOrStandsInAGapOnASmallDisk) {
  const TemporaryDirectory states;
  const bool played = withPrivateMounts([&] {
    const TemporaryDirectory disk;
    mountDisk(disk.path(), "size=112k");
    setenv("TMPDIR", disk.path().c_str(), 1);
    playAll(chosenSeeds(), true, disk / "ballast", states);
  });
  if (!played) playAll(chosenSeeds(), true, "", states);
}

}  // namespace
}  // namespace wmq::testing
