#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/Singleton.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <stdexcept>
#include <thread>

#include "AutoTest/Fakes.h"
#include "Support/Allocations.h"
#include "Support/Cancelled.h"

namespace {

using namespace AutoTestTests;
using testing::ElementsAre;

const char* const sSTEPS[] = {"setup Probe", "execute Probe", "completed Probe", "teardown Probe"};

Result FailingTest() {
  OXA_RAISE_ERROR("Test.Probe", SelfTest::Failure("dark"));
  return Result("", Result::ePASSED, "");
}

// What a listener throws stays with the notification: no step's rule meets it, and the run goes on.
TEST(RunTrouble, ListenerThatRaisesAtAnyStepDisturbsNothing) {
  for (const std::string step : sSTEPS) {
    Probe probe;
    Tape bad;
    Tape good;
    bad.m_onStep = [&](const std::string& heard) {
      if (heard == step) OXA_RAISE_ERROR("Test.Tape", NullPointer("p_tape"));
    };
    probe.AddListener(bad);
    probe.AddListener(good);
    Alerts alerts;
    EXPECT_EQ(Result::ePASSED, probe.RunTest()) << step;
    EXPECT_THAT(ResultsOf(probe), ElementsAre("1 Probe: done")) << step;
    EXPECT_EQ(4U, bad.m_heard.size()) << step;
    EXPECT_EQ(4U, good.m_heard.size()) << step;
    EXPECT_EQ(1, probe.m_iTearDowns) << step;
    EXPECT_THAT(
        alerts.m_heard,
        ElementsAre("raised NULL pointer variable named p_tape",
                    "warning Listener threw error during notification: NULL pointer variable named p_tape",
                    "handled NULL pointer variable named p_tape"))
        << step;
  }
}

TEST(RunTrouble, ListenerThatRaisesAFailureDoesNotFailTheTest) {
  Probe probe;
  Tape bad;
  bad.m_onStep = [](const std::string&) { OXA_TEST_ASSERT(false); };
  probe.AddListener(bad);
  EXPECT_EQ(Result::ePASSED, probe.RunTest());
  EXPECT_EQ(4U, bad.m_heard.size());
}

TEST(RunTrouble, ErrorInTearDownIsAWarning) {
  Probe probe("Lamp test");
  probe.m_tearDown = [] { OXA_RAISE_ERROR("Test.Probe", NullPointer("p_lamp")); };
  Alerts alerts;
  EXPECT_EQ(Result::ePASSED, probe.RunTest());
  EXPECT_THAT(alerts.m_heard,
              ElementsAre("raised NULL pointer variable named p_lamp",
                          "warning Listener error occurred during notification for test Lamp test:\n"
                          "NULL pointer variable named p_lamp",
                          "handled NULL pointer variable named p_lamp"));
  EXPECT_THAT(ResultsOf(probe), ElementsAre("1 Lamp test: done"));
}

TEST(RunTrouble, WarningTellsItsPlace) {
  Probe probe;
  probe.m_tearDown = [] { throw std::runtime_error("not told"); };
  Alerts alerts;
  EXPECT_EQ(Result::ePASSED, probe.RunTest());
  EXPECT_THAT(
      alerts.m_heard,
      ElementsAre("warning Listener error occurred during notification for test Probe:\nUnknown exception"));
  EXPECT_EQ("Oxa.Core.Test", alerts.m_sLogName);
  EXPECT_EQ("Oxa::Core::Test::RunTest", alerts.m_sFunction);
  alerts.m_sFunction.clear();
  probe.m_tearDown = [] { throw LogicError("thrown as it is"); };
  probe.RunTest();
  EXPECT_EQ("Oxa::Core::Test::RunTest", alerts.m_sFunction);
}

TEST(RunTrouble, WarningIsOfItsClass) {
  const ErrorDuringTestNotification warning("Lamp", "dark");
  EXPECT_EQ("Listener error occurred during notification for test Lamp:\ndark",
            warning.GetData(AlertInfo::sMESSAGE));
  EXPECT_EQ(1, warning.GetSeverity());
}

TEST(RunTrouble, FailingSetupAndFailingTearDownAreBothTold) {
  Probe probe;
  probe.m_setup = [] { throw 1; };
  probe.m_tearDown = [] { throw 2; };
  Alerts alerts;
  EXPECT_EQ(Result::eERROR, probe.RunTest());
  EXPECT_THAT(ResultsOf(probe), ElementsAre("-1 Probe: Unknown exception during setup"));
  EXPECT_EQ(1U, alerts.m_heard.size());
}

// The error is handled when the run has recorded it. Results can then be copied and destroyed without a word.
TEST(RunTrouble, StoredResultsTellNothing) {
  Alerts alerts;
  Probe probe("Probe", FailingTest);
  Tape tape;
  Texts heardAtCompletion;
  tape.m_onStep = [&](const std::string& step) {
    if (step == "completed Probe") heardAtCompletion = alerts.m_heard;
  };
  probe.AddListener(tape);
  {
    std::vector<Result> results;
    probe.RunTest(results);
    std::vector<Result> copies(results);
    copies.push_back(results.front());
    copies.clear();
  }
  EXPECT_THAT(heardAtCompletion, ElementsAre("raised dark", "handled dark"));
  probe.RunTest();
  EXPECT_THAT(alerts.m_heard, ElementsAre("raised dark", "handled dark", "raised dark", "handled dark"));
}

// Ten raises alive on one thread are taken for an endless recursion.
TEST(RunTrouble, StoredResultsAreNoLiveRaises) {
  std::deque<Probe> probes;
  for (int i = 0; i < 3 * g_iMAX_ERROR_RECURSION_DEPTH; ++i) {
    EXPECT_EQ(Result::eFAILED, probes.emplace_back("Probe", FailingTest).RunTest());
    EXPECT_THAT(ResultsOf(probes.back()), ElementsAre("0 Probe: dark"));
  }
}

TEST(RunTrouble, ResultOfAnErrorInFlightLeavesItsMarkWhereItIs) {
  Alerts alerts;
  try {
    OXA_RAISE_ERROR("Test.Probe", NullPointer("p_lamp"));
  } catch (const Error& error) {
    { const Result result("Lamp", error); }
    EXPECT_THAT(alerts.m_heard, ElementsAre("raised NULL pointer variable named p_lamp"));
  }
  EXPECT_EQ(2U, alerts.m_heard.size());
}

TEST(RunTrouble, ListenerThatLeavesDuringTheRunHearsNoLaterStep) {
  Probe probe;
  Tape tape;
  tape.m_onStep = [&](const std::string& step) {
    if (step == "execute Probe") probe.RemoveListener(tape);
  };
  probe.AddListener(tape);
  EXPECT_EQ(Result::ePASSED, probe.RunTest());
  EXPECT_THAT(tape.m_heard, ElementsAre("setup Probe", "execute Probe"));
}

TEST(RunTrouble, ListenerThatComesDuringTheRunHearsTheRest) {
  Probe probe;
  Tape tape;
  probe.m_execute = [&] {
    probe.AddListener(tape);
    return Result("Probe", Result::ePASSED, "");
  };
  probe.RunTest();
  EXPECT_THAT(tape.m_heard, ElementsAre("completed Probe", "teardown Probe"));
}

TEST(RunTrouble, ListenerAndTestMayDieInEitherOrder) {
  Tape survivor;
  {
    Probe probe;
    {
      Tape tape;
      probe.AddListener(tape);
      probe.AddListener(survivor);
    }
    probe.RunTest();
  }
  EXPECT_EQ(4U, survivor.m_heard.size());
}

TEST(RunTrouble, NotificationsPassOverOtherListeners) {
  class Stranger : public NotificationListener {};
  Stranger stranger;
  Probe probe;
  TestNotification step(TestNotification::eEXECUTING, probe);
  step.Notify(stranger);
  SelfTest::CustomNotification custom(probe);
  custom.Notify(stranger);
  Tape tape;
  step.Notify(tape);
  custom.Notify(tape);
  TestNotification(static_cast<TestNotification::EKind>(5), probe).Notify(tape);
  EXPECT_THAT(tape.m_heard, ElementsAre("execute Probe", "custom Probe"));
}

TEST(RunTrouble, KindsHaveTheirValues) {
  EXPECT_EQ(1, TestNotification::eSETTING_UP);
  EXPECT_EQ(2, TestNotification::eEXECUTING);
  EXPECT_EQ(3, TestNotification::eCOMPLETED);
  EXPECT_EQ(4, TestNotification::eTEARING_DOWN);
  static_assert(sizeof(TestNotification::EKind) == 4);
}

TEST(RunTrouble, CancellationOfTheThreadPassesAtEveryStep) {
  for (int place = 0; place < 3; ++place) {
    Probe probe;
    const auto leave = [] { pthread_exit(nullptr); };
    if (place == 0) probe.m_setup = leave;
    if (place == 1) {
      probe.m_execute = [&]() -> Result {
        leave();
        return Result("", Result::ePASSED, "");
      };
    }
    if (place == 2) probe.m_tearDown = leave;
    bool cameBack = false;
    std::thread([&] {
      probe.RunTest();
      cameBack = true;
    }).join();
    EXPECT_FALSE(cameBack) << place;
  }
}

// A host's, which can be cancelled, or leave its thread, when it is copied.
class Leaving : public ErrorClass<Leaving, LogicError> {
 public:
  explicit Leaving(void (*leave)()) : ErrorClass(AlertMessage("leaving")), m_pLeave(leave) {}
  boost::shared_ptr<Error> Clone() override {
    m_pLeave();
    return ErrorClass::Clone();
  }

