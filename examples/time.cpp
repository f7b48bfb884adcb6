#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/PerformanceTimer.h>
#include <Infrastructure/OxaCore/Time.h>

#include <iostream>

using namespace Oxa::Core;

int main() {
  InitializeOxaCore();

  // Moments and spans.
  const Time start(8, 23, 1998, Elapse(2, 33, 17, 123000000));  // month, day, year, and the time of day
  const Time end = start + Elapse(90, Elapse::Minutes);
  std::cout << start << " to " << end << ": " << (end - start).ToString() << '\n';
  std::cout << end.Day() << ' ' << end.MonthName() << ' ' << end.Year() << '\n';

  // Texts are read back.
  Time read;
  if (read.ParseString("1998/08/23 04:03:17.123")) std::cout << "the same: " << (read == end) << '\n';
  try {
    read.ParseString("1999/02/29 00:00:00");
  } catch (const Time::OsTimeApiError&) {
    std::cout << "1999 was no leap year\n";
  }

  // For people, and as numbers.
  std::cout << Elapse(250, Elapse::MicroSeconds) << ", " << Elapse(1500, Elapse::MilliSeconds) << ", "
            << Elapse(90, Elapse::Seconds).GetElapsed(Elapse::Minutes) << " minutes\n";

  // A stopwatch, on a clock that never jumps.
  PerformanceTimer timer;
  OxaSleep(20, Elapse::MilliSeconds, false);
  const double slept = timer.DiffMSec_d();
  std::cout << "at least 20 ms: " << (slept >= 20.0) << '\n';
  ShutdownOxaCore();
}
