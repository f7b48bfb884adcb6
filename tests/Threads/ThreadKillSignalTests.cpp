// Kills in a host that uses signals of its own: theirs is one that nobody else handles.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <map>
#include <thread>

#include "Threads/ThreadTestSupport.h"

using namespace ThreadTests;

namespace {

std::atomic<int> s_iHeardByHost{0};

void HearAsHost(int) { ++s_iHeardByHost; }

class KillSignals : public testing::Test {
 protected:
  void SetUp() override {
    OXA_SKIP_WHERE_NOBODY_CAN_BE_KILLED();
    s_iHeardByHost = 0;
  }
  ~KillSignals() override {
    for (const auto& taken : m_taken) sigaction(taken.first, &taken.second, nullptr);
  }

  void Take(int signal) {
    struct sigaction host = {};
    host.sa_handler = &HearAsHost;
    struct sigaction before;
    ASSERT_EQ(0, sigaction(signal, &host, &before));
    m_taken.emplace(signal, before);
  }

  // All that somebody handles by now, the one of the kills among them.
  void TakeHandled() {
    for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal) {
      struct sigaction now;
      if (sigaction(signal, nullptr, &now) == 0 && now.sa_handler != SIG_DFL) Take(signal);
    }
    ASSERT_FALSE(m_taken.empty());
  }

  const Running m_victim{Do([](TaskDirective& directive) {
    while (directive.KeepRunning()) std::this_thread::yield();
    return 0;
  })};

 private:
  std::map<int, struct sigaction> m_taken;
};

}  // namespace

TEST_F(KillSignals, OneThatTheHostHasTakenSinceIsLeftToIt) {
  TakeHandled();
  EXPECT_TRUE(m_victim->Kill(Elapse(5)));
  EXPECT_EQ(Thread::eTHREAD_ERROR, m_victim->GetState());
  EXPECT_EQ(0, s_iHeardByHost);
}

TEST_F(KillSignals, WithoutAnyLeftAKillIsAnErrorAndTheVictimRunsOn) {
  for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal) Take(signal);
  std::string text;
  try {
    m_victim->Kill(Elapse(5));
  } catch (Oxa::Core::OSError& error) {
    text = error.what();
  }
  EXPECT_EQ("Resource temporarily unavailable", text);
  EXPECT_TRUE(m_victim->IsAlive());
  EXPECT_EQ(nullptr, m_victim->GetLastError());
  EXPECT_EQ(0, s_iHeardByHost);
}
