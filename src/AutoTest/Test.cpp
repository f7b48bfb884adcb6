#include <Infrastructure/OxaCore/AutoTest.h>

#include "AutoTest/UnthrownFailures.h"
#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.Test";
const char* const sUNKNOWN_EXCEPTION = "Unknown exception";
const char* const sUNKNOWN_EXCEPTION_DURING_SETUP = "Unknown exception during setup";
const char* const sUNTHROWN_FAILURE = "A failure was raised that could not end the test";

using Results = std::vector<Test::Result>;

// Without the memory for a result there is still one that says that the test didn't pass. If even a place for it is
// missing it takes that of the one before.
void RecordWithoutMemory(Results& results) noexcept {
  if (results.size() == results.capacity() && !results.empty()) results.pop_back();
  if (results.size() == results.capacity()) return;
  results.emplace_back(std::string(), Test::Result::eERROR, std::string());
}

// A cancellation waits: while an exception is being handled none may meet a catch clause that takes everything, as
// there are some on the way to a host's copy of its error.
template <class... Outcome>
void Record(Results& results, const std::string& name, const Outcome&... outcome) {
  const Platform::HoldCancellation hold;
  try {
    results.emplace_back(name, outcome...);
  } catch (...) {
    RecordWithoutMemory(results);
  }
}

void Tell(TestNotification::EKind kind, const Test& test) {
  const UnthrownFailures ofListeners;  // they fail no test
  TestNotification notification(kind, test);
  test.Broadcast(notification);
}

}  // namespace

Test::Test(const std::string& name)
    : m_name(name),
      m_notifications(NotificationSupport::eFIRST_ADDED_FIRST),
      m_bIsTestSuite(false),
      m_bEnabled(true) {}

Test::~Test() = default;

void Test::ReadConfig(const std::string&) {}
void Test::WriteConfig(const std::string&) {}
bool Test::HasSetupGUI() { return false; }
bool Test::LaunchSetupGUI() { return false; }
void Test::Setup() {}
void Test::TearDown() {}

Test::Result::EType Test::RunTest() {
  Results results;
  return RunTest(results);
}

Test::Result::EType Test::RunTest(std::vector<Result>& results) {
  if (PrepareRun()) PerformRun();
  try {
    ConcludeRun(results);
  } catch (const Error& error) {
    OXA_RAISE_WARNING(sLOG_NAME, ErrorDuringTestNotification(m_name, error.GetData(AlertInfo::sMESSAGE)));
  } catch (...) {
    Platform::LetCancellationPass();
    OXA_RAISE_WARNING(sLOG_NAME, ErrorDuringTestNotification(m_name, sUNKNOWN_EXCEPTION));
  }
  return GetResult();
}

// True if the test is to be executed.
bool Test::PrepareRun() {
  try {
    m_results.clear();
    m_results.reserve(1);
    if (!m_bEnabled) {
      m_results.emplace_back(m_name, Result::eDISABLED, std::string());
      return false;
    }
    Tell(TestNotification::eSETTING_UP, *this);
    const UnthrownFailures ownOnes;
    Setup();
    if (!UnthrownFailures::Any()) return true;
    Record(m_results, m_name, Result::eERROR, sUNTHROWN_FAILURE);
  } catch (const Error& error) {
    Record(m_results, m_name, error);
  } catch (...) {
    Platform::LetCancellationPass();
    Record(m_results, m_name, Result::eERROR, sUNKNOWN_EXCEPTION_DURING_SETUP);
  }
  return false;
}

void Test::PerformRun() {
  const UnthrownFailures ownOnes;
  try {
    Tell(TestNotification::eEXECUTING, *this);
    const Result result = Execute();
    if (result.GetType() != Result::eSUITE) m_results.push_back(result);
  } catch (const Failure& failure) {
    Record(m_results, m_name, failure);
  } catch (const Error& error) {
    Record(m_results, m_name, error);
  } catch (...) {
    Platform::LetCancellationPass();
    Record(m_results, m_name, Result::eERROR, sUNKNOWN_EXCEPTION);
  }
  if (UnthrownFailures::Any()) Record(m_results, m_name, Result::eFAILED, sUNTHROWN_FAILURE);
}

void Test::ConcludeRun(std::vector<Result>& results) {
  const UnthrownFailures ofTearDown;  // no result knows them: they were told when they were raised
  try {
    results.insert(results.end(), m_results.begin(), m_results.end());
    Tell(TestNotification::eCOMPLETED, *this);
    Tell(TestNotification::eTEARING_DOWN, *this);
  } catch (...) {
    Platform::LetCancellationPass();
    TearDown();  // a test that was set up is torn down, whatever became of the telling
    throw;
  }
  TearDown();
}

Test::Result::EType Test::GetResult() const {
  Result::EType worst = Result::eNO_RESULT;
  for (const Result& result : m_results) {
    const Result::EType type = result.GetType();
    if (type == Result::eERROR) return type;
    if (type == Result::eFAILED || (type == Result::ePASSED && worst == Result::eNO_RESULT)) worst = type;
  }
  return worst;
}

int Test::GetResults(std::vector<Result>& results) const {
  results = m_results;
  return static_cast<int>(m_results.size());
}

int Test::GetResults(std::multimap<std::string, Result>& results) const {
  results.clear();
  for (const Result& result : m_results) results.emplace(result.GetTestName(), result);
  return static_cast<int>(m_results.size());
}

void Test::AddListener(Listener& listener) { m_notifications.AddListener(listener); }

void Test::RemoveListener(Listener& listener) { m_notifications.RemoveListener(listener); }

void Test::Broadcast(Notification& notification) const { m_notifications.Broadcast(notification); }

}  // namespace Oxa::Core
