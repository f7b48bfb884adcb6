#include "Options.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include <getopt.h>

namespace OxaTest {

namespace {

const char* const sUSAGE =
    "usage: oxatest MODULE... [options]\n"
    "Runs the tests that modules carry: libraries with a function GetModuleTestSuite.\n"
    "Each module runs in a process of its own.\n"
    "\n"
    "  --list             tell the tests and run none\n"
    "  --only PATTERN     run only the tests that match\n"
    "  --disable PATTERN  don't run the tests that match\n"
    "  --repeat N         run all of it N times, each time on a new tree\n"
    "  --timeout SECONDS  end a module one test of which takes longer\n"
    "  --junit FILE       write the results as JUnit XML\n"
    "  --reports FOLDER   keep the log, and the reports of crashes, there\n"
    "  --help, --version  tell about the program\n"
    "\n"
    "A pattern is compared with the whole path of a test, as --list tells it, or of a\n"
    "suite, for all that is in it. * stands for any characters, ? for one; \\*, \\? and\n"
    "\\\\ for *, ? and \\. --only and --disable may be given more than once.\n"
    "\n"
    "Logs and outputs are kept in the folder TMPDIR, or /tmp, while a module runs.\n"
    "\n"
    "Exit status:\n"
    "  0    all tests that ran passed, and some ran\n"
    "  1    a test failed or crashed, or none ran\n"
    "  2    the arguments are wrong, a pattern matches nothing, a module can't be run,\n"
    "       or the JUnit file, the output or a temporary folder can't be written\n"
    "  129, 130, 131, 143\n"
    "       ended by SIGHUP, SIGINT, SIGQUIT, SIGTERM\n";
const char* const sNO_MODULE = "no module is given";
const char* const sEMPTY_MODULE = "a module without a name is given";
const char* const sEMPTY = " wants a text that isn't empty";
const char* const sBAD_REPEAT = "--repeat wants a whole number from 1 to 1000000000, not ";
const char* const sBAD_TIMEOUT = "--timeout wants a number of seconds above 0, not ";

const char* const sANY_ORDER = "-";  // modules come as options without a name, wherever they stand

enum ESwitch : int {
  eMODULE = 1,  // what getopt gives for one
  eLIST,
  eONLY,
  eDISABLE,
  eREPEAT,
  eTIMEOUT,
  eJUNIT,
  eREPORTS,
  eHELP,
  eVERSION,
  ePIPE,
  eFOLDER
};

// The last two are the runner's own business with its children.
const option s_SWITCHES[] = {{"list", no_argument, nullptr, eLIST},
                             {"only", required_argument, nullptr, eONLY},
                             {"disable", required_argument, nullptr, eDISABLE},
                             {"repeat", required_argument, nullptr, eREPEAT},
                             {"timeout", required_argument, nullptr, eTIMEOUT},
                             {"junit", required_argument, nullptr, eJUNIT},
                             {"reports", required_argument, nullptr, eREPORTS},
                             {"help", no_argument, nullptr, eHELP},
                             {"version", no_argument, nullptr, eVERSION},
                             {"child-pipe", required_argument, nullptr, ePIPE},
                             {"child-folder", required_argument, nullptr, eFOLDER},
                             {nullptr, 0, nullptr, 0}};

bool ReadRepeat(const char* text, int& repeat) {
  char* end = nullptr;
  const long value = std::strtol(text, &end, 10);
  repeat = static_cast<int>(value);
  return end != text && *end == '\0' && value >= 1 && value <= 1000000000;
}

bool ReadTimeout(const char* text, double& seconds) {
  char* end = nullptr;
  seconds = std::strtod(text, &end);
  return end != text && *end == '\0' && std::isfinite(seconds) && seconds > 0;
}

bool WantsText(int option) {
  return option == eONLY || option == eDISABLE || option == eJUNIT || option == eREPORTS;
}

bool Take(int option, const char* argument, Options& options, std::string& complaint) {
  switch (option) {
    case eMODULE:
      options.m_modules.emplace_back(argument);
      break;
    case eLIST:
      options.m_bList = true;
      break;
    case eONLY:
      options.m_only.emplace_back(argument);
      break;
    case eDISABLE:
      options.m_disable.emplace_back(argument);
      break;
    case eJUNIT:
      options.m_sJUnit = argument;
      break;
    case eREPORTS:
      options.m_sReports = argument;
      break;
    case eHELP:
      options.m_bHelp = true;
      break;
    case eVERSION:
      options.m_bVersion = true;
      break;
    case ePIPE:
      options.m_iPipe = std::atoi(argument);
      break;
    case eFOLDER:
      options.m_sFolder = argument;
      break;
    case eREPEAT:
      if (!ReadRepeat(argument, options.m_iRepeat)) complaint = sBAD_REPEAT + std::string(argument);
      break;
    case eTIMEOUT:
      if (!ReadTimeout(argument, options.m_dTimeout)) complaint = sBAD_TIMEOUT + std::string(argument);
      break;
    default:
      return false;
  }
  return complaint.empty();
}

}  // namespace

bool ParseOptions(int argc, char** argv, Options& options, std::string& complaint) {
  int index = 0;
  for (int found = 0; (found = ::getopt_long(argc, argv, sANY_ORDER, s_SWITCHES, &index)) != -1;) {
    if (WantsText(found) && *::optarg == '\0')
      complaint = std::string("--") + s_SWITCHES[index].name + sEMPTY;
    if (!Take(found, ::optarg, options, complaint)) return false;
    if (found == eMODULE) continue;
    options.m_switches.push_back(std::string("--") + s_SWITCHES[index].name);
    if (::optarg != nullptr) options.m_switches.back().append("=").append(::optarg);
  }
  options.m_modules.insert(options.m_modules.end(), argv + ::optind, argv + argc);  // behind "--"
  if (options.m_modules.empty() && !options.m_bHelp && !options.m_bVersion) complaint = sNO_MODULE;
  if (std::count(options.m_modules.begin(), options.m_modules.end(), "") > 0) complaint = sEMPTY_MODULE;
  return complaint.empty();
}

const char* UsageText() { return sUSAGE; }

}  // namespace OxaTest
