#include "Child.h"
#include "Display.h"
#include "Options.h"
#include "Orphans.h"
#include "ResultsFile.h"
#include "Runner.h"
#include "Selection.h"
#include "Signals.h"
#include "StandardHandles.h"
#include "Text.h"
#include "Workplace.h"

#include <Infrastructure/OxaCore/OxaCore.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include <unistd.h>

using namespace OxaTest;

namespace {

const char* const sVERSION = "oxatest " OXATEST_VERSION "\n";
const char* const sSEE_HELP = "oxatest --help tells what can be asked for";
const char* const sNO_SIGNALS = "the system refuses what it takes to follow a process";
const char* const sNO_HANDLES = "a standard handle is closed, and the null device can't be opened for it\n";
const char* const sNO_OUTPUT = "standard output can't be written";
const char* const sNO_FOLDER = "no temporary folder can be made in ";
const char* const sMATCHES_NOTHING = " matches no test";
const char* const sNOTHING_RAN = "no test ran";

enum EStatus : int { eALL_PASSED = 0, eNOT_ALL_PASSED = 1, eIN_VAIN = 2, eBY_SIGNAL = 128 };

using Modules = std::vector<ModuleRecord>;

// Told before anything runs, not behind an hour of tests.
bool PrepareFolders(Options& options) {
  std::error_code error;
  if (!options.m_sReports.empty()) {
    const std::filesystem::path folder = std::filesystem::absolute(options.m_sReports);
    std::filesystem::create_directories(folder, error);
    if (!error && ::access(folder.c_str(), W_OK | X_OK) != 0) error.assign(errno, std::generic_category());
    if (error) {
      Complain(options.m_sReports + ": " + error.message());
      return false;
    }
    options.m_sReports = folder.string();
  }
  const Workplace attempt;
  if (!attempt.Complaint().empty()) Complain(sNO_FOLDER + attempt.Complaint());
  return attempt.Complaint().empty();
}

void List(const ModuleRecord& module, bool many) {
  if (module.m_trees.empty()) return;
  if (many) std::cout << OneLine(module.m_sModule) << ":\n";
  for (const TestRecord& test : module.m_trees.front().m_tests)
    std::cout << (many ? "  " : "") << OneLine(PathOf(test.m_sSuites, test.m_sName))
              << (test.m_eOutcome == eDISABLED ? " (disabled)" : "") << '\n';
  std::cout.flush();
}

Modules RunAll(const Options& options) {
  const std::unique_ptr<Display> display = Display::Create();
  Modules modules;
  for (const std::string& module : options.m_modules) {
    if (InterruptingSignal() != 0) break;
    modules.push_back(RunModule(module, options, *display));
    if (options.m_bList) List(modules.back(), options.m_modules.size() > 1);
  }
  if (!options.m_bList) display->Summary(modules);
  return modules;
}

// A pattern has to match in one of the modules.
bool AllMatch(const std::vector<std::string>& patterns, std::size_t firstDigit, const char* option,
              const Modules& modules) {
  bool all = true;
  for (std::size_t i = 0; i < patterns.size(); ++i) {
    const bool matched =
        std::any_of(modules.begin(), modules.end(), [digit = firstDigit + i](const auto& module) {
          return digit < module.m_sMatched.size() && module.m_sMatched[digit] == '1';
        });
    if (!matched) Complain(option + (" " + patterns[i]) + sMATCHES_NOTHING);
    all = all && matched;
  }
  return all;
}

EStatus Judge(const Options& options, const Modules& modules) {
  Totals totals;
  bool trouble = false;
  for (const ModuleRecord& module : modules) {
    totals.Add(module);
    trouble = trouble || !module.m_sTrouble.empty();
  }
  const bool onlyMatch = AllMatch(options.m_only, 0, "--only", modules);
  const bool disableMatch = AllMatch(options.m_disable, options.m_only.size(), "--disable", modules);
  if (trouble || !onlyMatch || !disableMatch) return eIN_VAIN;
  if (options.m_bList) return eALL_PASSED;
  const bool ran = totals.Bad() > 0 || totals.m_counts[ePASSED] > 0;
  if (!ran) Complain(sNOTHING_RAN);
  return ran && totals.Bad() == 0 ? eALL_PASSED : eNOT_ALL_PASSED;
}

int RunWithSignals(Options& options) {
  ResultsFile junit(options.m_sJUnit);
  if (!junit.Complaint().empty()) Complain(junit.Complaint());
  if (!junit.Complaint().empty() || !PrepareFolders(options)) return eIN_VAIN;
  const Modules modules = RunAll(options);
  junit.Write(modules);
  if (!junit.Complaint().empty()) Complain(junit.Complaint());
  if (InterruptingSignal() != 0) return eNOT_ALL_PASSED;
  const EStatus status = Judge(options, modules);
  return junit.Complaint().empty() ? status : eIN_VAIN;
}

int RunAsRunner(Options& options) {
  if (CatchSignals() && AdoptOrphans()) return RunWithSignals(options);
  Complain(sNO_SIGNALS);
  return eIN_VAIN;
}

// A signal weighs most, and then what was shown to nobody.
int StatusOfAll(int status) {
  const bool shown = FlushOutput();
  if (InterruptingSignal() != 0) return eBY_SIGNAL + InterruptingSignal();
  if (shown) return status;
  Complain(sNO_OUTPUT);
  return eIN_VAIN;
}

}  // namespace

int main(int argc, char** argv) {
  if (!OpenStandardHandles()) {
    ::dprintf(STDERR_FILENO, "oxatest: %s", sNO_HANDLES);
    return eIN_VAIN;
  }
  Options options;
  std::string complaint;
  int status = eIN_VAIN;
  if (!ParseOptions(argc, argv, options, complaint)) {
    if (!complaint.empty()) Complain(complaint);
    Complain(sSEE_HELP);
  } else if (options.m_bHelp || options.m_bVersion) {
    std::cout << (options.m_bHelp ? UsageText() : sVERSION);
    status = StatusOfAll(eALL_PASSED);
  } else {
    status = options.m_iPipe >= 0 ? RunChild(options) : StatusOfAll(RunAsRunner(options));
  }
  ShutdownOxaCore();
  return status;
}
