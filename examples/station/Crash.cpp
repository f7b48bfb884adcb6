#include "Crash.h"

#include <Infrastructure/OxaCore/AlertListener.h>
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/Time.h>

#include <filesystem>
#include <iomanip>
#include <iostream>
#include <system_error>

#include "CrashKind.h"
#include "ReportNotes.h"
#include "SeriesThreads.h"
#include "ShownText.h"
#include "Station.h"

namespace Station {

using Oxa::Core::AlertListener;
using Oxa::Core::AlertManager;
using Oxa::Core::EDumpPolicy;
using Oxa::Core::Elapse;
using Oxa::Core::Error;
using Oxa::Core::Time;

namespace {

const char* const sCRASH = "Crash:";
const char* const sFOLDER = "Folder:";
const char* const sLEFT_BEHIND = "Left behind:";
const char* const sNO_FOLDER = "none";
const char* const sDOING = "dying by ";
const char* const sBAD_FOLDER = "the folder can't hold reports: ";
const char* const sSURVIVED = "this machine doesn't die so";
const char* const sQUEUE_NAME = "Samples of the dying station";
constexpr int iLABEL_WIDTH = 20;
constexpr unsigned int uMOST_SAMPLES = 100000;

void WriteLine(const char* label, const std::string& text) {
  std::cout << std::left << std::setw(iLABEL_WIDTH) << label << text << std::endl;
}

// Hears last of all where the report lies, when it lies there.
class FolderTeller : public AlertListener {
 public:
  void UncaughtFatalError(Error&, const std::string& fatalErrorPath) override {
    WriteLine(sLEFT_BEHIND, Shown(fatalErrorPath));
  }
};

// Folders are named by the second. One that is nearly over is waited for, so that what is told comes true.
Time MomentOfDeath() {
  const Time now;
  const long most = 800;
  if (now.MilliSecond() <= most) return now;
  OxaSleep(Elapse(1000 - now.MilliSecond(), Elapse::MilliSeconds), false);
  return Time();
}

// As the library will call it: fields without leading zeros.
std::string FolderName(const Time& moment) {
  const auto text = [](long field) { return std::to_string(field); };
  return "FatalError_" + text(moment.Year()) + text(moment.Month()) + text(moment.Day()) + '_' +
         text(moment.Hour()) + text(moment.Minute()) + text(moment.Second()) + '/';
}

// False if the library won't have it.
bool SendReportsTo(const std::string& folder) {
  if (folder.empty()) return true;
  std::error_code failure;
  const std::filesystem::path whole = std::filesystem::absolute(folder, failure);
  return !failure && AlertManager::Instance()->SetFatalErrorBasePath(whole.string());
}

void Prepare(const CommandLine& commandLine) {
  AlertManager* const manager = AlertManager::Instance();
  if (commandLine.m_dumpPolicy) manager->SetDumpPolicy(static_cast<EDumpPolicy>(*commandLine.m_dumpPolicy));
  AlertManager::SetEndBySignal(commandLine.m_bEndBySignal);
  static auto* const teller = new FolderTeller;  // a death may come after those of static objects
  manager->AddAlertListener(*teller);
}

void Announce(const CrashKind& kind) {
  WriteLine(sCRASH, kind.m_sName + std::string(": ") + kind.m_sShows);
  const std::string base = AlertManager::Instance()->GetFatalErrorBasePath();
  WriteLine(sFOLDER, kind.m_bLeavesFolder ? Shown(base + FolderName(MomentOfDeath())) : sNO_FOLDER);
}

}  // namespace

int Crash(const CommandLine& commandLine, const Plan& plan) {
  if (!SendReportsTo(commandLine.m_sReportFolder)) {
    Complain(sBAD_FOLDER + Shown(commandLine.m_sReportFolder));
    return iCANNOT_START;
  }
  const CrashKind& kind = *FindCrashKind(commandLine.m_sOperand);
  Prepare(commandLine);
  NoteForReport(sDOING + std::string(kind.m_sName), plan);
  SystemClock clock;
  SampleQueue queue(sQUEUE_NAME, nullptr, uMOST_SAMPLES, 1, uMOST_SAMPLES);
  const SeriesThreads threads(plan, clock, queue);
  queue.GetSemaphore().TimedWait(Elapse(1, Elapse::Seconds));  // in the midst of its work
  Announce(kind);
  kind.m_pDie();
  if (kind.m_bEndsAfter) return iALL_MEASURED;
  Complain(sSURVIVED);
  return iINCOMPLETE;
}

}  // namespace Station
