// Followers in trouble: each allocation and each system call of opening and going on fails in turn, once, and
// then with all that follow it in the same call. What fails is told and can be repeated, and what is given is
// what a follower without any trouble gives.
#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <optional>

#include "support/failing_allocations.h"
#include "support/failing_calls.h"
#include "support/handmade_stream.h"
#include "support/small_records.h"
#include "support/stream_follower.h"
#include "support/text_files.h"

namespace wmq::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AnyOf;
using ::testing::IsEmpty;
using ::testing::Pair;

using Action = std::function<void(const HandmadeStream &stream)>;

// What happens to a stream before a follower gets it, and then, each time when the follower has got so much.
struct Event {
  int results = INT32_MAX;  // so many, or all there are
  Action action;
};
struct Story {
  const char *name;
  Action begin;
  int32_t from;  // with WMQ_FROM_POSITION: another follower takes over at the first event
  std::vector<Event> events = {};
};

void PrintTo(const Story &story, std::ostream *out) { *out << story.name; }

const std::vector<Story> stories = {
    {"Reading",
     [](const HandmadeStream &stream) {
       stream.append(lines(1, 1) + "bad\n" + vacated + sbdStatus + logSwitchLine(2).substr(0, 25) +
                     lines(3, 3));
     },
     WMQ_FROM_START},
    {"Waiting",
     [](const HandmadeStream &) {},
     WMQ_FROM_END,
     {{.action = [](const HandmadeStream &stream) { stream.append(lines(1, 1)); }}}},
    {"TheEnd",
     [](const HandmadeStream &stream) { stream.append(lines(1, 1) + logSwitchLine(2).substr(0, 20)); },
     WMQ_FROM_END,
     {{.action = [](const HandmadeStream &stream) { stream.append(logSwitchLine(2).substr(20)); }}}},
    {"Rotation",
     [](const HandmadeStream &stream) {
       stream.append(lines(1, 1));
       stream.rotate(100);
       stream.append(lines(2, 2));
     },
     WMQ_FROM_OLDEST,
     {{.action =
           [](const HandmadeStream &stream) {
             stream.rotate(101);
             stream.append(lines(3, 3));
           }}}},
    {"ARotationBesideOldFiles",
     [](const HandmadeStream &stream) {
       stream.append(lines(1, 1));
       stream.rotate(100);
       stream.append(lines(2, 2));
     },
     WMQ_FROM_START,
     {{.action =
           [](const HandmadeStream &stream) {
             stream.rotate(101);
             stream.append(lines(3, 3));
           }}}},
    {"AnEndInTheMiddle",
     [](const HandmadeStream &stream) { stream.append(lines(1, 1) + endLine); },
     WMQ_FROM_START,
     {{.action = [](const HandmadeStream &stream) { stream.append(lines(2, 2)); }}}},
    {"RemovedFiles",
     [](const HandmadeStream &stream) {
       for (int i = 0; i < 4; ++i) {
         stream.append(lines(i, i));
         stream.rotate(100 + i);
       }
       HandmadeStream::settle();
     },
     WMQ_FROM_OLDEST,
     {{1,
       [](const HandmadeStream &stream) {
         for (int i = 0; i < 3; ++i) stream.remove(100 + i);
       }}}},
    {"RotationsThatNobodySaw",
     [](const HandmadeStream &stream) { stream.append(lines(1, 1)); },
     WMQ_FROM_START,
     {{.action =
           [](const HandmadeStream &stream) {
             stream.rotate(100);
             stream.append(lines(2, 2));
             stream.rotate(101);
             stream.append(lines(3, 3));
             stream.remove(100);
           }}}},
    {"ARemovedFile",
     [](const HandmadeStream &stream) { stream.append(lines(1, 2)); },
     WMQ_FROM_START,
     {{1, [](const HandmadeStream &stream) { fs::remove(stream.path); }},
      {.action = [](const HandmadeStream &stream) { stream.append(lines(5, 5)); }}}},
    {"ARemovedFileBehindAnother",
     [](const HandmadeStream &stream) {
       stream.append(lines(1, 1));
       stream.rotate(100);
       stream.append(lines(2, 3));
     },
     WMQ_FROM_START,
     {{1, [](const HandmadeStream &stream) { fs::remove(stream.path); }},
      {.action = [](const HandmadeStream &stream) { stream.append(lines(5, 5)); }}}},
    {"ACopyInThePlaceOfTheFile",
     [](const HandmadeStream &stream) { stream.append(lines(1, 2)); },
     WMQ_FROM_START,
     {{1,
       [](const HandmadeStream &stream) {
         fs::copy_file(stream.path, stream.path + "-copy");
         fs::rename(stream.path + "-copy", stream.path);
       }}}},
    {"ATruncatedFile",
     [](const HandmadeStream &stream) { stream.append(lines(1, 3)); },
     WMQ_FROM_START,
     {{.action =
           [](const HandmadeStream &stream) {
             fs::resize_file(stream.path, 0);
             stream.append(lines(4, 4));
           }}}},
    {"AFileWrittenAnew",
     [](const HandmadeStream &stream) { stream.append(lines(1, 3)); },
     WMQ_FROM_START,
     {{.action =
           [](const HandmadeStream &stream) {
             fs::resize_file(stream.path, 0);
             stream.append(lines(4, 9));
           }}}},
    {"ACopyMadeBeforeTruncation",
     [](const HandmadeStream &stream) { stream.append(lines(1, 2)); },
     WMQ_FROM_START,
     {{.action =
           [](const HandmadeStream &stream) {
             fs::copy_file(stream.path, stream.old(100));
             fs::resize_file(stream.path, 0);
             stream.append(lines(4, 4));
           }}}},
    {"APositionBehindRotations",
     [](const HandmadeStream &stream) { stream.append(lines(1, 2)); },
     WMQ_FROM_POSITION,
     {{1,
       [](const HandmadeStream &stream) {
         stream.rotate(100);
         stream.append(lines(3, 3));
         stream.rotate(101);
         stream.append(lines(4, 4));
       }}}},
    {"APositionInARemovedFile",
     [](const HandmadeStream &stream) {
       stream.append(lines(1, 2));
       stream.rotate(100);
       stream.append(lines(3, 3));
     },
     WMQ_FROM_POSITION,
     {{1, [](const HandmadeStream &stream) { stream.remove(100); }}}},
    {"APositionInAFileWrittenAnew",
     [](const HandmadeStream &stream) { stream.append(lines(1, 2)); },
     WMQ_FROM_POSITION,
     {{1,
       [](const HandmadeStream &stream) {
         fs::resize_file(stream.path, 0);
         stream.append(lines(11, 12));
       }}}},
    {"APositionWhoseStreamIsGone",
     [](const HandmadeStream &stream) { stream.append(lines(1, 2)); },
     WMQ_FROM_POSITION,
     {{1, [](const HandmadeStream &stream) { fs::remove(stream.path); }}}},
    {"APositionInAnEmptyFile",
     [](const HandmadeStream &stream) { stream.append(""); },
     WMQ_FROM_POSITION,
     {{.action =
           [](const HandmadeStream &stream) {
             stream.append(lines(1, 1));
             stream.rotate(100);
           }}}},
    {"APositionInAnEmptyFileBehindAnother",
     [](const HandmadeStream &stream) {
       stream.append(lines(1, 1));
       stream.rotate(100);
     },
     WMQ_FROM_POSITION,
     {{.action =
           [](const HandmadeStream &stream) {
             stream.append(lines(2, 2));
             stream.rotate(101);
           }}}},
    {"APositionInAnEmptyFileThatWasReplaced",
     [](const HandmadeStream &stream) {
       stream.append(lines(1, 1));
       stream.rotate(100);
     },
     WMQ_FROM_POSITION,
     {{.action =
           [](const HandmadeStream &stream) {
             appendTo(stream.path + "-new", lines(8, 8));
             fs::rename(stream.path + "-new", stream.path);
           }}}},
    {"APositionBeforeTheFirstFile",
     [](const HandmadeStream &) {},
     WMQ_FROM_POSITION,
     {{.action = [](const HandmadeStream &stream) { stream.append(lines(1, 1)); }}}},
};

