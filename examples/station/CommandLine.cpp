#include "CommandLine.h"

#include <cstddef>

#include "ShownText.h"

namespace Station {

const char* const sHELP =
    "usage: station [--plan FILE] [--out FOLDER] [--help]\n"
    "\n"
    "Measures how late this system wakes a sleeper.\n"
    "\n"
    "  --plan FILE   what to measure; without it, a plan that is built in\n"
    "  --out FOLDER  where alerts.xml goes, which holds every error and warning; the folder is created if\n"
    "                need be, and without it the current one is taken\n"
    "  --help        this text\n"
    "\n"
    "A plan has one series a line: name, interval, count and tolerance, as in\n"
    "\n"
    "  fast 1ms 500 250us   # 500 samples, one a millisecond; up to 250 microseconds late is fine\n"
    "\n"
    "Units are ns, us, ms and s. Intervals go up to 10s, counts up to 1000000. What follows a # is a "
    "comment.\n"
    "A line that can't be read is refused, and the next one is read. A sample that is missed, because the\n"
    "one before it came too late, is retried, up to 500 times a series; then the series is given up. Of the\n"
    "samples of a series that are later than its tolerance, the first 10 are told.\n"
    "\n"
    "exit status:\n"
    "  0    every series of the plan was measured; lines of it may have been refused\n"
    "  1    a series was given up, or there was none, or a result could not be written\n"
    "  2    nothing was measured: the arguments, the plan file or the output folder can't be used\n"
    "  130  interrupted (143: terminated); what was measured until then is shown\n";

namespace {

bool IsOption(const std::string& argument) { return argument.rfind("--", 0) == 0; }

std::string MissingValue(const std::string& option, const char* value) {
  return option + " needs a " + value + " behind it";
}

}  // namespace

CommandLine ReadCommandLine(const std::vector<std::string>& arguments) {
  CommandLine result;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    const bool hasValue = i + 1 < arguments.size() && !IsOption(arguments[i + 1]);
    if (argument == "--help") {
      result.m_bHelp = true;
    } else if (argument == "--plan" && hasValue) {
      result.m_plan = arguments[++i];
    } else if (argument == "--out" && hasValue) {
      result.m_sFolder = arguments[++i];
    } else if (argument == "--plan" || argument == "--out") {
      result.m_sMistake = MissingValue(argument, argument == "--plan" ? "file" : "folder");
    } else {
      result.m_sMistake = "unknown argument " + Quoted(argument);
    }
    if (!result.m_sMistake.empty()) break;
  }
  return result;
}

}  // namespace Station
