// What the tests of the module's own suite share.
#ifndef OXACORE_TESTS_AUTOTEST_MODULESUITE_H
#define OXACORE_TESTS_AUTOTEST_MODULESUITE_H

#include <Infrastructure/OxaCore/ModuleTestSuite.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ModuleSuiteTests {

using SelfTest = Oxa::Core::Test;  // in a TEST, Test is that of the test program
using Result = SelfTest::Result;
using Suite = boost::shared_ptr<Oxa::Core::TestSuite>;
using Texts = std::vector<std::string>;

inline std::vector<boost::shared_ptr<SelfTest>> ChildrenOf(const Oxa::Core::TestSuite& suite) {
  std::vector<boost::shared_ptr<SelfTest>> tests;
  suite.GetTests(tests);
  return tests;
}

/// The name of a suite, and those of its tests; of a suite within it again "name: tests".
inline std::string Outline(const Oxa::Core::TestSuite& suite) {
  std::string outline = suite.GetName() + ":";
  for (const auto& test : ChildrenOf(suite)) {
    const auto* const inner = dynamic_cast<const Oxa::Core::TestSuite*>(test.get());
    outline += "\n  " + (inner != nullptr ? Outline(*inner) : test->GetName());
  }
  return outline;
}

/// Disables all children but the one of that name, which it gives.
inline boost::shared_ptr<SelfTest> LeaveOnly(const Oxa::Core::TestSuite& suite, const std::string& name) {
  boost::shared_ptr<SelfTest> found;
  for (const auto& test : ChildrenOf(suite)) {
    test->Enable(test->GetName() == name);
    if (test->IsEnabled()) found = test;
  }
  return found;
}

/// "NAME: text" of all that didn't pass.
inline Texts Failures(const std::vector<Result>& results) {
  Texts failures;
  for (const Result& result : results) {
    if (result.GetType() != Result::ePASSED)
      failures.push_back(result.GetTestName() + ": " + result.GetText());
  }
  return failures;
}

/// Runs the suite, and expects all of its tests to pass.
inline void ExpectAllPass(Oxa::Core::TestSuite& suite) {
  std::vector<Result> results;
  EXPECT_EQ(Result::ePASSED, suite.RunTest(results));
  EXPECT_EQ(Texts(), Failures(results));
  EXPECT_EQ(suite.GetTotalTests(false, true), static_cast<int>(results.size()));
}

}  // namespace ModuleSuiteTests

#endif
