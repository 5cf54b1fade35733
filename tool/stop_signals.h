// SIGTERM and SIGINT as a wish to end, looked at when it suits.
#ifndef WMQ_TOOL_STOP_SIGNALS_H
#define WMQ_TOOL_STOP_SIGNALS_H

#include <poll.h>

#include <csignal>

namespace wmq::tool {

// From now on the two signals wait until they are asked for.
class StopSignals {
 public:
  StopSignals();
  StopSignals(const StopSignals &) = delete;
  StopSignals &operator=(const StopSignals &) = delete;
  ~StopSignals();

  // One of them has come, since the beginning.
  bool haveCome();

  // poll(2), which they end.
  int poll(pollfd *waited, nfds_t count, int milliseconds);

 private:
  sigset_t both;
  sigset_t formerMask;
  struct sigaction formerTerm;
  struct sigaction formerInt;
  bool come = false;
};

}  // namespace wmq::tool

#endif
