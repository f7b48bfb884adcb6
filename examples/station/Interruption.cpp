#include "Interruption.h"

#include <csignal>

namespace Station {

namespace {

volatile std::sig_atomic_t s_iSignal = 0;

extern "C" void Remember(int signal) {
  s_iSignal = signal;
  std::signal(signal, SIG_DFL);
}

// What was ignored when the program started, as shells do for work in the background, stays so.
void Heed(int signal) {
  if (std::signal(signal, Remember) == SIG_IGN) std::signal(signal, SIG_IGN);
}

}  // namespace

void HeedInterruptions() {
  Heed(SIGINT);
  Heed(SIGTERM);
}

bool IsInterrupted() { return s_iSignal != 0; }

int InterruptionStatus() { return s_iSignal == 0 ? 0 : 128 + s_iSignal; }

}  // namespace Station
