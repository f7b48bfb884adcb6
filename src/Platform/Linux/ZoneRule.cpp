#include "Platform/Linux/ZoneRule.h"

#include <climits>

#include "Platform/Linux/Calendar.h"

namespace Oxa::Core::Platform {

namespace {

constexpr int iTWO_IN_THE_MORNING = 2 * 3600;

// What a rule without dates means: the second Sunday of March to the first of November.
constexpr YearlyChange DEFAULT_START = {YearlyChange::eWEEKDAY, 3, 2, 0, iTWO_IN_THE_MORNING};
constexpr YearlyChange DEFAULT_END = {YearlyChange::eWEEKDAY, 11, 1, 0, iTWO_IN_THE_MORNING};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Reads a rule from left to right. What doesn't fit marks the whole as failed.
class RuleReader {
 public:
  RuleReader(const char* text, std::size_t length) : m_pAt(text), m_pEnd(text + length) {}

  bool Read(ZoneRule& rule) {
    rule = ZoneRule();
    ReadName();
    rule.m_iStandardOffset = -ReadTime(24);
    if (AtEnd()) return !m_bFailed;
    rule.m_bDaylight = true;
    ReadName();
    const bool ownOffset = !AtEnd() && *m_pAt != ',';
    rule.m_iDaylightOffset = ownOffset ? -ReadTime(24) : rule.m_iStandardOffset + 3600;
    ReadChanges(rule);
    return !m_bFailed && AtEnd();
  }

 private:
  bool AtEnd() const { return m_pAt == m_pEnd; }

  bool Take(char c) {
    if (AtEnd() || *m_pAt != c) return false;
    ++m_pAt;
    return true;
  }

  void Expect(char c) {
    if (!Take(c)) m_bFailed = true;
  }

  // "CET", or "<+0530>".
  void ReadName() {
    const bool quoted = Take('<');
    const char* const begin = m_pAt;
    while (!AtEnd() &&
           (IsLetter(*m_pAt) || (quoted && (IsDigit(*m_pAt) || *m_pAt == '+' || *m_pAt == '-')))) {
      ++m_pAt;
    }
    if (m_pAt - begin < 3) m_bFailed = true;
    if (quoted) Expect('>');
  }

  int ReadNumber(int least, int most) {
    if (AtEnd() || !IsDigit(*m_pAt)) m_bFailed = true;
    int number = 0;
    while (!AtEnd() && IsDigit(*m_pAt) && number <= most) number = number * 10 + (*m_pAt++ - '0');
    if (number < least || number > most) m_bFailed = true;
    return number;
  }

  // "[+-]hours[:minutes[:seconds]]" in seconds.
  int ReadTime(int mostHours) {
    const bool negative = Take('-');
    if (!negative) Take('+');
    int seconds = ReadNumber(0, mostHours) * 3600;
    if (Take(':')) {
      seconds += ReadNumber(0, 59) * 60;
      if (Take(':')) seconds += ReadNumber(0, 59);
    }
    return negative ? -seconds : seconds;
  }

  void ReadChanges(ZoneRule& rule) {
    rule.m_start = DEFAULT_START;
    rule.m_end = DEFAULT_END;
    if (AtEnd()) return;
    rule.m_start = ReadChange();
    rule.m_end = ReadChange();
  }

  YearlyChange ReadChange() {
    Expect(',');
    YearlyChange change = YearlyChange();
    if (Take('M')) {
      change.m_eKind = YearlyChange::eWEEKDAY;
      change.m_iMonth = ReadNumber(1, 12);
      Expect('.');
      change.m_iWeek = ReadNumber(1, 5);
      Expect('.');
      change.m_iDay = ReadNumber(0, 6);
    } else if (Take('J')) {
      change.m_eKind = YearlyChange::eNO_LEAP_DAY;
      change.m_iDay = ReadNumber(1, 365);
    } else {
      change.m_eKind = YearlyChange::eDAY_OF_YEAR;
      change.m_iDay = ReadNumber(0, 365);
    }
    change.m_iSeconds = Take('/') ? ReadTime(167) : iTWO_IN_THE_MORNING;
    return change;
  }

  const char* m_pAt;
  const char* m_pEnd;
  bool m_bFailed = false;
};

int WeekdayOfMonth(const YearlyChange& change, int year) {
  const int first = DaysFromDate(year, change.m_iMonth, 1);
  const int day = (change.m_iDay - WeekDay(first) + 7) % 7 + (change.m_iWeek - 1) * 7;
  return first + (day < DaysInMonth(year, change.m_iMonth) ? day : day - 7);
}

int DayOfChange(const YearlyChange& change, int year) {
  if (change.m_eKind == YearlyChange::eWEEKDAY) return WeekdayOfMonth(change, year);
  const int firstOfYear = DaysFromDate(year, 1, 1);
  if (change.m_eKind == YearlyChange::eDAY_OF_YEAR) return firstOfYear + change.m_iDay;
  return firstOfYear + change.m_iDay - 1 + (IsLeapYear(year) && change.m_iDay >= 60 ? 1 : 0);
}

// The moment at which local time under `offsetBefore` shows what the change says.
long long MomentOfChange(const YearlyChange& change, int year, int offsetBefore) {
  return DayOfChange(change, year) * iSECONDS_PER_DAY + change.m_iSeconds - offsetBefore;
}

struct OffsetChange {
  long long m_iMoment;
  int m_iOffset;
};

// The two changes of a year, in order. Of two at one moment the end is the later, so that daylight time lasts
// no time at all then. Where one year's second change falls on the next year's first, the stretch between is
// empty, and the later year's counts.
void ChangesOfYear(const ZoneRule& rule, int year, OffsetChange* two) {
  const OffsetChange start = {MomentOfChange(rule.m_start, year, rule.m_iStandardOffset),
                              rule.m_iDaylightOffset};
  const OffsetChange end = {MomentOfChange(rule.m_end, year, rule.m_iDaylightOffset), rule.m_iStandardOffset};
  const bool startFirst = start.m_iMoment <= end.m_iMoment;
  two[0] = startFirst ? start : end;
  two[1] = startFirst ? end : start;
}

int YearOf(long long seconds) {
  long long days = seconds / iSECONDS_PER_DAY;
  if (seconds < 0 && seconds % iSECONDS_PER_DAY != 0) --days;
  return DateFromDays(static_cast<int>(days)).m_iYear;
}

}  // namespace

bool ParseZoneRule(const char* text, std::size_t length, ZoneRule& rule) noexcept {
  ZoneRule read;
  if (!RuleReader(text, length).Read(read)) return false;
  rule = read;
  return true;
}

ZoneSegment SegmentAt(const ZoneRule& rule, long long seconds) noexcept {
  if (!rule.m_bDaylight) return {LLONG_MIN, LLONG_MAX, rule.m_iStandardOffset};
  // A change may lie a week and a day outside its year. So it takes two years on either side to be sure of a
  // change before the moment and of one behind it.
  constexpr int iCHANGES = 10;
  OffsetChange changes[iCHANGES];
  const int year = YearOf(seconds + rule.m_iStandardOffset);
  for (int i = 0; i < iCHANGES / 2; ++i) ChangesOfYear(rule, year - 2 + i, changes + 2 * i);
  int next = 1;
  while (next < iCHANGES - 1 && changes[next].m_iMoment <= seconds) ++next;
  return {changes[next - 1].m_iMoment, changes[next].m_iMoment, changes[next - 1].m_iOffset};
}

}  // namespace Oxa::Core::Platform
