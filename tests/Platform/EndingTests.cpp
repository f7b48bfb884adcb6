#include "Platform/Ending.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include "Support/ChildProcess.h"
#include "Support/Eventually.h"
#include "Support/ThreadSanitizer.h"

namespace {

using namespace Oxa::Core::Platform;

[[noreturn]] void Hang() {
  for (;;) ::pause();
}

// What becomes of a child that runs `action`: its status, or minus the signal. No core file is left behind.
template <class Action>
int EndOf(const Action& action) {
  const pid_t child = ::fork();
  if (child == 0) {
    const rlimit none = {0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    action();
    ::_exit(42);
  }
  return TestSupport::AwaitChild(child, std::chrono::seconds(60));
}

void BlockAllSignals() {
  sigset_t all;
  ::sigfillset(&all);
  ::sigprocmask(SIG_BLOCK, &all, nullptr);
}

TEST(Ending, WatchEndsAProcessThatHangs) {
  EXPECT_EQ(255, EndOf([] {
              StartDeathWatch(100, -1);
              Hang();
            }));
}

TEST(Ending, WatchNeedsNoSignal) {
  EXPECT_EQ(255, EndOf([] {
              BlockAllSignals();
              StartDeathWatch(100, -1);
              Hang();
            }));
}

TEST(Ending, WatchComesNoEarlierThanItsTime) {
  const double milliseconds = TestSupport::MillisecondsOf([] {
    EXPECT_EQ(3, EndOf([] {
                StartDeathWatch(1200, 3);
                Hang();
              }));
  });
  EXPECT_LE(1200, milliseconds);
}

TEST(Ending, OnlyTheFirstWatchCounts) {
  EXPECT_EQ(3, EndOf([] {
              StartDeathWatch(500, 3);
              StartDeathWatch(1, 4);
              StartDeathWatch(600000, 5);
              Hang();
            }));
}

TEST(Ending, WatchIsInNobodysWay) {
  EXPECT_EQ(7, EndOf([] {
              EXPECT_EQ(0, DeathWatchThread());
              StartDeathWatch(60000, -1);
              if (DeathWatchThread() <= 0) ::_exit(8);
              std::exit(7);
            }));
}

// Its thread has no storage of its own, and lives on when the storage of the one that started it is gone.
TEST(Ending, WatchOutlivesTheThreadThatStartedIt) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("it lets no child start threads that was forked off among threads");
  EXPECT_EQ(3, EndOf([] {
              std::thread([] { StartDeathWatch(300, 3); }).join();
              for (int threads = 0; threads < 50; ++threads) std::thread([] {}).join();
              Hang();
            }));
}

TEST(Ending, WatchLeavesTheSignalsOfItsCallerAsTheyWere) {
  EXPECT_EQ(0, EndOf([] {
              sigset_t before;
              sigset_t after;
              ::sigprocmask(SIG_BLOCK, nullptr, &before);
              StartDeathWatch(60000, 3);
              ::sigprocmask(SIG_BLOCK, nullptr, &after);
              bool same = true;
              for (int signal = 1; signal < 65; ++signal) {
                same = same && ::sigismember(&before, signal) == ::sigismember(&after, signal);
              }
              ::_exit(same ? 0 : 1);
            }));
}

TEST(Ending, SignalsOfTheProcessDoNotRunOnTheWatch) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("it loses the signals of a child that was forked off among threads");
  EXPECT_EQ(0, EndOf([] {
              static volatile sig_atomic_t s_bOnMain = 0;
              static const pid_t s_main = ::gettid();
              ::signal(SIGUSR1, [](int) { s_bOnMain = ::gettid() == s_main ? 1 : 2; });
              StartDeathWatch(60000, 3);
              ::kill(::getpid(), SIGUSR1);
              while (s_bOnMain == 0) ::usleep(1000);
              ::_exit(s_bOnMain == 1 ? 0 : 1);
            }));
}

TEST(Ending, WatchCanEndByTheSignal) {
  EXPECT_EQ(-SIGSEGV, EndOf([] {
    ::signal(SIGSEGV, [](int) {});
    StartDeathWatch(100, -1);
    EndBySignalInstead(SIGSEGV);
    Hang();
  }));
  EXPECT_EQ(255, EndOf([] {
              EndBySignalInstead(SIGSEGV);
              EndBySignalInstead(0);
              StartDeathWatch(100, -1);
              Hang();
            }));
}

// The parent's watch and signal are not the child's.
TEST(Ending, AChildThatWasForkedOffHasAWatchOfItsOwn) {
  EXPECT_EQ(255, EndOf([] {
              StartDeathWatch(600000, 3);
              EndBySignalInstead(SIGSEGV);
              const int end = EndOf([] {
                ForgetDeathWatchOfParent();
                if (DeathWatchThread() != 0) ::_exit(4);
                StartDeathWatch(100, -1);
                Hang();
              });
              ::_exit(end);
            }));
}

TEST(Ending, WithoutAnotherThreadTheProcessIsKilledInTime) {
  EXPECT_EQ(-SIGKILL, EndOf([] {
    const rlimit one = {1, 1};
    ::setrlimit(RLIMIT_NPROC, &one);
    if (::getuid() == 0 && ::setuid(65534) != 0) ::_exit(1);
    StartDeathWatch(100, -1);
    if (DeathWatchThread() != 0) ::_exit(2);
    Hang();
  }));
}

TEST(Ending, EndNowRunsNothing) {
  EXPECT_EQ(5, EndOf([] {
              std::atexit([] { ::_exit(6); });
              EndNow(5);
            }));
  EXPECT_EQ(255, EndOf([] { EndNow(-1); }));
}

TEST(Ending, SignalEndsWhoeverHandlesOrBlocksIt) {
  EXPECT_EQ(-SIGSEGV, EndOf([] { EndBySignal(SIGSEGV); }));
  EXPECT_EQ(-SIGRTMAX, EndOf([] { EndBySignal(SIGRTMAX); })) << "the last one that there is";
  EXPECT_EQ(-SIGABRT, EndOf([] {
    ::signal(SIGABRT, [](int) { ::_exit(6); });
    BlockAllSignals();
    EndBySignal(SIGABRT);
  }));
}

TEST(Ending, SignalThatEndsNobodyBecomesAStatus) {
  EXPECT_EQ(128 + SIGCHLD, EndOf([] { EndBySignal(SIGCHLD); }));
  EXPECT_EQ(128, EndOf([] { EndBySignal(0); }));
}

}  // namespace
