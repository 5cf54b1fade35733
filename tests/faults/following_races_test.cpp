// Followers of a stream whose files change while they look at them: before any system call that a follower
// makes, somebody else may have rotated, removed or replaced files.
#include <gmock/gmock.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "support/failing_calls.h"
#include "support/handmade_stream.h"
#include "support/stream_follower.h"
#include "support/text_files.h"

namespace wmq::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int kNoNews = 1000;

class AStreamThatChanges : public ::testing::Test, protected HandmadeStream {
 protected:
  using Given = std::vector<std::string>;

  struct Case {
    std::function<void()> prepare;
    std::function<void()> change;
    int32_t from = WMQ_FROM_OLDEST;
    int readBefore = 0;  // with WMQ_FROM_POSITION: records of the current file that come before the position
    int poll = kNoNews;  // to close what brings the system's news takes it many milliseconds
  };

  // The change happens before each system call in turn, from the opening of a follower to the end of what it
  // gives.
  void beforeEachCall(const Case &tested, const ::testing::Matcher<Given> &expected) const {
    bool happened = true;
    int nth = 0;
    while (happened && !HasFailure()) {
      prepare(tested);
      const std::string position = positionIn(tested);
      const wmqFollowParams params{path.c_str(), tested.from, position.c_str(), tested.poll};
      std::optional<AtCall> changing(std::in_place, "", ++nth, [&] {
        tested.change();
        return 0;
      });
      StreamFollower follower(wmq_followopen(&params));
      ASSERT_TRUE(follower.isOpen()) << "changed before call " << nth;
      Given all = follower.rest();
      happened = changing->happened();
      changing.reset();
      for (std::string &one : follower.rest()) all.push_back(std::move(one));
      EXPECT_TRUE(!happened || expected.Matches(all))
          << "changed before call " << nth << ", gave " << ::testing::PrintToString(all);
    }
    EXPECT_GT(nth, 20);
  }

  void replace() const {
    fs::remove(path);
    append(lines(8, 8));
  }

 private:
  void prepare(const Case &tested) const {
    for (const std::string &name : namesIn(directory.path())) fs::remove(directory / name);
    tested.prepare();
  }

  std::string positionIn(const Case &tested) const {
    StreamFollower follower(path, WMQ_FROM_START, kNoNews);
    for (int i = 0; i < tested.readBefore; ++i) follower.next();
    return follower.position();
  }
};

TEST_F(AStreamThatChanges, IsReadWholeThroughARotation) {
  const auto prepare = [this] {
    append(lines(1, 1));
    rotate(100);
    append(lines(2, 2));
  };
  const auto change = [this] {
    rotate(101);
    append(lines(3, 3));
  };
  for (const int poll : {kNoNews, 0})
    beforeEachCall({prepare, change, WMQ_FROM_OLDEST, 0, poll},
                   ElementsAre("1", "rotated", "2", "rotated", "3"));
  beforeEachCall({prepare, change, WMQ_FROM_START},
                 AnyOf(ElementsAre("2", "rotated", "3"), ElementsAre("3")));
  beforeEachCall({prepare, change, WMQ_FROM_END}, AnyOf(ElementsAre("rotated", "3"), IsEmpty()));
}

TEST_F(AStreamThatChanges, IsReadFromTheOldestFileThatIsLeft) {
  const auto prepare = [this] {
    for (int i = 1; i <= 3; ++i) {
      append(lines(i, i));
      rotate(100 + i);
    }
    append(lines(4, 4));
  };
  const auto removeOne = [this] {
    rotate(104);
    append(lines(5, 5));
    remove(101);
  };
  beforeEachCall({prepare, removeOne},
                 AnyOf(ElementsAre("1", "rotated", "2", "rotated", "3", "rotated", "4", "rotated", "5"),
                       ElementsAre("2", "rotated", "3", "rotated", "4", "rotated", "5")));

  const auto removeTwo = [this] {
    remove(101);
    remove(102);
  };
  const std::string gap = "gap of s.102: " + std::to_string((lines(2, 2) + endLine).size());
  beforeEachCall({prepare, removeTwo},
                 AnyOf(ElementsAre("1", "rotated", "2", "rotated", "3", "rotated", "4"),
                       ElementsAre("1", gap, "3", "rotated", "4"), ElementsAre("3", "rotated", "4")));
}

TEST_F(AStreamThatChanges, TellsOfAReplacedFile) {
  beforeEachCall({[this] { append(lines(1, 1)); }, [this] { replace(); }, WMQ_FROM_START},
                 AnyOf(ElementsAre("1", "gap", "8"), ElementsAre("8")));
}

