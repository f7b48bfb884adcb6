// Does what its arguments say and prints what came of it.
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/Time.h>

#include <pthread.h>

#include <cstdlib>
#include <iostream>
#include <string>

using namespace Oxa::Core;

int main(int, char** arguments) {
  const std::string action = arguments[1];
  pthread_setname_np(pthread_self(), "about to sleep");
  if (action == "sleep") {
    OxaSleep(std::atol(arguments[2]), static_cast<Elapse::TimeUnits>(std::atoi(arguments[3])), false);
  } else if (action == "sleep-ticks") {
    OxaSleep(Elapse(std::atoll(arguments[2]), Elapse::TimerTicks), false);
  } else if (action == "date") {
    std::cout << Time(8, 23, 1998, Elapse(2, 33, 17, 123000000)).GetRawTimerTicks() << ' '
              << Time::GetEpoch().GetRawTimerTicks() << ' ' << Time(0LL).GetRawTimerTicks();
  }
  std::cout << "\ndone\n";
  ShutdownOxaCore();
}
