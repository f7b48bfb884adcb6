#include <Infrastructure/OxaCore/Time.h>

#include <Infrastructure/OxaCore/Assert.h>

#include <ostream>
#include <string_view>

#include "StringTools/Characters.h"
#include "Time/LocalTime.h"
#include "Time/MonthNames.h"
#include "Time/TextFields.h"

#include "Platform/Clock.h"

namespace Oxa::Core {

namespace {

using Platform::DateTime;

const char* const g_pMONTH_NAMES[] = {"January", "February", "March",     "April",   "May",      "June",
                                      "July",    "August",   "September", "October", "November", "December"};
const char* const g_pMONTH_ABBREVIATIONS[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                              "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// What doesn't fit a field is no date anyway.
int Field(long value) { return value < 0 || value > 100000 ? -1 : static_cast<int>(value); }

DateTime FieldsOf(long long ticks) {
  DateTime local;
  GetLocalSystemTime(ticks, local);
  return local;
}

// False if the date was refused.
bool TicksOfLocal(const DateTime& local, long long& ticks) {
  DateTime utc;
  if (!ConvertToUTCTime(local, utc)) return false;
  ticks = WindowsFileTime(utc).GetTicks();
  return true;
}

long long TicksOfMidnight(long month, long day, long year) {
  long long ticks = 0;
  TicksOfLocal({Field(year), Field(month), Field(day), 0, 0, 0, 0}, ticks);
  return ticks;
}

// Seconds and milliseconds; without exactly one point, what stands before the first is the seconds.
void ReadSeconds(std::string_view text, DateTime& fields) {
  std::string_view parts[2];
  const bool whole = SplitFields(text, '.', parts) != 2;
  fields.m_iSecond = Field(ReadField(whole ? text : parts[0]));
  fields.m_iMilliSecond = whole ? 0 : Field(ReadField(parts[1]));
}

bool ReadLenient(std::string_view text, DateTime& fields) {
  std::string_view parts[2];
  std::string_view date[3];
  std::string_view clock[3];
  if (SplitFields(WithoutOuterSpace(text), ' ', parts) != 2) return false;
  if (SplitFields(parts[0], '/', date) != 3 || SplitFields(parts[1], ':', clock) != 3) return false;
  fields.m_iYear = Field(ReadField(date[0]));
  fields.m_iMonth = Field(ReadField(date[1]));
  fields.m_iDay = Field(ReadField(date[2]));
  fields.m_iHour = Field(ReadField(clock[0]));
  fields.m_iMinute = Field(ReadField(clock[1]));
  ReadSeconds(clock[2], fields);
  return true;
}

// Digits at fixed places; any other character makes `bad` nonzero.
template <int COUNT>
int Digits(const char* at, unsigned int& bad) {
  unsigned int number = 0;
  for (int i = 0; i < COUNT; ++i) {
    const unsigned int digit = static_cast<unsigned char>(at[i]) - unsigned{'0'};
    bad |= static_cast<unsigned int>(digit > 9);
    number = number * 10 + digit;
  }
  return static_cast<int>(number);
}

// Text exactly as ToString writes it needs no searching.
bool ReadExact(std::string_view text, DateTime& fields) {
  constexpr std::string_view sFORM = "yyyy/MM/dd HH:mm:ss.fff";
  if (text.size() != sFORM.size()) return false;
  for (const std::size_t place : {4, 7, 10, 13, 16, 19}) {
    if (text[place] != sFORM[place]) return false;
  }
  unsigned int bad = 0;
  const char* const at = text.data();
  fields = {Digits<4>(at, bad),      Digits<2>(at + 5, bad),  Digits<2>(at + 8, bad), Digits<2>(at + 11, bad),
            Digits<2>(at + 14, bad), Digits<2>(at + 17, bad), Digits<3>(at + 20, bad)};
  return bad == 0;
}

bool ReadFields(std::string_view text, DateTime& fields) {
  return ReadExact(text, fields) || ReadLenient(text, fields);
}

bool IsMonth(long month) { return month >= 1 && month <= 12; }

}  // namespace

Time::Time() : m_iTicks(Platform::NowTicks()) {}

Time::Time(const Elapse& fromNow) : Time() { *this += fromNow; }

Time::Time(long month, long day, const Elapse& sinceMidnight)
    : Time(month, day, Time().Year(), sinceMidnight) {}

Time::Time(long month, long day, long year, const Elapse& sinceMidnight)
    : m_iTicks(TicksOfMidnight(month, day, year)) {
  *this += sinceMidnight;
}

Time::Time(long long value) : m_iTicks(Elapse::Add(s_unixEpochBase.m_iTicks, value)) {}

Time& Time::operator=(long long value) {
  m_iTicks = Elapse::Add(s_unixEpochBase.m_iTicks, value);
  return *this;
}

Time::Time(long long value, EPlatformTimeInfo info) : m_iTicks(0) { Assign(value, info); }

void Time::Assign(long long value, EPlatformTimeInfo info) {
  switch (info) {
    case ePlatformTimeCurrent:
    case ePlatformTimeWindows:
      m_iTicks = value;
      return;
    case ePlatformTimeSeconds:
      *this = value;
      return;
  }
  OXA_ASSERT(false);
}

Time Time::GetEpoch() { return Time(1, 1, 1601, Elapse(0, Elapse::Seconds)); }

Time::EPlatformTimeInfo Time::GetPlatformTimeInfo() { return ePlatformTimeWindows; }

long Time::Year() const { return FieldsOf(m_iTicks).m_iYear; }
long Time::Month() const { return FieldsOf(m_iTicks).m_iMonth; }
long Time::Day() const { return FieldsOf(m_iTicks).m_iDay; }
long Time::Hour() const { return FieldsOf(m_iTicks).m_iHour; }
long Time::Minute() const { return FieldsOf(m_iTicks).m_iMinute; }
long Time::Second() const { return FieldsOf(m_iTicks).m_iSecond; }
long Time::MilliSecond() const { return FieldsOf(m_iTicks).m_iMilliSecond; }

long Time::MicroSecond() const {
  DateTime utc;
  if (!WindowsFileTime(m_iTicks).GetSystemTime(utc)) return 0;
  const long long dropped = m_iTicks - WindowsFileTime(utc).GetTicks();
  return static_cast<long>(dropped * 100 / NSEC_PER_USEC);
}

std::string Time::MonthName() const {
  const long month = Month();
  return IsMonth(month) ? g_pMONTH_NAMES[month - 1] : "Invalid";
}

const char* AbbreviationOfMonth(long month) noexcept {
  return IsMonth(month) ? g_pMONTH_ABBREVIATIONS[month - 1] : "???";
}

std::string Time::MonthAbbreviation() const { return AbbreviationOfMonth(Month()); }

Elapse Time::TimeLeft() const { return *this - Time(); }

Elapse Time::TimeSince() const { return Time() - *this; }

std::string Time::ToString() const { return GetLocalTimeString(m_iTicks); }

bool Time::ParseString(const std::string& text) {
  DateTime local;
  return ReadFields(text, local) && TicksOfLocal(local, m_iTicks);
}

std::ostream& operator<<(std::ostream& out, const Time& time) { return out << time.ToString(); }

unsigned long GetTimeTickSize_ns(Time::EPlatformTimeInfo info) {
  switch (info) {
    case Time::ePlatformTimeCurrent:
    case Time::ePlatformTimeWindows:
      return 100;
    case Time::ePlatformTimeSeconds:
      return 1000000000;
  }
  return 0;
}

long long ConvertTimerTicksToCurrentPlatform(long long ticks, Time::EPlatformTimeInfo info) {
  if (info == Time::ePlatformTimeCurrent || info == Time::ePlatformTimeWindows) return ticks;
  const unsigned long factor = GetTimeTickSize_ns(info) / GetTimeTickSize_ns(Time::ePlatformTimeCurrent);
  return static_cast<long long>(static_cast<unsigned long long>(ticks) * factor);
}

}  // namespace Oxa::Core