TEST_F(AStreamThatChanges, IsReadToTheEndOfARemovedFile) {
  beforeEachCall({[this] { append(lines(1, 1)); }, [this] { fs::remove(path); }, WMQ_FROM_START},
                 AnyOf(ElementsAre("1"), IsEmpty()));
}

TEST_F(AStreamThatChanges, IsWaitedForWhenTheNextFileGoesAway) {
  beforeEachCall({[this] {
                    append(lines(1, 1));
                    rotate(100);
                    append(lines(2, 2));
                  },
                  [this] { fs::remove(path); }},
                 AnyOf(ElementsAre("1"), ElementsAre("1", "rotated", "2")));
}

// Nobody can tell what came before a file that is an old one when it is first seen.
TEST_F(AStreamThatChanges, MayHaveHadFilesBeforeOneThatIsRotatedWhenItIsFound) {
  StreamFollower follower(path, WMQ_FROM_START, kNoNews);
  append(lines(1, 1));
  constexpr int kFirstListingBehindIt = 3;  // each takes two looks
  const AtCall changing("opendir", kFirstListingBehindIt, [this] {
    rotate(100);
    return 0;
  });
  EXPECT_THAT(follower.rest(), ElementsAre("gap", "1", "rotated"));
  EXPECT_TRUE(changing.happened());
}

TEST_F(AStreamThatChanges, IsWaitedForThroughItsBeginnings) {
  beforeEachCall(
      {[] {},
       [this] {
         append(lines(1, 1));
         rotate(100);
         append(lines(2, 2));
       },
       WMQ_FROM_START},
      AnyOf(ElementsAre("1", "rotated", "2"), ElementsAre("gap", "1", "rotated", "2"), ElementsAre("2")));
}

TEST_F(AStreamThatChanges, IsReadOnFromAPositionThroughARotation) {
  beforeEachCall({[this] { append(lines(1, 2)); },
                  [this] {
                    rotate(100);
                    append(lines(3, 3));
                  },
                  WMQ_FROM_POSITION, 1},
                 ElementsAre("2", "rotated", "3"));
  beforeEachCall({[this] {
                    append(lines(1, 1));
                    rotate(100);
                  },
                  [this] {
                    append(lines(2, 2));
                    rotate(101);
                    append(lines(3, 3));
                  },
                  WMQ_FROM_POSITION},
                 ElementsAre("2", "rotated", "3"));
}

TEST_F(AStreamThatChanges, SaysWhatAPositionHasLost) {
  beforeEachCall({[this] {
                    append(lines(1, 2));
                    rotate(100);
                    append(lines(3, 3));
                  },
                  [this] { replace(); }, WMQ_FROM_POSITION, 1},
                 AnyOf(ElementsAre("gap", "8"), IsEmpty()));
}

TEST_F(AStreamThatChanges, IsListedWithACurrentFileThatIsGoneByThen) {
  append("");
  constexpr int kBehindTheListing = 4;  // which takes two looks, and one at the directory
  const AtCall changing("statx", kBehindTheListing, [this] {
    fs::remove(path);
    return 0;
  });
  size_t count = 0;
  const std::unique_ptr<wmqStreamFile, decltype(&std::free)> files(wmq_streamfiles(path.c_str(), &count),
                                                                   std::free);
  EXPECT_TRUE(changing.happened());
  ASSERT_EQ(count, 1U);
  EXPECT_EQ(files.get()[0].path, path);
  EXPECT_FALSE(exists(path));
}

// ------------------------------------------------------------------------- many old files

class ALongWay : public ::testing::Test, protected HandmadeStream {
 protected:
  // Calls that it takes to open a follower and to read the records of so many old files and a current one.
  int callsThrough(int files, const char *call, int poll) const {
    for (const std::string &name : namesIn(directory.path())) fs::remove(directory / name);
    for (int i = 1; i <= files; ++i) {
      append(lines(i, i));
      rotate(1000 + i);
    }
    append("");
    int calls = 0;
    const AtCall counting(
        call, 1,
        [&] {
          ++calls;
          return 0;
        },
        AtCall::actAgain);
    EXPECT_EQ(StreamFollower(path, WMQ_FROM_OLDEST, poll).rest().size(), 2U * static_cast<unsigned>(files));
    return calls;
  }
};

TEST_F(ALongWay, TakesNoMoreListsThanAShortOne) {
  for (const int poll : {kNoNews, 0})
    EXPECT_EQ(callsThrough(40, "opendir", poll), callsThrough(4, "opendir", poll));
}