std::vector<Story>::const_iterator storyNamed(std::string_view name) {
  return std::find_if(stories.begin(), stories.end(), [=](const Story &story) { return story.name == name; });
}

// Which call of the library is in trouble, and at its how manieth allocation or system call that begins.
struct Trouble {
  enum Kind { memory, system };
  Kind kind = memory;
  int call = -1;  // none
  int nth = 1;
  bool lasts = false;  // to the end of the call
};

class Telling {
 public:
  Telling(const Story &toldStory, const HandmadeStream &ofStream, bool givesNews, Trouble withTrouble)
      : story(toldStory), stream(ofStream), poll(givesNews ? 0 : 1000), trouble(withTrouble) {}

  // What a follower comes upon from the beginning to the end.
  std::vector<std::string> tell() {
    for (const std::string &name : namesIn(stream.directory.path())) fs::remove(stream.directory / name);
    story.begin(stream);
    wmqFollowParams params{stream.path.c_str(), story.from, "", poll};
    size_t next = 0;
    std::string position;
    if (story.from == WMQ_FROM_POSITION) {
      StreamFollower before(stream.path);
      for (int i = 0; i < story.events[0].results && !before.next().empty(); ++i) {
      }
      position = before.position();
      params.position = position.c_str();
      story.events[next++].action(stream);
    }
    open(params);
    std::vector<std::string> all;
    for (; follower.has_value(); ++next) {
      const bool isLast = next == story.events.size();
      read(isLast ? INT32_MAX : story.events[next].results, all);
      if (isLast || ::testing::Test::HasFatalFailure()) break;
      story.events[next].action(stream);
    }
    return all;
  }

