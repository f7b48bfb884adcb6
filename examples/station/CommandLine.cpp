#include "CommandLine.h"

#include <cstddef>

#include "ShownText.h"

namespace Station {

const char* const sHELP =
    "usage: station [--plan FILE] [--log FOLDER] [--open PATH=LEVEL]... [--help]\n"
    "\n"
    "Measures how late this system wakes a sleeper.\n"
    "\n"
    "  --plan FILE   what to measure; without it, a plan that is built in\n"
    "  --log FOLDER  where the log goes, DefaultLog.xml and the files that belong to it, which holds every\n"
    "                error and warning and how the run went; the folder is made if need be, and without it\n"
    "                the log lies beside the program\n"
    "  --open PATH=LEVEL\n"
    "                lets more messages into the log: those of LEVEL (Debug or Verbose; Alarm, Error, "
    "Warning\n"
    "                and Informational are open anyway) at and below PATH; may come several times. "
    "Station.Clock\n"
    "                tells every sleep and Station.Series.NAME every sample of a series, both as Debug\n"
    "  --help        this text\n"
    "\n"
    "A plan has one series a line: name, interval, count and tolerance, as in\n"
    "\n"
    "  fast 1ms 500 250us   # 500 samples, one a millisecond; up to 250 microseconds late is fine\n"
    "\n"
    "Units are ns, us, ms and s. Intervals go up to 10s, counts up to 1000000. What follows a # is a "
    "comment.\n"
    "A line that can't be read is refused, and the next one is read. The series, up to 16, are measured all "
    "at\n"
    "once. A sample that is missed, because the one before it came too late, is retried, up to 500 times a\n"
    "series; then the series is given up. Of all samples that are later than their series tolerates, the "
    "first\n"
    "20 are told.\n"
    "\n"
    "exit status:\n"
    "  0    every series of the plan was measured; lines of it may have been refused\n"
    "  1    a series was given up, or there was none, or a result was lost\n"
    "  2    nothing was measured: the arguments, the plan file or the log folder can't be used\n"
    "  130  interrupted (143: terminated); what was measured until then is shown\n";

namespace {

const char* const sPLAN = "--plan";
const char* const sLOG = "--log";
const char* const sOPEN = "--open";
const char* const sHELP_OPTION = "--help";

// What has to stand behind an option; null for what is no such option.
const char* WantedBehind(const std::string& option) {
  if (option == sPLAN) return "a file";
  if (option == sLOG) return "a folder";
  if (option == sOPEN) return "PATH=LEVEL";
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

// Gives what is wrong; empty if nothing is.
std::string TakeOption(CommandLine& result, const std::string& option, const std::string& value) {
  if (option == sOPEN) return AddOpening(result.m_logOpenings, value);
  if (option == sPLAN) result.m_plan = value;
  if (option == sLOG) result.m_sLogFolder = value;
  return std::string();
}

}  // namespace

CommandLine ReadCommandLine(const std::vector<std::string>& arguments) {
  CommandLine result;
  for (std::size_t i = 0; i < arguments.size() && result.m_sMistake.empty(); ++i) {
    const std::string& argument = arguments[i];
    const char* const wanted = WantedBehind(argument);
    if (argument == sHELP_OPTION) {
      result.m_bHelp = true;
    } else if (wanted == nullptr) {
      result.m_sMistake = "unknown argument " + Quoted(argument);
    } else if (i + 1 == arguments.size() || !IsValue(arguments[i + 1])) {
      result.m_sMistake = argument + " needs " + wanted + " behind it";
    } else {
      result.m_sMistake = TakeOption(result, argument, arguments[++i]);
    }
  }
  return result;
}

}  // namespace Station
