#include "Plan.h"

#include <Infrastructure/OxaCore/AlertListener.h>
#include <Infrastructure/OxaCore/AlertManager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "TemporaryFolder.h"

namespace {

using Oxa::Core::AlertListener;
using Oxa::Core::AlertManager;
using Oxa::Core::CodeContext;
using Oxa::Core::Elapse;
using Oxa::Core::Error;
using Station::Plan;
using Station::ReadPlan;
using Station::Series;
using testing::ElementsAre;

Series Only(const std::string& line) {
  const Plan plan = ReadPlan("p", line);
  EXPECT_THAT(plan.m_refusals, testing::IsEmpty());
  EXPECT_EQ(1U, plan.m_series.size());
  return plan.m_series.empty() ? Series() : plan.m_series[0];
}

TEST(Plan, ReadsALine) {
  const Series series = Only("fast 1ms 500 250us");
  EXPECT_EQ("fast", series.m_sName);
  EXPECT_EQ(Elapse(1, Elapse::MilliSeconds), series.m_interval);
  EXPECT_EQ(500U, series.m_ulCount);
  EXPECT_EQ(Elapse(250, Elapse::MicroSeconds), series.m_tolerance);
  EXPECT_EQ(1U, series.m_ulLine);
}

struct Time {
  std::string m_sText;
  long long m_llTicks;
  std::string m_sUnit;
};

const Time aTIMES[] = {{"250us", 2500, "Microsecond"},
                       {"0.25 msec", 2500, "Millisecond"},
                       {"0.25msec", 2500, "Millisecond"},
                       {"250 usec", 2500, "Microsecond"},
                       {"250 \t MicroSeconds", 2500, "Microsecond"},
                       {"0.00001 Hour", 360000, "Hour"},
                       {"0.00001 Hour (2)", 360000, "Hour (2)"},
                       {"1e-5 hr.", 360000, "Hour (2)"},
                       {"2.5e+1 nanoseconds", 1, "Nanosecond"},
                       {"0.5s", 5000000, "Second"},
                       {"00.50 sec.", 5000000, "Second (2)"},
                       {"1.s", 10000000, "Second"},
                       {"3 min", 1800000000, "Minute"},
                       {"1 d.", 864000000000, "Day"},
                       {"2 weeks", 12096000000000, "Week (2)"},
                       {"2 Weeks", 12096000000000, "Week"},
                       {"0 Week", 0, "Week"},
                       {"1ns", 1, "Nanosecond"},
                       {"100ns", 1, "Nanosecond"},
                       {"101ns", 2, "Nanosecond"},
                       {"0.99ns", 0, "Nanosecond"},
                       {"9000000s", 90000000000000, "Second"}};

TEST(Plan, TakesTolerancesInAllUnitsOfTimes) {
  for (const Time& time : aTIMES) {
    const Series series = Only("a 1s 1 " + time.m_sText + "  # x");
    EXPECT_EQ(Elapse(time.m_llTicks, Elapse::TimerTicks), series.m_tolerance) << time.m_sText;
    EXPECT_EQ(time.m_sUnit, series.m_sUnit) << time.m_sText;
  }
}

TEST(Plan, TakesIntervalsInAllUnitsOfTimesWithoutBlanks) {
  EXPECT_EQ(Elapse(700, Elapse::NanoSeconds), Only("a 700ns 1 1s").m_interval);
  EXPECT_EQ(Elapse(7, Elapse::MicroSeconds), Only("a 7us 1 1s").m_interval);
  EXPECT_EQ(Elapse(7500, Elapse::MicroSeconds), Only("a 7.5Milliseconds 1 1s").m_interval);
  EXPECT_EQ(Elapse(6), Only("a 0.1min 1 1s").m_interval);
}

// The dictionary's own byte, the micro sign in UTF-8, and the Greek letter.
TEST(Plan, TakesTheMicroSignInAnyForm) {
  for (const char* const sign : {"\xB5", "\xC2\xB5", "\xCE\xBC"}) {
    for (const char* const rest : {"s", "sec"}) {
      const std::string text = std::string("250") + sign + rest;
      const Series series = Only("a " + text + " 1 " + text);
      EXPECT_EQ(Elapse(250, Elapse::MicroSeconds), series.m_interval);
      EXPECT_EQ(Elapse(250, Elapse::MicroSeconds), series.m_tolerance);
      EXPECT_EQ("Microsecond", series.m_sUnit);
    }
  }
}

TEST(Plan, MayBeginWithTheMarkOfUtf8) {
  const std::string mark = "\xEF\xBB\xBF";
  EXPECT_EQ("a", Only(mark + "a 1s 1 1s").m_sName);
  EXPECT_EQ("a", Only(mark + "# a comment\na 1s 1 1s").m_sName);
  EXPECT_EQ(1U, ReadPlan("p", mark + mark + "a 1s 1 1s").m_refusals.size());
}

TEST(Plan, AcceptsTheBoundsOfEveryField) {
  EXPECT_EQ(Elapse(100, Elapse::NanoSeconds), Only("a 1ns 1 0ns").m_interval);
  EXPECT_EQ(Elapse(10), Only("a 10s 1 0s").m_interval);
  EXPECT_EQ(1U, Only("a 1s 1 0s").m_ulCount);
  EXPECT_EQ(1000000U, Only("a 1s 1000000 0s").m_ulCount);
  EXPECT_EQ(Elapse(0), Only("a 1s 1 0ms").m_tolerance);
  EXPECT_LT(Elapse(8999999999), Only("a 1s 1 9000000000s").m_tolerance);
  EXPECT_EQ("AZaz09-_.AZaz09-_.AZ", Only("AZaz09-_.AZaz09-_.AZ 1s 1 0s").m_sName);
}

TEST(Plan, SkipsBlankLinesAndComments) {
  const Plan plan = ReadPlan("p", "\n  \t \n# one\n   # two\n\r\na 1s 1 0s # three\r\n#");
  EXPECT_THAT(plan.m_refusals, ElementsAre());
  ASSERT_EQ(1U, plan.m_series.size());
  EXPECT_EQ(6U, plan.m_series[0].m_ulLine);
}

TEST(Plan, SplitsAtBlanksAndTabs) {
  const Series series = Only("\t a  1s\t\t1 0s  \t\r");
  EXPECT_EQ("a", series.m_sName);
  EXPECT_EQ(Elapse(0), series.m_tolerance);
}

TEST(Plan, OfNothingIsEmpty) {
  EXPECT_TRUE(ReadPlan("p", "").m_series.empty());
  EXPECT_TRUE(ReadPlan("p", "").m_refusals.empty());
}

struct Refusal {
  std::string m_sLine;
  std::string m_sMessage;
};

const Refusal aREFUSALS[] = {
    {"a", "interval = {Not Provided}"},
    {"a 1s", "count = {Not Provided}"},
    {"a 1s 1", "tolerance = {Not Provided}"},
    {"a 1s 1 # 0s", "tolerance = {Not Provided}"},
    {"a 1s 1 0s more  and more ",
     "tolerance = \"0s more  and more\" (no unit is called \"s more  and more\")"},
    {"a/b 1s 1 0s", "name = \"a/b\" (only letters, digits, '-', '_' and '.' make a name, 20 at most)"},
    {"\xC3\xA9t\xC3\xA9 1s 1 0s",
     "name = \"\\xE9t\\xE9\" (only letters, digits, '-', '_' and '.' make a name, 20 at most)"},
    {"abcdefghijklmnopqrstu 1s 1 0s",
     "name = \"abcdefghijklmnopqrstu\" (only letters, digits, '-', '_' and '.' make a name, 20 at most)"},
    {"a soon 1 0s", "interval = \"soon\" (a number is wanted)"},
    {"a ms 1 0s", "interval = \"ms\" (a number is wanted)"},
    {"a +1ms 1 0s", "interval = \"+1ms\" (a number is wanted)"},
    {"a .5ms 1 0s", "interval = \".5ms\" (a number is wanted)"},
    {"a inf 1 0s", "interval = \"inf\" (a number is wanted)"},
    {"a 1,5ms 1 0s", "interval = \"1,5ms\" (a number is wanted)"},
    {"a 1.5.5ms 1 0s", "interval = \"1.5.5ms\" (no unit is called \".5ms\")"},
    {"a 0x10ms 1 0s", "interval = \"0x10ms\" (no unit is called \"x10ms\")"},
    {"a -1ms 1 0s", "interval = \"-1ms\" (it can't be negative)"},
    {"a 5 1 0s", "interval = \"5\" (a unit is wanted, as in 250us)"},
    {"a 5min 1 0s", "interval = \"5min\" (more than 0 and at most 10s is wanted)"},
    {"a 5S 1 0s", "interval = \"5S\" (Siemens is no unit of times)"},
    {"a 5\xC3\xA9s 1 0s", "interval = \"5\\xE9s\" (no unit is called \"\\xE9s\")"},
    {std::string("a 5\0s 1 0s", 10), "interval = \"5\\x00s\" (no unit is called \"\\x00s\")"},
    {"a 0us 1 0s", "interval = \"0us\" (more than 0 and at most 10s is wanted)"},
    {"a 0.5ns 1 0s", "interval = \"0.5ns\" (more than 0 and at most 10s is wanted)"},
    {"a 11s 1 0s", "interval = \"11s\" (more than 0 and at most 10s is wanted)"},
    {"a 10000000001ns 1 0s", "interval = \"10000000001ns\" (more than 0 and at most 10s is wanted)"},
    {"a 9000000001s 1 0s", "interval = \"9000000001s\" (it is longer than 9000000000 seconds)"},
    {"a 99999999999999999999ns 1 0s",
     "interval = \"99999999999999999999ns\" (it is longer than 9000000000 seconds)"},
    {"a 1e308weeks 1 0s", "interval = \"1e308weeks\" (it is longer than 9000000000 seconds)"},
    {"a 1e309s 1 0s", "interval = \"1e309s\" (the number is out of range)"},
    {"a 1e-999s 1 0s", "interval = \"1e-999s\" (the number is out of range)"},
    {"a 1s many 0s", "count = \"many\" (a whole number is wanted)"},
    {"a 1s 5x 0s", "count = \"5x\" (a whole number is wanted)"},
    {"a 1s 0x10 0s", "count = \"0x10\" (a whole number is wanted)"},
    {"a 1s 2.5 0s", "count = \"2.5\" (a whole number is wanted)"},
    {"a 1s -3 0s", "count = \"-3\" (it can't be negative)"},
    {"a 1s 0 0s", "count = \"0\" (1 to 1000000 is wanted)"},
    {"a 1s 1000001 0s", "count = \"1000001\" (1 to 1000000 is wanted)"},
    {"a 1s 9223372036854775808 0s", "count = \"9223372036854775808\" (the number is too large)"},
    {"a 1s 1 0", "tolerance = \"0\" (a unit is wanted, as in 250us)"},
    {"a 1s 1 -5us", "tolerance = \"-5us\" (it can't be negative)"},
    {"a 1s 1 lots", "tolerance = \"lots\" (a number is wanted)"},
    {"a 1s 1 5\x1B[31m", "tolerance = \"5\\x1B[31m\" (no unit is called \"\\x1B[31m\")"},
    {"a 1s 1 5 furlongs", "tolerance = \"5 furlongs\" (no unit is called \"furlongs\")"},
    {"a 1s 1 5 SECOND", "tolerance = \"5 SECOND\" (no unit is called \"SECOND\")"},
    {"a 1s 1 5 m", "tolerance = \"5 m\" (several units are called \"m\"; the one for times is Minute)"},
    {"a 1s 1 5 C", "tolerance = \"5 C\" (several units are called \"C\")"},
    {"a 1s 1 5 Meter", "tolerance = \"5 Meter\" (Meter is no unit of times)"},
    {"a 1s 1 5 kg", "tolerance = \"5 kg\" (Kilogram is no unit of times)"},
    {"a 1s 1 5 Hz", "tolerance = \"5 Hz\" (Hertz is no unit of times)"},
    {"a 1s 1 5 Celsius", "tolerance = \"5 Celsius\" (Celsius is no unit of times)"},
    {"a 1s 1 5 Unitless", "tolerance = \"5 Unitless\" (Unitless is no unit of times)"}};

TEST(Plan, RefusesEveryBadFormAndReadsOn) {
  for (const Refusal& refusal : aREFUSALS) {
    const Plan plan = ReadPlan("p", "# first\n" + refusal.m_sLine + "\nnext 1ms 2 3ms\n");
    EXPECT_THAT(plan.m_refusals, ElementsAre("p:2: Invalid Parameter: " + refusal.m_sMessage));
    ASSERT_EQ(1U, plan.m_series.size()) << refusal.m_sLine;
    EXPECT_EQ("next", plan.m_series[0].m_sName);
  }
}

TEST(Plan, RefusesANameThatIsTaken) {
  const Plan plan = ReadPlan("p", "a 1s 1 0s\nb 1s 1 0s\na 2s 2 2s\nA 1s 1 0s");
  EXPECT_THAT(plan.m_refusals, ElementsAre("p:3: Invalid Parameter: name = \"a\" (line 1 has it)"));
  EXPECT_EQ(3U, plan.m_series.size());
}

TEST(Plan, HoldsUpTo16Series) {
  std::string text;
  for (int i = 0; i < 18; ++i) text += 's' + std::to_string(i) + " 1s 1 0s\n";
  const Plan plan = ReadPlan("p", text);
  EXPECT_EQ(16U, plan.m_series.size());
  EXPECT_THAT(plan.m_refusals,
              ElementsAre("p:17: Invalid Parameter: name = \"s16\" (a plan holds 16 series at most)",
                          "p:18: Invalid Parameter: name = \"s17\" (a plan holds 16 series at most)"));
}

TEST(Plan, MayReuseTheNameOfARefusedLine) {
  const Plan plan = ReadPlan("p", "a 1s 0 0s\na 1s 1 0s");
  EXPECT_EQ(1U, plan.m_refusals.size());
  EXPECT_EQ(1U, plan.m_series.size());
}

TEST(Plan, RefusesEveryBadLineOfMany) {
  const Plan plan = ReadPlan("p", "a\nb 1s 1 0s\nc 1s\n\nd 1s x 0s");
  EXPECT_THAT(plan.m_refusals,
              ElementsAre("p:1: Invalid Parameter: interval = {Not Provided}",
                          "p:3: Invalid Parameter: count = {Not Provided}",
                          "p:5: Invalid Parameter: count = \"x\" (a whole number is wanted)"));
  EXPECT_EQ(1U, plan.m_series.size());
}

TEST(Plan, ShowsItsOwnNameInPrintableAscii) {
  EXPECT_THAT(ReadPlan("\xB5\n.plan", "a").m_refusals,
              ElementsAre("\\xB5\\x0A.plan:1: Invalid Parameter: interval = {Not Provided}"));
}

// Keeps what is known of each error when it has been survived.
class Witness : public AlertListener {
 public:
  Witness() { AlertManager::Instance()->AddAlertListener(*this); }
  ~Witness() override { AlertManager::Instance()->RemoveAlertListener(*this); }
  void ErrorRaised(Error& error) override { m_raised.emplace_back(error.what()); }
  void ErrorHandled(Error& error) override {
    m_handled.emplace_back(error.what());
    m_places = *error.GetUnwindStack();
  }

