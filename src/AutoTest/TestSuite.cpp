#include <Infrastructure/OxaCore/AutoTest.h>

#include <algorithm>

namespace Oxa::Core {

namespace {

void Pass(TestNotification::EKind kind, const Test& test, const TestSuite& suite) {
  TestNotification notification(kind, test);
  suite.Broadcast(notification);
}

}  // namespace

TestSuite::TestSuite(const std::string& name) : Test(name) { m_bIsTestSuite = true; }

// The children aren't touched: one that isn't owned may be gone already, and the links to the others are cut by what
// the suite is as a listener.
TestSuite::~TestSuite() = default;

// Whether `root` is `wanted`, or a suite that holds it at any depth.
bool TestSuite::Holds(const Test& root, const TestSuite& wanted) {
  const auto* const suite = dynamic_cast<const TestSuite*>(&root);
  if (suite == nullptr) return false;
  return suite == &wanted || std::any_of(suite->m_tests.begin(), suite->m_tests.end(),
                                         [&](const auto& test) { return Holds(*test, wanted); });
}

bool TestSuite::AddTest(boost::shared_ptr<Test> test) {
  if (!test || Holds(*test, *this)) return false;
  std::list<boost::shared_ptr<Test>> entry(1, test);
  test->AddListener(*this);
  m_tests.splice(m_tests.end(), entry);
  return true;
}

bool TestSuite::RemoveTest(boost::shared_ptr<Test> test) {
  const auto found = std::find(m_tests.begin(), m_tests.end(), test);
  if (found == m_tests.end()) return false;
  m_tests.erase(found);
  const bool again = std::find(m_tests.begin(), m_tests.end(), test) != m_tests.end();
  if (!again) test->RemoveListener(*this);
  return true;
}

void TestSuite::Clear() {
  std::list<boost::shared_ptr<Test>> tests;
  tests.swap(m_tests);
  for (const auto& test : tests) test->RemoveListener(*this);
}

void TestSuite::GetTests(std::vector<boost::shared_ptr<Test>>& tests) const {
  tests.assign(m_tests.begin(), m_tests.end());
}

int TestSuite::GetNumChildTests() const { return static_cast<int>(m_tests.size()); }

int TestSuite::GetTotalTests(bool countSuites, bool includeDisabled) const {
  int total = 0;
  for (const auto& test : m_tests) {
    if (!test->IsEnabled() && !includeDisabled) continue;
    const auto* const suite = dynamic_cast<const TestSuite*>(test.get());
    if (suite == nullptr || countSuites) ++total;
    if (suite != nullptr) total += suite->GetTotalTests(countSuites, includeDisabled);
  }
  return total;
}

void TestSuite::ReadConfig(const std::string& config) {
  const std::list<boost::shared_ptr<Test>> tests = m_tests;  // a test may change the list
  for (const auto& test : tests) test->ReadConfig(config);
}

void TestSuite::WriteConfig(const std::string& config) {
  const std::list<boost::shared_ptr<Test>> tests = m_tests;
  for (const auto& test : tests) test->WriteConfig(config);
}

void TestSuite::CustomNotification(const Test& test) {
  Test::CustomNotification notification(test);
  Broadcast(notification);
}

void TestSuite::SettingUpTest(const Test& test) { Pass(TestNotification::eSETTING_UP, test, *this); }
void TestSuite::ExecutingTest(const Test& test) { Pass(TestNotification::eEXECUTING, test, *this); }
void TestSuite::TestCompleted(const Test& test) { Pass(TestNotification::eCOMPLETED, test, *this); }
void TestSuite::TearingDownTest(const Test& test) { Pass(TestNotification::eTEARING_DOWN, test, *this); }

Test::Result TestSuite::Execute() {
  const std::list<boost::shared_ptr<Test>> tests = m_tests;  // a test may change the list
  for (const auto& test : tests) {
    if (!test->IsEnabled()) continue;
    std::vector<Result> results;
    test->RunTest(results);
    if (results.empty()) test->GetResults(results);  // lost for want of memory: now it is this suite's error
    m_results.insert(m_results.end(), results.begin(), results.end());
  }
  return Result(GetName(), Result::eSUITE, std::string());
}

}  // namespace Oxa::Core
