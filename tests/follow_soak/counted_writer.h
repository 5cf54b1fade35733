// A process that writes numbered records to all three streams, and the count of those that it was told are
// written.
#ifndef WMQ_TESTS_COUNTED_WRITER_H
#define WMQ_TESTS_COUNTED_WRITER_H

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <functional>
#include <random>
#include <string>

#include "support/scripted_clock.h"
#include "wmq/stream.h"

namespace wmq::testing {

enum class Kind { events, status, pending };
inline constexpr int numKinds = 3;
inline constexpr int anyKind = numKinds;

// A record carries its number as its time. All have as many digits: a number that was cut is none of them.
inline constexpr int firstNumber = 100000;
inline constexpr int mostRecords = 1 << 16;

inline int pickFrom(std::mt19937 &random, int below) {
  return static_cast<int>(static_cast<uint32_t>(random()) % static_cast<uint32_t>(below));
}

// The clock is a copy of the process's own, and is set before it starts.
struct Writing {
  int count = 0;
  int kind = anyKind;     // only this stream, else each record goes to any of them
  bool dies = false;      // is killed: between two writes, or while it rotates
  bool endsLine = false;  // no record that leaves its line open
  uint32_t seed = 0;
};

class CountedWriter {
 public:
  CountedWriter(std::array<std::string, numKinds> streamPaths, int maxSize, int maxOldFiles,
                ScriptedClock &theClock);
  ~CountedWriter();
  CountedWriter(const CountedWriter &) = delete;
  CountedWriter &operator=(const CountedWriter &) = delete;

  // Returns the process, which ends with 1 when it could not open its streams.
  pid_t start(const Writing &task);

  int next() const { return counted->next; }
  int rotations() const { return counted->rotations; }
  // The write returned success.
  bool hasWritten(int number) const { return counted->writtenTo[number - firstNumber] != 0; }
  bool hasWritten(int number, Kind kind) const {
    return counted->writtenTo[number - firstNumber] == 1 + static_cast<int>(kind);
  }

 private:
  // Seen by the starting process also when the writer is killed.
  struct Counted {
    int next;  // number of the next record
    int rotations;
    int8_t writtenTo[mostRecords];
  };

  static int *rotationsNoted;  // in the process that writes
  static int noteRotation(const char *message);
  [[noreturn]] void run(const Writing &task);
  bool open();
  void countWrites(Kind kind);
  int write(int number, Kind kind, bool endsLine);

  const std::array<std::string, numKinds> paths;
  const int size;
  const int oldFiles;
  ScriptedClock &clock;
  Counted *counted;
  std::mt19937 random;
};

}  // namespace wmq::testing

#endif
