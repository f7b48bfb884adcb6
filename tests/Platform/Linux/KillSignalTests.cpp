#include "Platform/Linux/KillSignal.h"

#include <gtest/gtest.h>

#include <csignal>

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
