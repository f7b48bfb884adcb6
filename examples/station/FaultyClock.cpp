#include "FaultyClock.h"

#include "MachineFaults.h"

namespace Station {

using Oxa::Core::Elapse;
using Oxa::Core::TaskDirective;

namespace {

const char* const sFAULTY = "faulty";
constexpr int iBREAKS_AT = 3;

}  // namespace

bool WantsFaultyClock(const std::string& series) { return series.rfind(sFAULTY, 0) == 0; }

bool FaultyClock::SleepUntil(const Elapse& due, TaskDirective& directive) {
  if (++m_iSleeps == iBREAKS_AT) WriteThroughNull();
  return m_clock.SleepUntil(due, directive);
}

}  // namespace Station
