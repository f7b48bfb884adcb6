#include "Platform/Clock.h"

#include <errno.h>
#include <sched.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <atomic>

#include "Platform/Linux/Calendar.h"
#include "Platform/Linux/CurrentZone.h"
#include "Platform/Linux/ZoneTable.h"

namespace Oxa::Core::Platform {

namespace {

constexpr long long iTICKS_PER_SECOND = 10000000;
constexpr long long iTICKS_PER_MILLISECOND = 10000;
constexpr long long i1601_TO_1970 = 11644473600;  // seconds
constexpr int iFIRST_YEAR = 1601;
constexpr int iLAST_YEAR = 30827;

// Seconds since 1970 at which the calendar begins and ends.
constexpr long long iBEGIN = DaysFromDate(iFIRST_YEAR, 1, 1) * iSECONDS_PER_DAY;
constexpr long long iEND = DaysFromDate(iLAST_YEAR + 1, 1, 1) * iSECONDS_PER_DAY;
static_assert(iBEGIN == -i1601_TO_1970, "the calendar begins where the ticks do");

ZoneTable s_loadedZone;
std::atomic<long long> s_iNowOffset;
std::atomic<long long> s_iMonotonicOffset;
std::atomic<int> s_iMonotonicFailure;

long long Wrap(unsigned long long ticks) { return static_cast<long long>(ticks); }

long long ReadClock(clockid_t clock, const std::atomic<long long>& offset) {
  timespec now;
  clock_gettime(clock, &now);
  const long long ticks = now.tv_sec * iTICKS_PER_SECOND + now.tv_nsec / 100;
  return Wrap(static_cast<unsigned long long>(ticks) +
              static_cast<unsigned long long>(offset.load(std::memory_order_relaxed)));
}

bool Within(int value, int least, int most) { return value >= least && value <= most; }

bool IsTimeOfDay(const DateTime& fields) {
  return Within(fields.m_iHour, 0, 23) && Within(fields.m_iMinute, 0, 59) &&
         Within(fields.m_iSecond, 0, 59) && Within(fields.m_iMilliSecond, 0, 999);
}

// `extraYears` more years are let in at either end.
bool IsDate(const DateTime& fields, int extraYears) {
  return Within(fields.m_iYear, iFIRST_YEAR - extraYears, iLAST_YEAR + extraYears) &&
         Within(fields.m_iMonth, 1, 12) &&
         Within(fields.m_iDay, 1, DaysInMonth(fields.m_iYear, fields.m_iMonth));
}

long long ToSeconds(const DateTime& fields) {
  return DaysFromDate(fields.m_iYear, fields.m_iMonth, fields.m_iDay) * iSECONDS_PER_DAY +
         fields.m_iHour * 3600 + fields.m_iMinute * 60 + fields.m_iSecond;
}

// For seconds since 1970 that lie no more than a few days outside the calendar.
DateTime ToFields(long long seconds, int milliSecond) {
  const long long since = seconds - iBEGIN + 366 * iSECONDS_PER_DAY;  // never negative
  const int second = static_cast<int>(since % iSECONDS_PER_DAY);
  const CalendarDay day = DateFromDays(static_cast<int>(since / iSECONDS_PER_DAY) +
                                       static_cast<int>(iBEGIN / iSECONDS_PER_DAY) - 366);
  return {day.m_iYear, day.m_iMonth, day.m_iDay, second / 3600, second / 60 % 60, second % 60, milliSecond};
}

long long SecondsSince1970(long long ticks) { return ticks / iTICKS_PER_SECOND - i1601_TO_1970; }
int MilliSecondsOf(long long ticks) {
  return static_cast<int>(ticks % iTICKS_PER_SECOND / iTICKS_PER_MILLISECOND);
}
bool InCalendar(long long seconds) { return seconds >= iBEGIN && seconds < iEND; }

// The two digits of each number below 100, which are one load and one store in place of a division.
struct DigitPairs {
  char m_text[200] = {};
  constexpr DigitPairs() {
    for (int i = 0; i < 200; ++i) m_text[i] = static_cast<char>('0' + (i % 2 == 0 ? i / 20 : i / 2 % 10));
  }
};
constexpr DigitPairs s_digitPairs;

char* Put2(char* to, int value) {
  memcpy(to, &s_digitPairs.m_text[2 * value], 2);
  return to + 2;
}

constexpr int iMAX_TEXT = 24;  // a year of five digits, and the rest

// "1998/08/23 "; gives the end of what it wrote.
char* PutDate(char* to, int year, int month, int day) {
  if (year >= 10000) *to++ = static_cast<char>('0' + year / 10000);
  to = Put2(Put2(to, year / 100 % 100), year % 100);
  *to++ = '/';
  to = Put2(to, month);
  *to++ = '/';
  to = Put2(to, day);
  *to++ = ' ';
  return to;
}

// "02:33:17.123"; gives the end of what it wrote.
char* PutTimeOfDay(char* to, int second, int milliSecond) {
  to = Put2(to, second / 3600);
  *to++ = ':';
  to = Put2(to, second / 60 % 60);
  *to++ = ':';
  to = Put2(to, second % 60);
  *to++ = '.';
  *to++ = static_cast<char>('0' + milliSecond / 100);
  return Put2(to, milliSecond % 100);
}

// The day whose date this thread put last: time stamps that follow each other are nearly always of one day.
struct LastDay {
  int m_iDay;  // since the calendar began, plus 1; 0 is none
  int m_iLength;
  char m_text[12];
};

[[gnu::tls_model("initial-exec")]] thread_local LastDay s_lastDay;

char* PutLocalTime(char* to, long long localSeconds, int milliSecond) {
  const long long since = localSeconds - iBEGIN;
  const int day = static_cast<int>(since / iSECONDS_PER_DAY) + 1;
  LastDay& last = s_lastDay;
  if (last.m_iDay != day) {
    const CalendarDay date = DateFromDays(static_cast<int>(iBEGIN / iSECONDS_PER_DAY) + day - 1);
    last.m_iLength =
        static_cast<int>(PutDate(last.m_text, date.m_iYear, date.m_iMonth, date.m_iDay) - last.m_text);
    last.m_iDay = day;
  }
  memcpy(to, last.m_text, sizeof last.m_text);
  return PutTimeOfDay(to + last.m_iLength, static_cast<int>(since % iSECONDS_PER_DAY), milliSecond);
}

// The local time of a moment, in seconds since 1970 as though it were UTC.
int LocalSecondsOf(long long ticks, long long& localSeconds) {
  const long long seconds = SecondsSince1970(ticks);
  if (ticks < 0 || !InCalendar(seconds)) return EINVAL;
  localSeconds = seconds + CurrentOffset(seconds);
  return InCalendar(localSeconds) ? 0 : EINVAL;
}

}  // namespace

long long NowTicks() noexcept {
  return Wrap(static_cast<unsigned long long>(ReadClock(CLOCK_REALTIME, s_iNowOffset)) +
              i1601_TO_1970 * iTICKS_PER_SECOND);
}

long long MonotonicTicks() noexcept { return ReadClock(CLOCK_MONOTONIC, s_iMonotonicOffset); }

int MonotonicFrequency(long long& ticksPerSecond) noexcept {
  const int failure = s_iMonotonicFailure.load(std::memory_order_relaxed);
  if (failure != 0) return failure;
  timespec resolution;
  if (clock_getres(CLOCK_MONOTONIC, &resolution) != 0) return errno;
  ticksPerSecond = iTICKS_PER_SECOND;
  return 0;
}

int TicksToUtc(long long ticks, DateTime& utc) noexcept {
  const long long seconds = SecondsSince1970(ticks);
  if (ticks < 0 || !InCalendar(seconds)) return EINVAL;
  utc = ToFields(seconds, MilliSecondsOf(ticks));
  return 0;
}

int TicksToLocal(long long ticks, DateTime& local) noexcept {
  long long localSeconds = 0;
  const int failure = LocalSecondsOf(ticks, localSeconds);
  if (failure == 0) local = ToFields(localSeconds, MilliSecondsOf(ticks));
  return failure;
}

int UtcToTicks(const DateTime& utc, long long& ticks) noexcept {
  if (!IsDate(utc, 1) || !IsTimeOfDay(utc)) return EINVAL;
  const long long seconds = ToSeconds(utc);
  if (seconds < iBEGIN - 2 * iSECONDS_PER_DAY || seconds >= iEND + 2 * iSECONDS_PER_DAY) return EINVAL;
  ticks = (seconds + i1601_TO_1970) * iTICKS_PER_SECOND + utc.m_iMilliSecond * iTICKS_PER_MILLISECOND;
  return 0;
}

int LoadZone() noexcept { return ReadZone(getenv("TZ"), s_loadedZone); }

int LocalToUtc(const DateTime& local, DateTime& utc) noexcept {
  if (!IsDate(local, 0) || !IsTimeOfDay(local)) return EINVAL;
  utc = ToFields(MomentOfLocal(s_loadedZone, ToSeconds(local)), local.m_iMilliSecond);
  return 0;
}

long long ZoneChange(long long ticks) noexcept {
  const long long seconds = SecondsSince1970(ticks);
  return CurrentOffset(seconds) - SegmentAt(s_loadedZone, seconds).m_iOffset;
}

int DateTimeText(const DateTime& fields, std::string& text) {
  if (!IsDate(fields, 0) || !IsTimeOfDay(fields)) return EINVAL;
  char buffer[iMAX_TEXT];
  char* const clock = PutDate(buffer, fields.m_iYear, fields.m_iMonth, fields.m_iDay);
  const int second = fields.m_iHour * 3600 + fields.m_iMinute * 60 + fields.m_iSecond;
  text.assign(buffer, PutTimeOfDay(clock, second, fields.m_iMilliSecond));
  return 0;
}

std::string LocalTimeText(long long ticks) {
  long long localSeconds = 0;
  if (LocalSecondsOf(ticks, localSeconds) != 0) return std::string();
  char buffer[iMAX_TEXT];
  return std::string(buffer, PutLocalTime(buffer, localSeconds, MilliSecondsOf(ticks)));
}

void SleepMilliseconds(unsigned int milliseconds) noexcept {
  if (milliseconds == 0) {
    sched_yield();
    return;
  }
  timespec left = {static_cast<time_t>(milliseconds / 1000),
                   static_cast<long>(milliseconds % 1000) * 1000000};
  while (clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
  }
}

void SetClockOffset(long long now, long long monotonic) noexcept {
  s_iNowOffset.store(now, std::memory_order_relaxed);
  s_iMonotonicOffset.store(monotonic, std::memory_order_relaxed);
}

void SetMonotonicFailure(int code) noexcept { s_iMonotonicFailure.store(code, std::memory_order_relaxed); }

}  // namespace Oxa::Core::Platform
