#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

#include "AutoTest/Fakes.h"
#include "Support/Allocations.h"

namespace {

using namespace AutoTestTests;
using testing::ElementsAre;
using testing::IsEmpty;

using SharedTest = boost::shared_ptr<SelfTest>;

class Suite : public TestSuite {
 public:
  explicit Suite(const std::string& name, const std::vector<SharedTest>& tests = {}) : TestSuite(name) {
    for (const SharedTest& test : tests) AddTest(test);
  }
};

SharedTest Passing(const std::string& name) { return Ending(name, Result::ePASSED); }

SharedTest Disabled(const SharedTest& test) {
  test->Enable(false);
  return test;
}

TEST(TestSuite, WithoutChildrenHasNoResult) {
  TestSuite suite("Suite");
  EXPECT_TRUE(suite.IsTestSuite());
  EXPECT_EQ(Result::eNO_RESULT, suite.RunTest());
  EXPECT_THAT(ResultsOf(suite), IsEmpty());
  EXPECT_EQ(0, suite.GetNumChildTests());
  EXPECT_EQ(0, suite.GetTotalTests(true, true));
}

TEST(TestSuite, PassesOverADisabledChild) {
  Suite suite("Suite", {Passing("A"), Disabled(Passing("B"))});
  std::vector<Result> results;
  EXPECT_EQ(Result::ePASSED, suite.RunTest(results));
  EXPECT_THAT(Told(results), ElementsAre("1 A: "));
  EXPECT_EQ(2, suite.GetTotalTests(false, true));
  EXPECT_EQ(1, suite.GetTotalTests(false, false));
}

TEST(TestSuite, DisabledOneRunsNothing) {
  Suite suite("Suite", {Passing("A")});
  suite.Enable(false);
  EXPECT_EQ(Result::eNO_RESULT, suite.RunTest());
  EXPECT_THAT(ResultsOf(suite), ElementsAre("-3 Suite: "));
}

TEST(TestSuite, HasTheResultsOfTheWholeTreeInOrder) {
  const auto inner =
      boost::make_shared<Suite>("Inner", std::vector<SharedTest>{Ending("B", Result::eFAILED), Passing("C")});
  Suite root("Root", {Passing("A"), inner, Passing("D")});
  std::vector<Result> results;
  EXPECT_EQ(Result::eFAILED, root.RunTest(results));
  EXPECT_THAT(Told(results), ElementsAre("1 A: ", "0 B: ", "1 C: ", "1 D: "));
  EXPECT_THAT(ResultsOf(root), ElementsAre("1 A: ", "0 B: ", "1 C: ", "1 D: "));
  EXPECT_THAT(ResultsOf(*inner), ElementsAre("0 B: ", "1 C: "));
  root.RunTest();
  EXPECT_EQ(4U, ResultsOf(root).size()) << "the last run only";
}

TEST(TestSuite, ResultIsTheWorstOfTheTree) {
  const auto of = [](std::vector<Result::EType> types) {
    Suite suite("Suite");
    for (const Result::EType type : types) suite.AddTest(Ending("Test", type));
    return suite.RunTest();
  };
  EXPECT_EQ(Result::ePASSED, of({Result::ePASSED, Result::ePASSED}));
  EXPECT_EQ(Result::eFAILED, of({Result::ePASSED, Result::eFAILED, Result::ePASSED}));
  EXPECT_EQ(Result::eERROR, of({Result::eFAILED, Result::eERROR, Result::ePASSED}));
  EXPECT_EQ(Result::eERROR, of({Result::eERROR, Result::eFAILED}));
  EXPECT_EQ(Result::ePASSED, of({Result::eDISABLED, Result::eNO_RESULT, Result::ePASSED}));
  EXPECT_EQ(Result::eNO_RESULT, of({Result::eDISABLED, Result::eSUITE}));
}

TEST(TestSuite, CountsTheTree) {
  const auto disabledInner =
      boost::make_shared<Suite>("Off", std::vector<SharedTest>{Passing("A"), Passing("B")});
  const auto inner =
      boost::make_shared<Suite>("On", std::vector<SharedTest>{Passing("C"), Disabled(Passing("D"))});
  Suite root("Root", {Disabled(disabledInner), inner, Passing("E")});
  EXPECT_EQ(3, root.GetNumChildTests());
  EXPECT_EQ(2, root.GetTotalTests(false, false));
  EXPECT_EQ(3, root.GetTotalTests(true, false));
  EXPECT_EQ(5, root.GetTotalTests(false, true));
  EXPECT_EQ(7, root.GetTotalTests(true, true));
}

TEST(TestSuite, RefusesANullPointer) {
  TestSuite suite("Suite");
  EXPECT_FALSE(suite.AddTest(SharedTest()));
  EXPECT_FALSE(suite.RemoveTest(SharedTest()));
  EXPECT_EQ(0, suite.GetNumChildTests());
}

TEST(TestSuite, WithoutMemoryForItAChildIsNeitherThereNorHeard) {
  bool happened = true;
  for (unsigned long number = 1; happened; ++number) {
    const SharedTest a = Passing("A");
    Suite suite("Suite");
    Tape tape;
    suite.AddListener(tape);
    try {
      const TestSupport::FailAllocation failing(number);
      suite.AddTest(a);
      happened = failing.Happened();
    } catch (const std::bad_alloc&) {
    }
    a->RunTest();
    EXPECT_EQ(happened ? 0 : 1, suite.GetNumChildTests()) << number;
    EXPECT_EQ(happened ? 0U : 4U, tape.m_heard.size()) << number;
  }
}

TEST(TestSuite, RefusesToBecomeACircle) {
  const auto inner = boost::make_shared<Suite>("Inner");
  const auto middle = boost::make_shared<Suite>("Middle", std::vector<SharedTest>{inner});
  const auto root = boost::make_shared<Suite>("Root", std::vector<SharedTest>{Passing("A"), middle});
  EXPECT_FALSE(root->AddTest(root));
  EXPECT_FALSE(inner->AddTest(root));
  EXPECT_EQ(0, inner->GetNumChildTests());
  EXPECT_TRUE(inner->AddTest(Passing("B")));
  EXPECT_EQ(Result::ePASSED, root->RunTest());
}

TEST(TestSuite, GivesItsChildrenInPlaceOfWhatWasThere) {
  const SharedTest a = Passing("A");
  const SharedTest b = Passing("B");
  Suite suite("Suite", {a, b});
  std::vector<SharedTest> tests(5);
  suite.GetTests(tests);
  EXPECT_THAT(tests, ElementsAre(a, b));
}

TEST(TestSuite, RemovedChildIsNoLongerRunNorHeard) {
  const SharedTest a = Passing("A");
  Suite suite("Suite", {a, Passing("B")});
  Tape tape;
  suite.AddListener(tape);
  EXPECT_TRUE(suite.RemoveTest(a));
  EXPECT_FALSE(suite.RemoveTest(a));
  a->RunTest();
  EXPECT_THAT(tape.m_heard, IsEmpty());
  suite.RunTest();
  EXPECT_THAT(ResultsOf(suite), ElementsAre("1 B: "));
}

TEST(TestSuite, ClearRemovesAll) {
  const SharedTest a = Passing("A");
  Suite suite("Suite", {a, Passing("B"), a});
  Tape tape;
  suite.AddListener(tape);
  suite.Clear();
  a->RunTest();
  EXPECT_THAT(tape.m_heard, IsEmpty());
  EXPECT_EQ(0, suite.GetNumChildTests());
  EXPECT_EQ(1, a.use_count());
}

TEST(TestSuite, ChildThatIsThereTwiceRunsTwiceAndIsHeardOnceEach) {
  const SharedTest a = Passing("A");
  Suite suite("Suite", {a, Passing("B"), a});
  Tape tape;
  suite.AddListener(tape);
  EXPECT_EQ(3, suite.GetNumChildTests());
  suite.RunTest();
  EXPECT_THAT(ResultsOf(suite), ElementsAre("1 A: ", "1 B: ", "1 A: "));
  EXPECT_EQ(2, std::count(tape.m_heard.begin(), tape.m_heard.end(), "execute A"));
}

TEST(TestSuite, ChildThatIsThereTwiceIsRemovedOnceEach) {
  const SharedTest a = Passing("A");
  Suite suite("Suite", {a, Passing("B"), a});
  Tape tape;
  suite.AddListener(tape);
  EXPECT_TRUE(suite.RemoveTest(a));
  suite.RunTest();
  EXPECT_THAT(ResultsOf(suite), ElementsAre("1 B: ", "1 A: "));
  EXPECT_THAT(tape.m_heard, testing::Contains("execute A")) << "still heard";
  EXPECT_TRUE(suite.RemoveTest(a));
  EXPECT_FALSE(suite.RemoveTest(a));
  tape.m_heard.clear();
  a->RunTest();
  EXPECT_THAT(tape.m_heard, IsEmpty());
}

TEST(TestSuite, PassesSettingsOnToEveryChildEnabledOrNot) {
  const auto a = boost::make_shared<Probe>("A");
  const auto b = boost::make_shared<Probe>("B");
  b->Enable(false);
  Suite root("Root", {boost::make_shared<Suite>("Inner", std::vector<SharedTest>{a}), b});
  root.ReadConfig("rig.xml");
  root.WriteConfig("new.xml");
  EXPECT_THAT(a->m_configs, ElementsAre("read rig.xml", "write new.xml"));
  EXPECT_THAT(b->m_configs, ElementsAre("read rig.xml", "write new.xml"));
}

TEST(TestSuite, ListenerOnTheRootHearsEveryStepOfTheTree) {
  const auto inner = boost::make_shared<Suite>("Inner", std::vector<SharedTest>{Passing("A")});
  Suite root("Root", {inner});
  Tape tape;
  root.AddListener(tape);
  root.RunTest();
  EXPECT_THAT(tape.m_heard,
              ElementsAre("setup Root", "execute Root", "setup Inner", "execute Inner", "setup A",
                          "execute A", "completed A", "teardown A", "completed Inner", "teardown Inner",
                          "completed Root", "teardown Root"));
}

TEST(TestSuite, ListenerOnTheRootHearsAChildThatIsRunByItself) {
  const SharedTest a = Passing("A");
  Suite root("Root", {boost::make_shared<Suite>("Inner", std::vector<SharedTest>{a})});
  Tape tape;
  root.AddListener(tape);
  a->RunTest();
  EXPECT_THAT(tape.m_heard, ElementsAre("setup A", "execute A", "completed A", "teardown A"));
}

TEST(TestSuite, ForwardsWhatAChildHasToTell) {
  const auto a = boost::make_shared<Probe>("A");
  const SelfTest* heard = nullptr;
  class Custom : public SelfTest::Listener {
   public:
    explicit Custom(const SelfTest*& told) : m_pTold(told) {}
    void CustomNotification(const SelfTest& test) override { m_pTold = &test; }

   private:
    const SelfTest*& m_pTold;
  } custom(heard);
  a->m_execute = [&] {
    SelfTest::CustomNotification notification(*a);
    a->Broadcast(notification);
    return Result("A", Result::ePASSED, "");
  };
  Suite root("Root", {boost::make_shared<Suite>("Inner", std::vector<SharedTest>{a})});
  root.AddListener(custom);
  root.RunTest();
  EXPECT_EQ(a.get(), heard);
}

TEST(TestSuite, ListenerThatRaisesOnTheRootDisturbsNoChild) {
  Suite root("Root", {Passing("A"), Passing("B")});
  Tape bad;
  bad.m_onStep = [](const std::string&) { throw 1; };
  Tape good;
  root.AddListener(bad);
  root.AddListener(good);
  EXPECT_EQ(Result::ePASSED, root.RunTest());
  EXPECT_EQ(12U, bad.m_heard.size());
  EXPECT_EQ(12U, good.m_heard.size());
  EXPECT_THAT(ResultsOf(root), ElementsAre("1 A: ", "1 B: "));
}

TEST(TestSuite, SetsUpAndTearsDownAroundItsChildren) {
  class Framed : public TestSuite {
   public:
    Framed() : TestSuite("Framed") {}
    Texts m_steps;

   protected:
    void Setup() override { m_steps.push_back("setup"); }
    void TearDown() override { m_steps.push_back("teardown"); }
  } framed;
  framed.AddTest(boost::make_shared<Probe>("A", [&] {
    framed.m_steps.push_back("child");
    return Result("A", Result::ePASSED, "");
  }));
  framed.RunTest();
  EXPECT_THAT(framed.m_steps, ElementsAre("setup", "child", "teardown"));
}

TEST(TestSuite, ChildThatFailsToSetUpDoesNotStopTheOthers) {
  const auto a = boost::make_shared<Probe>("A");
  a->m_setup = [] { throw 1; };
  Suite suite("Suite", {a, Passing("B")});
  EXPECT_EQ(Result::eERROR, suite.RunTest());
  EXPECT_THAT(ResultsOf(suite), ElementsAre("-1 A: Unknown exception during setup", "1 B: "));
}

TEST(TestSuite, ErrorOfItsOwnIsRecordedBesideWhatItsChildrenDelivered) {
  class Late : public TestSuite {
   public:
    Late() : TestSuite("Late") {}

   protected:
    Result Execute() override {
      TestSuite::Execute();
      OXA_RAISE_ERROR("Test.Late", NullPointer("p_late"));
      return Result(GetName(), Result::eSUITE, "");
    }
  } late;
  late.AddTest(Passing("A"));
  EXPECT_EQ(Result::eERROR, late.RunTest());
  EXPECT_THAT(ResultsOf(late), ElementsAre("1 A: ", "-1 Late: NULL pointer variable named p_late"));
}

TEST(TestSuite, ChildrenThatChangeTheListDuringARun) {
  Suite suite("Suite");
  const SharedTest second = Passing("B");
  suite.AddTest(boost::make_shared<Probe>("A", [&] {
    suite.Clear();
    suite.AddTest(Passing("C"));
    return Result("A", Result::ePASSED, "");
  }));
  suite.AddTest(second);
  suite.RunTest();
  EXPECT_THAT(ResultsOf(suite), ElementsAre("1 A: ", "1 B: ")) << "those that it began with";
  suite.RunTest();
  EXPECT_THAT(ResultsOf(suite), ElementsAre("1 C: "));
}

TEST(TestSuite, ChildThatIsDisabledDuringARunIsPassedOver) {
  const SharedTest second = Passing("B");
  Suite suite("Suite");
  suite.AddTest(boost::make_shared<Probe>("A", [&] {
    second->Enable(false);
    return Result("A", Result::ePASSED, "");
  }));
  suite.AddTest(second);
  suite.RunTest();
  EXPECT_THAT(ResultsOf(suite), ElementsAre("1 A: "));
}

TEST(TestSuite, ChildThatChangesTheListWhenItIsToldItsSettings) {
  class Leaving : public Probe {
   public:
    explicit Leaving(TestSuite& suite) : Probe("Leaving"), m_suite(suite) {}
    void ReadConfig(const std::string&) override { m_suite.Clear(); }
    void WriteConfig(const std::string&) override { m_suite.Clear(); }

   private:
    TestSuite& m_suite;
  };
  TestSuite suite("Suite");
  const auto leaving = boost::make_shared<Leaving>(suite);
  const auto last = boost::make_shared<Probe>("Last");
  for (const auto pass : {&TestSuite::ReadConfig, &TestSuite::WriteConfig}) {
    suite.AddTest(leaving);
    suite.AddTest(last);
    (suite.*pass)("rig.xml");
    EXPECT_EQ(0, suite.GetNumChildTests());
  }
  EXPECT_THAT(last->m_configs, ElementsAre("read rig.xml", "write rig.xml"));
}

TEST(TestSuite, ErrorThatAChildRaisesOnItsSettingsEndsTheRound) {
  class Refusing : public Probe {
   public:
    void ReadConfig(const std::string&) override { OXA_RAISE_ERROR("Test.Config", NullPointer("p_rig")); }
  };
  const auto last = boost::make_shared<Probe>("Last");
  Suite suite("Suite", {boost::make_shared<Refusing>(), last});
  EXPECT_THROW(suite.ReadConfig("rig.xml"), NullPointer);
  EXPECT_THAT(last->m_configs, IsEmpty());
}

TEST(TestSuite, ChildOutlivesItsSuite) {
  const SharedTest a = Passing("A");
  Tape tape;
  {
    Suite suite("Suite", {a});
    suite.AddListener(tape);
  }
  EXPECT_EQ(Result::ePASSED, a->RunTest());
  EXPECT_THAT(tape.m_heard, IsEmpty());
  EXPECT_EQ(1, a.use_count());
}

TEST(TestSuite, ChildOfTwoSuitesTellsBothAndOutlivesOne) {
  const SharedTest a = Passing("A");
  Suite stays("Stays", {a});
  Tape tape;
  stays.AddListener(tape);
  {
    Suite goes("Goes", {a});
    goes.AddListener(tape);
    a->RunTest();
    EXPECT_EQ(8U, tape.m_heard.size());
  }
  a->RunTest();
  EXPECT_EQ(12U, tape.m_heard.size());
  stays.RunTest();
  EXPECT_THAT(ResultsOf(stays), ElementsAre("1 A: "));
}

TEST(TestSuite, ChildRunsTheWholeTreeAgain) {
  Suite root("Root");
  int depth = 0;
  root.AddTest(Passing("A"));
  root.AddTest(boost::make_shared<Probe>("B", [&] {
    if (depth++ == 0) root.RunTest();
    return Result("B", Result::ePASSED, std::to_string(depth));
  }));
  root.AddTest(Passing("C"));
  EXPECT_EQ(Result::ePASSED, root.RunTest());
  EXPECT_THAT(ResultsOf(root), ElementsAre("1 A: ", "1 B: 2", "1 C: ", "1 B: 2", "1 B: 2", "1 C: "));
}

TEST(TestSuite, ChildThatIsAMemberOfItsSuiteDiesFirst) {
  class Whole : public TestSuite {
   public:
    Whole() : TestSuite("Whole") { AddTest(SharedTest(&m_part, NoDelete())); }

   private:
    Probe m_part{"Part"};
  };
  Whole whole;
  EXPECT_EQ(Result::ePASSED, whole.RunTest());
}

// The usual form: a suite whose methods are the tests.
TEST(TestSuite, OfItsOwnMethods) {
  class Rig : public TestSuite {
   public:
    Rig() : TestSuite("Rig") {
      const boost::shared_ptr<Rig> me(this, NoDelete());
      AddTest(boost::make_shared<TestMethod<Rig>>("Lamp", me, &Rig::Lamp));
      AddTest(boost::make_shared<TestMethod<Rig>>("Door", me, &Rig::Door));
    }

   private:
    void Lamp(std::string& text) { text = "bright"; }
    void Door(std::string&) { OXA_TEST_EQUALS(1, 2); }
  } rig;
  EXPECT_EQ(Result::eFAILED, rig.RunTest());
  EXPECT_THAT(ResultsOf(rig), ElementsAre("1 Lamp: bright", "0 Door: expected: 1 but was: 2"));
}

}  // namespace
