#include "Replay.h"

#include <Infrastructure/OxaCore/LogManager.h>

#include <iostream>

#include "Evaluation.h"
#include "Loggers.h"
#include "RecordingReader.h"
#include "Report.h"
#include "ReportFile.h"
#include "ShownText.h"
#include "Station.h"
#include "Verdicts.h"

namespace Station {

using Oxa::Core::eLOG_INFORMATIONAL;
using Oxa::Core::IOError;
using Oxa::Core::LogManager;

namespace {

const char* const sREPLAYS = "Replays %s";

int Show(Recorded recorded, const std::string& reportFile) {
  ReportFile report(reportFile);
  if (!recorded.m_sDamage.empty()) Complain(recorded.m_sDamage);
  Evaluate(recorded.m_measurements);
  WriteTable(std::cout, recorded.m_measurements);
  const Verdicts verdicts = Judge(std::cout, recorded.m_measurements);
  std::cout << '\n';
  const bool isWritten = report.Write(std::cout, recorded.m_measurements, verdicts, {});
  return recorded.m_sDamage.empty() && isWritten ? iALL_MEASURED : iINCOMPLETE;
}

}  // namespace

int Replay(const std::string& file, const std::string& report) {
  LogManager::Instance()
      ->GetLogger(sRECORDER_LOGGER)
      ->WriteLog(eLOG_INFORMATIONAL, sREPLAYS, Shown(file).c_str());
  try {
    return Show(ReadRecording(file), report);
  } catch (const IOError& error) {  // the recording or the report
    Complain(error.what());
    return iCANNOT_START;
  }
}

}  // namespace Station