TEST_F(ALongWay, TakesAsManyCallsForEachFileAsAShortOne) {
  for (const char *call : {"statx", "open", "pread"}) {
    const int least = callsThrough(10, call, kNoNews);
    const int forTen = callsThrough(20, call, kNoNews) - least;
    EXPECT_EQ(callsThrough(40, call, kNoNews), least + 3 * forTen) << call;
  }
}

TEST_F(ALongWay, LeadsPastFilesThatAreRemovedOnIt) {
  for (int i = 1; i <= 6; ++i) {
    append(lines(i, i));
    rotate(100 + i);
  }
  append(lines(7, 7));
  settle();
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  EXPECT_EQ(follower.next(), "rotated");
  remove(101);
  remove(102);
  remove(103);
  EXPECT_EQ(follower.next(), "2");
  const std::string size = std::to_string((lines(3, 3) + endLine).size());
  EXPECT_EQ(follower.next(), "gap of s.103: " + size);
  EXPECT_EQ(follower.next(), "4");
  rotate(107);
  append(lines(8, 8));
  EXPECT_THAT(follower.rest(), ElementsAre("rotated", "5", "rotated", "6", "rotated", "7", "rotated", "8"));
}

// ------------------------------------------------------------- faster than anybody can look

class AStreamThatNeverStands : public AStreamThatChanges {
 protected:
  // Before each of these calls.
  AtCall changesAt(const char *call, const std::function<void()> &change) const {
    return {call, 1,
            [change] {
              change();
              return 0;
            },
            AtCall::actAgain};
  }

  void rotateOnce() {
    rotate(++suffix);
    append(lines(suffix, suffix));
  }

  int suffix = 100;
};

TEST_F(AStreamThatNeverStands, CannotBeOpened) {
  append(lines(1, 1));
  for (const int32_t from : {WMQ_FROM_OLDEST, WMQ_FROM_START, WMQ_FROM_END}) {
    const AtCall changing = changesAt("open", [this] { replace(); });
    wmq_errno = 0;
    EXPECT_FALSE(StreamFollower(path, from).isOpen());
    EXPECT_EQ(wmq_errno, WMQE_SYS);
    EXPECT_EQ(errno, EBUSY);
  }
  StreamFollower follower(path);
  EXPECT_THAT(follower.rest(), ElementsAre("8"));
}

TEST_F(AStreamThatNeverStands, IsWaitedFor) {
  StreamFollower follower(path, WMQ_FROM_START, kNoNews);
  {
    append(lines(1, 1));
    const AtCall changing = changesAt("open", [this] { replace(); });
    EXPECT_EQ(follower.next(), "");
  }
  EXPECT_THAT(follower.rest(), ElementsAre("8"));
}

TEST_F(AStreamThatNeverStands, DoesNotKeepAPositionThatIsGoneFromGoingOn) {
  append(lines(1, 2));
  rotate(100);
  append(lines(3, 3));
  std::string position;
  {
    StreamFollower follower(path);
    EXPECT_EQ(follower.next(), "1");
    position = follower.position();
  }
  remove(100);
  std::optional<StreamFollower> resumed;
  {
    const AtCall changing = changesAt("open", [this] {
      appendTo(path + "-new", lines(8, 8));
      fs::rename(path + "-new", path);
    });
    resumed.emplace(path, position, kNoNews);
    ASSERT_TRUE(resumed->isOpen());
  }
  EXPECT_THAT(resumed->rest(), ElementsAre("gap of s.100", "8"));
}

TEST_F(AStreamThatNeverStands, CannotBeListed) {
  append(lines(1, 1));
  StreamFollower follower(path, WMQ_FROM_START, kNoNews);
  EXPECT_EQ(follower.next(), "1");
  rotate(suffix);
  {
    const AtCall changing = changesAt("opendir", [this] { rotateOnce(); });
    EXPECT_EQ(follower.next(), "failed WMQE_SYS");
    EXPECT_EQ(errno, EBUSY);
    EXPECT_FALSE(StreamFollower(path).isOpen());
    EXPECT_EQ(errno, EBUSY);
  }
  EXPECT_EQ(follower.next(), "rotated");
  EXPECT_EQ(follower.next(), "rotated");
  EXPECT_EQ(follower.next(), "101");
}

