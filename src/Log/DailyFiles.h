// Names and dates of the daily files that WrappingFileStream writes and WrappingFileStreamIterator walks.
#ifndef OXACORE_LOG_DAILYFILES_H
#define OXACORE_LOG_DAILYFILES_H

#include <Infrastructure/OxaCore/Time.h>

#include <string>

namespace Oxa::Core {

/// A date of the local calendar, or what somebody wrote in its place.
struct DailyDate {
  int m_iYear = 0;
  int m_iMonth = 0;  ///< from 1
  int m_iDay = 0;    ///< from 1
};

/// The local date of a moment. Raises as Time::Year does; zeros if that returns.
DailyDate DailyDateOf(const Time& moment);

/// Whether there is such a day.
bool IsDailyDate(const DailyDate& date) noexcept;

/// Makes `moment` the same time as `start` so many days later, by the clock on the wall: however long the days are.
/// False, with `moment` untouched, behind the end of the calendar.
bool DaysLater(const Time& start, int days, Time& moment);

/// Local midnight, with which the day begins. Raises as Time does if there is no such day.
Time MidnightOf(const DailyDate& date);

/// "Run2011_03_03"
std::string DailyName(const std::string& prefix, const DailyDate& date);

/// "<folder>Run2011_03_03-7.log"
std::string DailyLogFileName(const std::string& folder, const std::string& dailyName, int number);

/// "<folder>Run2011_03_03.seq"
std::string DailySequenceFileName(const std::string& folder, const std::string& dailyName);

/// The date behind `prefix` in the name of a sequence file; what follows it is no matter. False, with `date`
/// untouched, if there is none, or none that exists.
bool ReadSequenceFileName(const std::string& name, const std::string& prefix, DailyDate& date);

/// The date and, if it has one, the number in the name of a log or sequence file that has no prefix; `number` stays
/// as it is where there is none. False if there is no date, or none that exists.
bool ReadDailyFileName(const std::string& name, DailyDate& date, int& number);

}  // namespace Oxa::Core

#endif
