#include "Plan.h"

#include <Infrastructure/OxaCore/AlertListener.h>
#include <Infrastructure/OxaCore/AlertManager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

TEST(Plan, KnowsFourUnits) {
  EXPECT_EQ(Elapse(700, Elapse::NanoSeconds), Only("a 700ns 1 1s").m_interval);
  EXPECT_EQ(Elapse(7, Elapse::MicroSeconds), Only("a 7us 1 1s").m_interval);
  EXPECT_EQ(Elapse(7, Elapse::MilliSeconds), Only("a 7ms 1 1s").m_interval);
  EXPECT_EQ(Elapse(7, Elapse::Seconds), Only("a 7s 1 1s").m_interval);
}

TEST(Plan, AcceptsTheBoundsOfEveryField) {
  EXPECT_EQ(Elapse(100, Elapse::NanoSeconds), Only("a 1ns 1 0ns").m_interval);
  EXPECT_EQ(Elapse(10), Only("a 10s 1 0s").m_interval);
  EXPECT_EQ(1U, Only("a 1s 1 0s").m_ulCount);
  EXPECT_EQ(1000000U, Only("a 1s 1000000 0s").m_ulCount);
  EXPECT_EQ(Elapse(0), Only("a 1s 1 0ms").m_tolerance);
  EXPECT_EQ(Elapse(9223372036), Only("a 1s 1 9223372036s").m_tolerance);
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
    {"a 1s 1 0s more and more", "fifth field = \"more\" (a line holds name, interval, count and tolerance)"},
    {"a/b 1s 1 0s", "name = \"a/b\" (only letters, digits, '-', '_' and '.' make a name, 20 at most)"},
    {"\xC3\xA9t\xC3\xA9 1s 1 0s",
     "name = \"\\xC3\\xA9t\\xC3\\xA9\" (only letters, digits, '-', '_' and '.' make a name, 20 at most)"},
    {"abcdefghijklmnopqrstu 1s 1 0s",
     "name = \"abcdefghijklmnopqrstu\" (only letters, digits, '-', '_' and '.' make a name, 20 at most)"},
    {"a soon 1 0s", "interval = \"soon\" (a whole number is wanted)"},
    {"a ms 1 0s", "interval = \"ms\" (a whole number is wanted)"},
    {"a +1ms 1 0s", "interval = \"+1ms\" (a whole number is wanted)"},
    {"a 1.5ms 1 0s", "interval = \"1.5ms\" (a whole number is wanted)"},
    {"a 1,5ms 1 0s", "interval = \"1,5ms\" (a whole number is wanted)"},
    {"a -1ms 1 0s", "interval = \"-1ms\" (it can't be negative)"},
    {"a 5 1 0s", "interval = \"5\" (a unit is wanted: ns, us, ms or s)"},
    {"a 5min 1 0s", "interval = \"5min\" (the unit is unknown; ns, us, ms and s are known)"},
    {"a 5S 1 0s", "interval = \"5S\" (the unit is unknown; ns, us, ms and s are known)"},
    {"a 5\xB5s 1 0s", "interval = \"5\\xB5s\" (the unit is unknown; ns, us, ms and s are known)"},
    {std::string("a 5\0s 1 0s", 10),
     "interval = \"5\\x00s\" (the unit is unknown; ns, us, ms and s are known)"},
    {"a 0us 1 0s", "interval = \"0us\" (more than 0 and at most 10s is wanted)"},
    {"a 11s 1 0s", "interval = \"11s\" (more than 0 and at most 10s is wanted)"},
    {"a 10000000001ns 1 0s", "interval = \"10000000001ns\" (more than 0 and at most 10s is wanted)"},
    {"a 9223372037s 1 0s", "interval = \"9223372037s\" (the number is too large)"},
    {"a 99999999999999999999ns 1 0s", "interval = \"99999999999999999999ns\" (the number is too large)"},
    {"a 1s many 0s", "count = \"many\" (a whole number is wanted)"},
    {"a 1s 5x 0s", "count = \"5x\" (a whole number is wanted)"},
    {"a 1s 0x10 0s", "count = \"0x10\" (a whole number is wanted)"},
    {"a 1s 2.5 0s", "count = \"2.5\" (a whole number is wanted)"},
    {"a 1s -3 0s", "count = \"-3\" (it can't be negative)"},
    {"a 1s 0 0s", "count = \"0\" (1 to 1000000 is wanted)"},
    {"a 1s 1000001 0s", "count = \"1000001\" (1 to 1000000 is wanted)"},
    {"a 1s 9223372036854775808 0s", "count = \"9223372036854775808\" (the number is too large)"},
    {"a 1s 1 0", "tolerance = \"0\" (a unit is wanted: ns, us, ms or s)"},
    {"a 1s 1 -5us", "tolerance = \"-5us\" (it can't be negative)"},
    {"a 1s 1 9223372036855ms", "tolerance = \"9223372036855ms\" (the number is too large)"},
    {"a 1s 1 lots", "tolerance = \"lots\" (a whole number is wanted)"},
    {"a 1s 1 5\x1B[31m", "tolerance = \"5\\x1B[31m\" (the unit is unknown; ns, us, ms and s are known)"}};

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
  void ErrorRaised(Error& error) override { m_raised.push_back(error.what()); }
  void ErrorHandled(Error& error) override {
    m_handled.push_back(error.what());
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
              ElementsAre("Invalid Parameter: tolerance = \"x\\xB5\" (a whole number is wanted)"));
  EXPECT_EQ(witness.m_raised, witness.m_handled);
  ASSERT_EQ(4U, witness.m_places.size());
  EXPECT_EQ("Station::ReadTolerance", witness.m_places[1].Get(CodeContext::sFUNCTION));
  EXPECT_EQ("tolerance", witness.m_places[1].Get("PlanField"));
  EXPECT_EQ("Station::ReadLine", witness.m_places[2].Get(CodeContext::sFUNCTION));
  EXPECT_EQ("2", witness.m_places[2].Get("PlanLine"));
  EXPECT_EQ("\"a 1s 1 x\\xB5\"", witness.m_places[2].Get("PlanText"));
  EXPECT_EQ("the plan", witness.m_places[3].Get("Plan"));
}

TEST(Plan, OfTheProgramIsTheFileBesideItsSource) {
  EXPECT_EQ(StationTests::ReadFile(STATION_DEFAULT_PLAN), Station::DefaultPlan());
  EXPECT_STREQ("default.plan", Station::sDEFAULT_PLAN_NAME);
}

TEST(Plan, OfTheProgramShowsWhatItIsMeantToShow) {
  const Plan plan = ReadPlan(Station::sDEFAULT_PLAN_NAME, Station::DefaultPlan());
  EXPECT_LE(2U, plan.m_refusals.size());
  EXPECT_THAT(plan.m_refusals, testing::Contains(testing::HasSubstr("\"100\\xC2\\xB5s\"")));
  EXPECT_THAT(plan.m_series, testing::Contains(testing::Field(&Series::m_tolerance, Elapse(0))));
  Elapse length;
  for (const Series& series : plan.m_series) {
    for (unsigned long i = 0; i < series.m_ulCount; ++i) length += series.m_interval;
  }
  EXPECT_LE(length, Elapse(5));
}

}  // namespace
