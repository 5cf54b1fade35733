// How every command ends.
#ifndef WMQ_TOOL_EXIT_STATUS_H
#define WMQ_TOOL_EXIT_STATUS_H

namespace wmq::tool {

// In ascending order of weight: a command ends with the heaviest that occurred.
enum ExitStatus {
  exitFine = 0,
  exitBadInput = 1,  // some input was bad, all else was done
  exitUsage = 2,
  exitFailure = 3  // an output or the system failed
};

}  // namespace wmq::tool

#endif
