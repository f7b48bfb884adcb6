// A system may refuse the fence in all threads from the begin, or from some moment on: containers have filters.
#include <gtest/gtest.h>

#include <errno.h>
#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "Platform/LockBias.h"
#include "Support/SystemCallFilter.h"

namespace {

using namespace Oxa::Core::Platform;

constexpr int iENOUGH = 64;

// For the rest of the process and all its threads. False where that can't be had.
bool RefuseFences() {
  return TestSupport::AnswerSystemCall(SYS_membarrier, SECCOMP_RET_ERRNO | EPERM) &&
         syscall(SYS_membarrier, MEMBARRIER_CMD_QUERY, 0, 0) == -1;
}

bool Passes(LockBias& bias) { return static_cast<bool>(LockBias::Passage(bias)); }

constexpr int iFINE = 0;
constexpr int iWRONG = 1;
constexpr int iNO_FILTER = 2;

int FavoursNobody() {
  if (!RefuseFences()) return iNO_FILTER;
  LockBias bias;
  errno = EDOM;
  for (int i = 0; i != 3 * iENOUGH; ++i) bias.Taken();
  return errno != EDOM || Passes(bias) ? iWRONG : iFINE;
}

int WithdrawsAFavour() {
  LockBias bias;
  for (int i = 0; i != iENOUGH; ++i) bias.Taken();
  if (!Passes(bias) || !RefuseFences()) return iNO_FILTER;
  int left = 0;
  std::thread([&] {
    errno = EDOM;
    bias.Taken();
    left = errno;
  }).join();
  return left != EDOM || Passes(bias) ? iWRONG : iFINE;
}

// The filter is for ever, so it is set in a process of its own.
void ExpectFine(int (*test)()) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      _exit(test()),
      [](int status) {
        return WIFEXITED(status) && (WEXITSTATUS(status) == iFINE || WEXITSTATUS(status) == iNO_FILTER);
      },
      "");
}

TEST(LockBiasWithoutFenceDeathTest, FavoursNobody) { ExpectFine(&FavoursNobody); }
TEST(LockBiasWithoutFenceDeathTest, StillWithdrawsAFavour) { ExpectFine(&WithdrawsAFavour); }

}  // namespace
