#include "Clock.h"

#include <Infrastructure/OxaCore/LogManager.h>

#include <chrono>
#include <thread>

#include "Loggers.h"

namespace Station {

using Oxa::Core::Elapse;
using Oxa::Core::eLOG_DEBUG;
using Oxa::Core::TaskDirective;
using std::chrono::nanoseconds;
using std::chrono::steady_clock;

namespace {

const char* const sSLEEPING = "Sleeping for %.1f microseconds";

using Ticks = std::chrono::duration<long long, std::ratio<1, 10000000>>;  // those of Elapse

}  // namespace

Clock::~Clock() = default;

SystemClock::SystemClock() : m_spLogger(Oxa::Core::LogManager::Instance()->GetLogger(sCLOCK_LOGGER)) {}

Elapse SystemClock::Now() {
  const auto now = steady_clock::now().time_since_epoch();
  return Elapse(std::chrono::duration_cast<Ticks>(now).count(), Elapse::TimerTicks);
}

// Waiting for a request to stop is a sleep that can be ended early, but one of whole milliseconds. So it takes
// up the time until shortly before the moment, and what is measured is a plain sleep. The log is written before
// it, when there is still time.
bool SystemClock::SleepUntil(const Elapse& due, TaskDirective& directive) {
  const Elapse left = due - Now();
  if (m_spLogger->IsEnabledFor(eLOG_DEBUG)) {
    m_spLogger->WriteLog(eLOG_DEBUG, sSLEEPING, MicroSeconds(left));
  }
  const Elapse plainSleep(50, Elapse::MilliSeconds);
  if (left > plainSleep && directive.TimedWaitForStopRequest(left - plainSleep)) return false;
  std::this_thread::sleep_until(steady_clock::time_point(nanoseconds(due.GetRawTimerTicks() * 100)));
  return directive.KeepRunning();
}

}  // namespace Station
