// The three suites that the library's own tree doesn't hold: runs of them.
#include <Infrastructure/OxaCore/ProcessMutex.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <list>
#include <string>
#include <thread>
#include <vector>

#include "AutoTest/Fakes.h"
#include "AutoTest/ModuleSuite.h"

using namespace ModuleSuiteTests;
using Oxa::Core::TEST_OxaDictionary;
using Oxa::Core::TEST_OxaRWMutex;
using Oxa::Core::TEST_OxaThread;
using Oxa::Core::TestSuite;

namespace {

const char* const sLONG = "Test OxaRWMutex - multiple threads";
const char* const sKILL = "Kill Thread Test";
const std::string sANNOUNCEMENT =
    "In this test multiple threads are trying to either update a 1 MB buffer (writing) or\n"
    "verify its checksum (reading). The test will take about 2 minutes.";

void Disable(const TestSuite& suite, const std::string& name) {
  for (const auto& test : ChildrenOf(suite))
    if (test->GetName() == name) test->Enable(false);
}

// What takes minutes, and what the thread sanitizer can't bear.
void DisableWhatIsNotForHere(const TestSuite& suite) {
#ifndef OXACORE_SOAK
  Disable(suite, sLONG);
#endif
#ifdef __SANITIZE_THREAD__
  Disable(suite, sKILL);
#endif
}

Texts FailuresOf(TestSuite& suite) {
  DisableWhatIsNotForHere(suite);
  std::vector<Result> results;
  suite.RunTest(results);
  EXPECT_EQ(static_cast<std::size_t>(suite.GetTotalTests(false, false)), results.size());
  return Failures(results);
}

template <class NewSuite>
Texts RunNew() {
  NewSuite suite;
  return FailuresOf(suite);
}

std::vector<std::string> LocksOfThisProcess() {
  std::vector<std::string> names;
  const std::string mark = "%2F" + std::to_string(::getpid()) + "%2F";
  for (const auto& entry : std::filesystem::directory_iterator("/dev/shm")) {
    const std::string name = entry.path().filename().string();
    if (name.find(mark) != std::string::npos) names.push_back(name);
  }
  return names;
}

}  // namespace

TEST(FurtherSuites, TheDictionarysPassesAgainAndAgain) {
  for (int run = 0; run < 2; ++run) EXPECT_EQ(Texts(), RunNew<TEST_OxaDictionary>());
}

TEST(FurtherSuites, TheThreadsPasses) {
  EXPECT_EQ(Texts(), RunNew<TEST_OxaThread>());
  EXPECT_EQ(std::vector<std::string>(), LocksOfThisProcess());
}

// Locks that a process of the same id in another container may have, as long as this lives.
class LocksOfANamesake {
 public:
  LocksOfANamesake() : m_thread([this] { Hold(); }) {
    while (!m_bHeld) std::this_thread::yield();
  }
  LocksOfANamesake(const LocksOfANamesake&) = delete;
  LocksOfANamesake& operator=(const LocksOfANamesake&) = delete;
  ~LocksOfANamesake() {
    m_bOver = true;
    m_thread.join();
    for (const std::string& name : LocksOfThisProcess()) std::filesystem::remove("/dev/shm/" + name);
  }

 private:
  void Hold() {
    std::list<Oxa::Core::ProcessMutex> mutexes;
    std::list<Oxa::Core::Lock> locks;
    for (int number = 1; number <= 20; ++number) {
      mutexes.emplace_back("TestProcessMutex/" + std::to_string(::getpid()) + '/' + std::to_string(number));
      locks.emplace_back(mutexes.back());
    }
    m_bHeld = true;
    while (!m_bOver) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

  std::atomic<bool> m_bHeld{false};
  std::atomic<bool> m_bOver{false};
  std::thread m_thread;  // last: it uses the others
};

TEST(FurtherSuites, LocksOfANamesakeAreNotInTheWay) {
  const LocksOfANamesake locks;
  TEST_OxaThread suite;
  for (const auto& test : ChildrenOf(suite))
    test->Enable(test->GetName() == "Named Cross Process Mutex Test");
  std::vector<Result> results;
  suite.RunTest(results);
  EXPECT_EQ(1U, results.size());
  EXPECT_EQ(Texts(), Failures(results));
}

TEST(FurtherSuites, PassOnTwoThreadsAtOnce) {
  Texts others;
  std::thread other([&others] {
    others = RunNew<TEST_OxaThread>();
    for (const std::string& failure : RunNew<TEST_OxaDictionary>()) others.push_back(failure);
  });
  const Texts dictionary = RunNew<TEST_OxaDictionary>();
  const Texts threads = RunNew<TEST_OxaThread>();
  other.join();
  EXPECT_EQ(Texts(), others);
  EXPECT_EQ(Texts(), dictionary);
  EXPECT_EQ(Texts(), threads);
}

// Ends the process as soon as it hears of what is to come: with status 0 if that is told to the letter.
class EndsWithTheAnnouncement : public Oxa::Core::Test::Listener {
 public:
  void CustomNotification(const Oxa::Core::Test& test) override {
    ::_exit(test.GetName() == sANNOUNCEMENT ? 0 : 1);
  }
};

void RunTheLongTest() {
  TEST_OxaRWMutex suite;
  for (const auto& test : ChildrenOf(suite)) test->Enable(test->GetName() == sLONG);
  EndsWithTheAnnouncement listener;
  suite.AddListener(listener);
  suite.RunTest();
  ::_exit(2);
}

TEST(FurtherSuitesDeathTest, TheLongTestSaysSoWhenItBegins) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(RunTheLongTest(), testing::ExitedWithCode(0), "");
}

TEST(FurtherSuites, TheReadersWriterMutexsPasses) {
  TEST_OxaRWMutex suite;
  AutoTestTests::Tape tape;
  suite.AddListener(tape);
  EXPECT_EQ(Texts(), FailuresOf(suite));
#ifdef OXACORE_SOAK
  const bool isLong = true;
#else
  const bool isLong = false;
#endif
  EXPECT_EQ(isLong ? 1 : 0, std::count(tape.m_heard.begin(), tape.m_heard.end(), "custom " + sANNOUNCEMENT));
  std::multimap<std::string, Result> results;
  suite.GetResults(results);
  EXPECT_EQ(isLong ? 1u : 0u, results.count(sLONG));
  for (auto found = results.find(sLONG); found != results.end() && found->first == sLONG; ++found)
    EXPECT_EQ(sANNOUNCEMENT, found->second.GetText());
}
