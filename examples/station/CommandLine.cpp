#include "CommandLine.h"

#include <cstddef>
#include <filesystem>
#include <system_error>
#include <utility>

#include "CrashKind.h"
#include "ShownText.h"

namespace Station {

const char* const sHELP =
    "usage: station [test] [--plan FILE] [--record FILE] [--report FILE] [--daily FOLDER] [OPTION]...\n"
    "       station replay FILE [--report FILE] [OPTION]...\n"
    "       station days FOLDER [OPTION]...\n"
    "       station crash [KIND] [--folder FOLDER] [--policy N] [--by-signal] [--plan FILE] [OPTION]...\n"
    "\n"
    "Measures how late this system wakes a sleeper, and judges that by the tolerances of a plan. With test,\n"
    "the exit status tells whether all is well. Or shows a recording again; or walks the files of a daily\n"
    "log, from the oldest to the newest. Or dies in the middle of its work, to show what is left behind "
    "then;\n"
    "without KIND, crash lists the ways in which it can.\n"
    "\n"
    "  --plan FILE   what to measure; without it, a plan that is built in\n"
    "  --record FILE keeps all samples in FILE, which is made or emptied\n"
    "  --report FILE writes the results as a page for a browser to FILE, which is made or emptied\n"
    "  --daily FOLDER\n"
    "                keeps a daily log in FOLDER, which is made if need be: every sample that was too\n"
    "                late, and what came out\n"
    "  --folder FOLDER\n"
    "                where a crash leaves the folder with its report and its dump; beside the program\n"
    "                otherwise\n"
    "  --policy N    what the dump of a crash holds: 0 threads and their stacks, 1 and what they point to\n"
    "                (as without this option), 2 and all that the process can write, 3 everything\n"
    "  --by-signal   lets a crash end by the signal of its fault after the report, for supervisors and core\n"
    "                files, in place of the status 255\n"
    "  --log FOLDER  where the log goes: DefaultLog.xml and the files that belong to it, with every error\n"
    "                and warning, and how the run went; the folder is made if need be, and without it the\n"
    "                log lies beside the program\n"
    "  --open PATH=LEVEL\n"
    "                lets more messages into the log: those of LEVEL (Debug or Verbose; Alarm, Error,\n"
    "                Warning and Informational are open anyway) at and below PATH; may come several times.\n"
    "                Station.Clock tells every sleep and Station.Series.NAME every sample of a series, both\n"
    "                as Debug\n"
    "  --help        this text\n"
    "\n"
    "A plan has one series a line, up to 16: name, interval, count and tolerance, as in\n"
    "\n"
    "  fast 1ms 500 250us   # 500 samples, one a millisecond; up to 250 microseconds late is fine\n"
    "\n"
    "Units are all units of time that the library knows, by any of their names: 250us, 0.25 Milliseconds,\n"
    "0.00001 Hour. Only a tolerance may hold blanks. Intervals go up to 10s, counts up to 1000000. What\n"
    "follows a # is a comment. A line that can't be read is refused, and the next one is read.\n"
    "\n"
    "The series are measured all at once. A sample that is missed, because the one before it came too\n"
    "late, is retried, up to 500 times a series; then the series is given up. Of all samples that are\n"
    "later than their series tolerates, the first 20 are told. A series passes if it is complete and its\n"
    "99th percentile is less than its tolerance.\n"
    "\n"
    "exit status:\n"
    "  0    every series of the plan was measured, though lines of it may have been refused; or all was\n"
    "       shown; of a test: no line was refused, and every series passed\n"
    "  1    a series was given up, or there was none, or a result was lost; or a recording could be read\n"
    "       in part only, or there is no daily log; or the test was not passed\n"
    "  2    nothing was measured or shown: the arguments, a file or a folder can't be used\n"
    "  130  interrupted (143: terminated); what was measured until then is shown\n"
    "  255  died of an error that nobody caught; a report and a dump are left\n";

namespace {

const char* const sPLAN = "--plan";
const char* const sLOG = "--log";
const char* const sOPEN = "--open";
const char* const sRECORD = "--record";
const char* const sREPORT = "--report";
const char* const sDAILY = "--daily";
const char* const sTEST = "test";
const char* const sREPLAY = "replay";
const char* const sDAYS = "days";
const char* const sCRASH = "crash";
const char* const sFOLDER = "--folder";
const char* const sPOLICY = "--policy";
const char* const sBY_SIGNAL = "--by-signal";
const char* const sHELP_OPTION = "--help";

// What has to stand behind an option; null for what is no such option.
const char* WantedBehind(const std::string& option) {
  if (option == sPLAN || option == sRECORD || option == sREPORT || option == sREPLAY) return "a file";
  if (option == sLOG || option == sDAILY || option == sDAYS || option == sFOLDER) return "a folder";
  if (option == sOPEN) return "PATH=LEVEL";
  if (option == sPOLICY) return "0 to 3";
  return nullptr;
}

bool IsValue(const std::string& argument) { return !argument.empty() && argument.rfind("--", 0) != 0; }

std::string AddOpening(std::vector<LogOpening>& openings, const std::string& value) {
  LogOpening opening;
  const std::string mistake = ReadLogOpening(value, opening);
  if (!mistake.empty()) return std::string(sOPEN) + ": " + mistake;
  openings.push_back(opening);
  return std::string();
}

std::string TakeCommand(CommandLine& result, const std::string& command, const std::string& operand) {
  if (result.m_eCommand != eMEASURE) return "one thing at a time: " + Quoted(command);
  const std::pair<const char*, ECommand> commands[] = {
      {sTEST, eTEST}, {sREPLAY, eREPLAY}, {sDAYS, eDAYS}, {sCRASH, eCRASH}};
  for (const auto& [name, value] : commands) {
    if (command == name) result.m_eCommand = value;
  }
  result.m_sOperand = operand;
  return std::string();
}

std::string TakePolicy(std::optional<int>& policy, const std::string& value) {
  if (value.size() != 1 || value[0] < '0' || value[0] > '3') {
    return std::string(sPOLICY) + ": " + Quoted(value) + " is none; 0 to 3 are";
  }
  policy = value[0] - '0';
  return std::string();
}

std::string TakeCrash(CommandLine& result, const std::string& kind) {
  if (kind.empty() || FindCrashKind(kind) != nullptr) return TakeCommand(result, sCRASH, kind);
  return "unknown kind of crash " + Quoted(kind) + "; station crash lists them";
}

// What was given that the command doesn't know what to do with.
std::string FindContradiction(const CommandLine& result) {
  const ECommand command = result.m_eCommand;
  const bool measures = command == eMEASURE || command == eTEST;
  const bool crashes = command == eCRASH;
  const struct {
    const char* m_sOption;
    bool m_bGiven;
    bool m_bUsed;
    const char* m_sUse;
  } options[] = {
      {sPLAN, result.m_plan.has_value(), measures || crashes, "measuring"},
      {sRECORD, !result.m_sRecording.empty(), measures, "measuring"},
      {sDAILY, !result.m_sDailyFolder.empty(), measures, "measuring"},
      {sOPEN, !result.m_logOpenings.empty(), measures || crashes, "measuring"},
      {sREPORT, !result.m_sReport.empty(), measures || command == eREPLAY, "measuring and replays"},
      {sFOLDER, !result.m_sReportFolder.empty(), crashes, "crashes"},
      {sPOLICY, result.m_dumpPolicy.has_value(), crashes, "crashes"},
      {sBY_SIGNAL, result.m_bEndBySignal, crashes, "crashes"}};
  for (const auto& option : options) {
    if (option.m_bGiven && !option.m_bUsed) return std::string(option.m_sOption) + " is for " + option.m_sUse;
  }
  return std::string();
}

bool IsSameFile(const std::string& one, const std::string& other) {
  namespace fs = std::filesystem;
  std::error_code ignored;
  const auto real = [&](const std::string& file) {
    return fs::weakly_canonical(fs::absolute(file, ignored), ignored);
  };
  return !one.empty() && !other.empty() && real(one) == real(other);
}

// What is written is neither what is read nor another result, or one would destroy the other.
std::string FindOverwriting(const CommandLine& result) {
  const std::pair<const char*, std::string> written[] = {{sRECORD, result.m_sRecording},
                                                         {sREPORT, result.m_sReport}};
  for (const auto& [option, file] : written) {
    const std::string overwrites = std::string(option) + " would overwrite ";
    if (IsSameFile(file, result.m_plan.value_or(std::string()))) return overwrites + "the plan";
    if (IsSameFile(file, result.m_sOperand)) return overwrites + "what is replayed";
  }
  const bool isTwofold = IsSameFile(result.m_sRecording, result.m_sReport);
  return isTwofold ? std::string(sREPORT) + " would overwrite the recording" : std::string();
}

// Gives what is wrong; empty if nothing is.
std::string TakeOption(CommandLine& result, const std::string& option, const std::string& value) {
  if (option == sOPEN) return AddOpening(result.m_logOpenings, value);
  if (option == sPOLICY) return TakePolicy(result.m_dumpPolicy, value);
  if (option == sPLAN) result.m_plan = value;
  if (option == sLOG) result.m_sLogFolder = value;
  if (option == sRECORD) result.m_sRecording = value;
  if (option == sREPORT) result.m_sReport = value;
  if (option == sDAILY) result.m_sDailyFolder = value;
  if (option == sFOLDER) result.m_sReportFolder = value;
  if (option == sREPLAY || option == sDAYS) return TakeCommand(result, option, value);
  return std::string();
}

}  // namespace

CommandLine ReadCommandLine(const std::vector<std::string>& arguments) {
  CommandLine result;
  for (std::size_t i = 0; i < arguments.size() && result.m_sMistake.empty(); ++i) {
    const std::string& argument = arguments[i];
    const char* const wanted = WantedBehind(argument);
    const bool hasValue = i + 1 < arguments.size() && IsValue(arguments[i + 1]);
    if (argument == sHELP_OPTION) {
      result.m_bHelp = true;
    } else if (argument == sTEST) {
      result.m_sMistake = TakeCommand(result, argument, std::string());
    } else if (argument == sCRASH) {
      result.m_sMistake = TakeCrash(result, hasValue ? arguments[++i] : std::string());
    } else if (argument == sBY_SIGNAL) {
      result.m_bEndBySignal = true;
    } else if (wanted == nullptr) {
      result.m_sMistake = "unknown argument " + Quoted(argument);
    } else if (!hasValue) {
      result.m_sMistake = argument + " needs " + wanted + " behind it";
    } else {
      result.m_sMistake = TakeOption(result, argument, arguments[++i]);
    }
  }
  if (result.m_sMistake.empty()) result.m_sMistake = FindContradiction(result);
  if (result.m_sMistake.empty()) result.m_sMistake = FindOverwriting(result);
  return result;
}

}  // namespace Station