 private:
  void (*m_pLeave)();
};

TEST(RunTrouble, CancellationOfTheThreadWaitsUntilTheErrorIsRecorded) {
  Probe probe("Probe", []() -> Result { throw Leaving(&pthread_testcancel); });
  EXPECT_TRUE(TestSupport::IsCancelledBehind([&] {
    pthread_cancel(pthread_self());
    probe.RunTest();
  }));
  EXPECT_THAT(ResultsOf(probe), ElementsAre("-1 Probe: leaving"));
}

TEST(RunTrouble, CancellationOfTheThreadPassesAResultOfAHost) {
  const Leaving error([] { pthread_exit(nullptr); });
  bool cameBack = false;
  std::thread([&] {
    const Result result("Probe", error);
    cameBack = true;
  }).join();
  EXPECT_FALSE(cameBack);
}

// Whatever allocation fails: the run ends, tears down, and is not told passed when its test wasn't.
TEST(RunTrouble, WithoutMemoryAFailingTestIsNeverToldPassed) {
  bool happened = true;
  int runs = 0;
  for (unsigned long number = 1; happened; ++number) {
    const std::string name("a name that is too long to be kept without an allocation");
    TestSuite suite("Suite");
    const auto probe = boost::make_shared<Probe>(name, [&]() -> Result { throw 1; });
    suite.AddTest(Ending("One", Result::ePASSED));
    suite.AddTest(probe);
    const TestSupport::FailAllocation failing(number);
    try {
      EXPECT_EQ(Result::eERROR, suite.RunTest()) << number;
    } catch (const std::bad_alloc&) {
      ADD_FAILURE() << "allocation " << number;
    }
    happened = failing.Happened();
    ++runs;
  }
  EXPECT_GT(runs, 10);
}

// Its error takes the place of a result that says passed.
TEST(RunTrouble, WithoutMemoryASuiteThatFailsBehindItsChildrenIsNeverToldPassed) {
  class FailingBehind : public TestSuite {
   public:
    FailingBehind() : TestSuite("Suite") { AddTest(Ending("One", Result::ePASSED)); }

   protected:
    Result Execute() override {
      TestSuite::Execute();
      throw 1;
    }
  };
  bool happened = true;
  int runs = 0;
  for (unsigned long number = 1; happened; ++number) {
    FailingBehind suite;
    const TestSupport::FailAllocation failing(number);
    EXPECT_EQ(Result::eERROR, suite.RunTest()) << number;
    happened = failing.Happened();
    ++runs;
  }
  EXPECT_GT(runs, 3);
}

// More listeners than a broadcast reaches without an allocation.
class CrowdedProbe : public Probe {
 public:
  CrowdedProbe() {
    for (Tape& tape : m_tapes) AddListener(tape);
    RunTest();
    ForgetCalls();
  }

