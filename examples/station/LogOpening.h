// What the user wants to see in the log beyond what is in it anyway.
#ifndef STATION_LOGOPENING_H
#define STATION_LOGOPENING_H

#include <Infrastructure/OxaCore/Log.h>

#include <string>
#include <vector>

#include "Plan.h"

namespace Station {

/// One level of messages, at one place in the tree of loggers.
struct LogOpening {
  std::string m_sPath;
  Oxa::Core::OxaLogSeverityEnum m_eLevel;
};

/// Reads "PATH=LEVEL" into `opening`, as in "Station.Clock=Debug". Gives what is wrong with `text`; empty if
/// nothing is.
std::string ReadLogOpening(const std::string& text, LogOpening& opening);

/// Lets the messages through that the openings are for: those of the logger at each path, and of the station's
/// own loggers below it. For loggers that nobody has asked for yet; one that exists keeps its filter.
void OpenLog(const std::vector<LogOpening>& openings, const Plan& plan);

}  // namespace Station

#endif
