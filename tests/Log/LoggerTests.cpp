// The logger by itself: names, filter words, assignment.
#include <Infrastructure/OxaCore/Log.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

using namespace Oxa::Core;

class PlainLogger : public Logger {
 public:
  explicit PlainLogger(const std::string& path) : Logger(path) {}
  using Logger::operator=;
};

class OtherLogger : public IOxaLogger {
 public:
  std::string GetPath() const override { return "Some.Path"; }
  std::string GetName() const override { return "A name of its own"; }
  unsigned int GetSeverityFilters() const override { return 8; }
  void SetSeverityFilters(unsigned int) override {}
};

struct NamedPath {
  const char* m_sPath;
  const char* m_sName;
};

class LoggerNames : public testing::TestWithParam<NamedPath> {};

TEST_P(LoggerNames, AreWhatStandsBehindTheLastDot) {
  const PlainLogger logger(GetParam().m_sPath);
  EXPECT_EQ(GetParam().m_sPath, logger.GetPath());
  EXPECT_EQ(GetParam().m_sName, logger.GetName());
}

INSTANTIATE_TEST_SUITE_P(OfPaths, LoggerNames,
                         testing::Values(NamedPath{"Oxa.Core.Mutex", "Mutex"}, NamedPath{"Alone", "Alone"},
                                         NamedPath{"", ""}, NamedPath{".", ""}, NamedPath{"A.", ""},
                                         NamedPath{".A", "A"}, NamedPath{"A..B", "B"}));

struct SeverityRow {
  OxaLogSeverityEnum m_eSeverity;
  int m_iValue;
  bool m_bInDefault;
};

class Severities : public testing::TestWithParam<SeverityRow> {};

TEST_P(Severities, HaveTheirNumberAndTheirBit) {
  const SeverityRow& row = GetParam();
  EXPECT_EQ(row.m_iValue, static_cast<int>(row.m_eSeverity));
  PlainLogger logger("A");
  EXPECT_EQ(row.m_bInDefault, logger.IsEnabledFor(row.m_eSeverity));
  logger.SetSeverityFilters(1U << row.m_iValue);
  for (int other = 1; other <= 6; ++other)
    EXPECT_EQ(other == row.m_iValue, logger.IsEnabledFor(static_cast<OxaLogSeverityEnum>(other))) << other;
  logger.SetSeverityFilters(~(1U << row.m_iValue));
  EXPECT_FALSE(logger.IsEnabledFor(row.m_eSeverity));
}

INSTANTIATE_TEST_SUITE_P(All, Severities,
                         testing::Values(SeverityRow{eLOG_ALARM, 1, true}, SeverityRow{eLOG_ERROR, 2, true},
                                         SeverityRow{eLOG_WARNING, 3, true},
                                         SeverityRow{eLOG_DEBUG, 4, false},
                                         SeverityRow{eLOG_INFORMATIONAL, 5, true},
                                         SeverityRow{eLOG_VERBOSE, 6, false}));

TEST(Logger, StartsWithTheDefaultFilter) {
  EXPECT_EQ(46U, uDEFAULT_LOG_FILTERS);
  EXPECT_EQ(46U, PlainLogger("A.B").GetSeverityFilters());
}

TEST(Logger, PassesNoSeverityThatTheWordHasNoBitFor) {
  PlainLogger logger("A");
  logger.SetSeverityFilters(~0U);
  EXPECT_TRUE(logger.IsEnabledFor(static_cast<OxaLogSeverityEnum>(0)));
  EXPECT_TRUE(logger.IsEnabledFor(static_cast<OxaLogSeverityEnum>(31)));
  EXPECT_FALSE(logger.IsEnabledFor(static_cast<OxaLogSeverityEnum>(32)));
  EXPECT_FALSE(logger.IsEnabledFor(static_cast<OxaLogSeverityEnum>(-1)));
}

TEST(Logger, TakesOverAllOfAnotherLogger) {
  PlainLogger source("Source.Of.All");
  source.SetSeverityFilters(2);
  PlainLogger target("Target");
  Logger& assigned = (target = static_cast<const Logger&>(source));
  EXPECT_EQ(&target, &assigned);
  EXPECT_EQ("Source.Of.All", target.GetPath());
  EXPECT_EQ("All", target.GetName());
  EXPECT_EQ(2U, target.GetSeverityFilters());
  source.SetSeverityFilters(4);
  EXPECT_EQ(2U, target.GetSeverityFilters());
}

TEST(Logger, TakesOverWhatAnyLoggerTells) {
  PlainLogger target("Target");
  target = OtherLogger();
  EXPECT_EQ("Some.Path", target.GetPath());
  EXPECT_EQ("A name of its own", target.GetName());
  EXPECT_EQ(8U, target.GetSeverityFilters());
}

TEST(Logger, SurvivesItsOwnAssignment) {
  PlainLogger logger("A.B");
  const Logger& same = logger;
  logger = same;
  EXPECT_EQ("A.B", logger.GetPath());
  EXPECT_EQ("B", logger.GetName());
}

// Hosts get loggers from the manager, and only there.
static_assert(!std::is_constructible_v<Logger, const std::string&>);
static_assert(!std::is_copy_constructible_v<Logger>);
static_assert(std::is_copy_assignable_v<Logger>);
static_assert(std::is_assignable_v<Logger&, const IOxaLogger&>);

TEST(InvalidLogPath, NamesThePath) {
  InvalidLogPath error("A..B");
  EXPECT_STREQ("Invalid log path: A..B", error.what());
  EXPECT_EQ("Logic", error.GetData(AlertInfo::sCATEGORY));
  EXPECT_EQ(AlertInfo::eERROR, error.GetSeverity());
}

}  // namespace
