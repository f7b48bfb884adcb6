#include "AutoTest/Module/TEST_PerformanceTimer.h"

#include <Infrastructure/OxaCore/PerformanceTimer.h>
#include <Infrastructure/OxaCore/Time.h>

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

namespace {

constexpr long iSPAN_MS = 50;
constexpr double dSLACK_MS = 5;         // the clock of the sleep is not that of the timer
constexpr double dFAR_TOO_LONG = 60e3;  // a busy machine is no fault of the timer

bool IsSpan(double milliseconds) {
  return milliseconds >= iSPAN_MS - dSLACK_MS && milliseconds < dFAR_TOO_LONG;
}

}  // namespace

TEST_PerformanceTimer::TEST_PerformanceTimer() : TestSuite("PerformanceTimer Tests") {
  AddTestMethods(*this, {{"TestPerformanceTimer", &TEST_PerformanceTimer::Timer}});
}

void TEST_PerformanceTimer::Timer(std::string&) {
  PerformanceTimer timer;
  OXA_TEST_ASSERT(timer.GetResolutionUSec() > 0);
  OxaSleep(iSPAN_MS, Elapse::MilliSeconds, false);
  OXA_TEST_ASSERT(IsSpan(timer.DiffMSec_d()));
  OXA_TEST_ASSERT(IsSpan(static_cast<double>(timer.DiffMSec_u())));
  OXA_TEST_ASSERT(IsSpan(static_cast<double>(timer.DiffUSec_u()) / 1000));

  const PerformanceTimer older = timer;
  const double before = timer.DiffMSec_d();
  timer.Mark();
  const double sinceMark = timer.DiffMSec_d();
  OXA_TEST_ASSERT(sinceMark >= 0 && older.DiffMSec_d() > sinceMark);  // copies keep their own marks
  OXA_TEST_ASSERT(older.DiffMSec_d() >= before);
  const unsigned long seconds = older.DiffSec_u();
  OXA_TEST_ASSERT(older.DiffMSec_u() >= seconds * 1000);
}

}  // namespace Oxa::Core