  void ForgetCalls() { m_iSetups = m_iExecutes = m_iTearDowns = 0; }

  // With the `number`th allocation failing.
  bool RunWithout(unsigned long number) {
    ForgetCalls();
    const TestSupport::FailAllocation failing(number);
    RunTest();
    return failing.Happened();
  }

 private:
  Tape m_tapes[40];
};

TEST(RunTrouble, TellingThatFailsBeforeTheSetupIsAnErrorDuringIt) {
  CrowdedProbe probe;
  EXPECT_TRUE(probe.RunWithout(1));
  EXPECT_THAT(ResultsOf(probe), ElementsAre("-1 Probe: Unknown exception during setup"));
  EXPECT_EQ(0, probe.m_iSetups);
  EXPECT_EQ(1, probe.m_iTearDowns);
}

TEST(RunTrouble, TellingThatFailsBehindTheSetupIsAnError) {
  CrowdedProbe probe;
  probe.m_setup = [] {
    TestSupport::ThreadAllocations().m_ulFailing = TestSupport::ThreadAllocations().m_ulCount + 1;
  };
  EXPECT_EQ(Result::eERROR, probe.RunTest());
  EXPECT_THAT(ResultsOf(probe), ElementsAre("-1 Probe: Unknown exception"));
  EXPECT_EQ(0, probe.m_iExecutes);
  EXPECT_EQ(1, probe.m_iTearDowns);
}

TEST(RunTrouble, TellingThatFailsAtTheEndIsAWarningAndStillTearsDown) {
  CrowdedProbe probe;
  Alerts alerts;
  bool happened = true;
  for (unsigned long number = 1; happened; ++number) {
    happened = probe.RunWithout(number);
    EXPECT_EQ(1, probe.m_iTearDowns) << number;
  }
  EXPECT_THAT(alerts.m_heard,
              testing::Contains("warning Listener error occurred during notification for test Probe:\n"
                                "Unknown exception"));
}

// The library destroys it while it unloads: then every raise returns.
class RunsWhileUnloading : public ISingletonRegistryEntry {
 public:
  explicit RunsWhileUnloading(SelfTest& test) : m_test(test) { SingletonRegistry::Register(this); }

