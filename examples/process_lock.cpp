#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/ProcessMutex.h>

#include <cstdlib>
#include <iostream>
#include <string>

using namespace Oxa::Core;

// Only one process at a time may calibrate; a second one doesn't wait for its turn.
bool Calibrate(const std::string& program, bool first) {
  ProcessMutex mutex("Acme/Calibration of " + program);
  try {
    const Lock lock(mutex, Elapse(10, Elapse::MilliSeconds));
    std::cout << "calibrating" << std::endl;
    const std::string again = '"' + program + "\" again";
    return first && std::system(again.c_str()) == 0;  // the second process finds the lock taken
  } catch (const LockTimeout& error) {
    std::cout << "not now: " << error.GetData(AlertInfo::sLOG_NAME) << std::endl;
    return !first;
  }
}

int main(int count, char** arguments) {
  InitializeOxaCore();
  const bool right = Calibrate(arguments[0], count == 1);
  ShutdownOxaCore();
  return right ? 0 : 1;
}
