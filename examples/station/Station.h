// The whole run, from the plan to the table.
#ifndef STATION_STATION_H
#define STATION_STATION_H

#include "CommandLine.h"

namespace Station {

/// Measures as the command line asks for, writes the results to standard output and complaints to standard
/// error, and gives the exit status, as the help text tells it. Between InitializeOxaCore and
/// ShutdownOxaCore.
int Run(const CommandLine& commandLine);

}  // namespace Station

#endif
