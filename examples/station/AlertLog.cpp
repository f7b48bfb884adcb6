#include "AlertLog.h"

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/RaiseSite.h>
#include <Infrastructure/OxaCore/Time.h>

#include <cerrno>
#include <filesystem>
#include <sstream>
#include <system_error>

#include "ShownText.h"
#include "StationAlerts.h"

namespace Station {

using Oxa::Core::AlertInfo;
using Oxa::Core::AlertManager;
using Oxa::Core::Error;
using Oxa::Core::Lock;
using Oxa::Core::Time;
using Oxa::Core::Warning;

namespace {

const char* const sLOG_NAME = "Station.AlertLog";
const char* const sFILE_NAME = "alerts.xml";
const char* const sROOT = "Alerts";
const char* const sEND = "</Alerts>\n";  // every element before it has ended its line
const char* const sSURVIVED = "The station has survived this error";
const char* const sUNCAUGHT = "Nobody has caught this error, and the station ends";

}  // namespace

AlertLog::AlertLog(const std::string& folder)
    : m_sFile((std::filesystem::path(folder) / sFILE_NAME).string()) {
  std::error_code failure;
  std::filesystem::create_directories(folder, failure);
  if (failure) OXA_RAISE_ERROR(sLOG_NAME, OutputUnusable(folder, failure.message()));
  m_file.open(m_sFile, std::ios::binary | std::ios::trunc);
  if (!m_file) OXA_RAISE_ERROR(sLOG_NAME, OutputUnusable(folder, std::generic_category().message(errno)));
  StartDocument();
  AlertManager::Instance()->AddAlertListener(*this);
}

AlertLog::~AlertLog() { AlertManager::Instance()->RemoveAlertListener(*this); }

void AlertLog::ErrorHandled(Error& error) { Append(error, sSURVIVED); }

void AlertLog::UncaughtFatalError(Error& error, const std::string&) { Append(error, sUNCAUGHT); }

void AlertLog::WarningRaised(Warning& warning) { Append(warning, std::string()); }

bool AlertLog::IsGood() {
  const Lock lock(m_mutex);
  return m_file.good();
}

void AlertLog::StartDocument() {
  std::ostringstream text;
  text << m_writer.StartDocA() << m_writer.StartTag(sROOT) << m_writer.Tag("Started", Time().ToString());
  Write(text.str());
}

void AlertLog::Append(AlertInfo& alert, const std::string& circumstance) {
  const Lock lock(m_mutex);
  std::ostringstream text;
  alert.ToXML(m_writer, text, circumstance);
  m_file.seekp(m_end);
  // The station's own messages are fit for XML, but the names of programs and hosts need not be.
  Write(ShownLines(text.str()));
}

void AlertLog::Write(const std::string& text) {
  m_end = m_file.tellp() + static_cast<std::streamoff>(text.size());
  m_file << text + sEND << std::flush;
}

}  // namespace Station
