#include "Clock.h"

#include <chrono>
#include <thread>

#include "Interruption.h"

namespace Station {

using Oxa::Core::Elapse;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::steady_clock;

namespace {

using Ticks = std::chrono::duration<long long, std::ratio<1, 10000000>>;  // those of Elapse

}  // namespace

Clock::~Clock() = default;

Elapse SystemClock::Now() {
  const auto now = steady_clock::now().time_since_epoch();
  return Elapse(std::chrono::duration_cast<Ticks>(now).count(), Elapse::TimerTicks);
}

// A long wait goes in pieces, so that an interruption is heeded soon. Only the last piece is measured, and
// waking from it is no different from waking from the whole.
bool SystemClock::SleepUntil(const Elapse& due) {
  const Elapse longest(100, Elapse::MilliSeconds);
  while (!IsInterrupted() && due - Now() > longest) std::this_thread::sleep_for(milliseconds(50));
  if (IsInterrupted()) return false;
  std::this_thread::sleep_until(steady_clock::time_point(nanoseconds(due.GetRawTimerTicks() * 100)));
  return !IsInterrupted();
}

}  // namespace Station
