// Has the station die in the middle of its work, to show what it leaves behind.
#ifndef STATION_CRASH_H
#define STATION_CRASH_H

#include "CommandLine.h"
#include "Plan.h"

namespace Station {

/// Begins to measure `plan`, writes to standard output where the folder with the report and the dump will lie, and
/// dies as the operand of `commandLine` says. When the report is there its folder is written as well, by a listener.
///
/// Returns if the death is to come after main: then, iALL_MEASURED. Or if this machine can't die so: iINCOMPLETE. Or
/// if the folder of `commandLine` can't be used: iCANNOT_START.
int Crash(const CommandLine& commandLine, const Plan& plan);

}  // namespace Station

#endif