TEST_F(AStreamThatChanges, MayLoseTheFileBeforeThatOfALostPositionToo) {
  append(lines(1, 1));
  rotate(100);
  append(lines(2, 3));
  const std::string position = [this] {
    StreamFollower follower(path, WMQ_FROM_START);
    EXPECT_EQ(follower.next(), "2");
    return follower.position();
  }();
  replace();
  fs::copy_file(old(100), directory / "kept");
  bool happened = true;
  for (int nth = 1; happened && !HasFailure(); ++nth) {
    if (!exists(old(100))) fs::copy_file(directory / "kept", old(100));
    const AtCall losing("open", nth, [this] {
      remove(100);
      return 0;
    });
    EXPECT_THAT(StreamFollower(path, position, kNoNews).rest(), ElementsAre("gap", "8")) << nth;
    happened = losing.happened();
  }
}

// ------------------------------------------------------------------ calls that are interrupted

class AnInterruptedFollower : public ::testing::Test, protected HandmadeStream {};

TEST_F(AnInterruptedFollower, ReadsOn) {
  append(lines(1, 1));
  StreamFollower follower(path, WMQ_FROM_START);
  for (const char *call : {"pread", "read"}) {
    append(lines(2, 2));
    rotate(call[0] + 100);
    const FailingCall interrupted(call, 1, EINTR);
    EXPECT_THAT(follower.rest(), ::testing::Contains("2"));
    EXPECT_TRUE(interrupted.happened()) << call;
  }
}

TEST_F(AnInterruptedFollower, WaitsNoLonger) {
  append(lines(1, 1));
  for (const int poll : {0, kNoNews}) {
    StreamFollower follower(path, WMQ_FROM_END, poll);
    const FailingCall interrupted("poll", 1, EINTR);
    EXPECT_EQ(follower.next(-1), "");
    EXPECT_TRUE(interrupted.happened());
  }
}

// ---------------------------------------------------------- what some file systems do without

class OnAnotherFileSystem : public ::testing::Test, protected HandmadeStream {};

TEST_F(OnAnotherFileSystem, FilesAreLookedAtWhereOtherMachinesMayWriteThem) {
  constexpr long kNfs = 0x6969;
  append(lines(1, 1));
  {
    const OnFileSystem remote(kNfs);
    StreamFollower follower(path);
    EXPECT_EQ(wmq_followdescriptor(follower.get()), -1);
    EXPECT_THAT(follower.rest(), ElementsAre("1"));
    rotate(100);
    append(lines(2, 2));
    EXPECT_THAT(follower.rest(), ElementsAre("rotated", "2"));
  }
  EXPECT_GE(wmq_followdescriptor(StreamFollower(path).get()), 0);
}

class WithoutATimeOfCreation : public OnAnotherFileSystem {
  const WithoutTimesOfCreation hidden{};
};

TEST_F(WithoutATimeOfCreation, FilesAreFollowedThroughRotations) {
  append(lines(1, 2));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  const std::string position = follower.position();
  rotate(100);
  append(lines(3, 3));
  EXPECT_THAT(follower.rest(), ElementsAre("2", "rotated", "3"));
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("2", "rotated", "3"));
}

TEST_F(WithoutATimeOfCreation, OldFilesAreKnownByTheirNamesToo) {
  for (int i = 1; i <= 4; ++i) {
    append(lines(i, i));
    rotate(100 + i);
  }
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  remove(101);
  EXPECT_EQ(follower.next(), "rotated");
  EXPECT_EQ(follower.next(), "2");
  remove(102);
  remove(103);
  EXPECT_THAT(follower.rest(),
              ElementsAre("gap of s.103: " + std::to_string((lines(3, 3) + endLine).size()), "4", "rotated"));
}

// Its inode may be that of another file by now.
TEST_F(WithoutATimeOfCreation, NobodyKnowsTheCurrentFileAgain) {
  append(lines(1, 1));
  rotate(100);
  append(lines(2, 2));
  StreamFollower follower(path);
  EXPECT_EQ(follower.next(), "1");
  remove(100);
  EXPECT_THAT(follower.rest(), ElementsAre("gap", "2"));
}

// The first of all has no place: files may have come before it and gone, and its inode may be another's.
TEST_F(WithoutATimeOfCreation, AnEmptyFileIsKnownByItsPlaceBehindAnother) {
  append("");
  std::string position = StreamFollower(path, WMQ_FROM_START).position();
  append(lines(1, 1));
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("gap", "1"));
  rotate(100);
  append("");
  {
    StreamFollower follower(path, WMQ_FROM_START);
    position = follower.position();
  }
  append(lines(2, 2));
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("2"));
  rotate(101);
  append(lines(3, 3));
  EXPECT_THAT(StreamFollower(path, position).rest(), ElementsAre("2", "rotated", "3"));
  remove(100);
  EXPECT_EQ(StreamFollower(path, position).next(), "gap");
}

}  // namespace
}  // namespace wmq::testing
