// What the command line asks for.
#ifndef OXATEST_OPTIONS_H
#define OXATEST_OPTIONS_H

#include <string>
#include <vector>

namespace OxaTest {

struct Options {
  std::vector<std::string> m_modules;
  std::vector<std::string> m_only;     ///< patterns; empty: all tests
  std::vector<std::string> m_disable;  ///< patterns
  std::string m_sJUnit;                ///< a file; empty: none is wanted
  std::string m_sReports;              ///< a folder; empty: none is wanted
  int m_iRepeat = 1;
  double m_dTimeout = 0;  ///< seconds for one step; 0: no limit
  bool m_bList = false;
  bool m_bHelp = false;
  bool m_bVersion = false;
  std::vector<std::string>
      m_switches;  ///< all of the command line but the modules, for the runner's own children

  int m_iPipe = -1;       ///< in a child: where to tell what happens
  std::string m_sFolder;  ///< in a child: for log and reports
};

/// Reads the command line. False if it can't be understood: `complaint` says why then, but where getopt has said it
/// already on standard error.
bool ParseOptions(int argc, char** argv, Options& options, std::string& complaint);

/// What --help prints.
const char* UsageText();

}  // namespace OxaTest

#endif
