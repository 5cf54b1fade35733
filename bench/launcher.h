// Runs programs and tells what they took.
#ifndef WMQ_BENCH_LAUNCHER_H
#define WMQ_BENCH_LAUNCHER_H

#include <string>
#include <vector>

namespace wmq::bench {

struct Usage {
  int status = 0;  // as wait(2) gives it
  double seconds = 0;
  double cpuSeconds = 0;
  double peakKilobytes = 0;
};

// Starts the process that runs the programs. A program is charged with the memory that its parent has when it
// is started, so this one is to be started before the benchmarks take theirs. It ends with this process.
void startLauncher();

// Runs a program, with its output thrown away.
Usage runCommand(const std::vector<std::string> &command);

}  // namespace wmq::bench

#endif
