// Work that is shared among threads and comes out in the order in which it went in.
#ifndef WMQ_TOOL_PIPELINE_H
#define WMQ_TOOL_PIPELINE_H

#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace wmq::tool {

// Threads that may run at once on this machine, and for this process.
unsigned availableThreads();

// What is done with the parts of the work, each of which is a Part: the same few are used again and again.
// Any thread may come to take any step.
template <typename Part>
struct Steps {
  std::function<bool(Part &)> fill;  // gets the next part, one at a time; false: there is none
  std::function<void(Part &)> work;  // several at once
  std::function<bool(Part &)> use;   // one at a time, in order; false ends it all
  std::function<void()> idle;        // as `use`, when no part is ready to be used
};

// The calling thread is one of those that work: as many threads as may run have no other to make room for.
template <typename Part>
class Pipeline {
 public:
  Pipeline(unsigned numThreads, Steps<Part> theSteps)
      : steps(std::move(theSteps)), workers(numThreads), slots(numThreads > 1 ? 2 * numThreads + 2 : 1) {}

  void run() {
    std::vector<std::thread> threads;
    try {
      while (threads.size() + 1 < workers) threads.emplace_back([this] { guarded([this] { workOnAll(); }); });
      guarded([this] { workOnAll(); });
    } catch (...) {
      fail();
    }
    for (std::thread &thread : threads) thread.join();
    if (failure) std::rethrow_exception(failure);
  }

 private:
  enum class State { free, taken, done };
  struct Slot {
    Part part;
    State state = State::free;
  };

  Slot &slotOf(uint64_t number) { return slots[number % slots.size()]; }

  // Gets the next part, when its slot is free; null when there is none. Part by part: the input is one.
  Slot *fillNext() {
    const std::lock_guard filling(fillMutex);
    if (allFilled) return nullptr;
    Slot &slot = slotOf(numFilled);
    {
      std::unique_lock lock(mutex);
      freed.wait(lock, [&] { return stopped || slot.state == State::free; });
      if (stopped) return nullptr;
      slot.state = State::taken;
    }
    if (!steps.fill(slot.part)) {
      allFilled = true;
      return nullptr;
    }
    ++numFilled;
    return &slot;
  }

  void workOnAll() {
    while (Slot *const slot = fillNext()) {
      steps.work(slot->part);
      std::unique_lock lock(mutex);
      slot->state = State::done;
      if (!inUse) useReady(lock);
    }
  }

  // Whoever brings the part whose turn it is uses it, and those behind it that others bring meanwhile.
  void useReady(std::unique_lock<std::mutex> &lock) {
    inUse = true;
    while (!stopped && slotOf(numUsed).state == State::done) {
      do {
        useNext(lock);
      } while (!stopped && slotOf(numUsed).state == State::done);
      lock.unlock();
      steps.idle();
      lock.lock();
    }
    inUse = false;
  }

  void useNext(std::unique_lock<std::mutex> &lock) {
    Slot &slot = slotOf(numUsed);
    lock.unlock();
    const bool goOn = steps.use(slot.part);
    lock.lock();
    slot.state = State::free;
    ++numUsed;
    stopped |= !goOn;
    freed.notify_one();
  }

  // An exception of any thread ends the work of all and comes out of run().
  void guarded(const std::function<void()> &action) {
    try {
      action();
    } catch (...) {
      fail();
    }
  }

  void fail() {
    {
      const std::lock_guard lock(mutex);
      if (!failure) failure = std::current_exception();
      stopped = true;
    }
    freed.notify_one();
  }

  const Steps<Part> steps;
  const unsigned workers;
  std::vector<Slot> slots;

  std::mutex fillMutex;
  uint64_t numFilled = 0;
  bool allFilled = false;

  std::mutex mutex;               // of all that follows, and of the states
  std::condition_variable freed;  // for whoever fills
  uint64_t numUsed = 0;
  bool inUse = false;
  bool stopped = false;
  std::exception_ptr failure;
};

}  // namespace wmq::tool

#endif