  void Destroy() override {
    std::vector<Result> results;
    const int type = m_test.RunTest(results);
    for (const std::string& text : Told(results)) std::fprintf(stderr, "\n%s", text.c_str());
    std::fprintf(stderr, "\nresult %d\n", type);
    std::fflush(stderr);
    ::_exit(0);
  }

 private:
  SelfTest& m_test;
};

[[noreturn]] void RunWhileUnloading(SelfTest& test) {
  new RunsWhileUnloading(test);
  std::exit(1);
}

// Each runs in a process of its own; what it runs must live longer than the objects of main.
class UnloadingDeathTest : public testing::Test {
 protected:
  UnloadingDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(UnloadingDeathTest, FailedAssertionIsAFailureThoughTheTestGoesOn) {
  const auto run = [] {
    RunWhileUnloading(*new Probe("Probe", [] {
      OXA_TEST_ASSERT(1 == 2);
      return Result("Probe", Result::ePASSED, "went on");
    }));
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0),
              "1 Probe: went on\n0 Probe: A failure was raised that could not end the test\nresult 0\n");
}

TEST_F(UnloadingDeathTest, SuiteHasTheFailureOfItsChildOnce) {
  const auto run = [] {
    TestSuite* const suite = new TestSuite("Suite");
    suite->AddTest(boost::make_shared<Probe>("Probe", [] {
      OXA_TEST_EQUALS(1, 2);
      return Result("Probe", Result::ePASSED, "");
    }));
    suite->AddTest(Ending("Next", Result::ePASSED));
    RunWhileUnloading(*suite);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0),
              "1 Probe: \n0 Probe: A failure was raised that could not end the test\n1 Next: \nresult 0\n");
}

// A test of the library itself, as it were: which of several runs an assertion that returned belongs to.
class Asserting : public Probe {
 public:
  explicit Asserting(const std::string& name) : Probe(name) {
    m_execute = [this] {
      OXA_TEST_ASSERT(1 == 2);
      return Result(GetName(), Result::ePASSED, "");
    };
  }
};

