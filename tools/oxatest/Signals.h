// The signals that the runner waits for.
#ifndef OXATEST_SIGNALS_H
#define OXATEST_SIGNALS_H

namespace OxaTest {

/// From now on SIGINT and SIGTERM are noted, but where they were ignored already, and they and the end of a child
/// make WakeHandle readable. SIGPIPE is ignored. False if the system refuses.
bool CatchSignals();

/// SIGINT or SIGTERM once one of them came, else 0.
int InterruptingSignal();

/// For poll.
int WakeHandle();

/// Makes WakeHandle unreadable until the next signal.
void ClearWake();

}  // namespace OxaTest

#endif
