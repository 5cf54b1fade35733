#include "stop_signals.h"

#include <ctime>

namespace wmq::tool {

namespace {

volatile std::sig_atomic_t signalled = 0;

extern "C" void noteSignal(int) { signalled = 1; }

}  // namespace

StopSignals::StopSignals() : both{}, formerMask{}, formerTerm{}, formerInt{} {
  sigemptyset(&both);
  sigaddset(&both, SIGTERM);
  sigaddset(&both, SIGINT);
  sigprocmask(SIG_BLOCK, &both, &formerMask);
  struct sigaction noted {};
  noted.sa_handler = noteSignal;
  sigaction(SIGTERM, &noted, &formerTerm);
  sigaction(SIGINT, &noted, &formerInt);
}

StopSignals::~StopSignals() {
  sigaction(SIGTERM, &formerTerm, nullptr);
  sigaction(SIGINT, &formerInt, nullptr);
  sigprocmask(SIG_SETMASK, &formerMask, nullptr);
}

bool StopSignals::haveCome() {
  timespec none{};
  if (sigtimedwait(&both, nullptr, &none) > 0 || signalled != 0) come = true;
  return come;
}

int StopSignals::poll(pollfd *waited, nfds_t count, int milliseconds) {
  sigset_t open = formerMask;
  sigdelset(&open, SIGTERM);
  sigdelset(&open, SIGINT);
  timespec limit{milliseconds / 1000, milliseconds % 1000 * 1000000L};
  return ppoll(waited, count, milliseconds < 0 ? nullptr : &limit, &open);
}

}  // namespace wmq::tool
