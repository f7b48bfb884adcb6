#include "Child.h"
#include "Display.h"
#include "JUnit.h"
#include "Options.h"
#include "Runner.h"
#include "Selection.h"
#include "Signals.h"
#include "Text.h"

#include <Infrastructure/OxaCore/OxaCore.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

using namespace OxaTest;

namespace {

const char* const sVERSION = "oxatest " OXATEST_VERSION "\n";
const char* const sSEE_HELP = "oxatest --help tells what can be asked for";
const char* const sNO_SIGNALS = "the system refuses what it takes to follow a process";
const char* const sCANNOT_WRITE = "can't be written";
const char* const sMATCHES_NOTHING = " matches no test";
const char* const sNOTHING_RAN = "no test ran";

enum EStatus : int { eALL_PASSED = 0, eNOT_ALL_PASSED = 1, eIN_VAIN = 2, eBY_SIGNAL = 128 };

using Modules = std::vector<ModuleRecord>;

// Told before anything runs, not behind an hour of tests.
bool PrepareFiles(Options& options, std::ofstream& junit) {
  std::error_code error;
  if (!options.m_sReports.empty()) {
    const std::filesystem::path folder = std::filesystem::absolute(options.m_sReports);
    std::filesystem::create_directories(folder, error);
    if (error) {
      Complain(options.m_sReports + ": " + error.message());
      return false;
    }
    options.m_sReports = folder.string();
  }
  if (!options.m_sJUnit.empty()) junit.open(options.m_sJUnit, std::ios::binary);
  if (junit.fail()) Complain(options.m_sJUnit + ": " + sCANNOT_WRITE);
  return !junit.fail();
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

int RunAsRunner(Options& options) {
  std::ofstream junit;
  if (!PrepareFiles(options, junit)) return eIN_VAIN;
  if (!CatchSignals()) {
    Complain(sNO_SIGNALS);
    return eIN_VAIN;
  }
  const Modules modules = RunAll(options);
  if (!options.m_sJUnit.empty()) WriteJUnit(junit, modules);
  junit.close();
  const bool written = options.m_sJUnit.empty() || !junit.fail();
  if (!written) Complain(options.m_sJUnit + ": " + sCANNOT_WRITE);
  if (InterruptingSignal() != 0) return eBY_SIGNAL + InterruptingSignal();
  const EStatus status = Judge(options, modules);
  return written ? status : eIN_VAIN;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  std::string complaint;
  int status = eIN_VAIN;
  if (!ParseOptions(argc, argv, options, complaint)) {
    if (!complaint.empty()) Complain(complaint);
    Complain(sSEE_HELP);
  } else if (options.m_bHelp || options.m_bVersion) {
    std::cout << (options.m_bHelp ? UsageText() : sVERSION) << std::flush;
    status = eALL_PASSED;
  } else {
    status = options.m_iPipe >= 0 ? RunChild(options) : RunAsRunner(options);
  }
  ShutdownOxaCore();
  return status;
}
