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
#include <vector>

namespace wmq::tool {

// Threads that may run at once on this machine, and for this process.
unsigned availableThreads();

// What is done with the parts of the work, each of which is a Part: the same few are used again and again.
template <typename Part>
struct Steps {
  std::function<bool(Part &)> fill;  // gets the next part, on any thread, one at a time; false: there is none
  std::function<void(Part &)> work;  // on any thread, several at once
  std::function<bool(Part &)> use;   // on the calling thread, in order; false ends it all
  std::function<void()> idle;        // there, before it waits for a part
};

// With one thread no other is started, and `idle` is left to `fill`.
template <typename Part>
class Pipeline {
 public:
  Pipeline(unsigned numThreads, Steps<Part> theSteps)
      : steps(std::move(theSteps)), workers(numThreads), slots(numThreads > 1 ? 2 * numThreads + 2 : 1) {}

  void run() {
    if (workers <= 1) return runAlone();
    std::vector<std::thread> threads;
    try {
      for (unsigned i = 0; i < workers; ++i)
        threads.emplace_back([this] { guarded([this] { workOnAll(); }); });
      guarded([this] { useAll(); });
    } catch (...) {
      fail();
    }
    stop();
    for (std::thread &thread : threads) thread.join();
    if (failure) std::rethrow_exception(failure);
  }

 private:
  enum class State { free, taken, done };
  struct Slot {
    Part part;
    State state = State::free;
  };

  void runAlone() {
    Part &part = slots[0].part;
    while (steps.fill(part)) {
      steps.work(part);
      if (!steps.use(part)) return;
    }
  }

  Slot &slotOf(uint64_t number) { return slots[number % slots.size()]; }

  // Gets the next part, when its slot is free; null when there is none. Part by part: the input is one.
  Slot *fillNext() {
    const std::lock_guard filling(fillMutex);
    Slot &slot = slotOf(numFilled);
    {
      std::unique_lock lock(mutex);
      freed.wait(lock, [&] { return stopped || numFilled >= numParts || slot.state == State::free; });
      if (stopped || numFilled >= numParts) return nullptr;
      slot.state = State::taken;
    }
    if (!steps.fill(slot.part)) {
      end(numFilled);
      return nullptr;
    }
    ++numFilled;
    return &slot;
  }

  void workOnAll() {
    while (Slot *const slot = fillNext()) {
      steps.work(slot->part);
      {
        const std::lock_guard lock(mutex);
        slot->state = State::done;
      }
      done.notify_one();
    }
  }

  void useAll() {
    for (uint64_t number = 0;; ++number) {
      Slot &slot = slotOf(number);
      {
        std::unique_lock lock(mutex);
        const auto isReady = [&] { return stopped || number >= numParts || slot.state == State::done; };
        if (!isReady()) {
          lock.unlock();
          steps.idle();
          lock.lock();
        }
        done.wait(lock, isReady);
        if (stopped || number >= numParts) return;
      }
      if (!steps.use(slot.part)) return;
      {
        const std::lock_guard lock(mutex);
        slot.state = State::free;
      }
      freed.notify_one();
    }
  }

  void end(uint64_t number) {
    {
      const std::lock_guard lock(mutex);
      numParts = number;
    }
    done.notify_one();
  }

  void stop() {
    {
      const std::lock_guard lock(mutex);
      stopped = true;
    }
    done.notify_one();
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
    }
    stop();
  }

  const Steps<Part> steps;
  const unsigned workers;
  std::vector<Slot> slots;

  std::mutex fillMutex;
  uint64_t numFilled = 0;

  std::mutex mutex;                // of all that follows, and of the states
  std::condition_variable freed;   // for whoever fills
  std::condition_variable done;    // for whoever uses
  uint64_t numParts = UINT64_MAX;  // once the last one is known
  bool stopped = false;
  std::exception_ptr failure;
};

}  // namespace wmq::tool

#endif
