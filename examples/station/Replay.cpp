#include "Replay.h"

#include <Infrastructure/OxaCore/LogManager.h>

#include <iostream>

#include "Evaluation.h"
#include "Loggers.h"
#include "RecordingReader.h"
#include "Report.h"
#include "ShownText.h"
#include "Station.h"
#include "StationAlerts.h"

namespace Station {

using Oxa::Core::eLOG_INFORMATIONAL;
using Oxa::Core::LogManager;

namespace {

const char* const sREPLAYS = "Replays %s";

int Show(Recorded recorded) {
  if (!recorded.m_sDamage.empty()) Complain(recorded.m_sDamage);
  Evaluate(recorded.m_measurements);
  WriteTable(std::cout, recorded.m_measurements);
  std::cout << '\n';
  return recorded.m_sDamage.empty() ? iALL_MEASURED : iINCOMPLETE;
}

}  // namespace

int Replay(const std::string& file) {
  LogManager::Instance()
      ->GetLogger(sRECORDER_LOGGER)
      ->WriteLog(eLOG_INFORMATIONAL, sREPLAYS, Shown(file).c_str());
  try {
    return Show(ReadRecording(file));
  } catch (const RecordingUnreadable& error) {
    Complain(error.what());
    return iCANNOT_START;
  }
}

}  // namespace Station
