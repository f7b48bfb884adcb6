#include "LogOpening.h"

#include <Infrastructure/OxaCore/LogManager.h>
#include <gtest/gtest.h>

namespace {

using Oxa::Core::eLOG_ALARM;
using Oxa::Core::eLOG_DEBUG;
using Oxa::Core::eLOG_ERROR;
using Oxa::Core::eLOG_INFORMATIONAL;
using Oxa::Core::eLOG_VERBOSE;
using Oxa::Core::eLOG_WARNING;
using Oxa::Core::LogManager;
using Oxa::Core::OxaLogSeverityEnum;
using Station::LogOpening;
using Station::OpenLog;
using Station::Plan;
using Station::ReadLogOpening;
using Station::ReadPlan;

std::string Mistake(const std::string& text) {
  LogOpening ignored;
  return ReadLogOpening(text, ignored);
}

TEST(LogOpening, KnowsSixLevels) {
  const struct {
    const char* m_pWord;
    OxaLogSeverityEnum m_eLevel;
  } levels[] = {{"Alarm", eLOG_ALARM},
                {"Error", eLOG_ERROR},
                {"Warning", eLOG_WARNING},
                {"Debug", eLOG_DEBUG},
                {"Informational", eLOG_INFORMATIONAL},
                {"Verbose", eLOG_VERBOSE}};
  for (const auto& level : levels) {
    LogOpening opening;
    EXPECT_EQ("", ReadLogOpening(std::string("Station.Clock=") + level.m_pWord, opening));
    EXPECT_EQ("Station.Clock", opening.m_sPath);
    EXPECT_EQ(level.m_eLevel, opening.m_eLevel);
  }
}

TEST(LogOpening, DividesAtTheLastEqualsSign) {
  LogOpening opening;
  EXPECT_EQ("", ReadLogOpening("a=b=Debug", opening));
  EXPECT_EQ("a=b", opening.m_sPath);
}

TEST(LogOpening, NeedsALevel) {
  EXPECT_EQ("\"Station.Clock\" has no level: PATH=LEVEL is wanted, as in Station.Clock=Debug",
            Mistake("Station.Clock"));
  EXPECT_EQ("\"\" has no level: PATH=LEVEL is wanted, as in Station.Clock=Debug", Mistake(""));
}

TEST(LogOpening, NeedsALevelThatIsKnown) {
  const std::string reason =
      " is no level: Alarm, Error, Warning, Debug, Informational and Verbose are known";
  EXPECT_EQ("\"debug\"" + reason, Mistake("Station=debug"));
  EXPECT_EQ("\"Debug \"" + reason, Mistake("Station=Debug "));
  EXPECT_EQ("\"4\"" + reason, Mistake("Station=4"));
  EXPECT_EQ("\"\"" + reason, Mistake("Station="));
  EXPECT_EQ("\"\\x1B[2J\"" + reason, Mistake("Station=\x1B[2J"));
}

TEST(LogOpening, NeedsAPath) {
  const std::string reason = " is no path of a logger: names with single dots between them make one";
  for (const char* const path : {"", ".", "a..b", ".a", "a.", "..", "a.b..c"}) {
    EXPECT_EQ('"' + std::string(path) + '"' + reason, Mistake(std::string(path) + "=Debug"));
  }
}

bool Passes(const std::string& path, OxaLogSeverityEnum severity) {
  return LogManager::Instance()->GetLogger(path)->IsEnabledFor(severity);
}

TEST(LogOpening, OpensALevelAtItsPathOnly) {
  OpenLog({{"Station.Clock", eLOG_DEBUG}}, Plan());
  EXPECT_TRUE(Passes("Station.Clock", eLOG_DEBUG));
  EXPECT_TRUE(Passes("Station.Clock", eLOG_INFORMATIONAL));
  EXPECT_FALSE(Passes("Station.Clock", eLOG_VERBOSE));
  EXPECT_FALSE(Passes("Station.Plan", eLOG_DEBUG));
  EXPECT_FALSE(Passes("Station.Clock.Below", eLOG_DEBUG));
  EXPECT_FALSE(Passes("Other", eLOG_DEBUG));
}

TEST(LogOpening, OpensWhatTheStationHasBelowThePath) {
  OpenLog({{"Station", eLOG_VERBOSE}}, ReadPlan("p", "a 1s 1 0s\nb 1s 1 0s"));
  for (const char* const path : {"Station", "Station.Clock", "Station.Plan", "Station.Series.a"}) {
    EXPECT_TRUE(Passes(path, eLOG_VERBOSE)) << path;
    EXPECT_FALSE(Passes(path, eLOG_DEBUG)) << path;
  }
  EXPECT_FALSE(Passes("Stations", eLOG_VERBOSE));
}

TEST(LogOpening, OpensAllSeriesOrOne) {
  const Plan plan = ReadPlan("p", "a 1s 1 0s\nab 1s 1 0s");
  OpenLog({{"Station.Series.a", eLOG_DEBUG}, {"Station.Series", eLOG_VERBOSE}}, plan);
  EXPECT_TRUE(Passes("Station.Series.a", eLOG_DEBUG));
  EXPECT_TRUE(Passes("Station.Series.a", eLOG_VERBOSE));
  EXPECT_FALSE(Passes("Station.Series.ab", eLOG_DEBUG));
  EXPECT_TRUE(Passes("Station.Series.ab", eLOG_VERBOSE));
  EXPECT_FALSE(Passes("Station.Clock", eLOG_VERBOSE));
}

TEST(LogOpening, OpensLoggersThatAreNotOfTheStation) {
  OpenLog({{"Oxa.Core.Some.Where", eLOG_DEBUG}}, Plan());
  EXPECT_TRUE(Passes("Oxa.Core.Some.Where", eLOG_DEBUG));
  EXPECT_FALSE(Passes("Oxa.Core.Some.Other", eLOG_DEBUG));
}

}  // namespace
