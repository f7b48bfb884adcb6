// What the user asks for.
#ifndef STATION_COMMANDLINE_H
#define STATION_COMMANDLINE_H

#include <optional>
#include <string>
#include <vector>

namespace Station {

/// The arguments, read.
struct CommandLine {
  std::optional<std::string> m_plan;  ///< nothing: the plan that is built in
  std::string m_sFolder = ".";        ///< where alerts.xml goes
  bool m_bHelp = false;
  std::string m_sMistake;  ///< what is wrong with the arguments; empty if nothing is
};

/// `arguments` without the program's name. Of an option that comes twice the last one counts.
CommandLine ReadCommandLine(const std::vector<std::string>& arguments);

/// The answer to --help.
extern const char* const sHELP;

}  // namespace Station

#endif
