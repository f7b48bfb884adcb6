// The whole run, from the plan to the table.
#ifndef STATION_STATION_H
#define STATION_STATION_H

#include <string>

#include "CommandLine.h"

namespace Station {

constexpr int iALL_MEASURED = 0;
constexpr int iINCOMPLETE = 1;
constexpr int iCANNOT_START = 2;

/// Measures as the command line asks for, writes the results to standard output and complaints to standard
/// error, and gives the exit status, as the help text tells it. The log is complete at its end. Between
/// InitializeOxaCore and ShutdownOxaCore.
int Run(const CommandLine& commandLine);

/// One line on standard error. `text` is in single bytes, as the library has them.
void Complain(const std::string& text);

}  // namespace Station

#endif