  int calls() const { return made; }
  bool hadTrouble() const { return happened; }

 private:
  void open(const wmqFollowParams &params) {
    const int descriptors = openDescriptors();
    const int left = allocationsLeft();
    wmqFollower *opened = nullptr;
    const auto call = [&] { return (opened = wmq_followopen(&params)) != nullptr; };
    if (!succeeds(call)) {
      EXPECT_EQ(openDescriptors(), descriptors);
      EXPECT_EQ(allocationsLeft(), left);
      ASSERT_TRUE(call());
    }
    follower.emplace(opened);
  }

  void read(int results, std::vector<std::string> &all) {
    for (int i = 0; i < results; ++i) {
      eventRecord *given = nullptr;
      int result = 0;
      const auto call = [&] {
        result = wmq_follownext(follower->get(), &given, 0);
        return result != WMQ_FOLLOW_FAILED;
      };
      if (!succeeds(call)) {
        EXPECT_EQ(given, nullptr);
        ASSERT_TRUE(call()) << wmq_errname(wmq_errno);
      }
      // What a call in trouble has not found, the next one gives.
      if (result == WMQ_FOLLOW_NOTHING) {
        ASSERT_TRUE(call()) << wmq_errname(wmq_errno);
      }
      const OwnedRecord record(given);
      const std::string words = follower->inWords(result, given);
      if (words.empty()) return;
      all.push_back(words);
    }
  }

  // Makes the call, which fails only if it is in trouble, and then says so.
  bool succeeds(const std::function<bool()> &call) {
    bool hasTrouble = false;
    bool success = false;
    int reason = 0;
    wmq_errno = 0;
    if (made++ != trouble.call) {
      success = call();
    } else if (trouble.kind == Trouble::memory) {
      const FailingAllocation failing(trouble.nth,
                                      trouble.lasts ? FailingAllocation::failToo : FailingAllocation::work);
      success = call();
      reason = errno;
      hasTrouble = failing.hasFailed();
    } else {
      const FailingCall failing("", trouble.nth, EIO, trouble.lasts ? AtCall::failToo : AtCall::work);
      success = call();
      reason = errno;
      hasTrouble = failing.happened();
    }
    happened = happened || hasTrouble;
    if (success) return true;
    EXPECT_TRUE(hasTrouble) << "it fails by itself, with " << wmq_errno;
    const int expected = trouble.kind == Trouble::memory ? ENOMEM : EIO;
    EXPECT_THAT(std::pair(wmq_errno, reason),
                AnyOf(Pair(int{WMQE_SYS}, expected),
                      Pair(trouble.kind == Trouble::memory ? int{WMQE_NO_MEM} : -1, ::testing::_)));
    return false;
  }

  const Story &story;
  const HandmadeStream &stream;
  const int poll;
  const Trouble trouble;
  std::optional<StreamFollower> follower;
  int made = 0;
  bool happened = false;
};

class AFollower : public ::testing::TestWithParam<Story> {
 protected:
  // To close what brings the system's news takes it many milliseconds: most do without.
  static void withEach(Trouble::Kind kind, bool lasts, bool givesNews = false) {
    const HandmadeStream stream;
    Telling undisturbed(GetParam(), stream, givesNews, {});
    const std::vector<std::string> expected = undisturbed.tell();
    ASSERT_THAT(expected, ::testing::Not(IsEmpty()));
    int troubles = 0;
    for (int call = 0; call < undisturbed.calls(); ++call) {
      bool happened = true;
      for (int nth = 1; happened; ++nth) {
        SCOPED_TRACE("call " + std::to_string(call) + ", trouble from number " + std::to_string(nth) + " on");
        const int descriptors = openDescriptors();
        {
          Telling telling(GetParam(), stream, givesNews, {kind, call, nth, lasts});
          EXPECT_EQ(telling.tell(), expected);
          happened = telling.hadTrouble();
        }
        EXPECT_EQ(openDescriptors(), descriptors);
        ++troubles;
        if (HasFailure()) return;
      }
    }
    EXPECT_GT(troubles, undisturbed.calls());
  }
};

