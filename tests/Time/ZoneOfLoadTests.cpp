// Two zones: the one that the library found when it was loaded, and the one of the moment.
#include <Infrastructure/OxaCore/Time.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <sstream>
#include <string>

#include "Support/ChildProcess.h"

namespace {

using namespace Oxa::Core;
using TestSupport::RunChild;

struct Dates {
  long long m_iDate = 0;
  long long m_iEpoch = 0;
  long long m_i1970 = 0;
  std::string m_sError;
};

// What a process that starts in a zone makes of three local dates.
Dates InZone(const std::string& tz) {
  const auto result = RunChild({TIME_HOST, "date"}, {tz});
  Dates dates;
  std::istringstream(result.m_sOutput) >> dates.m_iDate >> dates.m_iEpoch >> dates.m_i1970;
  dates.m_sError = result.m_sError;
  EXPECT_EQ(0, result.m_iStatus);
  return dates;
}

constexpr long long iHOUR = 36000000000;
constexpr long long iDATE = 125483131971230000;  // 1998/08/23 02:33:17.123 UTC
constexpr long long i1970 = 116444736000000000;

void ExpectHoursBehind(double hoursIn1998, double hoursIn1970, const std::string& tz) {
  const Dates dates = InZone(tz);
  EXPECT_EQ(iDATE + static_cast<long long>(hoursIn1998 * iHOUR), dates.m_iDate) << tz;
  EXPECT_EQ(i1970 + static_cast<long long>(hoursIn1970 * iHOUR), dates.m_i1970) << tz;
  EXPECT_EQ("", dates.m_sError);
}

TEST(ZoneOfLoad, LocalDatesGoByTheZone) {
  ExpectHoursBehind(0, 0, "TZ=UTC");
  ExpectHoursBehind(0, 0, "TZ=");
  ExpectHoursBehind(4, 5, "TZ=America/New_York");
  ExpectHoursBehind(-5.5, -5.5, "TZ=Asia/Kolkata");
  ExpectHoursBehind(-10.5, -10, "TZ=Australia/Lord_Howe");
  ExpectHoursBehind(-12, -13, "TZ=NZST-12NZDT,M9.5.0,M4.1.0/3");
  ExpectHoursBehind(3.5, 3.5, "TZ=<-0330>3:30");
}

TEST(ZoneOfLoad, TheEpochIsNegativeInTheEast) {
  EXPECT_EQ(0, InZone("TZ=UTC").m_iEpoch);
  EXPECT_EQ(-212080000000, InZone("TZ=Asia/Kolkata").m_iEpoch) << "local mean time";
  EXPECT_EQ(177620000000, InZone("TZ=America/New_York").m_iEpoch);
}

TEST(ZoneOfLoad, AnUnknownZoneIsAFailedAssertionAndUtc) {
  const Dates dates = InZone("TZ=No/Such");
  EXPECT_EQ(iDATE, dates.m_iDate);
  EXPECT_EQ(i1970, dates.m_i1970);
  EXPECT_NE(std::string::npos, dates.m_sError.find("): Failed Assertion(((DWORD)0xFFFFFFFF) != dwResult)\n"))
      << dates.m_sError;
}

TEST(ZoneOfLoad, UtcNeedsNoFile) {
  for (const char* tz : {"TZ=UTC", "TZ=GMT", "TZ=:UTC", "TZ=Etc/UTC", "TZ=UTC0"}) {
    const auto result = RunChild({TIME_HOST, "date"}, {tz, "TZDIR=/nonexistent"});
    EXPECT_EQ("125483131971230000 0 116444736000000000\ndone\n", result.m_sOutput) << tz;
    EXPECT_EQ("", result.m_sError) << tz;
  }
}

// Times of day more than a week before and behind their days put both changes of a year into another one.
TEST(ZoneOfLoad, NoRuleHoldsAProgramUp) {
  for (const char* tz : {"TZ=AAA0BBB,J1/-167,J2/-167", "TZ=AAA0BBB,J364/167,J365/167",
                         "TZ=AAA0BBB,J1/-167,J365/167", "TZ=AAA0BBB,J365/167,J1/-167"}) {
    const auto result = RunChild({TIME_HOST, "date"}, {tz}, std::chrono::seconds(30));
    EXPECT_EQ(0, result.m_iStatus) << tz;
    EXPECT_EQ("", result.m_sError) << tz;
  }
  EXPECT_EQ(i1970, InZone("TZ=AAA0BBB,J1/-167,J2/-167").m_i1970);
}

// The variable as it was before, once this is gone.
class KeptTz {
 public:
  KeptTz() : m_bWasSet(std::getenv("TZ") != nullptr), m_sBefore(m_bWasSet ? std::getenv("TZ") : "") {}
  KeptTz(const KeptTz&) = delete;
  KeptTz& operator=(const KeptTz&) = delete;
  ~KeptTz() { m_bWasSet ? ::setenv("TZ", m_sBefore.c_str(), 1) : ::unsetenv("TZ"); }

 private:
  bool m_bWasSet;
  std::string m_sBefore;
};

// A change behind the load moves what is read from a moment, not what a local date means.
TEST(ZoneOfLoad, OnlyTheWayToLocalTimeSeesAChange) {
  const KeptTz kept;
  const Time before(1, 15, 2024, Elapse(12, Elapse::Hours));
  ASSERT_EQ(0, ::setenv("TZ", "<+14>-14", 1));
  EXPECT_EQ(before, Time(1, 15, 2024, Elapse(12, Elapse::Hours)));
  const std::string east = before.ToString();
  ASSERT_EQ(0, ::setenv("TZ", "<-10>10", 1));
  const std::string west = before.ToString();
  EXPECT_NE(east, west);
  EXPECT_EQ(east.substr(11), west.substr(11)) << "a whole day apart";
  Time parsed;
  ASSERT_TRUE(parsed.ParseString("2024/01/15 12:00:00.000"));
  EXPECT_EQ(before, parsed);
}

}  // namespace
