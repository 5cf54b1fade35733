#include "stop_signals.h"

#include <ctime>

namespace wmq::tool {

namespace {

volatile std::sig_atomic_t signalled = 0;

extern "C" void noteSignal(int) { signalled = 1; }

}  // namespace

StopSignals::StopSignals() : heard{}, formerMask{}, formerActions{} {
  sigemptyset(&heard);
  for (size_t i = 0; i < std::size(stopSignals); ++i) {
    sigaction(stopSignals[i], nullptr, &formerActions[i]);
    // Whoever has started this program to ignore a signal has his reasons.
    if (formerActions[i].sa_handler != SIG_IGN) sigaddset(&heard, stopSignals[i]);
  }
  sigprocmask(SIG_BLOCK, &heard, &formerMask);
  struct sigaction noted {};
  noted.sa_handler = noteSignal;
  for (int signal : stopSignals)
    if (sigismember(&heard, signal) == 1) sigaction(signal, &noted, nullptr);
}

StopSignals::~StopSignals() {
  for (size_t i = 0; i < std::size(stopSignals); ++i) sigaction(stopSignals[i], &formerActions[i], nullptr);
  sigprocmask(SIG_SETMASK, &formerMask, nullptr);
}

bool StopSignals::haveCome() {
  timespec none{};
  // All that have come count as one.
  while (sigtimedwait(&heard, nullptr, &none) > 0) come = true;
  if (signalled != 0) come = true;
  return come;
}

int StopSignals::poll(pollfd *waited, nfds_t count, int milliseconds) {
  sigset_t open = formerMask;
  for (int signal : stopSignals)
    if (sigismember(&heard, signal) == 1) sigdelset(&open, signal);
  timespec limit{milliseconds / 1000, milliseconds % 1000 * 1000000L};
  return ppoll(waited, count, milliseconds < 0 ? nullptr : &limit, &open);
}

}  // namespace wmq::tool
