// What the user asks for.
#ifndef STATION_COMMANDLINE_H
#define STATION_COMMANDLINE_H

#include <optional>
#include <string>
#include <vector>

#include "LogOpening.h"

namespace Station {

enum ECommand {
  eMEASURE,
  eTEST,    ///< measure, and answer whether all is well
  eREPLAY,  ///< show a recording
  eDAYS,    ///< walk a daily log
  eCRASH    ///< die, to show what is left behind
};

/// The arguments, read.
struct CommandLine {
  ECommand m_eCommand = eMEASURE;
  std::string m_sOperand;  ///< the recording, the folder or the kind of death that the command is about
  std::optional<std::string> m_plan;      ///< nothing: the plan that is built in
  std::string m_sLogFolder;               ///< where the log goes; empty: beside the program
  std::string m_sRecording;               ///< where samples are kept; empty: nowhere
  std::string m_sReport;                  ///< where the page goes; empty: there is none
  std::string m_sDailyFolder;             ///< where the daily log goes; empty: there is none
  std::vector<LogOpening> m_logOpenings;  ///< what goes into the log in addition
  std::string m_sReportFolder;            ///< where a crash leaves its folder; empty: beside the program
  std::optional<int> m_dumpPolicy;        ///< 0 to 3; nothing: the library's own
  bool m_bEndBySignal = false;            ///< a crash ends by the signal of its fault
  bool m_bHelp = false;
  std::string m_sMistake;  ///< what is wrong with the arguments; empty if nothing is
};

/// `arguments` without the program's name. Of an option that comes several times the last one counts, but every
/// --open does. What follows a mistake isn't read. A file that would be
/// written can't be another one of the arguments, by whatever path.
CommandLine ReadCommandLine(const std::vector<std::string>& arguments);

/// The answer to --help.
extern const char* const sHELP;

}  // namespace Station

#endif
