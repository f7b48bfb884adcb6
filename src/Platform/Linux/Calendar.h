// The Gregorian calendar as arithmetic on days since 1 January 1970.
#ifndef OXACORE_PLATFORM_LINUX_CALENDAR_H
#define OXACORE_PLATFORM_LINUX_CALENDAR_H

namespace Oxa::Core::Platform {

struct CalendarDay {
  int m_iYear;
  int m_iMonth;  // from 1
  int m_iDay;    // from 1
};

constexpr long long iSECONDS_PER_DAY = 86400;

// Years are counted from March here, so that the leap day is the last of its year. This many days lie between
// 1 March of year 0 and 1 January 1970.
constexpr int iMARCH_TO_1970 = 719468;

constexpr bool IsLeapYear(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

constexpr int DaysInMonth(int year, int month) {
  if (month == 2) return IsLeapYear(year) ? 29 : 28;
  return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

/// For years from 1 on.
constexpr int DaysFromDate(int year, int month, int day) {
  const int marchYear = month > 2 ? year : year - 1;
  const int marchMonth = month > 2 ? month - 3 : month + 9;
  const int daysBeforeMonth = (153 * marchMonth + 2) / 5;  // 31, 30, 31, 30, 31 and again
  return marchYear * 365 + marchYear / 4 - marchYear / 100 + marchYear / 400 + daysBeforeMonth + day - 1 -
         iMARCH_TO_1970;
}

/// For days from the year 1 on.
constexpr CalendarDay DateFromDays(int days) {
  const unsigned since = static_cast<unsigned>(days + iMARCH_TO_1970);
  const unsigned era = since / 146097;  // 400 years
  const unsigned dayOfEra = since % 146097;
  const unsigned yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const unsigned month = (5 * dayOfYear + 2) / 153;
  const unsigned day = dayOfYear - (153 * month + 2) / 5 + 1;
  const unsigned januaryYear = era * 400 + yearOfEra + (month >= 10 ? 1 : 0);
  return {static_cast<int>(januaryYear), static_cast<int>(month >= 10 ? month - 9 : month + 3),
          static_cast<int>(day)};
}

/// 0 is Sunday.
constexpr int WeekDay(int days) { return ((days % 7) + 11) % 7; }

}  // namespace Oxa::Core::Platform

#endif