INSTANTIATE_TEST_SUITE_P(Meets, AFollower, ::testing::ValuesIn(stories),
                         [](const auto &tested) { return std::string(tested.param.name); });

TEST_P(AFollower, LosesNothingWhenAnAllocationFails) {
  if (!allocationsCanFail()) GTEST_SKIP() << "allocations cannot be made to fail here";
  withEach(Trouble::memory, false);
}

TEST_P(AFollower, LosesNothingWhenThereIsNoMemory) {
  if (!allocationsCanFail()) GTEST_SKIP() << "allocations cannot be made to fail here";
  withEach(Trouble::memory, true);
}

TEST_P(AFollower, LosesNothingWhenASystemCallFails) { withEach(Trouble::system, false); }

TEST_P(AFollower, LosesNothingWhenTheSystemFails) { withEach(Trouble::system, true); }

class AFollowerThatGetsNews : public AFollower {};

INSTANTIATE_TEST_SUITE_P(Meets, AFollowerThatGetsNews,
                         ::testing::Values(*storyNamed("Waiting"), *storyNamed("Rotation"),
                                           *storyNamed("ARemovedFile"),
                                           *storyNamed("ARemovedFileBehindAnother")),
                         [](const auto &tested) { return std::string(tested.param.name); });

TEST_P(AFollowerThatGetsNews, LosesNothingWhenASystemCallFails) { withEach(Trouble::system, false, true); }

// An empty file is known by its place among the others then.
class AFollowerWithoutTimesOfCreation : public AFollower {
  const WithoutTimesOfCreation hidden{};
};

INSTANTIATE_TEST_SUITE_P(Meets, AFollowerWithoutTimesOfCreation,
                         ::testing::Values(*storyNamed("APositionInAnEmptyFileBehindAnother"),
                                           *storyNamed("APositionInARemovedFile")),
                         [](const auto &tested) { return std::string(tested.param.name); });

TEST_P(AFollowerWithoutTimesOfCreation, LosesNothingWhenASystemCallFails) {
  withEach(Trouble::system, false);
}

TEST_P(AFollowerWithoutTimesOfCreation, LosesNothingWhenAnAllocationFails) {
  if (!allocationsCanFail()) GTEST_SKIP() << "allocations cannot be made to fail here";
  withEach(Trouble::memory, false);
}

// Follows a stream from its oldest file, "1" in s.100, while `change` happens to its files before each of the
// calls that tell of one, and `afterwards` before it goes on. Whatever of "2" it does not give has to be
// told.
void loseNothingUnsaid(const Action &begin, const Action &change, const Action &afterwards) {
  bool happened = true;
  int changes = 0;
  for (int nth = 1; happened; ++nth) {
    SCOPED_TRACE("change before call " + std::to_string(nth));
    const HandmadeStream stream;
    begin(stream);
    HandmadeStream::settle();
    std::optional<StreamFollower> follower;
    {
      const AtCall during("statx", nth, [&] {
        change(stream);
        HandmadeStream::settle();
        return 0;
      });
      follower.emplace(stream.path, WMQ_FROM_OLDEST);
      happened = during.happened();
    }
    afterwards(stream);
    ASSERT_TRUE(follower->isOpen());
    const std::vector<std::string> given = follower->rest();
    const bool isTold = std::any_of(given.begin(), given.end(), [](const std::string &words) {
      return words == "2" || words.starts_with("gap");
    });
    const bool beganBehind = !given.empty() && given.front() != "1";
    EXPECT_TRUE(isTold || beganBehind) << ::testing::PrintToString(given);
    changes += happened ? 1 : 0;
  }
  EXPECT_GT(changes, 3);
}

TEST(AFollowerThatListsFiles, PassesOverNoneThatIsRotatedMeanwhile) {
  loseNothingUnsaid(
      [](const HandmadeStream &stream) {
        stream.append(lines(1, 1));
        stream.rotate(100);
        stream.append(lines(2, 2));
      },
      [](const HandmadeStream &stream) {
        stream.rotate(101);
        stream.append(lines(3, 3));
      },
      [](const HandmadeStream &stream) {
        stream.remove(100);
        stream.remove(101);
      });
}

