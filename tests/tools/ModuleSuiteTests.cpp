// The library's own tests, run by oxatest as a user of the library would.
#include <gtest/gtest.h>

#include "Oxatest.h"

using namespace OxatestTests;

namespace {

// The class names of the test cases, each once, in their order.
std::vector<std::string> ClassesOf(const Element& suite) {
  std::vector<std::string> classes;
  for (const Element& test : suite.m_children) {
    if (test.m_sName != "testcase") continue;
    const std::string name = test.Attribute("classname");
    if (classes.empty() || classes.back() != name) classes.push_back(name);
  }
  return classes;
}

TEST(ModuleSuite, PassesAllSixteenSuitesInTheirOrder) {
  const char* const names[] = {"Smart Pointer Tests",    "BadPixel Tests",
                               "PerformanceTimer Tests", "StringTools Tests",
                               "PathName Tests",         "GraphAlgo Tests",
                               "container_ptr Tests",    "Notification Tests",
                               "Encryption Tests",       "I/O Tests",
                               "I/O Tests/XML Tests",    "UnitDescriptor Tests",
                               "UnitDictionary Tests",   "UnitizedValue Tests",
                               "Error Handling Tests",   "Callback template &amp; macro Tests",
                               "Oxa::Core::Time Tests"};
  std::vector<std::string> classes;
  for (const char* const name : names) classes.push_back(std::string("OxaCore Tests.") + name);

  const RunResult run = RunOxatest({OXACORE_LIBRARY, "--timeout=120"});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sOutput << run.m_sError;
  ASSERT_TRUE(run.m_bParsed);
  EXPECT_EQ("83", run.m_junit.Attribute("tests"));
  EXPECT_EQ("0", run.m_junit.Attribute("failures"));
  EXPECT_EQ("0", run.m_junit.Attribute("errors"));
  EXPECT_EQ("0", run.m_junit.Attribute("skipped"));
  ASSERT_EQ(1U, run.m_junit.m_children.size());
  EXPECT_EQ("OxaCore Tests", run.m_junit.m_children[0].Attribute("name"));
  EXPECT_EQ(classes, ClassesOf(run.m_junit.m_children[0]));
}

// The own tests leave nothing behind that makes them fail.
TEST(ModuleSuite, PassesTwiceInOneProcess) {
  const RunResult run = RunOxatest({OXACORE_LIBRARY, "--timeout=120", "--repeat=2"});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sOutput << run.m_sError;
  ASSERT_TRUE(run.m_bParsed);
  EXPECT_EQ("166", run.m_junit.Attribute("tests"));
}

}  // namespace
