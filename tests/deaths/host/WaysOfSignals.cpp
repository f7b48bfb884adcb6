// Ends that are no faults: somebody asks for them.
#undef NDEBUG  // its assertion is to fail in every build
#include <assert.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <iterator>

#include "Ways.h"

namespace {

volatile int s_iSink = 0;

void SendToItself(int signal) {
  ::kill(::getpid(), signal);
  for (;;) ::pause();
}

}  // namespace

DEATHS_SITE void DieByAbort() { std::abort(); }

DEATHS_SITE void DieByAnAssertion() { assert(s_iSink != 0); }

DEATHS_SITE void DieByTermSent() { SendToItself(SIGTERM); }

DEATHS_SITE void DieBySegvSent() { SendToItself(SIGSEGV); }

DEATHS_SITE void DieByFpeSent() { SendToItself(SIGFPE); }

namespace Deaths {

namespace {

constexpr NamedWay sWAYS[] = {
    {"abort", &DieByAbort},        {"assertion", &DieByAnAssertion}, {"term-sent", &DieByTermSent},
    {"segv-sent", &DieBySegvSent}, {"fpe-sent", &DieByFpeSent},
};

}  // namespace

Ways WaysOfSignals() { return {sWAYS, std::size(sWAYS)}; }

}  // namespace Deaths
