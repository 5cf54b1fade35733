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
  enum Later { work, failToo };
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

// How many have failed in the whole program: calls by name, and writes that found no more room.
int callsFailed();
int writesFailed();

}  // namespace wmq::testing

#endif
