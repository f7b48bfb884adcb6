// What the library's own tests wait by. Object-linked: the clock is this program's.
#include <Infrastructure/OxaCore/ModuleTestSuite.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "AutoTest/Fakes.h"
#include "AutoTest/Module/EndOfThread.h"
#include "AutoTest/Module/Patience.h"
#include "AutoTest/ModuleSuite.h"

using namespace Oxa::Core;
using namespace ModuleSuiteTests;

namespace {

constexpr long long llHOUR = 3600LL * 10000000;

// Asks a few times, and sets the clocks ahead before the first.
bool BecomesWhenTheClocksJump(long long now, long long monotonic) {
  int questions = 0;
  const bool became = Becomes([&] {
    if (questions == 0) Platform::SetClockOffset(now, monotonic);
    return ++questions > 3;
  });
  Platform::SetClockOffset(0, 0);
  return became;
}

// A task that runs until it is told to stop, and then on for a moment.
class Lingerer : public Task {
 public:
  explicit Lingerer(std::atomic<bool>& alive) : m_alive(alive) {}
  int Run(TaskDirective& directive) override {
    m_alive = true;
    directive.WaitForStopRequest();
    std::this_thread::sleep_for(std::chrono::milliseconds(120));
    m_alive = false;
    return 0;
  }

 private:
  std::atomic<bool>& m_alive;
};

}  // namespace

TEST(SelfTestWaits, DontGoByTheClockOnTheWall) {
  EXPECT_TRUE(BecomesWhenTheClocksJump(llHOUR, 0));
  EXPECT_TRUE(BecomesWhenTheClocksJump(-llHOUR, 0));
}

TEST(SelfTestWaits, EndWithThePatience) { EXPECT_FALSE(BecomesWhenTheClocksJump(0, llHOUR)); }

TEST(SelfTestThreads, HaveEndedWhereAnAssertionFails) {
  for (int round = 0; round < 20; ++round) {
    std::atomic<bool> alive{false};
    const auto thread = Thread::Create("Lingerer");
    try {
      const EndOfThread end(thread);
      thread->Start(boost::shared_ptr<Task>(new Lingerer(alive)));
      if (round % 2 == 0) OXA_TEST_ASSERT(Becomes([&] { return alive.load(); }));
      OXA_TEST_ASSERT(false);
    } catch (Oxa::Core::Test::Failure&) {
    }
    EXPECT_TRUE(thread->HasCompleted());
    EXPECT_FALSE(alive);
  }
}

TEST(SelfTestThreads, ThatNeverStartedAreNotWaitedFor) {
  const auto thread = Thread::Create("Idler");
  { const EndOfThread end(thread); }
  EXPECT_FALSE(thread->HasBegun());
}

// The two minutes of the long test, in so many seconds.
std::vector<Result> RunTheLongTest(TEST_OxaRWMutex& suite, int seconds) {
  std::thread clock([seconds] {
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    Platform::SetClockOffset(0, llHOUR);
  });
  std::vector<Result> results;
  suite.RunTest(results);
  clock.join();
  Platform::SetClockOffset(0, 0);
  return results;
}

// Two seconds do, unless the machine has other things to do.
TEST(LongSelfTest, ReadsAndWritesAsLongAsItsTimeLasts) {
  TEST_OxaRWMutex suite;
  for (const auto& test : ChildrenOf(suite))
    test->Enable(test->GetName() == "Test OxaRWMutex - multiple threads");
  AutoTestTests::Tape tape;
  suite.AddListener(tape);
  std::vector<Result> results;
  for (const int seconds : {2, 10, 50}) {
    tape.m_heard.clear();
    results = RunTheLongTest(suite, seconds);
    if (Failures(results).empty()) break;
  }
  EXPECT_EQ(Texts(), Failures(results));
  const std::string announcement =
      "In this test multiple threads are trying to either update a 1 MB buffer (writing) or\n"
      "verify its checksum (reading). The test will take about 2 minutes.";
  ASSERT_EQ(1U, results.size());
  EXPECT_EQ(announcement, results.front().GetText());
  const std::string name = results.front().GetTestName();
  const Texts expected{"setup " + name, "execute " + name, "custom " + announcement, "completed " + name,
                       "teardown " + name};
  Texts ofTheTest;
  for (const std::string& step : tape.m_heard)
    if (step.find(suite.GetName()) == std::string::npos) ofTheTest.push_back(step);
  EXPECT_EQ(expected, ofTheTest);
}
