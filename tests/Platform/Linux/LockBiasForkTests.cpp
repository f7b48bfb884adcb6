// In a forked child nobody is favoured, and nobody is waited for who stayed behind in the parent.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include "Platform/LockBias.h"
#include "Support/Eventually.h"

namespace {

using namespace Oxa::Core::Platform;

constexpr int iENOUGH = 64;
constexpr unsigned uPATIENCE_S = 60;

bool Passes(LockBias& bias) { return static_cast<bool>(LockBias::Passage(bias)); }

void ComeOften(LockBias& bias, int times) {
  for (int i = 0; i != times; ++i) bias.Taken();
}

// 0 if all is well, else the number of what isn't.
int InChild(LockBias& bias) {
  alarm(uPATIENCE_S);
  if (Passes(bias)) return 1;
  ComeOften(bias, 2 * iENOUGH - 1);
  if (Passes(bias)) return 2;
  ComeOften(bias, 1);
  return Passes(bias) ? 0 : 3;
}

int Forked(LockBias& bias) {
  const pid_t child = fork();
  if (child == 0) _exit(InChild(bias));
  int status = -1;
  EXPECT_EQ(child, waitpid(child, &status, 0));
  EXPECT_TRUE(WIFEXITED(status));
  return WEXITSTATUS(status);
}

TEST(LockBiasFork, ThreadThatForksIsNotFavouredInTheChild) {
  LockBias bias;
  ComeOften(bias, iENOUGH);
  EXPECT_TRUE(Passes(bias));
  EXPECT_EQ(0, Forked(bias));
  EXPECT_TRUE(Passes(bias));
}

TEST(LockBiasFork, WhoWasInsideInTheParentIsNotWaitedForInTheChild) {
  LockBias bias;
  alignas(LockBias::Passage) unsigned char room[sizeof(LockBias::Passage)];
  TestSupport::Holder inside(
      [&] {
        ComeOften(bias, iENOUGH);
        EXPECT_TRUE(static_cast<bool>(*::new (room) LockBias::Passage(bias)));
      },
      [&] { reinterpret_cast<LockBias::Passage*>(room)->~Passage(); });
  EXPECT_EQ(0, Forked(bias));
}

}  // namespace
