#include "Signals.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace OxaTest {

namespace {

volatile std::sig_atomic_t s_interrupting = 0;
int s_wake[2] = {-1, -1};  // read, write

void Note(int signal) {
  const int error = errno;
  if (signal != SIGCHLD) s_interrupting = signal;
  const ssize_t ignored = ::write(s_wake[1], "", 1);  // a full pipe is readable all the same
  static_cast<void>(ignored);
  errno = error;
}

bool Catch(int signal) {
  struct sigaction before {};
  if (::sigaction(signal, nullptr, &before) != 0) return false;
  if (signal != SIGCHLD && before.sa_handler == SIG_IGN) return true;
  struct sigaction action {};
  action.sa_handler = &Note;
  action.sa_flags = SA_RESTART | SA_NOCLDSTOP;
  ::sigemptyset(&action.sa_mask);
  return ::sigaction(signal, &action, nullptr) == 0;
}

}  // namespace

bool CatchSignals() {
  return ::pipe2(s_wake, O_CLOEXEC | O_NONBLOCK) == 0 && std::signal(SIGPIPE, SIG_IGN) != SIG_ERR &&
         Catch(SIGINT) && Catch(SIGTERM) && Catch(SIGCHLD);
}

int InterruptingSignal() { return s_interrupting; }

int WakeHandle() { return s_wake[0]; }

void ClearWake() {
  char bytes[64];
  while (::read(s_wake[0], bytes, sizeof bytes) > 0) continue;
}

}  // namespace OxaTest