  std::vector<std::string> m_raised;
  std::vector<std::string> m_handled;
  std::vector<CodeContext> m_places;
};

TEST(Plan, ForwardsAMistakeFromFieldToLineToPlan) {
  Witness witness;
  ReadPlan("the plan", "\na 1s 1 x\xB5");
  EXPECT_THAT(witness.m_raised,
              ElementsAre("Invalid Parameter: tolerance = \"x\\xB5\" (a number is wanted)"));
  EXPECT_EQ(witness.m_raised, witness.m_handled);
  ASSERT_EQ(4U, witness.m_places.size());
  EXPECT_EQ("Station::ReadTolerance", witness.m_places[1].Get(CodeContext::sFUNCTION));
  EXPECT_EQ("tolerance", witness.m_places[1].Get("PlanField"));
  EXPECT_EQ("Station::ReadLine", witness.m_places[2].Get(CodeContext::sFUNCTION));
  EXPECT_EQ("2", witness.m_places[2].Get("PlanLine"));
  EXPECT_EQ("\"a 1s 1 x\\xB5\"", witness.m_places[2].Get("PlanText"));
  EXPECT_EQ("the plan", witness.m_places[3].Get("Plan"));
}

// The dictionary raises that a name is ambiguous, and the plan that it can't use it; both are survived.
TEST(Plan, SurvivesAlsoWhatTheDictionaryRaises) {
  Witness witness;
  ReadPlan("p", "a 1s 1 5 m\nb 1s 1 5 furlongs\nc 1s 1 5 Meter");
  EXPECT_THAT(witness.m_raised,
              ElementsAre("Found multiple units with alternate name of \"m\"\n"
                          "No UnitDescriptor provided to differentiate them.",
                          testing::HasSubstr("several units"), testing::HasSubstr("no unit is called"),
                          testing::HasSubstr("no unit of times")));
  EXPECT_EQ(witness.m_raised, witness.m_handled);
}

TEST(Plan, OfTheProgramIsTheFileBesideItsSource) {
  EXPECT_EQ(StationTests::ReadFile(STATION_PLANS "/default.plan"), Station::DefaultPlan());
  EXPECT_EQ(StationTests::ReadFile(STATION_PLANS "/test.plan"), Station::TestPlan());
  EXPECT_STREQ("default.plan", Station::sDEFAULT_PLAN_NAME);
  EXPECT_STREQ("test.plan", Station::sTEST_PLAN_NAME);
}

Elapse LengthOf(const Plan& plan) {
  Elapse longest;
  for (const Series& series : plan.m_series) {
    Elapse length;
    for (unsigned long i = 0; i < series.m_ulCount; ++i) length += series.m_interval;
    longest = std::max(longest, length);
  }
  return longest;
}

TEST(Plan, ForTestsCanBePassed) {
  const Plan plan = ReadPlan(Station::sTEST_PLAN_NAME, Station::TestPlan());
  EXPECT_THAT(plan.m_refusals, testing::IsEmpty());
  EXPECT_LE(2U, plan.m_series.size());
  for (const Series& series : plan.m_series) EXPECT_LE(Elapse(20, Elapse::MilliSeconds), series.m_tolerance);
  EXPECT_LE(LengthOf(plan), Elapse(1));
}

TEST(Plan, OfTheProgramShowsWhatItIsMeantToShow) {
  const Plan plan = ReadPlan(Station::sDEFAULT_PLAN_NAME, Station::DefaultPlan());
  for (const char* const refusal : {"\"5 furlongs\"", "\"5 m\"", "\"5 Meter\"", "\"many\"", "count = {Not"})
    EXPECT_THAT(plan.m_refusals, testing::Contains(testing::HasSubstr(refusal)));
  EXPECT_THAT(plan.m_series, testing::Contains(testing::Field(&Series::m_tolerance, Elapse(0))));
  EXPECT_LE(LengthOf(plan), Elapse(5));
}

}  // namespace
