#include "Log/DailyFiles.h"

#include <cstdio>

#include "Platform/Clock.h"

namespace Oxa::Core {

namespace {

const char* const g_pDATE = "%d_%.2d_%.2d";
const char* const g_pLOG_FILE_SCAN = "%d_%d_%d-%d.log";
const char* const g_pSEQUENCE_FILE_SCAN = "%d_%d_%d.seq";

constexpr long long iTICKS_PER_DAY = 864000000000;
constexpr long long iTICKS_PER_MILLISECOND = 10000;

Platform::DateTime FieldsOf(const DailyDate& date) {
  Platform::DateTime fields;
  fields.m_iYear = date.m_iYear;
  fields.m_iMonth = date.m_iMonth;
  fields.m_iDay = date.m_iDay;
  return fields;
}

bool ScanDate(const char* text, DailyDate& date) {
  DailyDate found;
  if (std::sscanf(text, g_pSEQUENCE_FILE_SCAN, &found.m_iYear, &found.m_iMonth, &found.m_iDay) != 3)
    return false;
  if (!IsDailyDate(found)) return false;
  date = found;
  return true;
}

}  // namespace

DailyDate DailyDateOf(const Time& moment) {
  return {static_cast<int>(moment.Year()), static_cast<int>(moment.Month()), static_cast<int>(moment.Day())};
}

bool IsDailyDate(const DailyDate& date) noexcept {
  Platform::DateTime utc;
  return Platform::LocalToUtc(FieldsOf(date), utc) == 0;
}

// The clock on the wall is counted as though it were of UTC, where all days have the same length.
bool DaysLater(const Time& start, int days, Time& moment) {
  Platform::DateTime wall;
  long long ticks = 0;
  if (Platform::TicksToLocal(start.GetRawTimerTicks(), wall) != 0) return false;
  if (Platform::UtcToTicks(wall, ticks) != 0) return false;
  if (Platform::TicksToUtc(ticks + days * iTICKS_PER_DAY, wall) != 0) return false;
  if (Platform::LocalToUtc(wall, wall) != 0 || Platform::UtcToTicks(wall, ticks) != 0) return false;
  moment = Time(ticks + start.GetRawTimerTicks() % iTICKS_PER_MILLISECOND, Time::ePlatformTimeCurrent);
  return true;
}

Time MidnightOf(const DailyDate& date) { return Time(date.m_iMonth, date.m_iDay, date.m_iYear, Elapse()); }

std::string DailyName(const std::string& prefix, const DailyDate& date) {
  char text[48];
  std::snprintf(text, sizeof text, g_pDATE, date.m_iYear, date.m_iMonth, date.m_iDay);
  return prefix + text;
}

std::string DailyLogFileName(const std::string& folder, const std::string& dailyName, int number) {
  return folder + dailyName + '-' + std::to_string(number) + ".log";
}

std::string DailySequenceFileName(const std::string& folder, const std::string& dailyName) {
  return folder + dailyName + ".seq";
}

bool ReadSequenceFileName(const std::string& name, const std::string& prefix, DailyDate& date) {
  return name.compare(0, prefix.size(), prefix) == 0 && ScanDate(name.c_str() + prefix.size(), date);
}

bool ReadDailyFileName(const std::string& name, DailyDate& date, int& number) {
  DailyDate unused;
  int found = 0;
  const int fields =
      std::sscanf(name.c_str(), g_pLOG_FILE_SCAN, &unused.m_iYear, &unused.m_iMonth, &unused.m_iDay, &found);
  if (!ScanDate(name.c_str(), date)) return false;
  if (fields == 4) number = found;
  return true;
}

}  // namespace Oxa::Core
