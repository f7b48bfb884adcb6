// The signals that the runner waits for.
#ifndef OXATEST_SIGNALS_H
#define OXATEST_SIGNALS_H

#include <csignal>

namespace OxaTest {

/// From now on SIGHUP, SIGINT, SIGQUIT and SIGTERM are noted, but where they were ignored already, and they and the
/// end of a child make WakeHandle readable. None of them stays blocked, whatever this process was started with.
/// SIGPIPE is ignored. False if the system refuses.
bool CatchSignals();

/// One of the four once it came, else 0.
int InterruptingSignal();

/// For poll.
int WakeHandle();

/// Makes WakeHandle unreadable until the next signal.
void ClearWake();

/// Holds all signals back from this thread as long as it lives.
class HeldSignals {
 public:
  HeldSignals();
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;
  ~HeldSignals();

 private:
  sigset_t m_before;
};

/// In a new process before its program starts, while signals are held: what CatchSignals has changed becomes what it
/// was before, and so does what was blocked.
void GiveBackSignals();

}  // namespace OxaTest

#endif
