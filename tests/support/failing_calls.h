// System calls that fail when a test wants it. The calls that the library makes go through here, by the
// linker's --wrap; those that the C library makes itself do not.
#ifndef WMQ_TESTS_FAILING_CALLS_H
#define WMQ_TESTS_FAILING_CALLS_H

#include <cstddef>
#include <functional>
#include <string>

namespace wmq::testing {

// Before the nth call of that name from here on, counted from 1, runs `act`: the call fails with the error
// that it returns, or is made when that is 0. The name "" stands for all of them.
class AtCall {
 public:
  // What becomes of the calls behind it: they are made, they fail like it, or `act` runs before each of them,
  // too.
  enum Later { work, failToo, actAgain };
  AtCall(const char *name, int nth, std::function<int()> act, Later later = work);
  ~AtCall();
  AtCall(const AtCall &) = delete;
  AtCall &operator=(const AtCall &) = delete;

  bool happened() const;
  // What the nth call was; empty before it.
  std::string name() const;
};

// The nth call fails.
class FailingCall : public AtCall {
 public:
  FailingCall(const char *name, int nth, int error, Later later = work)
      : AtCall(
            name, nth, [error] { return error; }, later) {}
};

// write() takes so many bytes and no more, and then fails, for as long as it stands.
class WritesEndAfter {
 public:
  WritesEndAfter(size_t bytes, int error);
  ~WritesEndAfter();
  WritesEndAfter(const WritesEndAfter &) = delete;
  WritesEndAfter &operator=(const WritesEndAfter &) = delete;
};

// statfs() tells of a file system of this type, for as long as it stands.
class OnFileSystem {
 public:
  explicit OnFileSystem(long type);
  ~OnFileSystem();
  OnFileSystem(const OnFileSystem &) = delete;
  OnFileSystem &operator=(const OnFileSystem &) = delete;
};

// statx() tells no time of creation, as on file systems that keep none, for as long as it stands.
class WithoutTimesOfCreation {
 public:
  WithoutTimesOfCreation();
  ~WithoutTimesOfCreation();
  WithoutTimesOfCreation(const WithoutTimesOfCreation &) = delete;
  WithoutTimesOfCreation &operator=(const WithoutTimesOfCreation &) = delete;
};

// How many have failed in the whole program: calls by name, and writes that found no more room.
int callsFailed();
int writesFailed();

}  // namespace wmq::testing

#endif
