// The names under which the station logs, and the form in which its texts show a time.
//
// Informational messages tell how the run goes, and are written unless they are closed. Debug messages tell
// every single sample and sleep; the command line opens them.
#ifndef STATION_LOGGERS_H
#define STATION_LOGGERS_H

#include <Infrastructure/OxaCore/Time.h>

#include <string>
#include <vector>

#include "Plan.h"

namespace Station {

extern const char* const sSTATION_LOGGER;   ///< "Station": the run as a whole
extern const char* const sCLOCK_LOGGER;     ///< "Station.Clock": every sleep
extern const char* const sRECORDER_LOGGER;  ///< "Station.Recorder": what is recorded, and what is read back
extern const char* const sPLAN_LOGGER;      ///< "Station.Plan": what was read, and what was refused

/// "Station.Series." and the name of the series: its begin, its end, its samples, and all of its alerts. Dots in
/// the name become underlines, since dots are what divides a path.
std::string SeriesLogger(const std::string& series);

/// All of the above for this plan.
std::vector<std::string> LoggerPaths(const Plan& plan);

double MicroSeconds(const Oxa::Core::Elapse& elapse);

}  // namespace Station

#endif