TEST_F(UnloadingDeathTest, FailedAssertionInSetupIsAnErrorAndExecuteIsNotCalled) {
  const auto run = [] {
    Probe* const probe = new Probe;
    probe->m_setup = [] { OXA_TEST_ASSERT(1 == 2); };
    RunWhileUnloading(*probe);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0),
              "\n-1 Probe: A failure was raised that could not end the test\nresult -1\n");
}

TEST_F(UnloadingDeathTest, SuiteHasItsOwnFailedAssertion) {
  class Checked : public TestSuite {
   public:
    Checked() : TestSuite("Suite") { AddTest(Ending("Child", Result::ePASSED)); }

   protected:
    Result Execute() override {
      OXA_TEST_ASSERT(1 == 2);
      return TestSuite::Execute();
    }
  };
  const auto run = [] { RunWhileUnloading(*new Checked); };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0),
              "1 Child: \n0 Suite: A failure was raised that could not end the test\nresult 0\n");
}

TEST_F(UnloadingDeathTest, TestIsNotFailedByWhatItRuns) {
  const auto run = [] {
    RunWhileUnloading(*new Probe("Outer", [] {
      return Result("Outer", Result::ePASSED, std::to_string(Asserting("Inner").RunTest()));
    }));
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "\n1 Outer: 0\nresult 1\n");
}

TEST_F(UnloadingDeathTest, TestIsFailedInSpiteOfWhatItRunsLater) {
  const auto run = [] {
    RunWhileUnloading(*new Probe("Outer", [] {
      OXA_TEST_ASSERT(1 == 2);
      Probe("Inner").RunTest();
      return Result("Outer", Result::ePASSED, "");
    }));
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0),
              "1 Outer: \n0 Outer: A failure was raised that could not end the test\nresult 0\n");
}

TEST_F(UnloadingDeathTest, TestIsNotFailedByAnotherThread) {
  const auto run = [] {
    RunWhileUnloading(*new Probe("Here", [] {
      int there = 0;
      std::thread([&] { there = Asserting("There").RunTest(); }).join();
      return Result("Here", Result::ePASSED, std::to_string(there));
    }));
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "\n1 Here: 0\nresult 1\n");
}

TEST_F(UnloadingDeathTest, TestIsNotFailedByListenersNorByTearDown) {
  const auto run = [] {
    Tape* const tape = new Tape;
    tape->m_onStep = [](const std::string&) { OXA_TEST_ASSERT(1 == 2); };
    const auto probe = boost::make_shared<Probe>();
    probe->m_tearDown = [] { OXA_TEST_ASSERT(1 == 2); };
    TestSuite* const suite = new TestSuite("Suite");
    suite->AddTest(probe);
    suite->AddListener(*tape);
    RunWhileUnloading(*suite);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "\n1 Probe: done\nresult 1\n");
}

TEST_F(UnloadingDeathTest, MissingMethodIsAnError) {
  const auto run = [] {
    void (Probe::*none)(std::string&) = nullptr;
    RunWhileUnloading(*new TestMethod<Probe>("Method", boost::make_shared<Probe>(), none));
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0),
              "-1 Method: NULL pointer variable named method\nresult -1\n");
}

TEST_F(UnloadingDeathTest, ValueThatCannotBeComparedIsAnError) {
  class Range : public RangeTest {
   public:
    Range() : RangeTest("Range", 1, UnitizedValue<double>(1, "Second"), eGREATER, eLESS) {}

   protected:
    void GetTestValue(UnitizedValue<double>& value) override { value = 2; }
  };
  const auto run = [] { RunWhileUnloading(*new Range); };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0),
              "-1 Range: Illegal unit conversion from \"Second\" to \"\"\nresult -1\n");
}

TEST_F(UnloadingDeathTest, FailingTearDownIsWrittenToStandardError) {
  const auto run = [] {
    Probe* const probe = new Probe;
    probe->m_tearDown = [] { throw 1; };
    RunWhileUnloading(*probe);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "Listener error occurred(.|\n)*1 Probe: done\nresult 1\n");
}

}  // namespace
