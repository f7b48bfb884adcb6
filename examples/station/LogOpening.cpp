#include "LogOpening.h"

#include <Infrastructure/OxaCore/LogManager.h>

#include <cstddef>

#include "Loggers.h"
#include "ShownText.h"

namespace Station {

using Oxa::Core::LogManager;
using Oxa::Core::OxaLogSeverityEnum;

namespace {

const char* const sNO_LEVEL = " has no level: PATH=LEVEL is wanted, as in Station.Clock=Debug";
const char* const sBAD_PATH = " is no path of a logger: names with single dots between them make one";
const char* const sUNKNOWN_LEVEL =
    " is no level: Alarm, Error, Warning, Debug, Informational and Verbose are known";

struct Level {
  const char* m_pWord;
  OxaLogSeverityEnum m_eLevel;
};
const Level aLEVELS[] = {{"Alarm", Oxa::Core::eLOG_ALARM},
                         {"Error", Oxa::Core::eLOG_ERROR},
                         {"Warning", Oxa::Core::eLOG_WARNING},
                         {"Debug", Oxa::Core::eLOG_DEBUG},
                         {"Informational", Oxa::Core::eLOG_INFORMATIONAL},
                         {"Verbose", Oxa::Core::eLOG_VERBOSE}};

bool IsPath(const std::string& text) {
  return !text.empty() && text.front() != '.' && text.back() != '.' && text.find("..") == std::string::npos;
}

bool ReadLevel(const std::string& word, OxaLogSeverityEnum& severity) {
  for (const Level& level : aLEVELS) {
    if (word != level.m_pWord) continue;
    severity = level.m_eLevel;
    return true;
  }
  return false;
}

bool IsAtOrBelow(const std::string& path, const std::string& top) {
  return path == top || path.rfind(top + '.', 0) == 0;
}

void OpenNode(const std::string& path, OxaLogSeverityEnum level) {
  LogManager* const manager = LogManager::Instance();
  manager->SetSeverityFilters(path, manager->GetSeverityFilters(path) | 1U << level);
}

// A logger passes what its whole path passes, so all nodes from the root on have to be open. That opens none
// of their other children: each has a filter of its own.
void OpenPath(const std::string& path, OxaLogSeverityEnum level) {
  OpenNode(std::string(), level);
  for (std::size_t dot = path.find('.'); dot != std::string::npos; dot = path.find('.', dot + 1)) {
    OpenNode(path.substr(0, dot), level);
  }
  OpenNode(path, level);
}

}  // namespace

std::string ReadLogOpening(const std::string& text, LogOpening& opening) {
  const std::size_t equals = text.rfind('=');
  if (equals == std::string::npos) return Quoted(text) + sNO_LEVEL;
  opening.m_sPath = text.substr(0, equals);
  if (!IsPath(opening.m_sPath)) return Quoted(opening.m_sPath) + sBAD_PATH;
  const std::string word = text.substr(equals + 1);
  if (!ReadLevel(word, opening.m_eLevel)) return Quoted(word) + sUNKNOWN_LEVEL;
  return std::string();
}

void OpenLog(const std::vector<LogOpening>& openings, const Plan& plan) {
  for (const LogOpening& opening : openings) {
    OpenPath(opening.m_sPath, opening.m_eLevel);
    for (const std::string& path : LoggerPaths(plan)) {
      if (IsAtOrBelow(path, opening.m_sPath)) OpenPath(path, opening.m_eLevel);
    }
  }
}

}  // namespace Station
