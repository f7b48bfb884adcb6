#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Time.h>

#include <ostream>
#include <string_view>

#include "StringTools/Characters.h"
#include "Time/TextFields.h"

namespace Oxa::Core {

namespace {

const char* const g_pLOG_NAME = "Oxa.Core.Elapse";
const char* const g_pUNITS = "units";

constexpr long long iNS_PER_TICK = 100;
constexpr long long iTICKS_PER_SECOND = 10000000;
constexpr long long iTICKS_PER_MINUTE = 60 * iTICKS_PER_SECOND;
constexpr long long iTICKS_PER_HOUR = 60 * iTICKS_PER_MINUTE;
constexpr long long iTICKS_PER_DAY = 24 * iTICKS_PER_HOUR;
constexpr long long iSECONDS_PER_HOUR = 3600;
constexpr long long iSECONDS_PER_DAY = 86400;

// Arithmetic that wraps around.
long long Times(long long a, long long b) {
  return static_cast<long long>(static_cast<unsigned long long>(a) * static_cast<unsigned long long>(b));
}
long long Plus(long long a, long long b) {
  return static_cast<long long>(static_cast<unsigned long long>(a) + static_cast<unsigned long long>(b));
}

// The correction is upward for either sign.
long long TicksFromNanoSeconds(long long nanoseconds) {
  const long long ticks = nanoseconds / iNS_PER_TICK;
  return ticks * iNS_PER_TICK == nanoseconds ? ticks : ticks + 1;
}

long long TicksFromClock(long long hours, long long minutes, long long seconds, long long nanoseconds) {
  const long long wholeMinutes = Plus(Times(hours, 60), minutes);
  const long long wholeSeconds = Plus(Times(wholeMinutes, 60), seconds);
  return Plus(Times(wholeSeconds, iTICKS_PER_SECOND), nanoseconds / iNS_PER_TICK);
}

char* PutDigits(char* to, unsigned int value, int width) {
  for (int i = width - 1; i >= 0; --i) {
    to[i] = static_cast<char>('0' + value % 10);
    value /= 10;
  }
  return to + width;
}

// With a separator behind it; of two digits at least.
char* PutHours(char* to, unsigned int hours) {
  int width = 2;
  for (unsigned int rest = hours / 100; rest != 0; rest /= 10) ++width;
  to = PutDigits(to, hours, width);
  *to++ = ':';
  return to;
}

}  // namespace

Elapse::Elapse(long hours, long minutes, long seconds, long nanoseconds)
    : m_iTicks(TicksFromClock(hours, minutes, seconds, nanoseconds)) {}

void Elapse::Assign(long long value, TimeUnits units) {
  switch (units) {
    case NanoSeconds:
      m_iTicks = TicksFromNanoSeconds(value);
      return;
    case MicroSeconds:
      m_iTicks = TicksFromNanoSeconds(Times(value, Time::NSEC_PER_USEC));
      return;
    case MilliSeconds:
      m_iTicks = TicksFromNanoSeconds(Times(value, Time::NSEC_PER_MSEC));
      return;
    case Seconds:
      m_iTicks = Times(value, iTICKS_PER_SECOND);
      return;
    case Minutes:
      m_iTicks = Times(value, iTICKS_PER_MINUTE);
      return;
    case Hours:
      m_iTicks = Times(value, iTICKS_PER_HOUR);
      return;
    case Days:
      m_iTicks = Times(value, iTICKS_PER_DAY);
      return;
    case TimerTicks:
      m_iTicks = value;
      return;
  }
  OXA_RAISE_ERROR(g_pLOG_NAME, InvalidParameter(g_pUNITS, static_cast<int>(units)));
}

double Elapse::GetElapsed(TimeUnits units) const {
  const auto ticks = static_cast<double>(m_iTicks);
  const long long nanoseconds = Times(m_iTicks, iNS_PER_TICK);
  switch (units) {
    case NanoSeconds:
      return static_cast<double>(nanoseconds);
    case MicroSeconds:
      return static_cast<double>(nanoseconds / Time::NSEC_PER_USEC);  // NOLINT(bugprone-integer-division)
    case MilliSeconds:
      return static_cast<double>(nanoseconds / Time::NSEC_PER_MSEC);  // NOLINT(bugprone-integer-division)
    case Seconds:
      return ticks / 1.0e7;
    case Minutes:
      return ticks / 6.0e8;
    case Hours:
      return ticks / 3.6e10;
    case Days:
      return ticks / 8.64e11;
    case TimerTicks:
      return ticks;
  }
  OXA_RAISE_ERROR(g_pLOG_NAME, InvalidParameter(g_pUNITS, static_cast<int>(units)));
  return 0.0;
}

std::string Elapse::ToString() const {
  const bool negative = m_iTicks < 0;
  const auto magnitude =
      negative ? 0 - static_cast<unsigned long long>(m_iTicks) : static_cast<unsigned long long>(m_iTicks);
  const unsigned long long seconds = magnitude / iTICKS_PER_SECOND;
  const auto below = static_cast<unsigned int>(magnitude % iTICKS_PER_SECOND);
  char buffer[40];
  char* end = buffer;
  if (negative) *end++ = '-';
  end = PutHours(end, static_cast<unsigned int>(seconds / iSECONDS_PER_HOUR));
  end = PutDigits(end, static_cast<unsigned int>(seconds / 60 % 60), 2);
  *end++ = ':';
  end = PutDigits(end, static_cast<unsigned int>(seconds % 60), 2);
  *end++ = '.';
  end = PutDigits(end, below / 10000, 3);
  *end++ = '.';
  end = PutDigits(end, below / 10 % 1000, 3);
  *end++ = '.';
  end = PutDigits(end, below % 10 * 100, 3);
  return std::string(buffer, end);
}

bool Elapse::ParseString(const std::string& text) {
  std::string_view rest = WithoutOuterSpace(std::string_view(text));
  if (!rest.empty() && rest.front() == '-') rest.remove_prefix(1);
  std::string_view clock[3];
  const std::size_t clockParts = SplitFields(rest, ':', clock);
  std::string_view fraction[4];
  const std::size_t parts = SplitFields(clock[clockParts < 3 ? clockParts - 1 : 2], '.', fraction);

  long long fields[4] = {};  // seconds, milliseconds, microseconds, nanoseconds
  for (std::size_t i = 0; parts <= 4 && i < parts; ++i) fields[i] = ReadField(fraction[i]);
  const bool hasHours = clockParts == 3;
  const bool hasMinutes = hasHours || clockParts == 2;
  const long long hours = hasHours ? ReadField(clock[0]) : 0;
  const long long minutes = hasMinutes ? ReadField(clock[hasHours ? 1 : 0]) : 0;
  m_iTicks = TicksFromClock(hours, minutes, fields[0], (fields[1] * 1000 + fields[2]) * 1000 + fields[3]);
  return true;
}

namespace {

// Without leading zeros, and with limits that count only when they are passed.
void PutClock(std::ostream& out, long long seconds) {
  if (seconds > iSECONDS_PER_DAY) {
    out << seconds / iSECONDS_PER_DAY << ':';
    seconds %= iSECONDS_PER_DAY;
  }
  if (seconds > iSECONDS_PER_HOUR) {
    out << seconds / iSECONDS_PER_HOUR << ':';
    seconds %= iSECONDS_PER_HOUR;
  }
  out << seconds / 60 << ':' << seconds % 60;
}

void PutBelowASecond(std::ostream& out, double nanoseconds) {
  if (nanoseconds > 1e6) {
    out << nanoseconds / 1e6 << " milliseconds";
  } else if (nanoseconds > 1000) {
    out << nanoseconds / 1000 << " microseconds";
  } else {
    out << nanoseconds << " nanoseconds";
  }
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Elapse& elapse) {
  const long long ticks = elapse.GetRawTimerTicks();
  if (ticks < iTICKS_PER_SECOND) {
    PutBelowASecond(out, elapse.GetElapsed(Elapse::NanoSeconds));
  } else if (ticks < iTICKS_PER_MINUTE) {
    out << elapse.GetElapsed(Elapse::Seconds) << " seconds";
  } else if (ticks == iTICKS_PER_DAY) {
    out << "1440:0";  // a day that is no minute longer is told in minutes
  } else {
    PutClock(out, ticks / iTICKS_PER_SECOND);
  }
  return out;
}

}  // namespace Oxa::Core
