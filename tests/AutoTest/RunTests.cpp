#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>

#include "AutoTest/Fakes.h"
#include "Support/VirtualSlots.h"

namespace {

using namespace AutoTestTests;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::SlotOf;

const auto Fail = [](const char* text) { OXA_RAISE_ERROR("Test.Probe", SelfTest::Failure(text)); };
const auto Raise = [](const char* variable) { OXA_RAISE_ERROR("Test.Probe", NullPointer(variable)); };

TEST(Result, TypesHaveTheirValues) {
  EXPECT_EQ(-3, Result::eDISABLED);
  EXPECT_EQ(-2, Result::eNO_RESULT);
  EXPECT_EQ(-1, Result::eERROR);
  EXPECT_EQ(0, Result::eFAILED);
  EXPECT_EQ(1, Result::ePASSED);
  EXPECT_EQ(2, Result::eSUITE);
  static_assert(std::is_signed_v<std::underlying_type_t<Result::EType>>);
}

TEST(Result, OfATextHasNoFailure) {
  const Result result("Lamp", Result::ePASSED, "bright");
  EXPECT_EQ("Lamp", result.GetTestName());
  EXPECT_EQ(Result::ePASSED, result.GetType());
  EXPECT_EQ("bright", result.GetText());
  EXPECT_FALSE(result.GetFailure());
}

TEST(Result, OfAnErrorKeepsACopyOfItsClass) {
  const NullPointer error("p_lamp");
  const Result result("Lamp", error);
  EXPECT_EQ(Result::eERROR, result.GetType());
  EXPECT_EQ("NULL pointer variable named p_lamp", result.GetText());
  ASSERT_TRUE(result.GetFailure());
  EXPECT_NE(&error, result.GetFailure().get());
  EXPECT_EQ(typeid(NullPointer), typeid(*result.GetFailure()));
}

TEST(Result, OfAFailureIsFailed) {
  const Result result("Lamp", SelfTest::Failure("dark"));
  EXPECT_EQ(Result::eFAILED, result.GetType());
  EXPECT_EQ("dark", result.GetText());
  ASSERT_TRUE(result.GetFailure());
  EXPECT_EQ(typeid(SelfTest::Failure), typeid(*result.GetFailure()));
}

TEST(Result, TypeThatTheErrorIsPassedAsDecides) {
  const SelfTest::Failure failure("dark");
  const Error& error = failure;
  EXPECT_EQ(Result::eERROR, Result("Lamp", error).GetType());
}

TEST(Result, CopiesAndAssignsAsAValue) {
  Result result("Lamp", SelfTest::Failure("dark"));
  const Result copy(result);
  EXPECT_EQ(result.GetFailure(), copy.GetFailure());
  result = Result("Door", Result::ePASSED, "shut");
  EXPECT_EQ("Door", result.GetTestName());
  EXPECT_FALSE(result.GetFailure());
  EXPECT_EQ("dark", copy.GetText());
}

class Uncloneable : public ErrorClass<Uncloneable, LogicError> {
 public:
  Uncloneable() : ErrorClass("can't be copied") {}
  boost::shared_ptr<Error> Clone() override { throw std::runtime_error("no clone"); }
};

TEST(Result, OfAnErrorThatCannotBeClonedKeepsItsText) {
  const Result result("Lamp", Uncloneable());
  EXPECT_EQ(Result::eERROR, result.GetType());
  EXPECT_EQ("can't be copied", result.GetText());
  EXPECT_FALSE(result.GetFailure());
}

TEST(Failure, IsALogicErrorWithItsText) {
  SelfTest::Failure failure("50 % of %1% are dark");
  EXPECT_EQ("50 % of %1% are dark", failure.GetData(AlertInfo::sMESSAGE));
  EXPECT_EQ("Logic", failure.GetData(AlertInfo::sCATEGORY));
  EXPECT_EQ(2, failure.GetSeverity());
  EXPECT_EQ(typeid(SelfTest::Failure), typeid(*failure.Clone()));
}

// What is protected can be named only by those who derive.
class SlotsOfTest : public SelfTest {
 public:
  static std::vector<std::size_t> All() {
    return {SlotOf(&SlotsOfTest::ReadConfig),  SlotOf(&SlotsOfTest::WriteConfig),
            SlotOf(&SlotsOfTest::HasSetupGUI), SlotOf(&SlotsOfTest::LaunchSetupGUI),
            SlotOf(&SlotsOfTest::Setup),       SlotOf(&SlotsOfTest::Execute),
            SlotOf(&SlotsOfTest::TearDown)};
  }
};

class SlotsOfRangeTest : public RangeTest {
 public:
  static std::size_t OfTheValue() { return SlotOf(&SlotsOfRangeTest::GetTestValue); }
};

class SlotsOfListener : public SelfTest::Listener {
 public:
  static std::vector<std::size_t> All() {
    return {SlotOf(&SlotsOfListener::CustomNotification), SlotOf(&SlotsOfListener::SettingUpTest),
            SlotOf(&SlotsOfListener::ExecutingTest), SlotOf(&SlotsOfListener::TestCompleted),
            SlotOf(&SlotsOfListener::TearingDownTest)};
  }
};

TEST(Run, VirtualOperationsStandInTheirOrder) {
  EXPECT_THAT(SlotsOfTest::All(), ElementsAre(2, 3, 4, 5, 6, 7, 8));
  EXPECT_EQ(9U, SlotsOfRangeTest::OfTheValue()) << "behind those of its base";
  EXPECT_THAT(SlotsOfListener::All(), ElementsAre(5, 6, 7, 8, 9)) << "behind those of its base";
}

TEST(Run, BaseHasNoSettingsAndNoDialog) {
  class Plain : public SelfTest {
   public:
    Plain() : SelfTest("Plain") {}

   protected:
    Result Execute() override { return Result(GetName(), Result::ePASSED, ""); }
  };
  Plain plain;
  plain.ReadConfig("anything");
  plain.WriteConfig("anything");
  EXPECT_FALSE(plain.HasSetupGUI());
  EXPECT_FALSE(plain.LaunchSetupGUI());
  EXPECT_TRUE(plain.IsEnabled());
  EXPECT_FALSE(plain.IsTestSuite());
  EXPECT_EQ("Plain", plain.GetName());
  EXPECT_EQ(Result::eNO_RESULT, plain.GetResult()) << "before it ran";
  EXPECT_EQ(Result::ePASSED, plain.RunTest());
}

TEST(Run, PassesWithTheResultOfExecute) {
  Probe probe;
  std::vector<Result> results;
  EXPECT_EQ(Result::ePASSED, probe.RunTest(results));
  EXPECT_THAT(Told(results), ElementsAre("1 Probe: done"));
  EXPECT_EQ(1, probe.m_iSetups);
  EXPECT_EQ(1, probe.m_iTearDowns);
}

TEST(Run, AppendsToTheResultsOfTheCaller) {
  Probe probe;
  std::vector<Result> results(1, Result("Before", Result::eFAILED, "x"));
  probe.RunTest(results);
  EXPECT_THAT(Told(results), ElementsAre("0 Before: x", "1 Probe: done"));
}

TEST(Run, ResultsAreThoseOfTheLastRun) {
  Probe probe;
  probe.RunTest();
  probe.m_execute = [] { return Result("Probe", Result::eFAILED, "dark"); };
  EXPECT_EQ(Result::eFAILED, probe.RunTest());
  EXPECT_THAT(ResultsOf(probe), ElementsAre("0 Probe: dark"));
  EXPECT_EQ(Result::eFAILED, probe.GetResult());
}

TEST(Run, ListenerHearsTheFourSteps) {
  Probe probe;
  Tape tape;
  probe.AddListener(tape);
  probe.RunTest();
  EXPECT_THAT(tape.m_heard, ElementsAre("setup Probe", "execute Probe", "completed Probe", "teardown Probe"));
}

TEST(Run, StepsComeBeforeWhatTheyAnnounceAndTheCompletionBehind) {
  Probe probe;
  Tape tape;
  tape.m_onStep = [&](const std::string& step) {
    EXPECT_EQ(step == "setup Probe" ? 0 : 1, probe.m_iSetups) << step;
    EXPECT_EQ(step == "setup Probe" || step == "execute Probe" ? 0 : 1, probe.m_iExecutes) << step;
    EXPECT_EQ(0, probe.m_iTearDowns) << step;
    EXPECT_EQ(step == "completed Probe" || step == "teardown Probe" ? Texts{"1 Probe: done"} : Texts(),
              ResultsOf(probe));
  };
  probe.AddListener(tape);
  probe.RunTest();
  EXPECT_EQ(4U, tape.m_heard.size());
  EXPECT_EQ(1, probe.m_iTearDowns);
}

TEST(Run, CallerHasTheResultsWhenTheCompletionIsTold) {
  Probe probe;
  Tape tape;
  std::vector<Result> results;
  tape.m_onStep = [&](const std::string& step) {
    const bool complete = step == "completed Probe" || step == "teardown Probe";
    EXPECT_EQ(complete ? 1U : 0U, results.size()) << step;
  };
  probe.AddListener(tape);
  probe.m_tearDown = [&] { EXPECT_EQ(1U, results.size()); };
  probe.RunTest(results);
  EXPECT_EQ(4U, tape.m_heard.size());
}

TEST(Run, ListenersHearInTheOrderOfTheirAdditionAndOnce) {
  Probe probe;
  Tape first;
  Tape second;
  Texts order;
  first.m_onStep = [&](const std::string& step) { order.push_back("first " + step); };
  second.m_onStep = [&](const std::string& step) { order.push_back("second " + step); };
  probe.AddListener(first);
  probe.AddListener(second);
  probe.AddListener(first);
  probe.Enable(false);
  probe.RunTest();
  EXPECT_THAT(order, ElementsAre("first completed Probe", "second completed Probe", "first teardown Probe",
                                 "second teardown Probe"));
}

TEST(Run, DisabledTestDoesNotRun) {
  Probe probe;
  Tape tape;
  probe.AddListener(tape);
  probe.Enable(false);
  EXPECT_FALSE(probe.IsEnabled());
  std::vector<Result> results;
  EXPECT_EQ(Result::eNO_RESULT, probe.RunTest(results));
  EXPECT_THAT(Told(results), ElementsAre("-3 Probe: "));
  EXPECT_EQ(0, probe.m_iSetups);
  EXPECT_EQ(0, probe.m_iExecutes);
  EXPECT_EQ(1, probe.m_iTearDowns);
  EXPECT_THAT(tape.m_heard, ElementsAre("completed Probe", "teardown Probe"));
  probe.Enable(true);
  EXPECT_EQ(Result::ePASSED, probe.RunTest());
}

TEST(Run, ErrorInSetupSkipsExecuteAndStillTearsDown) {
  Probe probe;
  Tape tape;
  probe.AddListener(tape);
  probe.m_setup = [] { Raise("p_lamp"); };
  EXPECT_EQ(Result::eERROR, probe.RunTest());
  EXPECT_THAT(ResultsOf(probe), ElementsAre("-1 Probe: NULL pointer variable named p_lamp"));
  EXPECT_EQ(0, probe.m_iExecutes);
  EXPECT_EQ(1, probe.m_iTearDowns);
  EXPECT_THAT(tape.m_heard, ElementsAre("setup Probe", "completed Probe", "teardown Probe"));
}

TEST(Run, FailureInSetupIsAnError) {
  Probe probe;
  probe.m_setup = [] { Fail("dark"); };
  EXPECT_EQ(Result::eERROR, probe.RunTest());
  std::vector<Result> results;
  probe.GetResults(results);
  EXPECT_THAT(Told(results), ElementsAre("-1 Probe: dark"));
  EXPECT_EQ(typeid(SelfTest::Failure), typeid(*results.front().GetFailure()));
}

TEST(Run, ForeignExceptionInSetupIsUnknown) {
  Probe probe;
  probe.m_setup = [] { throw std::runtime_error("not told"); };
  EXPECT_EQ(Result::eERROR, probe.RunTest());
  EXPECT_THAT(ResultsOf(probe), ElementsAre("-1 Probe: Unknown exception during setup"));
  probe.m_setup = [] { throw 3; };
  EXPECT_EQ(Result::eERROR, probe.RunTest());
  EXPECT_THAT(ResultsOf(probe), ElementsAre("-1 Probe: Unknown exception during setup"));
  EXPECT_EQ(0, probe.m_iExecutes);
  EXPECT_EQ(2, probe.m_iTearDowns);
}

TEST(Run, FailureInExecuteFails) {
  Probe probe;
  probe.m_execute = []() -> Result {
    Fail("dark");
    return Result("", Result::ePASSED, "");
  };
  std::vector<Result> results;
  EXPECT_EQ(Result::eFAILED, probe.RunTest(results));
  EXPECT_THAT(Told(results), ElementsAre("0 Probe: dark"));
  EXPECT_EQ(typeid(SelfTest::Failure), typeid(*results.front().GetFailure()));
  EXPECT_EQ(1, probe.m_iTearDowns);
}

TEST(Run, ErrorInExecuteIsAnError) {
  Probe probe;
  probe.m_execute = []() -> Result {
    Raise("p_lamp");
    return Result("", Result::ePASSED, "");
  };
  std::vector<Result> results;
  EXPECT_EQ(Result::eERROR, probe.RunTest(results));
  EXPECT_THAT(Told(results), ElementsAre("-1 Probe: NULL pointer variable named p_lamp"));
  EXPECT_EQ(typeid(NullPointer), typeid(*results.front().GetFailure()));
}

TEST(Run, ForeignExceptionInExecuteIsUnknown) {
  Probe probe("Probe", []() -> Result { throw std::runtime_error("not told"); });
  std::vector<Result> results;
  EXPECT_EQ(Result::eERROR, probe.RunTest(results));
  EXPECT_THAT(Told(results), ElementsAre("-1 Probe: Unknown exception"));
  EXPECT_FALSE(results.front().GetFailure());
  probe.m_execute = []() -> Result { throw 3; };
  EXPECT_EQ(Result::eERROR, probe.RunTest());
  EXPECT_THAT(ResultsOf(probe), ElementsAre("-1 Probe: Unknown exception"));
}

TEST(Run, ResultOfASuiteIsNotRecordedWhoeverReturnsIt) {
  Probe probe("Probe", [] { return Result("Probe", Result::eSUITE, "x"); });
  EXPECT_EQ(Result::eNO_RESULT, probe.RunTest());
  EXPECT_THAT(ResultsOf(probe), IsEmpty());
}

TEST(Run, OtherTypesAreRecordedAndHaveNoInfluence) {
  Probe probe("Probe", [] { return Result("Other", Result::eNO_RESULT, "x"); });
  EXPECT_EQ(Result::eNO_RESULT, probe.RunTest());
  EXPECT_THAT(ResultsOf(probe), ElementsAre("-2 Other: x"));
  for (const int type : {-100, -4, 3, 2000000000}) {
    probe.m_execute = [type] { return Result("Other", static_cast<Result::EType>(type), "no name for it"); };
    EXPECT_EQ(Result::eNO_RESULT, probe.RunTest());
    EXPECT_THAT(ResultsOf(probe), ElementsAre(std::to_string(type) + " Other: no name for it"));
  }
}

TEST(Run, OfATestThatRunsItselfAgainHasBothResults) {
  Probe probe;
  probe.m_execute = [&] {
    if (probe.m_iExecutes == 1) probe.RunTest();
    return Result("Probe",
                  probe.m_iSetups == 2 && probe.m_iTearDowns == 0 ? Result::eFAILED : Result::ePASSED,
                  std::to_string(probe.m_iTearDowns));
  };
  std::vector<Result> results;
  EXPECT_EQ(Result::eFAILED, probe.RunTest(results));
  EXPECT_THAT(Told(results), ElementsAre("0 Probe: 0", "1 Probe: 1"));
  EXPECT_EQ(2, probe.m_iTearDowns);
}

TEST(Run, ResultsByNameReplaceTheMap) {
  TestSuite suite("Suite");
  suite.AddTest(Ending("B", Result::ePASSED));
  suite.AddTest(Ending("A", Result::eFAILED));
  suite.AddTest(Ending("B", Result::eFAILED));
  suite.RunTest();
  std::multimap<std::string, Result> results;
  results.emplace("Old", Result("Old", Result::eERROR, ""));
  EXPECT_EQ(3, suite.GetResults(results));
  std::vector<Result> inOrder;
  for (const auto& entry : results) {
    EXPECT_EQ(entry.first, entry.second.GetTestName());
    inOrder.push_back(entry.second);
  }
  EXPECT_THAT(Told(inOrder), ElementsAre("0 A: ", "1 B: ", "0 B: "));
}

TEST(Run, ResultsInOrderReplaceTheVector) {
  Probe probe;
  probe.RunTest();
  std::vector<Result> results(3, Result("Old", Result::eERROR, ""));
  EXPECT_EQ(1, probe.GetResults(results));
  EXPECT_THAT(Told(results), ElementsAre("1 Probe: done"));
}

class Rig {
 public:
  Result Level() { return Result("Own name", Result::eFAILED, "low"); }
  void Lamp(std::string& text) {
    EXPECT_EQ("", text);
    text = "bright";
  }
  void Door(std::string& text) {
    text = "lost";
    Fail("open");
  }
};

TEST(TestMethod, GivesWhatTheMethodReturns) {
  TestMethod<Rig> test("Level", boost::make_shared<Rig>(), &Rig::Level);
  EXPECT_EQ(Result::eFAILED, test.RunTest());
  EXPECT_THAT(ResultsOf(test), ElementsAre("0 Own name: low"));
}

TEST(TestMethod, PassesByReturning) {
  TestMethod test("Lamp", boost::make_shared<Rig>(), &Rig::Lamp);
  EXPECT_EQ(Result::ePASSED, test.RunTest());
  EXPECT_EQ(Result::ePASSED, test.RunTest()) << "the text is empty each time";
  EXPECT_THAT(ResultsOf(test), ElementsAre("1 Lamp: bright"));
}

TEST(TestMethod, FailsByRaising) {
  TestMethod<Rig> test("Door", boost::make_shared<Rig>(), &Rig::Door);
  EXPECT_EQ(Result::eFAILED, test.RunTest());
  EXPECT_THAT(ResultsOf(test), ElementsAre("0 Door: open"));
}

TEST(TestMethod, OfAnObjectThatIsOwnedElsewhere) {
  Rig rig;
  {
    TestMethod<Rig> test("Lamp", boost::shared_ptr<Rig>(&rig, NoDelete()), &Rig::Lamp);
    EXPECT_EQ(Result::ePASSED, test.RunTest());
  }
  EXPECT_EQ("low", rig.Level().GetText());
}

TEST(TestMethod, WithoutObjectOrMethodIsAnError) {
  TestMethod<Rig> noObject("Lamp", boost::shared_ptr<Rig>(), &Rig::Lamp);
  Alerts alerts;
  EXPECT_EQ(Result::eERROR, noObject.RunTest());
  EXPECT_EQ("Oxa.Core.Test", alerts.m_sLogName);
  EXPECT_THAT(ResultsOf(noObject), ElementsAre("-1 Lamp: NULL pointer variable named object"));
  void (Rig::*none)(std::string&) = nullptr;
  TestMethod<Rig> noMethod("Lamp", boost::make_shared<Rig>(), none);
  EXPECT_EQ(Result::eERROR, noMethod.RunTest());
  EXPECT_THAT(ResultsOf(noMethod), ElementsAre("-1 Lamp: NULL pointer variable named method"));
}

}  // namespace
