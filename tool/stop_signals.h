// SIGTERM, SIGINT and SIGHUP as a wish to end, looked at when it suits.
#ifndef WMQ_TOOL_STOP_SIGNALS_H
#define WMQ_TOOL_STOP_SIGNALS_H

#include <poll.h>

#include <csignal>
#include <iterator>

namespace wmq::tool {

constexpr int stopSignals[] = {SIGTERM, SIGINT, SIGHUP};

// From now on those of them that are not ignored wait until they are asked for.
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
  sigset_t heard;
  sigset_t formerMask;
  struct sigaction formerActions[std::size(stopSignals)];
  bool come = false;
};

}  // namespace wmq::tool

#endif
