#include "DailyLog.h"

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Time.h>

#include <filesystem>
#include <iomanip>
#include <sstream>
#include <system_error>

#include "Loggers.h"
#include "ShownText.h"

namespace Station {

using Oxa::Core::Error;
using Oxa::Core::Time;

const char* const sDAILY_PREFIX = "Station";

namespace {

constexpr int iFOR_EVER = -1;
constexpr int iFILES_A_DAY = 10;
constexpr int iFILE_SIZE = 1000000;

std::ostringstream LineAbout(const Series& series) {
  std::ostringstream line;
  line << std::fixed << std::setprecision(1) << series.m_sName << ": ";
  return line;
}

}  // namespace

DailyLog::DailyLog(const std::string& folder) {
  std::error_code ignored;  // the files tell what is wrong with a folder
  std::filesystem::create_directories(folder, ignored);
  m_files.Initialize(folder, iFOR_EVER, iFILES_A_DAY, iFILE_SIZE, sDAILY_PREFIX);
}

void DailyLog::Tell(const std::string& text) {
  try {
    m_files.Write(Time().ToString() + '\t' + Shown(text) + '\n');
  } catch (const Error& error) {
    m_sFailure = error.what();
  }
}

void DailyLog::TellLate(const Sample& sample, const Series& series) {
  std::ostringstream line = LineAbout(series);
  line << "sample " << sample.m_ulNumber << " came " << MicroSeconds(sample.m_lateness)
       << " microseconds late";
  Tell(line.str());
}

void DailyLog::TellResult(const Measurement& measurement) {
  std::ostringstream line = LineAbout(measurement.m_series);
  line << measurement.m_latenesses.size() << " of " << measurement.m_series.m_ulCount << " samples taken, "
       << measurement.m_ulLate << " of them too late";
  if (!measurement.m_latenesses.empty()) {
    line << ", " << MicroSeconds(measurement.m_statistics.m_median) << " microseconds at the median and "
         << MicroSeconds(measurement.m_statistics.m_greatest) << " at most";
  }
  Tell(line.str());
}

void DailyLog::CheckMidnight() {
  try {
    m_files.MidnightCheck();
  } catch (const Error& error) {
    m_sFailure = error.what();
  }
}

}  // namespace Station
