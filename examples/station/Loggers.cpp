#include "Loggers.h"

#include <algorithm>

namespace Station {

const char* const sSTATION_LOGGER = "Station";
const char* const sCLOCK_LOGGER = "Station.Clock";
const char* const sPLAN_LOGGER = "Station.Plan";
const char* const sRECORDER_LOGGER = "Station.Recorder";

namespace {

const char* const sSERIES_LOGGERS = "Station.Series.";

}  // namespace

std::string SeriesLogger(const std::string& series) {
  std::string name = series;
  std::replace(name.begin(), name.end(), '.', '_');
  return sSERIES_LOGGERS + name;
}

std::vector<std::string> LoggerPaths(const Plan& plan) {
  std::vector<std::string> paths{sSTATION_LOGGER, sCLOCK_LOGGER, sPLAN_LOGGER, sRECORDER_LOGGER};
  for (const Series& series : plan.m_series) paths.push_back(SeriesLogger(series.m_sName));
  return paths;
}

double MicroSeconds(const Oxa::Core::Elapse& elapse) {
  return static_cast<double>(elapse.GetRawTimerTicks()) / 10;
}

}  // namespace Station