TEST(AFollowerThatListsFiles, PassesOverNoneThatIsRemovedMeanwhile) {
  loseNothingUnsaid(
      [](const HandmadeStream &stream) {
        for (int number = 1; number <= 3; ++number) {
          stream.append(lines(number, number));
          stream.rotate(99 + number);
        }
      },
      [](const HandmadeStream &stream) {
        stream.remove(100);
        stream.remove(101);
      },
      [](const HandmadeStream &) {});
}

// Lists a stream of two files. False when that has failed, with nothing left behind.
bool listsBothFiles(const HandmadeStream &stream) {
  size_t count = 0;
  wmq_errno = 0;
  wmqStreamFile *const files = wmq_streamfiles(stream.path.c_str(), &count);
  EXPECT_TRUE(files == nullptr || count == 2);
  std::free(files);
  return files != nullptr;
}

TEST(AListOfAStreamsFiles, IsWholeOrNone) {
  const HandmadeStream stream;
  stream.append(lines(1, 1));
  stream.rotate(100);
  const int descriptors = openDescriptors();
  int failures = 0;
  for (const bool inMemory : {true, false}) {
    if (inMemory && !allocationsCanFail()) continue;
    bool happened = true;
    for (int nth = 1; happened; ++nth) {
      const int left = allocationsLeft();
      bool listed = false;
      if (inMemory) {
        const FailingAllocation failing(nth);
        listed = listsBothFiles(stream);
        happened = failing.hasFailed();
      } else {
        const FailingCall failing("", nth, EIO);
        listed = listsBothFiles(stream);
        happened = failing.happened();
      }
      if (!listed) {
        EXPECT_TRUE(happened);
        EXPECT_TRUE(wmq_errno == WMQE_SYS || (inMemory && wmq_errno == WMQE_NO_MEM)) << wmq_errno;
        ++failures;
      }
      EXPECT_EQ(allocationsLeft(), left);
    }
  }
  EXPECT_GT(failures, 2);
  EXPECT_EQ(openDescriptors(), descriptors);
}

class AFollowerInLastingTrouble : public ::testing::Test, protected HandmadeStream {};

// Whether files are missing shows in the one that came before.
TEST_F(AFollowerInLastingTrouble, SaysThatItCannotTellWhatFollows) {
  append(lines(1, 1));
  rotate(100);
  append(lines(2, 3));
  StreamFollower follower(path, WMQ_FROM_START, 1000);
  EXPECT_EQ(follower.next(), "2");
  const std::string position = follower.position();
  EXPECT_EQ(follower.next(), "3");
  fs::remove(path);
  append(lines(5, 5));
  {
    const FailingCall failing("open", 1, EACCES, AtCall::failToo);
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(follower.next(), "failed WMQE_SYS");
      EXPECT_EQ(errno, EACCES);
    }
  }
  EXPECT_THAT(follower.rest(), ::testing::ElementsAre("gap", "5"));

  constexpr int kOpens = 3;  // of the one before, of the one that follows, and of the one before once more
  for (int nth = 1; nth <= kOpens; ++nth) {
    StreamFollower resumed(path, position, 1000);
    {
      const FailingCall failing("open", nth, EACCES);
      EXPECT_EQ(resumed.next(), "failed WMQE_SYS") << nth;
      EXPECT_EQ(errno, EACCES);
    }
    EXPECT_THAT(resumed.rest(), ::testing::ElementsAre("gap", "5"));
  }
}

// Whatever the first call has left undone fails in the second one as well.
TEST_F(AFollowerInLastingTrouble, GoesOnWhereItWas) {
  bool happened = true;
  for (int nth = 1; happened && !HasFailure(); ++nth) {
    SCOPED_TRACE("trouble from number " + std::to_string(nth) + " on");
    for (const std::string &name : namesIn(directory.path())) fs::remove(directory / name);
    append(lines(1, 2));
    StreamFollower follower(path, WMQ_FROM_START, 1000);
    EXPECT_EQ(follower.next(), "1");
    fs::copy_file(path, path + "-copy");
    fs::rename(path + "-copy", path);
    append(lines(3, 3));
    std::vector<std::string> all;
    {
      const FailingCall failing("", nth, EIO, AtCall::failToo);
      for (int i = 0; i < 4; ++i)
        if (const std::string given = follower.next(); !given.empty() && !given.starts_with("failed"))
          all.push_back(given);
      happened = failing.happened();
    }
    for (const std::string &given : follower.rest()) all.push_back(given);
    EXPECT_THAT(all, ::testing::ElementsAre("2", "3"));
  }
}

}  // namespace
}  // namespace wmq::testing
