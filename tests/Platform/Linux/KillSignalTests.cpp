#include "Platform/Linux/KillSignal.h"

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <vector>

namespace {

using namespace Oxa::Core::Platform;

void OnHostsSignal(int) {}

// The host has a signal for itself, until this is gone.
class TakenSignal {
 public:
  explicit TakenSignal(int signal) : m_iSignal(signal) {
    struct sigaction own = {};
    own.sa_handler = &OnHostsSignal;
    ::sigaction(signal, &own, &m_before);
  }
  TakenSignal(const TakenSignal&) = delete;
  TakenSignal& operator=(const TakenSignal&) = delete;
  ~TakenSignal() { ::sigaction(m_iSignal, &m_before, nullptr); }

  bool IsStillTheHosts() const {
    struct sigaction current = {};
    return ::sigaction(m_iSignal, nullptr, &current) == 0 && current.sa_handler == &OnHostsSignal;
  }

 private:
  const int m_iSignal;
  struct sigaction m_before = {};
};

// A victim's calls go on where its kill has to wait, nothing else cuts in, and its stack may be at its end.
TEST(KillSignal, IsHandledOnTheAlternateStackWithAllOthersHeldBack) {
  struct sigaction action = {};
  ASSERT_EQ(0, ::sigaction(CheckedKillSignal(), nullptr, &action));
  EXPECT_EQ(SA_RESTART | SA_ONSTACK, action.sa_flags & (SA_RESTART | SA_ONSTACK | SA_SIGINFO | SA_NODEFER));
  for (const int signal : {SIGINT, SIGSEGV, SIGUSR1, SIGALRM, SIGRTMIN})
    EXPECT_EQ(1, ::sigismember(&action.sa_mask, signal)) << signal;
}

TEST(KillSignal, IsAnyThatIsFree) {
  std::vector<std::unique_ptr<TakenSignal>> taken;
  for (int signal = SIGRTMIN + 1; signal <= SIGRTMAX; ++signal)
    taken.push_back(std::make_unique<TakenSignal>(signal));
  EXPECT_EQ(SIGRTMIN, CheckedKillSignal());
  EXPECT_EQ(SIGRTMIN, KillSignal());
  const TakenSignal last(SIGRTMIN);
  EXPECT_EQ(0, CheckedKillSignal());
}

TEST(KillSignal, ThatTheHostTakesGivesWayToAnother) {
  const int first = CheckedKillSignal();
  ASSERT_LT(0, first);
  EXPECT_EQ(first, CheckedKillSignal());
  const TakenSignal taken(first);
  const int second = CheckedKillSignal();
  EXPECT_LT(0, second);
  EXPECT_NE(first, second);
  EXPECT_EQ(second, KillSignal());
  EXPECT_EQ(second, CheckedKillSignal());
  EXPECT_TRUE(taken.IsStillTheHosts());
}

}  // namespace
