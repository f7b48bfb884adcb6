// What the user asks for.
#ifndef STATION_COMMANDLINE_H
#define STATION_COMMANDLINE_H

#include <optional>
#include <string>
#include <vector>

#include "LogOpening.h"

namespace Station {

/// The arguments, read.
struct CommandLine {
  std::optional<std::string> m_plan;      ///< nothing: the plan that is built in
  std::string m_sLogFolder;               ///< where the log goes; empty: beside the program
  std::vector<LogOpening> m_logOpenings;  ///< what goes into the log in addition
  bool m_bHelp = false;
  std::string m_sMistake;  ///< what is wrong with the arguments; empty if nothing is
};

/// `arguments` without the program's name. Of --plan and --log the last one counts, and every --open. What
/// follows a mistake isn't read.
CommandLine ReadCommandLine(const std::vector<std::string>& arguments);

/// The answer to --help.
extern const char* const sHELP;

}  // namespace Station

#endif
