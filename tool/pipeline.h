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
  std::function<bool(Part &)> fill;  // gets the next part, on a thread of its own; false when there is none
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
      threads.emplace_back([this] { guarded([this] { fillAll(); }); });
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
  enum class State { free, filled, taken, done };
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

  // Waits until the slot is in that state; false when nothing more is to be done.
  bool await(std::unique_lock<std::mutex> &lock, const Slot &slot, State state, uint64_t number) {
    changed.wait(lock, [&] { return stopped || slot.state == state || number >= numParts; });
    return !stopped && number < numParts;
  }

  void set(Slot &slot, State state) {
    {
      const std::lock_guard lock(mutex);
      slot.state = state;
    }
    changed.notify_all();
  }

  void fillAll() {
    for (uint64_t number = 0;; ++number) {
      Slot &slot = slotOf(number);
      {
        std::unique_lock lock(mutex);
        if (!await(lock, slot, State::free, number)) return;
      }
      if (!steps.fill(slot.part)) return end(number);
      set(slot, State::filled);
    }
  }

  void workOnAll() {
    for (;;) {
      Slot *slot = nullptr;
      {
        std::unique_lock lock(mutex);
        // Another worker may take the part for which this one has waited.
        do {
          slot = &slotOf(nextToWork);
          const uint64_t number = nextToWork;
          changed.wait(lock, [&] {
            return stopped || nextToWork != number || slot->state == State::filled || number >= numParts;
          });
          if (stopped || nextToWork >= numParts) return;
        } while (slot != &slotOf(nextToWork) || slot->state != State::filled);
        slot->state = State::taken;
        ++nextToWork;
      }
      steps.work(slot->part);
      set(*slot, State::done);
    }
  }

  void useAll() {
    for (uint64_t number = 0;; ++number) {
      Slot &slot = slotOf(number);
      std::unique_lock lock(mutex);
      if (slot.state != State::done) {
        lock.unlock();
        steps.idle();
        lock.lock();
      }
      if (!await(lock, slot, State::done, number)) return;
      lock.unlock();
      if (!steps.use(slot.part)) return;
      set(slot, State::free);
    }
  }

  void end(uint64_t number) {
    {
      const std::lock_guard lock(mutex);
      numParts = number;
    }
    changed.notify_all();
  }

  void stop() {
    {
      const std::lock_guard lock(mutex);
      stopped = true;
    }
    changed.notify_all();
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

  std::mutex mutex;
  std::condition_variable changed;
  uint64_t numParts = UINT64_MAX;  // once the last one is known
  uint64_t nextToWork = 0;
  bool stopped = false;
  std::exception_ptr failure;
};

}  // namespace wmq::tool

#endif
