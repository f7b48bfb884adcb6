// The station: measures how late the system wakes a sleeper, and shows how a host lives with OxaCore.
//
// Read on in Station.cpp (the run), Plan.cpp (bad input is raised, forwarded, survived), Sampler.cpp (a
// failure is settled in place), Measurement.cpp (warnings, and their limit), AlertLog.cpp (a listener).
#include <Infrastructure/OxaCore/OxaCore.h>

#include <iostream>

#include "CommandLine.h"
#include "Station.h"

namespace {

int Serve(const Station::CommandLine& commandLine) {
  if (!commandLine.m_sMistake.empty()) {
    std::cerr << "station: " << commandLine.m_sMistake << "\nTry station --help." << std::endl;
    return 2;
  }
  if (commandLine.m_bHelp) {
    std::cout << Station::sHELP << std::flush;
    return 0;
  }
  InitializeOxaCore();  // the first error of a process is slow, so let that be over before the measuring
  return Station::Run(commandLine);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const int status = Serve(Station::ReadCommandLine({arguments + 1, arguments + argumentCount}));
  ShutdownOxaCore();  // on every way out: the library complains if it is unloaded without
  return status;
}
