#include "Signals.h"

#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <unistd.h>

namespace OxaTest {

namespace {

const int iSIGNALS[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGCHLD, SIGPIPE};
const std::size_t uSIGNALS = sizeof iSIGNALS / sizeof *iSIGNALS;

volatile std::sig_atomic_t s_interrupting = 0;
int s_wake[2] = {-1, -1};  // read, write
struct sigaction s_before[uSIGNALS];
sigset_t s_blockedBefore;

void Note(int signal) {
  const int error = errno;
  if (signal != SIGCHLD) s_interrupting = signal;
  const ssize_t ignored = ::write(s_wake[1], "", 1);  // a full pipe is readable all the same
  static_cast<void>(ignored);
  errno = error;
}

// A signal that is to end the run also ends the wait for whoever reads the output.
bool Catch(int signal, const struct sigaction& before) {
  const bool ending = signal != SIGCHLD && signal != SIGPIPE;
  if (ending && before.sa_handler == SIG_IGN) return true;
  struct sigaction action {};
  action.sa_handler = signal == SIGPIPE ? SIG_IGN : &Note;
  action.sa_flags = ending ? 0 : SA_RESTART | SA_NOCLDSTOP;
  ::sigemptyset(&action.sa_mask);
  return ::sigaction(signal, &action, nullptr) == 0;
}

}  // namespace

bool CatchSignals() {
  if (::pipe2(s_wake, O_CLOEXEC | O_NONBLOCK) != 0) return false;
  sigset_t ours;
  ::sigemptyset(&ours);
  for (std::size_t i = 0; i < uSIGNALS; ++i) {
    if (::sigaction(iSIGNALS[i], nullptr, &s_before[i]) != 0 || !Catch(iSIGNALS[i], s_before[i]))
      return false;
    ::sigaddset(&ours, iSIGNALS[i]);
  }
  return ::pthread_sigmask(SIG_UNBLOCK, &ours, &s_blockedBefore) == 0;
}

int InterruptingSignal() { return s_interrupting; }

int WakeHandle() { return s_wake[0]; }

void ClearWake() {
  char bytes[64];
  while (::read(s_wake[0], bytes, sizeof bytes) > 0) continue;
}

HeldSignals::HeldSignals() {
  sigset_t all;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &m_before);
}

HeldSignals::~HeldSignals() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

void GiveBackSignals() {
  for (std::size_t i = 0; i < uSIGNALS; ++i) ::sigaction(iSIGNALS[i], &s_before[i], nullptr);
  ::pthread_sigmask(SIG_SETMASK, &s_blockedBefore, nullptr);
}

}  // namespace OxaTest
